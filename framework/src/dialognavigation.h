// Keyboard navigation and tool tips of modeless dialogs in a message loop that does not know them.
#pragma once

#include <framework/cdialog.h>

namespace framework {

/// The list of modeless dialogs. While there is one, a hook on the thread's message retrieval
/// passes the keys for it and its controls to the platform's dialog navigation, and a message that
/// was used becomes WM_NULL before the loop gets it. Ctrl with a letter, outside of text fields, is
/// left to the loop, which may have a command for it. Mouse messages are passed to the tool tips.
/// All dialogs belong to one thread.
class DialogNavigation {
public:
    static void add(CDialog& dialog);
    static void remove(const CDialog& dialog) noexcept;

private:
    static LRESULT CALLBACK messageHook(int code, WPARAM wParam, LPARAM lParam);
    static bool translate(MSG& message) noexcept;
    static CDialog* dialogOf(HWND window) noexcept;
};

}  // namespace framework
