// What is done to the geometry of nodes: polygons, centers, bounding volumes, units.
//
// All of it goes through the core's primitives; the caller opens the scope that makes it a step.
// Each mesh is looked at once, and nodes are found by walks, so that the time grows with the number
// of nodes and vertices. Everything here may throw `std::bad_alloc`.
#pragma once

#include <fltkilnutil/meshgeometry.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

class INode;
class Interface;

namespace fltkilnutil {

/// What came of it.
struct GeometryResult {
    std::uint32_t changed = 0;  ///< nodes
    /// Nodes with polygons that stay as they are, because they could not be given back as they are:
    /// meshes that another node outside shows too, mesh records and morphing faces, and where
    /// corners would change, faces with further texture layers.
    std::uint32_t passedOver = 0;
};

// The polygons of `tops` and all nodes below them.

/// Moves vertices that lie within `distance` (world units, at least 0) of each other to the place
/// of the first one, across all polygons, and makes corners of a polygon one that meet there. A
/// polygon that would lose its area keeps its corners.
GeometryResult weldVertices(Interface& host, std::span<INode* const> tops, double distance);
/// Makes the triangles polygons of their own.
GeometryResult triangulate(Interface& host, std::span<INode* const> tops);
/// Turns polygons over.
GeometryResult flipPolygons(Interface& host, std::span<INode* const> tops);
/// Takes polygons without area out, and nodes whose polygons all are: those without children that
/// are no state of a switch.
GeometryResult dropDegenerate(Interface& host, std::span<INode* const> tops);
/// Gives all vertices normals: at an angle of 0 degrees those of their polygon, otherwise the
/// average of the polygons that meet there and differ by at most that angle.
GeometryResult computeNormals(Interface& host, std::span<INode* const> tops, double degrees);

// Levels of detail, bounding volumes and units.

/// Puts the centers of `levels` into the middle of what they show. Levels below one node with one
/// center, which take each other's place, keep one center for all. Returns the number of nodes that
/// changed; levels that show no polygons stay.
std::uint32_t centerLevels(std::span<INode* const> levels);
/// The same for the levels among `tops` and all nodes below them whose centers are not frozen, and
/// fits the bounding volumes that are kept on nodes, unless they are frozen, to what the nodes
/// show. Boxes of turned nodes are boxes around their boxes.
GeometryResult fitBounds(std::span<INode* const> tops);

/// Changes the units of the database at `header` to `units` (a value of the header) without
/// changing its size: vertices, places, frames, ranges, planes, volumes. `refusal` says why it is
/// not done, in English, and is empty when it was; then nothing has changed. What is referred to,
/// pictures and palettes stay as they are.
GeometryResult changeUnits(Interface& host, INode& header, std::uint8_t units,
                           std::string& refusal);

/// Whether the node is a state of a switch: where nodes that a file does not have are passed over,
/// its parent is one.
bool isStateOfSwitch(INode& node);

/// Puts what is kept of the vertices of the node's mesh into the order in which they are now. What
/// does not fit the vertices before, of which the last of `order` need not be one, is left alone.
void takeCorners(INode& node, const VertexOrder& order);

}  // namespace fltkilnutil
