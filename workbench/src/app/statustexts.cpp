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

void StatusTexts::refresh(const SceneCounts& counts) {
    std::string nodes = grouped(static_cast<std::size_t>(counts.nodes)) + " 个节点";
    if (counts.hidden > 0)
        nodes += "（隐藏 " + grouped(static_cast<std::size_t>(counts.hidden)) + "）";
    bar_.setText(StatusBar::kNodes, nodes);
    bar_.setText(StatusBar::kFaces, grouped(counts.faces) + " 个面");
    bar_.setText(StatusBar::kSelection, selection());
    bar_.setText(StatusBar::kTime, "时间 " + std::to_string(host_.GetTime()));
}

std::string StatusTexts::selection() const {
    const int selected = host_.GetSelNodeCount();
    if (selected == 0) return "未选择";
    if (selected == 1) return std::string("已选择：") + host_.GetSelNode(0)->GetName();
    return "已选择 " + grouped(static_cast<std::size_t>(selected)) + " 个节点";
}

}  // namespace workbench
