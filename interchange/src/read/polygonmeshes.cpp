#include "polygonmeshes.h"

#include "../colors.h"
#include "../vertices.h"
#include "meshes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
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

/// For the few bytes that these are, quicker than a call.
bool areEqual(const std::uint8_t* a, const std::uint8_t* b, std::size_t size) noexcept {
    std::uint32_t difference = 0;
    for (; size >= 4; size -= 4, a += 4, b += 4) {
        std::uint32_t wordOfA = 0, wordOfB = 0;
        std::memcpy(&wordOfA, a, 4);
        std::memcpy(&wordOfB, b, 4);
        difference |= wordOfA ^ wordOfB;
    }
    for (std::size_t i = 0; i < size; ++i) difference |= a[i] ^ b[i];
    return difference == 0;
}

/// Whether vertices differ in nothing but position, normal and texture coordinates.
bool areAlike(std::span<const FltVertexView> vertices) noexcept {
    if (vertices.empty()) return true;
    const FileBytes first = vertices.front().bytes();
    const FltVertexView::Layout& layout = vertices.front().layout();
    const std::size_t tail = layout.packedColor.begin;
    const std::size_t end = std::min(first.size(), kLongestVertex);
    const std::size_t tailLength = end > tail ? end - tail : 0;
    for (const FltVertexView& vertex : vertices.subspan(1)) {
        const std::uint8_t* const bytes = vertex.bytes().data();
        // What stands before the position has the kind and the length, so that both tails are as
        // long.
        if (!areEqual(bytes, first.data(), layout.position.begin)) return false;
        if (!areEqual(bytes + tail, first.data() + tail, tailLength)) return false;
    }
    return true;
}

}  // namespace

void PolygonMeshes::makePolygon(const FileNode& face, Mesh& mesh) {
    takeVertices(face);
    addVertices(mesh, {});
    cutIntoTriangles(mesh);
}

void PolygonMeshes::makePoints(const FileNode& points, Mesh& mesh) {
    takeVertices(points);
    std::erase_if(vertices_, [](const FltVertexView& vertex) { return !isFinite(vertex); });
    Features always;
    always.colors = true;
    addVertices(mesh, always);
}

void PolygonMeshes::takeVertices(const FileNode& node) {
    vertices_.clear();
    for (const std::uint32_t offset : file_.cornersOf(node)) {
        vertices_.emplace_back(file_.recordAt(offset));
    }
}

/// Adds the vertices with what at least one of them has, and what `features` says.
void PolygonMeshes::addVertices(Mesh& mesh, Features features) {
    const bool alike = areAlike(vertices_);
    const auto different =
        std::span(vertices_).first(alike && !vertices_.empty() ? 1 : vertices_.size());
    records_.clear();
    for (const FltVertexView& vertex : different) {
        records_.push_back(vertex.bytes());
        features.normals = features.normals || vertex.hasNormal();
        features.textures = features.textures || vertex.hasTexture();
        features.colors = features.colors || vertexColor(vertex, colors_).has_value();
    }
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
    std::ranges::transform(vertices_, list.begin(), part);
}

void PolygonMeshes::cutIntoTriangles(Mesh& mesh) {
    const auto count = static_cast<std::size_t>(mesh.verts.Count());
    const std::span<const Triangle> triangles =
        triangulator_.cut(std::span(std::as_const(mesh).verts.Addr(0), count));
    if (triangles.empty()) {
        mesh.Clear();
        records_.clear();
        return;
    }
    mesh.faces.SetCount(static_cast<int>(triangles.size()));
    std::ranges::transform(triangles, mesh.faces.begin(), faceOf);
    if (mesh.tVerts.IsEmpty()) return;
    mesh.tvFaces.SetCount(static_cast<int>(triangles.size()));
    std::ranges::transform(triangles, mesh.tvFaces.begin(), [](const Triangle& triangle) {
        const auto& [a, b, c] = triangle.corner;
        return TVFace{{a, b, c}};
    });
}

}  // namespace interchange
