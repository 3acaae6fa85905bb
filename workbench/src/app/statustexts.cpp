#include "statustexts.h"

#include "wording.h"

namespace workbench {

void StatusTexts::setPrompt(const char* text) {
    prompt_ = text ? text : "";
    bar_.setText(StatusBar::kMessage, prompt_);
}

void StatusTexts::showHovered(const INode* node) {
    bar_.setText(StatusBar::kMessage, node ? node->GetName() : prompt_);
}

void StatusTexts::refresh(const render::SceneCounts& counts, std::size_t missing) {
    bar_.setText(
        StatusBar::kMissing,
        missing == 0 ? std::string() : counted(missing, TextId::kOneMissing, TextId::kMissing));
    std::string nodes =
        counted(static_cast<std::size_t>(counts.nodes), TextId::kOneNode, TextId::kNodes);
    if (counts.hidden > 0)
        nodes =
            textOf(TextId::kNodesHidden, {nodes, grouped(static_cast<std::size_t>(counts.hidden))});
    bar_.setText(StatusBar::kNodes, nodes);
    bar_.setText(StatusBar::kFaces, counted(counts.faces, TextId::kOneFace, TextId::kFaces));
    bar_.setText(StatusBar::kSelection, selection());
    bar_.setText(StatusBar::kTime, textOf(TextId::kTime, {std::to_string(host_.GetTime())}));
}

std::string StatusTexts::selection() const {
    const int selected = host_.GetSelNodeCount();
    if (selected == 0) return textOf(TextId::kNothingSelected);
    if (selected == 1) return textOf(TextId::kOneSelected, {host_.GetSelNode(0)->GetName()});
    return textOf(TextId::kSelected, {grouped(static_cast<std::size_t>(selected))});
}

}  // namespace workbench
