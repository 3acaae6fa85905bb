#include <base/text.h>
#include <workbench/historytexts.h>
#include <workbench/texts.h>

namespace workbench {

namespace {

constexpr std::size_t kLongestInMenu = 80;  // bytes; names of imported files may be long

/// In a menu a single "&" marks a key.
std::string forMenu(std::string_view text) {
    std::string shown;
    for (const char c : base::clipUtf8(text, kLongestInMenu)) shown.append(c == '&' ? 2 : 1, c);
    return shown;
}

}  // namespace

std::string stepText(const kiln::History& history, std::size_t step) {
    const std::string name = history.stepName(step);
    return name.empty() ? textOf(TextId::kStepUnnamed) : name;
}

std::string undoEntry(const kiln::History& history) {
    const std::size_t done = history.doneCount();
    const std::string text = done > 0
                                 ? textOf(TextId::kUndoStep, {forMenu(stepText(history, done - 1))})
                                 : textOf(TextId::kUndo);
    return text + "\tCtrl+Z";
}

std::string redoEntry(const kiln::History& history) {
    const std::string text =
        history.canRedo()
            ? textOf(TextId::kRedoStep, {forMenu(stepText(history, history.doneCount()))})
            : textOf(TextId::kRedo);
    return text + "\tCtrl+Y";
}

}  // namespace workbench
