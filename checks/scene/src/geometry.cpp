#include <checks/geometry.h>

#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/scenegeometry.h>
#include <kiln/kiln.h>

#include <cmath>
#include <stdexcept>

namespace checks {

namespace {

using fltkilnutil::Action;
using fltkilnutil::GeometryResult;

Action nameOf(GeometryAction action) {
    switch (action) {
        case GeometryAction::kWeld:
            return Action::kWeld;
        case GeometryAction::kTriangulate:
            return Action::kTriangulate;
        case GeometryAction::kFlip:
            return Action::kFlip;
        case GeometryAction::kDropDegenerate:
            return Action::kDropDegenerate;
        case GeometryAction::kNormals:
            return Action::kComputeNormals;
        case GeometryAction::kFitBounds:
            break;
    }
    return Action::kFitBounds;
}

GeometryResult run(Interface& host, GeometryAction action, std::span<INode* const> tops,
                   double value) {
    switch (action) {
        case GeometryAction::kWeld:
            return fltkilnutil::weldVertices(host, tops, value);
        case GeometryAction::kTriangulate:
            return fltkilnutil::triangulate(host, tops);
        case GeometryAction::kFlip:
            return fltkilnutil::flipPolygons(host, tops);
        case GeometryAction::kDropDegenerate:
            return fltkilnutil::dropDegenerate(host, tops);
        case GeometryAction::kNormals:
            return fltkilnutil::computeNormals(host, tops, value);
        case GeometryAction::kFitBounds:
            break;
    }
    return fltkilnutil::fitBounds(tops);
}

bool isDatabase(INode& node) {
    FltNodeKind kind{};
    return fltGetKind(&node, false, kind) && kind == FltNodeKind::Header;
}

}  // namespace

GeometryOutcome carryOut(Interface& host, GeometryAction action, std::span<INode* const> tops,
                         double value) {
    if (action == GeometryAction::kWeld && !(value >= 0 && std::isfinite(value)))
        throw std::invalid_argument("the distance must be a number from 0 on");
    if (action == GeometryAction::kNormals && !(value >= 0 && value <= 180))
        throw std::invalid_argument("the angle must be from 0 to 180 degrees");
    fltkilnutil::ActionScope scope(nameOf(action));
    const GeometryResult result = run(host, action, tops, value);
    scope.Commit();
    return {result.changed, result.passedOver};
}

GeometryOutcome changeUnits(Interface& host, INode* header, std::uint8_t units) {
    if (header == nullptr) throw std::invalid_argument("there is no database, or more than one");
    fltkilnutil::ActionScope scope(Action::kChangeUnits);
    std::string refusal;
    const GeometryResult result = fltkilnutil::changeUnits(host, *header, units, refusal);
    if (!refusal.empty()) throw std::invalid_argument(refusal);
    scope.Commit();
    return {result.changed, result.passedOver};
}

INode* databaseOf(Interface& host, INode* node) {
    for (; node != nullptr; node = node->GetParentNode())
        if (isDatabase(*node)) return node;
    INode* only = nullptr;
    bool isOnly = true;
    ForEachInSubtree(host.GetRootNode(), [&](INode& other) {
        if (!isDatabase(other)) return WalkStep::kOn;
        isOnly = only == nullptr;
        only = &other;
        return isOnly ? WalkStep::kPastThis : WalkStep::kEnd;
    });
    return isOnly ? only : nullptr;
}

}  // namespace checks
