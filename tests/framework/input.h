// Keyboard and mouse input for tests of windows, and the message loop that receives it.
#pragma once

#include <framework/win32.h>

#include <functional>
#include <initializer_list>
#include <string_view>

namespace testinput {

/// Dispatches all waiting messages in a plain loop, as a host that knows nothing of our dialogs
/// does.
void pump();

/// Pumps until `condition` holds; false after `milliseconds`.
bool pumpUntil(const std::function<bool()>& condition, int milliseconds = 5000);

/// Makes a top-level window the active one and waits for it.
bool activate(HWND window);

/// Presses and releases a virtual key while the modifiers are held, then pumps.
void key(WORD virtualKey, std::initializer_list<WORD> modifiers = {});

/// Types characters, then pumps.
void type(std::wstring_view text);

/// Moves the mouse pointer itself to a point of the window's client area; false when it does not
/// get there.
bool hover(HWND window, POINT at);

// The mouse messages below are posted as the platform would send them, to the window that has
// captured the mouse or is under the point. The pointer itself stays: displays report its way late
// and would make tests depend on the load of the machine.

/// Clicks a point of the window's client area `count` times in quick succession while the
/// modifiers are held.
void click(HWND window, POINT at, int count = 1, std::initializer_list<WORD> modifiers = {});

/// Presses the left button at `from`, moves in steps to `to` and releases it.
void drag(HWND window, POINT from, POINT to);

/// Turns the mouse wheel there; 120 is one notch away from the user.
void wheel(HWND window, POINT at, int delta);

/// The color of a pixel of the window's client area as the window paints it now.
COLORREF pixel(HWND window, POINT at);

}  // namespace testinput
