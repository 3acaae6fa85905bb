// The log with the script line below it.
#pragma once

#include "logview.h"

#include <framework/controls.h>

#include <functional>
#include <string>
#include <vector>

namespace workbench {

/// An edit field that keeps what was entered: Enter enters, up and down go through the history.
class HistoryEdit : public framework::CEdit {
public:
    std::function<void(const std::string&)> onEnter;

protected:
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnChar(UINT utf16, UINT repeat, UINT flags) override;
    UINT OnGetDlgCode(const MSG* message) override;

private:
    void showEntry(std::size_t position);

    std::vector<std::string> history_;
    std::size_t position_ = 0;
};

class ScriptPane : public framework::CWnd {
public:
    bool Create(HWND parent, UINT id);

    /// What to print, and of which kind; an empty text prints nothing.
    struct Answer {
        std::string text;
        LogLine kind = LogLine::kPlain;
    };
    /// `evaluate` gets each line that the user enters.
    void setEvaluator(std::function<Answer(const std::string&)> evaluate);
    /// Makes room for the field's label in the present language.
    void showLanguage();
    /// Adds a line to the log.
    void print(const std::string& line, LogLine kind = LogLine::kPlain) { log_.add(line, kind); }
    /// Empties the log.
    void clear() { log_.clear(); }
    /// The field where a script is typed.
    HWND line() const { return line_.Handle(); }
    /// Whether `window` is the field where a script is typed, or the log.
    bool owns(HWND window) const { return ::IsChild(Handle(), window) != 0; }

protected:
    void OnSize(UINT type, int width, int height) override;
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }

private:
    int lineHeight() const { return Scaled(22); }
    /// From the left edge to the field where a script is typed.
    int promptWidth() const;

    LogView log_;
    HistoryEdit line_;
};

}  // namespace workbench
