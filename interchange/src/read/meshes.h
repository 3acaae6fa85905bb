// Mesh nodes: many polygons over vertices of their own.
#pragma once

#include <interchange/fileindex.h>

#include <kiln/mesh.h>
#include <kiln/triangulator.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltmesh.h>

#include <vector>

namespace interchange {

/// The triangle as a face of a mesh over the vertices that it was cut from.
inline Face faceOf(const Triangle& triangle) {
    const auto& [a, b, c] = triangle.corner;
    const DWORD edges = (triangle.outline[0] ? EDGE_A : 0U) | (triangle.outline[1] ? EDGE_B : 0U) |
                        (triangle.outline[2] ? EDGE_C : 0U);
    return {{a, b, c}, edges};
}

/// Builds what mesh nodes show. One object serves many nodes.
class MeshReader {
public:
    /// Makes the triangles of the mesh node `source` into `mesh`, which is empty: strips, fans and
    /// polygons over its local vertex pool, with normals, colors and base texture coordinates
    /// where the pool has them. Color indices are those of `colors`. Primitives that name vertices
    /// which are not there are left out.
    void read(const FileIndex& file, const FileNode& source, const FltColorPalette& colors,
              Mesh& mesh);

private:
    void readPool(const FltColorPalette& colors, Mesh& mesh);
    void readPrimitive(Mesh& mesh);
    void addPolygon(Mesh& mesh);
    static void addTriangle(Mesh& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c,
                            std::uint32_t edges);

    std::vector<std::uint8_t> body_;  ///< of a record and what continues it
    FltLocalVertexPool pool_;
    FltMeshPrimitive primitive_;
    std::vector<Point3> corners_;
    Triangulator triangulator_;
};

}  // namespace interchange
