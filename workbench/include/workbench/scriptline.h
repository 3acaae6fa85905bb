// The script line: one expression, evaluated through what plug-ins have published.
#pragma once

#include <kiln/fp.h>
#include <kiln/interface.h>

#include <string>
#include <string_view>

namespace workbench {

/// What a line came to: what to print, or a sentence that says what is wrong with it.
struct ScriptResult {
    bool ok = true;
    std::string text;
};

/// Evaluates lines such as
///
///     Aviary                             lists what the interface offers
///     Aviary.Browser                     calls a function, or reads a property
///     Aviary.PutComment $tower "old"     with arguments by position,
///     Aviary.HasData Node:$tower         or by keyword
///     Aviary.CreateGroup()
///     $'control tower'                   a node, by its name; $ alone is the first selected node
///     Aviary.HasData (Aviary.CreateGroup())
///
/// Values are integers, floats, "strings" (with \" \\ \n \t), true, false, undefined and nodes.
/// A line that is empty or a comment (from "--") prints nothing.
class ScriptLine {
public:
    explicit ScriptLine(Interface& host) : host_(host) {}

    /// Never throws for what the line says.
    ScriptResult evaluate(std::string_view line);

private:
    Interface& host_;
};

}  // namespace workbench
