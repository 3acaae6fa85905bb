// The editors that a grid opens over a cell.
#pragma once

#include <framework/controls.h>

#include <string>

namespace grid {

class CGridCtrl;

/// A one-line edit field over a cell; of several lines where the grid wants that.
///
/// Tab, Enter and Escape end the edit; so do the arrow and page keys when Ctrl is held or
/// `arrowsEnd` was given. Enter belongs to the text of a field of several lines, which Ctrl+Enter
/// ends, and which grows with its lines as far as the grid has room. Losing the focus ends the edit
/// and keeps the text.
class CInPlaceEdit : public framework::CEdit {
public:
    CInPlaceEdit(CGridCtrl& owner, bool multiLine, bool arrowsEnd) noexcept
        : owner_(owner), multiLine_(multiLine), arrowsEnd_(arrowsEnd) {}

    /// Opens with everything selected or, after a first key, with that character alone.
    bool Open(const RECT& area, std::string_view text, wchar_t firstKey);

    /// The field's own notifications (EN_ codes), which its parent, the grid, gets first.
    void HandleNotification(UINT code);

protected:
    UINT OnGetDlgCode(const MSG*) override { return DLGC_WANTALLKEYS; }
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnChar(UINT utf16, UINT repeat, UINT flags) override;
    void OnKillFocus(HWND next) override;

private:
    int TextLeft() const;
    void AlignWithCell();
    void GrowWithLines();

    CGridCtrl& owner_;
    bool multiLine_;
    bool arrowsEnd_;
    RECT cell_{};
};

/// A list of choices over a cell, dropped down from the start. Typing searches the entry that
/// begins with what was typed in quick succession. Choosing with the mouse or Enter ends the edit,
/// as do the keys that end `CInPlaceEdit`; closing the list without a choice cancels.
class CInPlaceList : public framework::CComboBox {
public:
    CInPlaceList(CGridCtrl& owner, bool arrowsEnd) noexcept
        : owner_(owner), arrowsEnd_(arrowsEnd) {}

    /// Creates the empty list; the grid then has it filled.
    bool Open(const RECT& area);
    /// Chooses the entry that equals `text` and drops the list down.
    void Start(const std::string& text, wchar_t firstKey);

    /// The combo box's own notifications (CBN_ codes), which its parent, the grid, gets first.
    void HandleNotification(UINT code);

protected:
    UINT OnGetDlgCode(const MSG*) override { return DLGC_WANTALLKEYS; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnChar(UINT utf16, UINT repeat, UINT flags) override;
    void OnKillFocus(HWND next) override;

private:
    void AlignWithCell(const RECT& cell);
    void SearchFor(wchar_t typed);

    CGridCtrl& owner_;
    bool arrowsEnd_;
    bool chosen_ = false;
    std::wstring typed_;
    ULONGLONG lastTyped_ = 0;
};

}  // namespace grid
