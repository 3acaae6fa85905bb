#include <checks/geometryfunctions.h>

#include <checks/geometry.h>
#include <kiln/fptable.h>
#include <kiln/kiln.h>
#include <kiln/selection.h>
#include <quillon/fltunits.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace checks {

namespace {

constexpr Interface_ID kGeometryId(0x51D8A2C4, 0x7B30E61D);

Interface& host() {
    Interface* const core = GetCOREInterface();
    if (core == nullptr) throw std::runtime_error("there is no scene");
    return *core;
}

/// The node that is given, or those that are selected.
std::vector<INode*> topsOf(const FPValue& node) {
    if (node.type == TYPE_INODE) {
        if (node.n == nullptr) throw std::runtime_error("there is no such node");
        return {node.n};
    }
    std::vector<INode*> tops = SelectedNodes(host());
    if (tops.empty()) throw std::runtime_error("no node is selected");
    return tops;
}

void loadOutcome(FPValue& result, const GeometryOutcome& outcome) {
    result.SetInt(static_cast<int>(std::min<std::uint32_t>(outcome.changed, 0x7FFFFFFF)));
}

/// What is refused is told the script.
template <typename Action>
void told(Action&& action) {
    try {
        action();
    } catch (const std::invalid_argument& refusal) {
        throw std::runtime_error(refusal.what());
    }
}

template <GeometryAction action>
void onNodes(const FPParams& params, FPValue& result) {
    loadOutcome(result, carryOut(host(), action, topsOf(params[0])));
}

template <GeometryAction action>
void withValue(const FPParams& params, FPValue& result) {
    told([&] { loadOutcome(result, carryOut(host(), action, topsOf(params[1]), params[0].d)); });
}

void units(const FPParams& params, FPValue& result) {
    const std::string name = params[0].s != nullptr ? params[0].s : "";
    const auto* const wanted =
        std::ranges::find_if(kFltUnits, [&](const FltUnits& one) { return name == one.name; });
    if (wanted == std::end(kFltUnits))
        throw std::runtime_error('"' + name +
                                 "\" is none of metres, kilometres, feet, inches and nautical "
                                 "miles");
    INode* const node = params[1].type == TYPE_INODE ? params[1].n : nullptr;
    told(
        [&] { loadOutcome(result, changeUnits(host(), databaseOf(host(), node), wanted->value)); });
}

constexpr FPParamDesc kNode{"node", TYPE_INODE, 0, FP_OPTIONAL};

constexpr FPTableRow kRows[] = {
    {0, "weld", TYPE_INT, withValue<GeometryAction::kWeld>, {{"distance", TYPE_DOUBLE}, kNode}},
    {1, "triangulate", TYPE_INT, onNodes<GeometryAction::kTriangulate>, {kNode}},
    {2, "flip", TYPE_INT, onNodes<GeometryAction::kFlip>, {kNode}},
    {3, "dropDegenerate", TYPE_INT, onNodes<GeometryAction::kDropDegenerate>, {kNode}},
    {4, "normals", TYPE_INT, withValue<GeometryAction::kNormals>, {{"angle", TYPE_DOUBLE}, kNode}},
    {5, "fitBounds", TYPE_INT, onNodes<GeometryAction::kFitBounds>, {kNode}},
    {6, "changeUnits", TYPE_INT, units, {{"units", TYPE_STRING}, kNode}},
};

// Published when the module is loaded.
FPTableInterface theGeometryFunctions(kGeometryId, "FltGeometry", FP_CORE, kRows);

}  // namespace

FPStaticInterface& geometryFunctions() {
    return theGeometryFunctions;
}

}  // namespace checks
