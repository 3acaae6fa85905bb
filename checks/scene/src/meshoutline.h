// Meshes that are one polygon.
#pragma once

struct Mesh;

namespace checks {

/// Whether the outline of the mesh passes its vertices in their order, as importers make the mesh
/// of a polygon. Vertices that lie where the one before or behind them does may be left out.
bool isOnePolygon(const Mesh& mesh);

}  // namespace checks
