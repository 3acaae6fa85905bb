// Mesh nodes: many polygons over vertices of their own.
#pragma once

#include <interchange/outline.h>
#include <kiln/triangulator.h>

struct Mesh;

namespace interchange {

/// Builds what mesh nodes show. One object serves many nodes.
class MeshReader {
public:
    /// Makes the triangles of the mesh node `source` into `mesh`, which is empty: strips, fans and
    /// polygons over its local vertex pool, with normals, colours and base texture coordinates
    /// where the pool has them. Colour indices are those of `colorPalette`, a record or empty.
    /// Primitives that name vertices which are not there are left out.
    void read(FileBytes bytes, const Outline& outline, const OutlineNode& source,
              FileBytes colorPalette, Mesh& mesh);

private:
    void readPool(FileBytes pool, FileBytes colorPalette, Mesh& mesh);
    void readPrimitive(FileBytes primitive, Mesh& mesh);
    void addPolygon(Mesh& mesh);
    static void addTriangle(Mesh& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c,
                            std::uint32_t edges);

    std::vector<std::uint8_t> joined_;
    std::vector<std::uint32_t> indices_;
    std::vector<Point3> corners_;
    Triangulator triangulator_;
};

}  // namespace interchange
