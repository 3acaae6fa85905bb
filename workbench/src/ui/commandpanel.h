// The panel at the right: the utilities, and the rollup pages of the one that is open.
#pragma once

#include "rollup.h"

#include <framework/controls.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace workbench {

/// Buttons for the utilities, one below the other, then the rollup pages in the order of their
/// category. What is taller than the panel scrolls: by the scroll bar, the wheel, or dragging an
/// empty place of a page.
class CommandPanel : public framework::CWnd {
public:
    bool Create(HWND parent, UINT id);

    /// The width that shows a page of the usual width (108 dialog units), in pixels.
    int wantedWidth() const;

    /// Lists the utilities by their names (UTF-8). `onPick` is told the position of the one whose
    /// button was pressed.
    void setUtilities(const std::vector<std::string>& names, std::function<void(int)> onPick);
    /// Shows which utility is open; -1 for none.
    void setOpenUtility(int position);

    /// Presses the button with this name, as the user would; false when there is none.
    bool pressUtility(const std::string& name) const;
    /// The topmost page, or null.
    HWND firstPage() const { return rollups_.empty() ? nullptr : rollups_.front()->page(); }

    /// Adds a page as `Interface::AddRollupPage` says; null when the dialog cannot be created.
    HWND addRollup(HINSTANCE module, int dialogId, DLGPROC procedure, const std::string& title,
                   LPARAM param, bool closed, int category);
    /// Removes a page and destroys its dialog. Harmless for a window that is no page.
    void deleteRollup(HWND page);
    /// Scrolls by dragging, from the mouse messages on an empty place of a page.
    void rollupMouse(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
    /// The page that `window` is or lies in, or null.
    HWND pageOf(HWND window) const;
    /// The button of the first utility; null when there is none.
    HWND firstUtility() const;
    /// The first control of the pages that takes the keyboard, or else of the panel; null for none.
    HWND firstStop() const;
    /// Scrolls until a control of the panel or of a page is in sight.
    void reveal(HWND control);
    /// Enter presses the panel's own buttons: true when the message was that.
    bool pressByEnter(const MSG& message) const;
    /// The heading and the panel's name follow the present language.
    void showLanguage();
    /// Positions everything anew, after a page was rolled up or down.
    void layout();

protected:
    void OnSize(UINT type, int width, int height) override;
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    void OnVScroll(UINT code, int position, HWND control) override;
    void OnMouseWheel(UINT keys, int delta, POINT screen) override;
    bool OnCommand(int id, UINT code, HWND control) override;

private:
    void scrollTo(int position);
    int contentHeight() const;
    int headingHeight() const { return Scaled(24); }

    std::vector<std::unique_ptr<framework::CButton>> buttons_;
    std::vector<std::unique_ptr<Rollup>> rollups_;
    std::function<void(int)> onPick_;
    int openUtility_ = -1;
    int scroll_ = 0;
    int dragY_ = 0;  // screen position of the drag that scrolls
};

}  // namespace workbench
