// Which object has which window, and the one window procedure of this layer.
#pragma once

#include <framework/cwnd.h>

#include <utility>

namespace framework {

/// Between the platform's messages and the objects: every message of a connected window arrives in
/// `procedure`, which lets no exception out.
class WindowRouter {
public:
    /// The message that an object is handling, for `CWnd::Default`.
    struct Message {
        HWND window;
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
        /// The result of the window's former procedure, and of handlers that have none of their
        /// own.
        LRESULT result = 0;
    };

    static CWnd* objectOf(HWND window) noexcept;
    static bool connect(CWnd& object, HWND window);
    static void disconnect(CWnd& object) noexcept;
    /// Makes the object destroy its window in its destructor.
    static void own(CWnd& object) noexcept { object.created_ = true; }
    static bool registerClass(const wchar_t* className, UINT classStyle, HBRUSH background,
                              HICON icon);

    /// Runs `createWindow` and connects the object to the window that it makes: from the first
    /// message on when the class is one of ours, afterwards when it is the platform's. Null when
    /// nothing was created.
    template <typename CreateWindow>
    static HWND create(CWnd& object, CreateWindow&& createWindow) {
        pending_ = &object;
        const HWND window = createWindow();
        // A class of ours takes the object with the first message; it is then no longer pending.
        const bool platformClass = std::exchange(pending_, nullptr) == &object;
        if (!window) return nullptr;
        if (platformClass && !connect(object, window)) {
            ::DestroyWindow(window);
            return nullptr;
        }
        return window;
    }

    /// The innermost message being handled for `window`, or null.
    static Message* current(HWND window) noexcept;

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    static LRESULT handle(CWnd& object, Message& message) noexcept;
    static void windowGone(HWND window) noexcept;

    static CWnd* pending_;
    static Message* current_;
};

}  // namespace framework
