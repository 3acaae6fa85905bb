#include <workbench/transforms.h>

#include <cmath>
#include <numbers>
#include <utility>

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

INode* firstMovedNode(Interface& host) {
    for (int i = 0; i < host.GetSelNodeCount(); ++i)
        if (INode* const node = host.GetSelNode(i); !isCarried(node)) return node;
    return nullptr;
}

std::optional<Point3> selectedPlace(Interface& host) {
    INode* const node = firstMovedNode(host);
    if (!node) return std::nullopt;
    return node->GetNodeTM(host.GetTime()).GetTrans();
}

Matrix3 axesAt(const Matrix3& world, const Point3& place) {
    constexpr double kAskew = 1e-6;
    Matrix3 axes;
    for (int i = 0; i < 3; ++i) axes.SetRow(i, Normalize(world.GetRow(i)));
    for (int i = 0; i < 3; ++i) {
        const Point3 &a = axes.GetRow(i), &b = axes.GetRow((i + 1) % 3);
        if (!(Length(a) > 0.5) || !(std::abs(DotProd(a, b)) < kAskew)) return TransMatrix(place);
    }
    return placedAt(axes, place);
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

TransformDrag::TransformDrag(Interface& host, std::string step)
    : host_(host), step_(std::move(step)) {
    for (INode* const node : movedNodes(host))
        held_.push_back({node->GetHandle(), node->GetNodeTM(host.GetTime())});
}

void TransformDrag::show(const Matrix3& change) {
    scope_.reset();  // takes back what was shown
    if (change.IsIdentity()) return;
    scope_.emplace(step_.c_str());
    for (const Held& held : held_)
        if (INode* const node = host_.GetINodeByHandle(held.node))
            node->SetNodeTM(host_.GetTime(), held.start * change);
}

void TransformDrag::keep() {
    if (scope_) scope_->Commit();
    scope_.reset();
}

}  // namespace workbench
