// The platform's simple controls: button, edit, combo box.
//
// `Create` makes the control as a child of `parent` with the platform's style bits, `area` in
// pixels of the parent's client area. Functions fail as those of `CWnd` do.
#pragma once

#include <framework/cwnd.h>

namespace framework {

/// Whether text is being edited in that window: an edit field that is not read-only, whichever
/// module made it.
bool isTextField(HWND window) noexcept;

/// A push button, check box, radio button or group box.
class CButton : public CWnd {
public:
    bool Create(std::string_view text, DWORD style, const RECT& area, HWND parent, UINT id);
    bool IsChecked() const;
    void SetChecked(bool checked) const;
    /// As if the user had clicked it.
    void Click() const;
};

/// An edit field of one or more lines.
class CEdit : public CWnd {
public:
    bool Create(std::string_view text, DWORD style, const RECT& area, HWND parent, UINT id);
    /// In UTF-16 units; no more can be typed. 0 lifts the limit.
    void SetLimit(int length) const;
    /// The selected range, in UTF-16 units.
    void Selection(int& from, int& to) const;
    /// (0, -1) selects everything; (-1, -1) nothing.
    void Select(int from, int to) const;
    void ReplaceSelection(std::string_view text, bool canUndo = true) const;
    /// Adds at the end and scrolls there.
    void Append(std::string_view text) const;
    int LineCount() const;
    /// For a field of several lines with a vertical scroll bar: shows the bar while there are more
    /// lines than fit, and hides it otherwise.
    void FitScrollBar() const;
    /// `SetText` and `FitScrollBar`, in less time: the platform redraws a bar at every new text,
    /// needed or not, which takes longer than all the rest.
    void SetFittedText(std::string_view text) const;
    bool IsModified() const;
    void SetModified(bool modified) const;

private:
    void ShowScrollBar(bool shown) const;
    SIZE Room() const;
};

/// A drop-down or simple combo box. Positions start at 0; -1 means none.
class CComboBox : public CWnd {
public:
    bool Create(DWORD style, const RECT& area, HWND parent, UINT id);
    int Add(std::string_view text) const;
    void Clear() const;
    int Count() const;
    int Selected() const;
    void Select(int position) const;
    /// The first entry that equals the text (ignoring case), or -1.
    int Find(std::string_view text) const;
    void ShowDropDown(bool shown) const;
};

}  // namespace framework
