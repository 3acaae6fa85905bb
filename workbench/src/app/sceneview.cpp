#include "sceneview.h"

namespace workbench {

const render::SceneModel& SceneView::sceneToDraw() {
    const render::SceneModel& model = scene_.model();
    client_.sceneDrawn(scene_.takeFailures());
    return model;
}

void SceneView::onPick(render::ItemIndex item, bool add) {
    INode* node = scene_.nodeOf(item);
    if (node && add && node->Selected())
        host_.DeSelectNode(node);
    else if (node)
        host_.SelectNode(node, !add);
    else if (!add)
        host_.ClearNodeSelection();
}

void SceneView::onHover(render::ItemIndex item) {
    client_.nodeHovered(scene_.nodeOf(item));
}

bool SceneView::selectTallest() {
    const auto items = sceneToDraw().items();
    render::ItemIndex tallest = render::kNoItem;
    double most = -1;
    for (render::ItemIndex i = 0; i < items.size(); ++i) {
        const double height = items[i].box.max.z - items[i].box.min.z;
        if (items[i].triangleCount > 0 && height > most) {
            most = height;
            tallest = i;
        }
    }
    if (tallest == render::kNoItem) return false;
    onPick(tallest, false);
    return host_.GetSelNodeCount() == 1;
}

}  // namespace workbench
