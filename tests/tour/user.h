// A user at the screen: sees windows of other programs, moves the mouse, presses keys and waits for
// what comes of it.
#pragma once

#include <framework/win32.h>

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace user {

/// Waits until the condition holds, as long as a patient user would; false when it never does.
/// Nothing here waits for a fixed time, since nobody knows how busy the machine is.
bool eventually(const std::function<bool()>& condition, int seconds = 40);

/// The user cannot go on: throws what was waited for unless `holds`.
void must(bool holds, const std::string& what);
void mustCome(const std::function<bool()>& condition, const std::string& what);

/// A program in a process of its own, which goes with this object.
class Program {
public:
    explicit Program(std::wstring commandLine);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    DWORD id() const { return process_.dwProcessId; }
    /// Whether it ends by itself, and well.
    bool ends() const;
    /// Its window of a class, once that can be seen; else null.
    HWND window(const wchar_t* className) const;
    /// The window with the keyboard in the thread of one of its windows.
    static HWND focusBeside(HWND window);

private:
    PROCESS_INFORMATION process_{};
};

// Input. It goes where the platform sends it: keys to the foreground window, the mouse to what lies
// under it.
void key(WORD virtualKey, std::initializer_list<WORD> modifiers = {});
void type(std::wstring_view text);
/// Clicks a point of the screen once the pointer is there; false when it does not get there.
bool click(POINT screen, int count = 1);
/// Clicks the middle of a window once it lies there for the mouse; false when it never does.
bool click(HWND window);
/// Presses at one point of the screen, moves and releases at the other.
bool drag(POINT from, POINT to);

// Windows.
std::wstring text(HWND window);
RECT area(HWND window);
POINT middle(HWND window);
/// The visible top-level window of the process that has a child with that number, or null.
HWND windowWith(DWORD process, int childId);
/// The visible top-level dialog of the process with that caption, or null.
HWND dialogNamed(DWORD process, const std::wstring& caption);

/// What is on the screen in a rectangle, 0x00RRGGBB by rows from the top.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<DWORD> pixels;

    friend bool operator==(const Picture&, const Picture&) = default;
    /// The rectangle around all pixels of a color; none when there are none.
    std::optional<RECT> extentOf(COLORREF color) const;
};
Picture look(const RECT& screen);

}  // namespace user
