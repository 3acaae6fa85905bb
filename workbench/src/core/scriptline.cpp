#include <workbench/scriptline.h>
#include <workbench/texts.h>

namespace workbench {

namespace {

// The user waits for the line; one that would never end is stopped after some seconds.
constexpr std::uint64_t kMaxSteps = 10'000'000;

/// Stands where scripts from files have their path.
std::string lineName() {
    return textOf(TextId::kScriptLineStep);
}

std::string forDisplay(const std::string& text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\n') lines += '\r';
        lines += c;
    }
    return lines;
}

/// The user sees the line, but not the file that a script comes from.
std::string explained(const script::Error& error) {
    if (error.file() != lineName()) return error.what();
    const script::Position at = error.position();
    const std::string column = std::to_string(at.column);
    return at.line > 1
               ? textOf(TextId::kLineAndColumn, {std::to_string(at.line), column, error.message()})
               : textOf(TextId::kColumn, {column, error.message()});
}

}  // namespace

ScriptLine::ScriptLine(Interface&) {
    script::addHostVerbs(engine_);
    script::Limits limits;
    limits.steps = kMaxSteps;
    engine_.setLimits(limits);
    engine_.setOutput([this](std::string_view line) { printed(line); });
}

void ScriptLine::show(std::string_view text) {
    if (!shown_.empty()) shown_ += '\n';
    shown_ += text;
}

void ScriptLine::printed(std::string_view line) {
    hasPrinted_ = true;
    if (printer_)
        printer_(forDisplay(std::string(line)));
    else
        show(line);
}

void ScriptLine::setPrinter(std::function<void(const std::string& line)> printer) {
    printer_ = std::move(printer);
}

void ScriptLine::setStop(std::function<bool()> stop) {
    script::Limits limits = engine_.limits();
    limits.steps = 0;
    engine_.setLimits(limits);
    engine_.setStop(std::move(stop));
}

template <typename Run>
ScriptResult ScriptLine::ran(Run run) {
    shown_.clear();
    hasPrinted_ = false;
    bool ok = false;
    try {
        run();
        ok = true;
    } catch (const script::Error& error) {
        show(textOf(TextId::kLogError, {explained(error)}));
    } catch (const script::Failure& failure) {
        show(textOf(TextId::kLogError, {failure.what()}));
    }
    return {ok, forDisplay(shown_)};
}

ScriptResult ScriptLine::evaluate(std::string_view line) {
    return ran([&] {
        const script::Value value = engine_.run(line, lineName());
        const bool says = !value.isUndefined() && (!hasPrinted_ || !value.as<script::Done>());
        if (says) show(value.printed());
    });
}

ScriptResult ScriptLine::runFile(const std::string& path) {
    return ran([&] { engine_.runFile(path); });
}

}  // namespace workbench
