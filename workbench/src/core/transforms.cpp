#include <workbench/transforms.h>

#include <cmath>
#include <numbers>

namespace workbench {
namespace {

Matrix3 placedAt(Matrix3 matrix, const Point3& place) {
    matrix.SetRow(3, place);
    return matrix;
}

bool isCarried(const INode* node) {
    for (const INode* above = node->GetParentNode(); above; above = above->GetParentNode())
        if (above->Selected()) return true;
    return false;
}

}  // namespace

std::vector<INode*> movedNodes(Interface& host) {
    std::vector<INode*> nodes;
    for (int i = 0; i < host.GetSelNodeCount(); ++i)
        if (INode* const node = host.GetSelNode(i); !isCarried(node)) nodes.push_back(node);
    return nodes;
}

std::optional<Point3> selectedPlace(Interface& host) {
    const std::vector<INode*> nodes = movedNodes(host);
    if (nodes.empty()) return std::nullopt;
    return nodes.front()->GetNodeTM(host.GetTime()).GetTrans();
}

void moveSelectedTo(Interface& host, const Point3& place) {
    if (const auto now = selectedPlace(host)) moveSelected(host, place - *now);
}

void moveSelected(Interface& host, const Point3& offset) {
    const TimeValue time = host.GetTime();
    for (INode* const node : movedNodes(host))
        node->SetNodeTM(time, node->GetNodeTM(time) * TransMatrix(offset));
}

void rotateSelected(Interface& host, const Point3& degrees) {
    constexpr double kRadians = std::numbers::pi / 180;
    const Matrix3 turn = RotAngleAxisMatrix({1, 0, 0}, degrees.x * kRadians) *
                         RotAngleAxisMatrix({0, 1, 0}, degrees.y * kRadians) *
                         RotAngleAxisMatrix({0, 0, 1}, degrees.z * kRadians);
    const TimeValue time = host.GetTime();
    for (INode* const node : movedNodes(host)) {
        const Matrix3 world = node->GetNodeTM(time);
        node->SetNodeTM(time, placedAt(placedAt(world, {}) * turn, world.GetTrans()));
    }
}

void scaleSelected(Interface& host, const Point3& factors) {
    const TimeValue time = host.GetTime();
    for (INode* const node : movedNodes(host))
        node->SetNodeTM(time, ScaleMatrix(factors) * node->GetNodeTM(time));
}

Point3 onGrid(const Point3& point, double step) {
    if (!(step > 0)) return point;
    const auto snapped = [step](double value) { return std::round(value / step) * step; };
    return {snapped(point.x), snapped(point.y), snapped(point.z)};
}

}  // namespace workbench
