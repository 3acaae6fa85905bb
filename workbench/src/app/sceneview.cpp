#include "sceneview.h"

#include <kiln/nodelook.h>
#include <workbench/texts.h>

namespace workbench {

const render::SceneModel& SceneView::sceneToDraw() {
    const render::SceneModel& model = scene_.model();
    client_.sceneDrawn(scene_.takeFailures());
    return model;
}

INode* SceneView::wholeOf(INode* node) const {
    NodeLookSource* const source = picksWholes_ ? GetNodeLookSource() : nullptr;
    return source ? source->GetWhole(node) : node;
}

// A piece of what is in hand is the piece; with another selection it stands for the whole.
INode* SceneView::meantBy(INode* node, bool add) const {
    INode* const whole = wholeOf(node);
    if (whole == node || host_.GetSelNodeCount() == 0) return whole;
    INode* const inHand = host_.GetSelNode(0);
    const bool within = wholeOf(inHand) == whole;
    return within && (!add || inHand != whole) ? node : whole;
}

void SceneView::onPick(render::ItemIndex item, bool add) {
    INode* node = scene_.nodeOf(item);
    if (node) node = meantBy(node, add);
    if (node && add && node->Selected())
        host_.DeSelectNode(node);
    else if (node)
        host_.SelectNode(node, !add);
    else if (!add)
        host_.ClearNodeSelection();
}

void SceneView::onPickMany(std::span<const render::ItemIndex> items, bool add) {
    std::vector<INode*> nodes;
    nodes.reserve(items.size());
    for (const render::ItemIndex item : items)
        if (INode* const node = scene_.nodeOf(item)) nodes.push_back(wholeOf(node));
    if (!add) host_.ClearNodeSelection();
    for (INode* const node : nodes) host_.SelectNode(node, false);
}

void SceneView::onPickNothing() {
    host_.ClearNodeSelection();
}

// What the menu is about is what is selected: the node under the mouse becomes that, unless it is.
void SceneView::onMenu(render::ItemIndex item, POINT screen) {
    INode* const node = scene_.nodeOf(item);
    if (node && !node->Selected() && !wholeOf(node)->Selected()) onPick(item, false);
    client_.viewMenuWanted(screen);
}

void SceneView::onHover(render::ItemIndex item) {
    client_.nodeHovered(scene_.nodeOf(item));
}

// In the middle of what is seen of the selection: a node's own place may be far from it.
std::optional<Matrix3> SceneView::handleFrame(HandleMode mode) {
    INode* const node = firstMovedNode(host_);
    if (!node) return std::nullopt;
    const Matrix3 world = node->GetNodeTM(host_.GetTime());
    const render::Box box = scene_.model().selectedBox();
    const render::Vec3d centre = box.centre();
    const Point3 place = box.empty() ? world.GetTrans() : Point3{centre.x, centre.y, centre.z};
    return mode == HandleMode::kScale ? axesAt(world, place) : TransMatrix(place);
}

void SceneView::onHandleTaken(HandleMode mode) {
    const TextId name = mode == HandleMode::kMove     ? TextId::kStepMove
                        : mode == HandleMode::kRotate ? TextId::kStepRotate
                                                      : TextId::kStepScale;
    drag_.emplace(host_, textOf(name));
    dragStart_ = selectedPlace(host_).value_or(Point3{});
}

HandleGrid SceneView::handleGrid(bool otherWay) {
    return {snap_.isOn != otherWay ? snap_.step : 0, dragStart_};
}

void SceneView::onHandleDrag(const Matrix3& change) {
    if (drag_) drag_->show(change);
}

void SceneView::onHandleLeft(bool keep) {
    if (drag_ && keep) drag_->keep();
    drag_.reset();
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
