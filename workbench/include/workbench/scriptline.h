// The script line: runs what a user types, in the host's script language.
#pragma once

#include <kiln/interface.h>
#include <script/engine.h>

#include <functional>
#include <string>
#include <string_view>

namespace workbench {

/// What a line came to: what to print, which for a line that failed ends with `TextId::kLogError`
/// around a sentence that says what is wrong with it.
struct ScriptResult {
    bool ok = true;
    std::string text;
};

/// Runs lines such as
///
///     Aviary                             lists what the interface offers
///     Aviary.PutComment $tower "old"     calls a function
///     for o in objects collect o.name
///
/// Variables and functions stay for the next line. The result is what the line printed, then its
/// value; lines end with "\r\n". A line that is empty or a comment prints nothing.
class ScriptLine {
public:
    explicit ScriptLine(Interface& host);

    /// Never throws for what the line says.
    ScriptResult evaluate(std::string_view line);

    /// Runs a script file, which may take as long as it takes. Its value is not shown; what is
    /// wrong is said with file, line and column. Never throws for what the file says.
    ScriptResult runFile(const std::string& path);

    /// Where each line goes as soon as it is printed, instead of into the result.
    void setPrinter(std::function<void(const std::string& line)> printer);

    /// Asked every few steps; true ends the script. Without it a line that would never end stops
    /// after some seconds.
    void setStop(std::function<bool()> stop);

    /// For more verbs.
    script::Engine& engine() noexcept { return engine_; }

private:
    template <typename Run>
    ScriptResult ran(Run run);
    /// Adds a line to the result.
    void show(std::string_view text);
    void printed(std::string_view line);

    script::Engine engine_;
    std::function<void(const std::string& line)> printer_;
    std::string shown_;
    bool hasPrinted_ = false;
};

}  // namespace workbench
