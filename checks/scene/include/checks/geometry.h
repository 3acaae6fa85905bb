// The actions on geometry, each one step that can be undone.
#pragma once

#include <cstdint>
#include <span>
#include <string>

class INode;
class Interface;

namespace checks {

enum class GeometryAction { kWeld, kTriangulate, kFlip, kDropDegenerate, kNormals, kFitBounds };

struct GeometryOutcome {
    std::uint32_t changed = 0;     ///< nodes
    std::uint32_t passedOver = 0;  ///< nodes that it does not fit
};

/// Carries the action out on `tops` and all nodes below them. `value` is the distance to weld at,
/// in world units, or the angle up to which normals are smooth, in degrees; the others take none.
/// Throws `std::invalid_argument`, with nothing changed, for a value that is none, and
/// `std::bad_alloc`.
GeometryOutcome carryOut(Interface& host, GeometryAction action, std::span<INode* const> tops,
                         double value = 0);

/// Changes the units of the database at `header` (null for none) without changing its size. Throws
/// `std::invalid_argument`, with nothing changed and the reason in English, where it cannot be
/// done, and `std::bad_alloc`.
GeometryOutcome changeUnits(Interface& host, INode* header, std::uint8_t units);

/// The database that the node, which may be null, is or is in; the scene's only one where it is in
/// none. Null where there is none, or several.
INode* databaseOf(Interface& host, INode* node);

}  // namespace checks
