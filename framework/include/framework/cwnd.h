// The base of every window class: a window handle whose messages come as virtual calls.
//
// Members of the C... classes follow the platform's way of naming. All texts are UTF-8. All of it
// belongs to the thread that created the windows; nothing is locked.
//
// Functions with a text as argument or result, and those that create a window, may throw
// `std::bad_alloc`; nothing else throws. A call that the platform refuses has no effect and returns
// false, null, -1 or an empty text.
#pragma once

#include <framework/gdi.h>
#include <framework/win32.h>

#include <string>
#include <string_view>

namespace framework {

/// A window that this object has created, or one that it has subclassed.
///
/// Messages: once the object is connected (`Create...`, `SubclassWindow`, `SubclassDlgItem`), every
/// message of the window goes to `WindowProc`, whose default calls one of the `On...` handlers.
/// A handler that does not override, or calls the base class's handler, passes the message on with
/// its original parameters to the window's former procedure. No exception leaves a window
/// procedure: it ends in `CWinApp::OnException`, and the sender of the message gets 0.
///
/// Ownership: the destructor destroys a window that this object created, and detaches from any
/// other. When the window is destroyed first, the handle becomes null.
class CWnd {
public:
    CWnd() = default;
    virtual ~CWnd();
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;

    /// The object connected to a window in this module, or null.
    static CWnd* FromHandle(HWND window) noexcept;

    /// Null when there is no window.
    HWND Handle() const noexcept { return window_; }
    bool HasWindow() const noexcept { return window_ != nullptr; }

    /// Creates a window of a platform class or one registered by `RegisterWindowClass`. `area` is
    /// in pixels, relative to the parent's client area for a child. False when the platform
    /// refuses.
    bool CreateEx(DWORD exStyle, const wchar_t* className, std::string_view text, DWORD style,
                  const RECT& area, HWND parent, UINT id = 0);

    /// Registers a window class of this module, once; further calls with the same name do nothing.
    /// Windows of it that no object is connected to (in a dialog template) do nothing but exist.
    /// It is unregistered when the module is unloaded. False when the platform refuses.
    static bool RegisterWindowClass(const wchar_t* className, UINT classStyle = CS_DBLCLKS,
                                    HBRUSH background = nullptr, HICON icon = nullptr);

    /// Wraps a handle without subclassing the window (to call the operations below on it). The
    /// object does not notice when the window is destroyed.
    void Attach(HWND window) noexcept;
    /// Detaches from the window, which stays as it is, and returns its handle.
    HWND Detach() noexcept;

    /// Connects the object to an existing window. False when it is not a window of this thread or
    /// already has an object.
    bool SubclassWindow(HWND window);
    /// The same for the control `id` of `parent`.
    bool SubclassDlgItem(int id, HWND parent);

    /// Destroys the window; the handle is null afterwards. Harmless without a window.
    void DestroyWindow();

    // Operations. All of them are harmless without a window.

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    bool Post(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;

    std::string Text() const;
    /// At most `maxLength` UTF-16 units of it, without half a character at the end.
    std::string Text(int maxLength) const;
    void SetText(std::string_view text) const;
    HFONT Font() const;
    void SetFont(HFONT font, bool redraw = true) const;

    HWND Parent() const noexcept;
    /// The child control with this id, or null.
    HWND Item(int id) const noexcept;
    int Id() const noexcept;
    DWORD Style() const noexcept;
    /// Removes and adds style bits (GWL_STYLE).
    void ModifyStyle(DWORD remove, DWORD add) const;

    /// In screen coordinates.
    RECT WindowRect() const noexcept;
    /// In the parent's client coordinates.
    RECT AreaInParent() const noexcept;
    RECT ClientRect() const noexcept;
    void MoveTo(const RECT& area, bool repaint = true) const;
    POINT ToClient(POINT screen) const noexcept;
    POINT ToScreen(POINT client) const noexcept;

    void Enable(bool enabled = true) const;
    bool IsEnabled() const noexcept;
    /// `command` is one of the platform's SW_ codes.
    void Show(int command = SW_SHOW) const;
    void Hide() const { Show(SW_HIDE); }
    bool IsVisible() const noexcept;
    void SetFocus() const;
    bool HasFocus() const noexcept;

    /// Asks for a repaint of the whole client area, or of a part.
    void Invalidate(bool erase = true) const;
    void Invalidate(const RECT& area, bool erase = true) const;
    /// Paints now what has been asked for.
    void Update() const;
    /// Switches drawing off for bulk changes, and on again (without a repaint).
    void SetRedraw(bool on) const;

    std::string ItemText(int id) const;
    void SetItemText(int id, std::string_view text) const;
    /// False and no effect when there is no such control.
    bool EnableItem(int id, bool enabled) const;
    bool IsItemChecked(int id) const;
    void CheckItem(int id, bool checked) const;

    /// A message box owned by this window (or its top-level window). Without a caption it has the
    /// owner's. Returns the platform's IDOK...; `style` is the platform's MB_ flags.
    int ShowMessage(std::string_view text, UINT style = MB_OK, std::string_view caption = {}) const;

    /// Pixels at this window's display scaling for pixels at 100 %.
    int Scaled(int pixels) const noexcept;

protected:
    /// The root of the routing. Override it for messages without a handler; call the base for the
    /// rest.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

    /// Passes the message being handled to whoever had the window before this object.
    LRESULT Default();
    /// The same for a message of one's own choice.
    LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam);

    // Handlers. A `bool` result says that the message is done with.

    /// Returning false makes the creation fail. Only for windows of registered classes.
    virtual bool OnCreate(const CREATESTRUCTW&) { return Default() != -1; }
    virtual void OnDestroy() { Default(); }
    /// The last call for a window; the handle is already null. An object that lives on the heap and
    /// belongs to its window may delete itself here.
    virtual void OnWindowGone() {}
    virtual void OnClose() { Default(); }
    virtual void OnSize(UINT /*type*/, int /*width*/, int /*height*/) { Default(); }
    virtual void OnMinMaxInfo(MINMAXINFO&) { Default(); }
    virtual void OnEnable(bool /*enabled*/) { Default(); }
    /// `state` is WA_INACTIVE, WA_ACTIVE or WA_CLICKACTIVE.
    virtual void OnActivate(UINT /*state*/, HWND /*other*/, bool /*minimised*/) { Default(); }
    virtual void OnPaint() { Default(); }
    virtual bool OnEraseBackground(HDC) { return Default() != 0; }
    virtual void OnSetFocus(HWND /*former*/) { Default(); }
    virtual void OnKillFocus(HWND /*next*/) { Default(); }
    /// The platform's DLGC_ codes. `message` is the key that is about to come, or null.
    virtual UINT OnGetDlgCode(const MSG* /*message*/) { return static_cast<UINT>(Default()); }
    virtual void OnKeyDown(UINT /*key*/, UINT /*repeat*/, UINT /*flags*/) { Default(); }
    virtual void OnChar(UINT /*utf16*/, UINT /*repeat*/, UINT /*flags*/) { Default(); }
    virtual void OnLButtonDown(UINT /*keys*/, POINT) { Default(); }
    virtual void OnLButtonUp(UINT /*keys*/, POINT) { Default(); }
    virtual void OnLButtonDblClk(UINT /*keys*/, POINT) { Default(); }
    virtual void OnMButtonDown(UINT /*keys*/, POINT) { Default(); }
    virtual void OnMButtonUp(UINT /*keys*/, POINT) { Default(); }
    virtual void OnRButtonDown(UINT /*keys*/, POINT) { Default(); }
    virtual void OnRButtonUp(UINT /*keys*/, POINT) { Default(); }
    virtual void OnMouseMove(UINT /*keys*/, POINT) { Default(); }
    /// `delta` in the platform's 120 per notch; `screen` in screen coordinates.
    virtual void OnMouseWheel(UINT /*keys*/, int /*delta*/, POINT /*screen*/) { Default(); }
    virtual bool OnSetCursor(HWND /*under*/, UINT /*hitTest*/, UINT /*message*/) {
        return Default() != 0;
    }
    virtual void OnCaptureChanged(HWND /*gaining*/) { Default(); }
    virtual void OnCancelMode() { Default(); }
    virtual void OnTimer(UINT_PTR /*id*/) { Default(); }
    /// `control` is null for the window's own scroll bar.
    virtual void OnHScroll(UINT /*code*/, int /*position*/, HWND /*control*/) { Default(); }
    virtual void OnVScroll(UINT /*code*/, int /*position*/, HWND /*control*/) { Default(); }
    /// A menu entry (code 0), an accelerator (code 1) or a control's notification.
    virtual bool OnCommand(int /*id*/, UINT /*code*/, HWND /*control*/) { return false; }
    /// `result` is what the sender gets when true is returned.
    virtual bool OnNotify(int /*id*/, NMHDR& /*header*/, LRESULT& /*result*/) { return false; }
    /// The default lets the control's own object draw it (`DrawItem`).
    virtual bool OnDrawItem(int id, const DRAWITEMSTRUCT& item);
    /// The brush for a control's background; `type` is WM_CTLCOLOREDIT and so on.
    virtual HBRUSH OnCtlColor(HDC, HWND /*control*/, UINT /*type*/) {
        return reinterpret_cast<HBRUSH>(Default());
    }

    /// An owner-drawn control draws itself, asked through its parent.
    virtual void DrawItem(const DRAWITEMSTRUCT&) {}

private:
    friend class WindowRouter;

    // `kAnswered`: with a result of the handler's own; `kHandled`: with what `Default` gave, if
    // called.
    enum class Routed { kNo, kHandled, kAnswered };
    Routed RouteFrame(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
    Routed RouteKeyboard(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
    Routed RouteMouse(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
    Routed RouteChild(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

    HWND window_ = nullptr;
    WNDPROC former_ = nullptr;
    bool created_ = false;
};

}  // namespace framework
