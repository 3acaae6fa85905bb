// Dialogs made from resource templates.
#pragma once

#include <framework/cwnd.h>

namespace framework {

/// Moves values between a dialog's controls and a class's members, in the direction that it was
/// made for. Every call names a control of the dialog; a control that is missing is skipped.
class DataExchange {
public:
    DataExchange(const CWnd& dialog, bool save) noexcept : dialog_(dialog), save_(save) {}

    /// True: controls to members. False: members to controls.
    bool Saving() const noexcept { return save_; }

    void Text(int id, std::string& value);
    /// A text that is not a number leaves the member alone.
    void Integer(int id, int& value);
    void Check(int id, bool& value);
    /// Connects a control's object, the first time.
    void Control(int id, CWnd& control);

private:
    const CWnd& dialog_;
    bool save_;
};

/// A modal or modeless dialog. The messages before WM_INITDIALOG are not routed, so `OnInitDialog`
/// is the first handler called.
///
/// Keyboard navigation of modeless dialogs (Tab, arrows, mnemonics, Enter, Escape) does not need
/// the message loop's help, which may be a foreign host's: while a modeless dialog exists, a hook
/// on its thread hands it the keys that are meant for it or its controls.
class CDialog : public CWnd {
public:
    CDialog() = default;
    /// For `DoModal`. The parent is not owned and may be null.
    explicit CDialog(UINT templateId, HWND parent = nullptr) noexcept
        : templateId_(templateId), parent_(parent) {}
    ~CDialog() override;

    /// Runs the dialog and returns the argument of `EndDialog`, -1 when it cannot be created.
    INT_PTR DoModal();

    /// Creates the modeless dialog `templateId` of the module's resources; it is visible when its
    /// template says so, and has its owner's icons. False when it cannot be created or
    /// `OnInitDialog` throws.
    bool Create(UINT templateId, HWND parent = nullptr);

    /// Ends a modal dialog.
    void EndDialog(INT_PTR result);

    /// The platform's dialog navigation for a message to a modeless dialog or one of its controls;
    /// true when the message was used. Enter presses the push button that has the keyboard, also
    /// where that got it in another way than by Tab.
    static bool Navigate(HWND dialog, MSG& message) noexcept;

    /// Runs `DoDataExchange`: true from the controls to the members, false the other way.
    void UpdateData(bool save = true);

    /// Gives a modeless dialog, which its template does not show, the places and texts that its
    /// template has in the language of now, as if it were opened anew: the caption, and those of
    /// buttons and static texts. What was entered stays, and so does the size of a window that the
    /// user can size. Returns the size of the client area that the places are meant for; 0 by 0,
    /// with nothing changed, where the template cannot be had.
    SIZE FollowLanguage();

    /// Adds a tool tip for every child control that exists now, or removes the tips. For each tip
    /// the dialog gets the platform's text request (TTN_NEEDTEXTW, or TTN_NEEDTEXTA from a control
    /// that asks for it) in `OnNotify`; `ToolTipControlId` says for which control. For modeless
    /// dialogs: the hook on their thread passes mouse messages to the tips. The platform's own way,
    /// to subclass every control, would slow down each message to them.
    bool EnableToolTips(bool on = true);
    /// The control that had a tip has another window now.
    void MoveToolTip(HWND former, HWND now) const noexcept;
    /// The line above the text of the tip that is asked for, in bold type; an empty one takes it
    /// away. To be set whenever a text is asked for. Cut to the platform's 99 characters.
    void SetToolTipTitle(std::string_view title) const;
    /// The control id that a TTN_NEEDTEXTW or TTN_NEEDTEXTA request is about.
    static int ToolTipControlId(const NMHDR& request) noexcept;

protected:
    /// Called once the controls exist. The default fills the controls by `UpdateData(false)`. True
    /// lets the platform move the focus to the first control.
    virtual bool OnInitDialog();
    virtual void DoDataExchange(DataExchange&) {}

    /// Enter or the OK button. The default ends a modal dialog after `UpdateData`; a modeless one
    /// is hidden.
    virtual void OnOK();
    /// Escape, the cancel button or the close box. The default ends a modal dialog; a modeless one
    /// is hidden, so that it can be shown again.
    virtual void OnCancel();

    /// Tells apart places within a control that have tips of their own.
    virtual int ToolTipPart(HWND /*control*/, POINT /*screen*/) const { return 0; }

    /// Sees the keys meant for a modeless dialog before the navigation does; true takes the
    /// message.
    virtual bool PreTranslateMessage(MSG&) { return false; }

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    friend class DialogNavigation;

    static INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Initialise(HWND dialog) noexcept;
    void TellToolTips(const MSG& mouse) noexcept;
    void AddToolTip(HWND control) const noexcept;

    UINT templateId_ = 0;
    HWND parent_ = nullptr;
    HWND toolTips_ = nullptr;
    int toolTipPart_ = 0;  ///< the last one under the pointer
    bool modal_ = false;
    bool failed_ = false;
};

}  // namespace framework
