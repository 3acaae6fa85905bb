#include "polygonmeshes.h"

#include "colors.h"
#include "meshes.h"
#include "vertices.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace interchange {

namespace {

Point3 positionOf(const FltVertexView& vertex) {
    const FltPoint3d position = vertex.position();
    return {position.x, position.y, position.z};
}

bool isFinite(const FltVertexView& vertex) {
    const FltPoint3d position = vertex.position();
    return std::isfinite(position.x) && std::isfinite(position.y) && std::isfinite(position.z);
}

Point3f normalOf(const FltVertexView& vertex) {
    if (!vertex.hasNormal()) return {};
    const FltPoint3f normal = vertex.normal();
    return {normal.x, normal.y, normal.z};
}

/// u and v; w is 0.
Point3f textureOf(const FltVertexView& vertex) {
    if (!vertex.hasTexture()) return {};
    const FltTextureCoordinates texture = vertex.texture();
    return {texture.u, texture.v, 0};
}

}  // namespace

void PolygonMeshes::makePolygon(const OutlineNode& face, Mesh& mesh) {
    takeVertices(face);
    areAlike_ = areAlike(vertices_);
    addVertices(mesh, features());
    cutIntoTriangles(mesh);
}

void PolygonMeshes::makePoints(const OutlineNode& points, Mesh& mesh) {
    takeVertices(points);
    std::erase_if(vertices_,
                  [](const FileBytes vertex) { return !isFinite(FltVertexView(vertex)); });
    areAlike_ = areAlike(vertices_);
    Features wanted = features();
    wanted.colors = true;
    addVertices(mesh, wanted);
}

void PolygonMeshes::takeVertices(const OutlineNode& node) {
    vertices_.clear();
    for (const std::uint32_t offset : outline_.cornersOf(node)) {
        vertices_.push_back(outline_.recordAt(offset).bytes());
    }
}

PolygonMeshes::Features PolygonMeshes::features() const {
    Features features;
    for (const FileBytes bytes : vertices()) {
        const FltVertexView vertex(bytes);
        features.normals = features.normals || vertex.hasNormal();
        features.textures = features.textures || vertex.hasTexture();
        features.colors = features.colors || vertexColor(vertex, colors_).has_value();
    }
    return features;
}

void PolygonMeshes::addVertices(Mesh& mesh, const Features& features) const {
    addToAll(mesh.verts, positionOf);
    if (features.normals) addToAll(mesh.normals, normalOf);
    if (features.textures) addToAll(mesh.tVerts, textureOf);
    if (features.colors) {
        addToAll(mesh.colors, [this](const FltVertexView& vertex) {
            return vertexColor(vertex, colors_).value_or(kVertexWhite);
        });
    }
}

/// Fills `list`, which is empty, with that part of each vertex.
template <typename T, typename Part>
void PolygonMeshes::addToAll(Tab<T>& list, Part&& part) const {
    list.SetCount(static_cast<int>(vertices_.size()));
    std::ranges::transform(vertices_, list.begin(),
                           [&](const FileBytes vertex) { return part(FltVertexView(vertex)); });
}

void PolygonMeshes::cutIntoTriangles(Mesh& mesh) {
    const auto count = static_cast<std::size_t>(mesh.verts.Count());
    const std::span<const Triangle> triangles =
        triangulator_.cut(std::span(std::as_const(mesh).verts.Addr(0), count));
    if (triangles.empty()) {
        mesh.Clear();
        vertices_.clear();
        return;
    }
    const auto faces = static_cast<int>(triangles.size());
    mesh.faces.Resize(faces);
    for (const Triangle& triangle : triangles) mesh.faces.Append(faceOf(triangle));
    if (mesh.tVerts.IsEmpty()) return;
    mesh.tvFaces.Resize(faces);
    for (const Triangle& triangle : triangles) {
        const auto& [a, b, c] = triangle.corner;
        mesh.tvFaces.Append(TVFace{{a, b, c}});
    }
}

}  // namespace interchange
