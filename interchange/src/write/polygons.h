// The polygons of a mesh.
#pragma once

#include <kiln/triangulator.h>

#include <cstdint>
#include <span>
#include <vector>

struct Mesh;

namespace interchange {

/// Puts the triangles of meshes together again to the polygons that they were cut from. One object
/// serves many meshes.
class MeshPolygons {
public:
    /// Finds the polygons of `mesh`, whose indices must be in range. Triangles belong together
    /// where an edge between them is no outline edge, and they lie in one plane; with
    /// `keepTriangles` each is a polygon of its own. What does not make up one simple outline stays
    /// triangles too. A mesh without triangles has none.
    void find(const Mesh& mesh, bool keepTriangles);

    /// The polygons found: for each, the vertices around it and, in the same order, their texture
    /// coordinates (empty when the mesh has none).
    std::size_t count() const noexcept { return ends_.size(); }
    std::span<const std::uint32_t> corners(std::size_t polygon) const noexcept;
    std::span<const std::uint32_t> textures(std::size_t polygon) const noexcept;

private:
    bool isWholePolygon(const Mesh& mesh);
    void groupTriangles(const Mesh& mesh);
    std::uint32_t groupOf(std::uint32_t face);
    bool appendOutline(const Mesh& mesh, std::span<const std::uint32_t> faces);
    void appendTriangle(const Mesh& mesh, std::uint32_t face);
    std::span<const std::uint32_t> part(const std::vector<std::uint32_t>& all,
                                        std::size_t polygon) const noexcept;

    std::vector<std::uint32_t> corners_;
    std::vector<std::uint32_t> textures_;
    std::vector<std::uint32_t> ends_;   ///< of the polygons in `corners_`
    std::vector<std::uint32_t> group_;  ///< by face: another of its group, or itself
    Triangulator triangulator_;
};

}  // namespace interchange
