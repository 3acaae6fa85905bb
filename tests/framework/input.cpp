#include "input.h"

#include <chrono>
#include <vector>

namespace testinput {

namespace {

using Clock = std::chrono::steady_clock;

void send(const INPUT& input) {
    INPUT copy = input;
    ::SendInput(1, &copy, sizeof copy);
}

void sendKey(WORD virtualKey, bool up) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    input.ki.wScan = static_cast<WORD>(::MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = up ? KEYEVENTF_KEYUP : 0u;
    const bool extended = (virtualKey >= VK_PRIOR && virtualKey <= VK_DOWN) ||
                          virtualKey == VK_INSERT || virtualKey == VK_DELETE;
    if (extended) input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    send(input);
}

void sendMouse(DWORD flags, int data = 0) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    input.mi.mouseData = static_cast<DWORD>(data);
    send(input);
}

class Held {
public:
    explicit Held(std::initializer_list<WORD> keys) : keys_(keys) {
        for (const WORD held : keys_) sendKey(held, false);
        pump();
    }
    ~Held() {
        for (const WORD held : keys_) sendKey(held, true);
        pump();
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    std::vector<WORD> keys_;
};

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
    const Held held(modifiers);
    sendKey(virtualKey, false);
    pump();
    sendKey(virtualKey, true);
    pump();
}

void type(std::wstring_view text) {
    for (const wchar_t character : text) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = static_cast<WORD>(character);
        input.ki.dwFlags = KEYEVENTF_UNICODE;
        send(input);
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
        send(input);
        pump();
    }
}

void moveTo(HWND window, POINT at) {
    ::ClientToScreen(window, &at);
    ::SetCursorPos(at.x, at.y);
    pump();
}

void click(HWND window, POINT at, int count, std::initializer_list<WORD> modifiers) {
    const Held held(modifiers);
    moveTo(window, at);
    for (int i = 0; i < count; ++i) {
        sendMouse(MOUSEEVENTF_LEFTDOWN);
        pump();
        sendMouse(MOUSEEVENTF_LEFTUP);
        pump();
    }
}

void drag(HWND window, POINT from, POINT to) {
    constexpr int kSteps = 4;
    moveTo(window, from);
    sendMouse(MOUSEEVENTF_LEFTDOWN);
    pump();
    for (int step = 1; step <= kSteps; ++step) {
        moveTo(window, {from.x + (to.x - from.x) * step / kSteps,
                        from.y + (to.y - from.y) * step / kSteps});
    }
    sendMouse(MOUSEEVENTF_LEFTUP);
    pump();
}

void wheel(HWND window, POINT at, int delta) {
    moveTo(window, at);
    sendMouse(MOUSEEVENTF_WHEEL, delta);
    pump();
}

COLORREF pixel(HWND window, POINT at) {
    ::UpdateWindow(window);
    const HDC dc = ::GetDC(window);
    const COLORREF colour = ::GetPixel(dc, at.x, at.y);
    ::ReleaseDC(window, dc);
    return colour;
}

}  // namespace testinput
