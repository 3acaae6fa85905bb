// What is done to the polygons of a mesh.
#pragma once

#include <kiln/mesh.h>

#include <cstdint>
#include <vector>

namespace fltkilnutil {

/// For each vertex that a mesh has become, the one that it was.
using VertexOrder = std::vector<std::uint32_t>;

/// Whether the outline of the mesh passes its vertices in their order, as importers make the mesh
/// of a polygon. Vertices that lie where the one before or behind them does may be left out.
bool isOnePolygon(const Mesh& mesh);

/// Whether the mesh has texture coordinates by vertex: the same corners as its faces have.
bool isTexturedByVertex(const Mesh& mesh);

/// Rebuilds what the mesh has by vertex (and texture coordinates, where they are so) after `order`,
/// without touching its faces. Indices must be in range.
void takeVertices(Mesh& mesh, const VertexOrder& order);

/// Cuts the polygon through all vertices anew. False, with nothing changed, for one without area.
bool recut(Mesh& mesh);

/// Takes the vertices out that no face has, and returns the order of those that stay. The mesh must
/// be consistent.
VertexOrder removeUnusedVertices(Mesh& mesh);

/// Makes each triangle a polygon of its own; false when they are already.
bool splitIntoTriangles(Mesh& mesh);

/// Turns all polygons over, normals included, and returns the order of the vertices. What is done
/// twice leads back.
VertexOrder flip(Mesh& mesh);

/// Takes the triangles out that have no area to speak of: less than a millionth of the square of
/// their longest edge, or coordinates that are not finite. Those of one polygon stay while it has
/// an area. False when there are none.
bool dropDegenerate(Mesh& mesh);

}  // namespace fltkilnutil
