// Keyboard navigation and tool tips of modeless dialogs within a message loop that does not know of
// them.
#pragma once

#include <framework/cdialog.h>

/// Knows the modeless dialogs. While there is one, a hook on the thread's message retrieval hands
/// the keys that are meant for it or its controls to the platform's dialog navigation, and a
/// message that was used becomes WM_NULL before the loop sees it. Their tool tips are told of the
/// mouse. All dialogs belong to one thread.
class DialogNavigation {
public:
    static void add(CDialog& dialog);
    static void remove(const CDialog& dialog) noexcept;

private:
    static LRESULT CALLBACK messageHook(int code, WPARAM wParam, LPARAM lParam);
    static bool translate(MSG& message) noexcept;
    static CDialog* dialogOf(HWND window) noexcept;
};
