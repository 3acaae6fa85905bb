// The script line: runs what a user types, in the host's script language.
#pragma once

#include <kiln/interface.h>
#include <script/engine.h>

#include <string>
#include <string_view>

namespace workbench {

/// What a line came to: what to print, or a sentence that says what is wrong with it.
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

    /// For more verbs.
    script::Engine& engine() noexcept { return engine_; }

private:
    /// Adds a line to what is shown.
    void show(std::string_view text);

    script::Engine engine_;
    std::string printed_;
};

}  // namespace workbench
