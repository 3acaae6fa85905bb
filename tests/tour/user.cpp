#include "user.h"

#include <framework/gdi.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

using framework::MemoryDc, framework::WindowDc, framework::pixelFormat;

namespace user {

namespace {

constexpr UINT kAnswerMilliseconds = 5000;

INPUT keyEvent(WORD virtualKey, WORD scan, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    input.ki.wScan = scan;
    input.ki.dwFlags = flags;
    return input;
}

INPUT pressOf(WORD virtualKey, bool up) {
    const bool extended = (virtualKey >= VK_PRIOR && virtualKey <= VK_DOWN) ||
                          virtualKey == VK_INSERT || virtualKey == VK_DELETE;
    return keyEvent(virtualKey, static_cast<WORD>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC)),
                    (up ? KEYEVENTF_KEYUP : 0u) | (extended ? KEYEVENTF_EXTENDEDKEY : 0u));
}

INPUT buttonEvent(DWORD flags) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    return input;
}

void send(std::vector<INPUT> inputs) {
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

// The display tells of the pointer's way some time later, and may still tell of an earlier one.
bool moveTo(POINT screen) {
    return eventually([&] {
        POINT now{};
        GetCursorPos(&now);
        if (now.x == screen.x && now.y == screen.y) return true;
        SetCursorPos(screen.x, screen.y);
        return false;
    });
}

struct Search {
    DWORD process;
    std::function<bool(HWND)> wanted;
    HWND found = nullptr;
};

BOOL CALLBACK examine(HWND window, LPARAM param) {
    Search& search = *reinterpret_cast<Search*>(param);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != search.process || !IsWindowVisible(window) || !search.wanted(window))
        return TRUE;
    search.found = window;
    return FALSE;
}

HWND find(DWORD process, std::function<bool(HWND)> wanted) {
    Search search{process, std::move(wanted)};
    EnumWindows(examine, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

}  // namespace

bool eventually(const std::function<bool()>& condition, int seconds) {
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(seconds) * 1000;
    while (!condition()) {
        if (GetTickCount64() >= end) return false;
        Sleep(20);
    }
    return true;
}

void must(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error("waited in vain: " + what);
}

void mustCome(const std::function<bool()>& condition, const std::string& what) {
    must(eventually(condition), what);
}

Program::Program(std::wstring commandLine) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    must(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process_) != FALSE,
         "the program");
}

Program::~Program() {
    if (WaitForSingleObject(process_.hProcess, 0) != WAIT_OBJECT_0)
        TerminateProcess(process_.hProcess, 1);
    CloseHandle(process_.hProcess);
    CloseHandle(process_.hThread);
}

bool Program::ends() const {
    DWORD code = STILL_ACTIVE;
    return WaitForSingleObject(process_.hProcess, 60000) == WAIT_OBJECT_0 &&
           GetExitCodeProcess(process_.hProcess, &code) && code == 0;
}

HWND Program::window(const wchar_t* className) const {
    const HWND window = FindWindowW(className, nullptr);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process == id() && IsWindowVisible(window) ? window : nullptr;
}

HWND Program::focusBeside(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

void key(WORD virtualKey, std::initializer_list<WORD> modifiers) {
    // In one go: the display, which knows nothing of these keys, would release them otherwise.
    std::vector<INPUT> inputs;
    for (const WORD held : modifiers) inputs.push_back(pressOf(held, false));
    inputs.push_back(pressOf(virtualKey, false));
    inputs.push_back(pressOf(virtualKey, true));
    for (const WORD held : modifiers) inputs.push_back(pressOf(held, true));
    send(std::move(inputs));
}

void type(std::wstring_view text) {
    std::vector<INPUT> inputs;
    for (const wchar_t c : text) {
        inputs.push_back(keyEvent(0, static_cast<WORD>(c), KEYEVENTF_UNICODE));
        inputs.push_back(keyEvent(0, static_cast<WORD>(c), KEYEVENTF_UNICODE | KEYEVENTF_KEYUP));
    }
    send(std::move(inputs));
}

bool click(POINT screen, int count) {
    if (!moveTo(screen)) return false;
    std::vector<INPUT> inputs;
    for (int i = 0; i < count; ++i) {
        inputs.push_back(buttonEvent(MOUSEEVENTF_LEFTDOWN));
        inputs.push_back(buttonEvent(MOUSEEVENTF_LEFTUP));
    }
    send(std::move(inputs));
    return true;
}

bool click(HWND window) {
    const bool ready = eventually([=] {
        const POINT at = middle(window);
        if (!moveTo(at)) return false;
        // A frame around it lets the mouse through, but only its own program knows.
        const HWND there = WindowFromPoint(at);
        const POINT now = middle(window);
        return (there == window || GetParent(there) == GetParent(window)) && at.x == now.x &&
               at.y == now.y;
    });
    return ready && click(middle(window));
}

bool drag(POINT from, POINT to) {
    constexpr int kSteps = 8;
    if (!moveTo(from)) return false;
    send({buttonEvent(MOUSEEVENTF_LEFTDOWN)});
    bool arrived = true;
    for (int step = 1; step <= kSteps; ++step)
        arrived = moveTo({from.x + (to.x - from.x) * step / kSteps,
                          from.y + (to.y - from.y) * step / kSteps}) &&
                  arrived;
    send({buttonEvent(MOUSEEVENTF_LEFTUP)});
    return arrived;
}

std::wstring text(HWND window) {
    DWORD_PTR length = 0;
    if (!SendMessageTimeoutW(window, WM_GETTEXTLENGTH, 0, 0, SMTO_NORMAL, kAnswerMilliseconds,
                             &length))
        return {};
    std::wstring text(length + 1, L'\0');
    DWORD_PTR copied = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                        SMTO_NORMAL, kAnswerMilliseconds, &copied);
    text.resize(copied);
    return text;
}

RECT area(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return area;
}

POINT middle(HWND window) {
    const RECT place = area(window);
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
}

HWND windowWith(DWORD process, int childId) {
    return find(process, [=](HWND window) { return GetDlgItem(window, childId) != nullptr; });
}

HWND dialogNamed(DWORD process, const std::wstring& caption) {
    return find(process, [&](HWND window) {
        wchar_t name[16] = L"";
        GetClassNameW(window, name, 16);
        return name == std::wstring(L"#32770") && text(window) == caption;
    });
}

std::optional<RECT> Picture::extentOf(COLORREF color) const {
    const DWORD wanted = static_cast<DWORD>(GetRValue(color)) << 16 |
                         static_cast<DWORD>(GetGValue(color)) << 8 | GetBValue(color);
    std::optional<RECT> extent;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(x)] != wanted)
                continue;
            if (!extent) extent = RECT{x, y, x, y};
            extent->left = std::min<LONG>(extent->left, x);
            extent->right = std::max<LONG>(extent->right, x + 1);
            extent->bottom = y + 1;
        }
    }
    return extent;
}

Picture look(const RECT& screen) {
    Picture picture;
    picture.width = std::max<int>(0, screen.right - screen.left);
    picture.height = std::max<int>(0, screen.bottom - screen.top);
    const WindowDc desktop(nullptr);
    const MemoryDc memory(desktop.get(), picture.width, picture.height);
    BitBlt(memory.get(), 0, 0, picture.width, picture.height, desktop.get(), screen.left,
           screen.top, SRCCOPY | CAPTUREBLT);
    BITMAPINFO info = pixelFormat(picture.width, picture.height);
    picture.pixels.resize(static_cast<std::size_t>(picture.width) *
                          static_cast<std::size_t>(picture.height));
    GetDIBits(desktop.get(), memory.bitmap(), 0, static_cast<UINT>(picture.height),
              picture.pixels.data(), &info, DIB_RGB_COLORS);
    for (DWORD& pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture;
}

}  // namespace user
