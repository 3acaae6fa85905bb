// A grid of colors, one of which is chosen.
#pragma once

#include <framework/cwnd.h>
#include <framework/gdi.h>

#include <functional>

namespace palettes {

/// The window class that a dialog template names to contain swatches.
inline constexpr wchar_t kSwatchesClass[] = L"FltSwatches";

/// Colors by number, row by row, as many to a row as it is told. Arrows, Home, End and the page
/// keys choose one, as a click does.
class Swatches : public framework::CWnd {
public:
    void show(int count, int columns);
    int count() const noexcept { return count_; }
    int chosen() const noexcept { return chosen_; }
    /// Without a notification.
    void choose(int swatch);

    std::function<COLORREF(int)> colorOf;
    std::function<bool(int)> isShown;   ///< others leave their place empty; unset: all are
    std::function<bool(int)> isMarked;  ///< drawn with a dot, such as one that is in use
    std::function<void()> onChosen;     ///< by the user
    std::function<void()> onActivated;  ///< by Enter or a double click

protected:
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    void OnSetFocus(HWND) override;
    void OnKillFocus(HWND) override;
    void OnSize(UINT type, int width, int height) override;
    UINT OnGetDlgCode(const MSG* message) override;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonDblClk(UINT keys, POINT at) override;

private:
    RECT areaOf(int swatch) const;
    int at(POINT point) const;
    int rows() const noexcept { return (count_ + columns_ - 1) / columns_; }
    void chooseByUser(int swatch);

    int count_ = 0;
    int columns_ = 1;
    int chosen_ = 0;
};

}  // namespace palettes
