// How a window's messages become calls of the handlers.
#include "windowrouter.h"

namespace framework {

namespace {

POINT pointOf(LPARAM lParam) noexcept {
    return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
}

UINT low(WPARAM value) noexcept {
    return LOWORD(value);
}
UINT high(WPARAM value) noexcept {
    return HIWORD(value);
}
HWND windowOf(WPARAM value) noexcept {
    return reinterpret_cast<HWND>(value);
}
HWND windowOf(LPARAM value) noexcept {
    return reinterpret_cast<HWND>(value);
}

}  // namespace

LRESULT CWnd::Default() {
    WindowRouter::Message* const message = WindowRouter::current(window_);
    if (!message) return 0;
    const LRESULT result = Default(message->message, message->wParam, message->lParam);
    message->result = result;
    return result;
}

LRESULT CWnd::Default(UINT message, WPARAM wParam, LPARAM lParam) {
    if (!window_ || !former_) return 0;
    return ::CallWindowProcW(former_, window_, message, wParam, lParam);
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // Belongs to the router, so it outlives an object that deletes itself in a handler.
    const WindowRouter::Message* const current = WindowRouter::current(window_);
    LRESULT result = 0;
    Routed routed = RouteFrame(message, wParam, lParam, result);
    if (routed == Routed::kNo) routed = RouteKeyboard(message, wParam, lParam, result);
    if (routed == Routed::kNo) routed = RouteMouse(message, wParam, lParam, result);
    if (routed == Routed::kNo) routed = RouteChild(message, wParam, lParam, result);
    switch (routed) {
        case Routed::kNo:
            return Default(message, wParam, lParam);
        case Routed::kHandled:
            return current ? current->result : 0;
        case Routed::kAnswered:
            break;
    }
    return result;
}

CWnd::Routed CWnd::RouteFrame(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    switch (message) {
        case WM_CREATE:
            result = OnCreate(*reinterpret_cast<const CREATESTRUCTW*>(lParam)) ? 0 : -1;
            return Routed::kAnswered;
        case WM_DESTROY:
            OnDestroy();
            break;
        case WM_CLOSE:
            OnClose();
            break;
        case WM_SIZE:
            OnSize(static_cast<UINT>(wParam), LOWORD(lParam), HIWORD(lParam));
            break;
        case WM_GETMINMAXINFO:
            OnMinMaxInfo(*reinterpret_cast<MINMAXINFO*>(lParam));
            break;
        case WM_ENABLE:
            OnEnable(wParam != 0);
            break;
        case WM_ACTIVATE:
            OnActivate(low(wParam), windowOf(lParam), high(wParam) != 0);
            break;
        case WM_PAINT:
            OnPaint();
            break;
        case WM_TIMER:
            OnTimer(wParam);
            break;
        case WM_ERASEBKGND:
            result = OnEraseBackground(reinterpret_cast<HDC>(wParam));
            return Routed::kAnswered;
        default:
            return Routed::kNo;
    }
    return Routed::kHandled;
}

CWnd::Routed CWnd::RouteKeyboard(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    const UINT repeat = LOWORD(lParam);
    const UINT flags = HIWORD(lParam);
    switch (message) {
        case WM_SETFOCUS:
            OnSetFocus(windowOf(wParam));
            break;
        case WM_KILLFOCUS:
            OnKillFocus(windowOf(wParam));
            break;
        case WM_KEYDOWN:
            OnKeyDown(static_cast<UINT>(wParam), repeat, flags);
            break;
        case WM_CHAR:
            OnChar(static_cast<UINT>(wParam), repeat, flags);
            break;
        case WM_GETDLGCODE:
            result = OnGetDlgCode(reinterpret_cast<const MSG*>(lParam));
            return Routed::kAnswered;
        default:
            return Routed::kNo;
    }
    return Routed::kHandled;
}

CWnd::Routed CWnd::RouteMouse(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    const UINT keys = low(wParam);
    const POINT at = pointOf(lParam);
    switch (message) {
        case WM_LBUTTONDOWN:
            OnLButtonDown(keys, at);
            break;
        case WM_LBUTTONUP:
            OnLButtonUp(keys, at);
            break;
        case WM_LBUTTONDBLCLK:
            OnLButtonDblClk(keys, at);
            break;
        case WM_MBUTTONDOWN:
            OnMButtonDown(keys, at);
            break;
        case WM_MBUTTONUP:
            OnMButtonUp(keys, at);
            break;
        case WM_RBUTTONDOWN:
            OnRButtonDown(keys, at);
            break;
        case WM_RBUTTONUP:
            OnRButtonUp(keys, at);
            break;
        case WM_MOUSEMOVE:
            OnMouseMove(keys, at);
            break;
        case WM_MOUSEWHEEL:
            OnMouseWheel(keys, static_cast<short>(high(wParam)), at);
            break;
        case WM_CAPTURECHANGED:
            OnCaptureChanged(windowOf(lParam));
            break;
        case WM_CANCELMODE:
            OnCancelMode();
            break;
        case WM_SETCURSOR:
            result = OnSetCursor(windowOf(wParam), LOWORD(lParam), HIWORD(lParam));
            return Routed::kAnswered;
        default:
            return Routed::kNo;
    }
    return Routed::kHandled;
}

CWnd::Routed CWnd::RouteChild(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    switch (message) {
        case WM_HSCROLL:
            OnHScroll(low(wParam), static_cast<short>(high(wParam)), windowOf(lParam));
            return Routed::kHandled;
        case WM_VSCROLL:
            OnVScroll(low(wParam), static_cast<short>(high(wParam)), windowOf(lParam));
            return Routed::kHandled;
        case WM_COMMAND:
            return OnCommand(static_cast<int>(low(wParam)), high(wParam), windowOf(lParam))
                       ? Routed::kAnswered
                       : Routed::kNo;
        case WM_NOTIFY:
            return OnNotify(static_cast<int>(wParam), *reinterpret_cast<NMHDR*>(lParam), result)
                       ? Routed::kAnswered
                       : Routed::kNo;
        case WM_DRAWITEM:
            result = TRUE;
            return OnDrawItem(static_cast<int>(wParam),
                              *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam))
                       ? Routed::kAnswered
                       : Routed::kNo;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORSCROLLBAR:
        case WM_CTLCOLORSTATIC:
            result = reinterpret_cast<LRESULT>(
                OnCtlColor(reinterpret_cast<HDC>(wParam), windowOf(lParam), message));
            return Routed::kAnswered;
        default:
            return Routed::kNo;
    }
}

bool CWnd::OnDrawItem(int /*id*/, const DRAWITEMSTRUCT& item) {
    CWnd* const control = item.CtlType == ODT_MENU ? nullptr : FromHandle(item.hwndItem);
    if (control) control->DrawItem(item);
    return control != nullptr;
}

}  // namespace framework
