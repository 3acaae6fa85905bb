#include "input.h"

#include <chrono>
#include <utility>
#include <vector>

namespace testinput {

namespace {

using Clock = std::chrono::steady_clock;

INPUT keyEvent(WORD virtualKey, bool up) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    input.ki.wScan = static_cast<WORD>(::MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = up ? KEYEVENTF_KEYUP : 0u;
    const bool extended = (virtualKey >= VK_PRIOR && virtualKey <= VK_DOWN) ||
                          virtualKey == VK_INSERT || virtualKey == VK_DELETE;
    if (extended) input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    return input;
}

void send(std::vector<INPUT> inputs) {
    ::SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

// The window that a mouse message goes to: the one that has captured the mouse, else the one under
// the point, a screen point.
HWND mouseTarget(POINT screen) {
    const HWND captured = ::GetCapture();
    return captured ? captured : ::WindowFromPoint(screen);
}

using Modifiers = std::initializer_list<WORD>;

WPARAM mouseKeys(bool buttonDown, Modifiers modifiers) {
    WPARAM keys = buttonDown ? MK_LBUTTON : 0u;
    for (const WORD modifier : modifiers) {
        if (modifier == VK_SHIFT) keys |= MK_SHIFT;
        if (modifier == VK_CONTROL) keys |= MK_CONTROL;
    }
    return keys;
}

void mouse(UINT message, POINT screen, bool buttonDown, Modifiers modifiers = {}) {
    const HWND target = mouseTarget(screen);
    POINT at = screen;
    ::ScreenToClient(target, &at);
    ::PostMessageW(target, message, mouseKeys(buttonDown, modifiers), MAKELPARAM(at.x, at.y));
    pump();
}

POINT onScreen(HWND window, POINT at) {
    ::ClientToScreen(window, &at);
    return at;
}

// A second press in quick succession is a double click to the windows that ask for it.
UINT pressMessage(int earlierPresses, POINT screen) {
    const bool asks = ::GetClassLongPtrW(mouseTarget(screen), GCL_STYLE) & CS_DBLCLKS;
    return asks && earlierPresses % 2 == 1 ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN;
}

}  // namespace

void pump() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

bool pumpUntil(const std::function<bool()>& condition, int milliseconds) {
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        pump();
        if (condition()) return true;
        if (Clock::now() >= end) return false;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    }
}

bool activate(HWND window) {
    ::SetForegroundWindow(window);
    return pumpUntil([&] { return ::GetForegroundWindow() == window; });
}

void key(WORD virtualKey, std::initializer_list<WORD> modifiers) {
    // All in one go: the display, which knows nothing of injected keys, would otherwise release
    // them as soon as the mouse enters a window.
    std::vector<INPUT> inputs;
    for (const WORD held : modifiers) inputs.push_back(keyEvent(held, false));
    inputs.push_back(keyEvent(virtualKey, false));
    inputs.push_back(keyEvent(virtualKey, true));
    for (const WORD held : modifiers) inputs.push_back(keyEvent(held, true));
    send(std::move(inputs));
    pump();
}

void type(std::wstring_view text) {
    for (const wchar_t character : text) {
        INPUT down{};
        down.type = INPUT_KEYBOARD;
        down.ki.wScan = static_cast<WORD>(character);
        down.ki.dwFlags = KEYEVENTF_UNICODE;
        INPUT up = down;
        up.ki.dwFlags |= KEYEVENTF_KEYUP;
        send({down, up});
        pump();
    }
}

bool hover(HWND window, POINT at) {
    const POINT screen = onScreen(window, at);
    // The display tells of the mouse's way some time later, and may still tell of an earlier one.
    return pumpUntil([&] {
        POINT now{};
        ::GetCursorPos(&now);
        if (now.x == screen.x && now.y == screen.y) return true;
        ::SetCursorPos(screen.x, screen.y);
        return false;
    });
}

void click(HWND window, POINT at, int count, std::initializer_list<WORD> modifiers) {
    const POINT screen = onScreen(window, at);
    mouse(WM_MOUSEMOVE, screen, false, modifiers);
    for (int i = 0; i < count; ++i) {
        mouse(pressMessage(i, screen), screen, true, modifiers);
        mouse(WM_LBUTTONUP, screen, false, modifiers);
    }
}

void drag(HWND window, POINT from, POINT to) {
    constexpr int kSteps = 4;
    const POINT start = onScreen(window, from);
    const POINT end = onScreen(window, to);
    mouse(WM_LBUTTONDOWN, start, true);
    for (int step = 1; step <= kSteps; ++step) {
        mouse(WM_MOUSEMOVE,
              {start.x + (end.x - start.x) * step / kSteps,
               start.y + (end.y - start.y) * step / kSteps},
              true);
    }
    mouse(WM_LBUTTONUP, end, false);
}

void wheel(HWND window, POINT at, int delta) {
    const POINT screen = onScreen(window, at);
    // Unlike the others, this message has screen coordinates.
    ::PostMessageW(window, WM_MOUSEWHEEL, MAKEWPARAM(0, delta), MAKELPARAM(screen.x, screen.y));
    pump();
}

COLORREF pixel(HWND window, POINT at) {
    ::UpdateWindow(window);
    const HDC dc = ::GetDC(window);
    const COLORREF color = ::GetPixel(dc, at.x, at.y);
    ::ReleaseDC(window, dc);
    return color;
}

}  // namespace testinput
