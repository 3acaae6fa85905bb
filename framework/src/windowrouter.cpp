#include "windowrouter.h"

#include "module_internal.h"

#include <base/scopedvalue.h>
#include <framework/module.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace framework {

namespace {

struct Connection {
    CWnd* object;
    WNDPROC former;
};

using Connections = std::unordered_map<HWND, Connection>;

// Never destroyed: windows of static objects are destroyed while static objects are.
Connections& connections() {
    static auto* const map = new Connections;
    return *map;
}

// The module's window classes. A library unregisters its classes when it is unloaded; the platform
// does not do that.
class RegisteredClasses {
public:
    ~RegisteredClasses() {
        for (const std::wstring& name : names_) ::UnregisterClassW(name.c_str(), moduleInstance());
    }
    bool contains(const wchar_t* name) const {
        for (const std::wstring& known : names_)
            if (known == name) return true;
        return false;
    }
    void add(const wchar_t* name) { names_.emplace_back(name); }

private:
    std::vector<std::wstring> names_;
};

RegisteredClasses& registeredClasses() {
    static RegisteredClasses classes;
    return classes;
}

}  // namespace

CWnd* WindowRouter::pending_ = nullptr;
WindowRouter::Message* WindowRouter::current_ = nullptr;

CWnd* WindowRouter::objectOf(HWND window) noexcept {
    const auto found = connections().find(window);
    return found == connections().end() ? nullptr : found->second.object;
}

bool WindowRouter::connect(CWnd& object, HWND window) {
    if (!window || object.window_ ||
        ::GetWindowThreadProcessId(window, nullptr) != ::GetCurrentThreadId())
        return false;
    const auto [place, isNew] = connections().try_emplace(window, Connection{nullptr, nullptr});
    Connection& connection = place->second;
    if (connection.object) return false;
    // The class decides, not the present window procedure: another module may have subclassed a
    // window of our own class, and subclassing it again would make the two procedures call each
    // other without end.
    const auto ofClass = reinterpret_cast<WNDPROC>(::GetClassLongPtrW(window, GCLP_WNDPROC));
    if (isNew && ofClass == procedure) {
        connection.former = ::DefWindowProcW;
    } else if (isNew) {
        connection.former = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(window, GWLP_WNDPROC));
        ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure));
    }
    connection.object = &object;
    object.window_ = window;
    object.former_ = connection.former;
    return true;
}

void WindowRouter::disconnect(CWnd& object) noexcept {
    const auto found = connections().find(object.window_);
    if (found == connections().end() || found->second.object != &object) return;
    const bool classOfOurs = found->second.former == ::DefWindowProcW;
    const auto here = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(found->first, GWLP_WNDPROC));
    if (!classOfOurs && here != procedure) {
        // Another module has subclassed the window after us and goes on calling `procedure`, which
        // therefore stays and passes everything on.
        found->second.object = nullptr;
        return;
    }
    if (!classOfOurs)
        ::SetWindowLongPtrW(found->first, GWLP_WNDPROC,
                            reinterpret_cast<LONG_PTR>(found->second.former));
    connections().erase(found);
}

bool WindowRouter::registerClass(const wchar_t* className, UINT classStyle, HBRUSH background,
                                 HICON icon) {
    if (registeredClasses().contains(className)) return true;
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.style = classStyle;
    description.lpfnWndProc = procedure;
    description.hInstance = moduleInstance();
    description.hIcon = icon;
    description.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
    description.hbrBackground = background;
    description.lpszClassName = className;
    if (!::RegisterClassExW(&description)) return false;
    registeredClasses().add(className);
    return true;
}

WindowRouter::Message* WindowRouter::current(HWND window) noexcept {
    return current_ && window && current_->window == window ? current_ : nullptr;
}

LRESULT CALLBACK WindowRouter::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto found = connections().find(window);
    if (found == connections().end() && message == WM_NCCREATE && pending_) {
        connect(*std::exchange(pending_, nullptr), window);
        found = connections().find(window);
    }
    if (found == connections().end()) return ::DefWindowProcW(window, message, wParam, lParam);

    const ModuleScope module;
    LRESULT result;
    if (CWnd* const object = found->second.object) {
        Message handled{window, message, wParam, lParam};
        result = handle(*object, handled);
    } else {
        result = ::CallWindowProcW(found->second.former, window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) windowGone(window);
    return result;
}

LRESULT WindowRouter::handle(CWnd& object, Message& message) noexcept {
    const base::ScopedValue innermost(current_, &message);
    LRESULT result = 0;
    try {
        result = object.WindowProc(message.message, message.wParam, message.lParam);
    } catch (...) {
        reportCurrentException();
        // Otherwise the platform would ask for the failed paint again and again.
        if (message.message == WM_PAINT) ::ValidateRect(message.window, nullptr);
        if (message.message == WM_CREATE) result = -1;
    }
    return result;
}

void WindowRouter::windowGone(HWND window) noexcept {
    const auto found = connections().find(window);
    if (found == connections().end()) return;
    CWnd* const object = found->second.object;
    connections().erase(found);
    if (!object) return;
    object->window_ = nullptr;
    object->former_ = nullptr;
    object->created_ = false;
    try {
        object->OnWindowGone();
    } catch (...) {
        reportCurrentException();
    }
}

}  // namespace framework
