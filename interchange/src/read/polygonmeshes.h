// The meshes of faces and light points.
#pragma once

#include <interchange/fileindex.h>

#include <kiln/mesh.h>
#include <kiln/triangulator.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltvertexview.h>

#include <span>
#include <vector>

namespace interchange {

/// Builds meshes of the vertices that faces and light points list. One object serves many nodes.
class PolygonMeshes {
public:
    /// Color indices are those of `colors`.
    PolygonMeshes(const FileIndex& file, const FltColorPalette& colors)
        : file_(file), colors_(colors) {}

    /// Makes the polygon of a face, cut into triangles, into `mesh`, which is empty. A polygon
    /// without area has no triangles, and then no vertices either: nothing could show them.
    void makePolygon(const FileNode& face, Mesh& mesh);
    /// Makes the points of light points into `mesh`, which is empty: vertices with their colors
    /// and without triangles. Points that are nowhere are left out.
    void makePoints(const FileNode& points, Mesh& mesh);

    /// The vertex records of the mesh made last, or one that stands for all where they are alike.
    /// Valid until the next mesh.
    std::span<const FileBytes> vertices() const noexcept { return records_; }

private:
    /// What at least one vertex of a mesh has beside its position.
    struct Features {
        bool normals = false;
        bool textures = false;
        bool colors = false;
    };

    void takeVertices(const FileNode& node);
    void addVertices(Mesh& mesh, Features features);
    template <typename T, typename Part>
    void addToAll(Tab<T>& list, Part&& part) const;
    void cutIntoTriangles(Mesh& mesh);

    const FileIndex& file_;
    const FltColorPalette& colors_;
    std::vector<FltVertexView> vertices_;
    std::vector<FileBytes> records_;  ///< of all vertices, or of one that stands for all
    Triangulator triangulator_;
};

}  // namespace interchange
