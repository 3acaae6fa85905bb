#include <workbench/scriptline.h>

namespace workbench {

namespace {

// The user waits for the line; one that would never end gives up after some seconds.
constexpr std::uint64_t kMaxSteps = 10'000'000;

std::string forDisplay(const std::string& text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\n') lines += '\r';
        lines += c;
    }
    return lines;
}

std::string explained(const script::Error& error) {
    const script::Position at = error.position();
    const std::string line =
        at.line > 1 ? "Line " + std::to_string(at.line) + ", column " : "Column ";
    return line + std::to_string(at.column) + ": " + error.message();
}

}  // namespace

ScriptLine::ScriptLine(Interface&) {
    script::addHostVerbs(engine_);
    script::Limits limits;
    limits.steps = kMaxSteps;
    engine_.setLimits(limits);
    engine_.setOutput([this](std::string_view line) { show(line); });
}

void ScriptLine::show(std::string_view text) {
    if (!printed_.empty()) printed_ += '\n';
    printed_ += text;
}

ScriptResult ScriptLine::evaluate(std::string_view line) {
    printed_.clear();
    try {
        const script::Value value = engine_.run(line, "script line");
        const bool says = !value.isUndefined() && (printed_.empty() || !value.as<script::Done>());
        if (says) show(value.printed());
        return {true, forDisplay(printed_)};
    } catch (const script::Error& error) {
        show(explained(error));
        return {false, forDisplay(printed_)};
    }
}

}  // namespace workbench
