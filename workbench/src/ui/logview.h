// The log: lines of text in colors, which the user can select and copy.
#pragma once

#include <framework/cwnd.h>

#include <string>
#include <string_view>

namespace workbench {

/// What a line of the log is about, which its color shows.
enum class LogLine { kPlain, kEntered, kWarning, kError };

class LogView : public framework::CWnd {
public:
    bool Create(HWND parent, UINT id);

    /// Adds a line, or several, at the end. It comes into view, unless the user has selected
    /// something.
    void add(std::string_view line, LogLine kind);
    /// Has the last line in view.
    void showEnd() const;
    void clear();
    void copy() const { Send(WM_COPY); }

protected:
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    UINT OnGetDlgCode(const MSG* message) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void showMenu(POINT screen);
    void selectAll() const;
    bool hasSelection() const;
    void addRun(const std::wstring& text, LogLine kind, bool chinese) const;
    void drop(int characters);

    int length_ = 0;  // about, in UTF-16 units
};

}  // namespace workbench
