// One rollup page: a title bar that folds it, and the plug-in's dialog below.
#pragma once

#include <framework/controls.h>

#include <functional>
#include <string>

namespace workbench {

class Rollup : public framework::CWnd {
public:
    /// `onFolded` is called after the page was folded or unfolded by the user.
    Rollup(std::string title, bool closed, int category, std::function<void()> onFolded);

    /// Creates the title bar and the dialog. False when the dialog cannot be created.
    bool Create(HWND parent, HINSTANCE module, int dialogId, DLGPROC procedure, LPARAM param);

    /// The plug-in's dialog.
    HWND page() const { return page_; }
    /// Its first control that takes the keyboard; null when it is folded, or has none.
    HWND firstStop() const;
    int category() const { return category_; }
    /// Title bar and, while unfolded, the dialog, in pixels.
    int height() const;

protected:
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    void OnSize(UINT type, int width, int height) override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnDrawItem(int id, const DRAWITEMSTRUCT& item) override;
    bool OnSetCursor(HWND under, UINT hitTest, UINT message) override;

private:
    int titleHeight() const { return Scaled(20); }
    void placePage();

    std::string title_;
    bool closed_;
    int category_;
    std::function<void()> onFolded_;
    framework::CButton bar_;  // the title: pressing it folds the page
    HWND page_ = nullptr;
    int pageHeight_ = 0;
};

}  // namespace workbench
