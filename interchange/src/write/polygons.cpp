#include "polygons.h"

#include <kiln/mesh.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace interchange {

namespace {

constexpr DWORD kEdgeFlags[] = {EDGE_A, EDGE_B, EDGE_C};

const Face& faceAt(const Mesh& mesh, std::uint32_t face) {
    return mesh.faces[static_cast<int>(face)];
}

bool isSameTriangle(const Triangle& triangle, const Face& face) {
    for (std::size_t i = 0; i < 3; ++i) {
        if (triangle.corner[i] != face.v[i]) return false;
        if (triangle.outline[i] != ((face.flags & kEdgeFlags[i]) != 0)) return false;
    }
    return true;
}

bool inOnePlane(const Mesh& mesh, std::uint32_t a, std::uint32_t b) {
    constexpr double kSameDirection = 0.9999;
    return DotProd(mesh.FaceNormal(static_cast<int>(a)), mesh.FaceNormal(static_cast<int>(b))) >
           kSameDirection;
}

/// An edge of an outline: where it leads from and to, with the texture coordinates at its start.
struct OutlineEdge {
    std::uint32_t to;
    std::uint32_t texture;
};

}  // namespace

void MeshPolygons::find(const Mesh& mesh, bool keepTriangles) {
    corners_.clear();
    textures_.clear();
    ends_.clear();
    if (mesh.faces.IsEmpty()) return;
    if (!keepTriangles && isWholePolygon(mesh)) return;
    const auto count = static_cast<std::uint32_t>(mesh.faces.Count());
    group_.resize(count);
    std::iota(group_.begin(), group_.end(), 0U);
    if (!keepTriangles) groupTriangles(mesh);
    std::map<std::uint32_t, std::vector<std::uint32_t>> members;
    for (std::uint32_t face = 0; face < count; ++face) members[groupOf(face)].push_back(face);
    for (const auto& [first, faces] : members) {
        if (faces.size() > 1 && appendOutline(mesh, faces)) continue;
        for (const std::uint32_t face : faces) appendTriangle(mesh, face);
    }
}

/// The usual case: the mesh is what the importer makes of one polygon.
bool MeshPolygons::isWholePolygon(const Mesh& mesh) {
    const auto count = static_cast<std::size_t>(mesh.verts.Count());
    const std::span<const Triangle> triangles =
        triangulator_.cut(std::span(mesh.verts.Addr(0), count));
    if (triangles.size() != static_cast<std::size_t>(mesh.faces.Count())) return false;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        const auto at = static_cast<int>(i);
        if (!isSameTriangle(triangles[i], mesh.faces[at])) return false;
        if (!mesh.tvFaces.IsEmpty() && !std::ranges::equal(mesh.tvFaces[at].t, mesh.faces[at].v)) {
            return false;
        }
    }
    if (!mesh.tvFaces.IsEmpty() && mesh.tVerts.Count() != mesh.verts.Count()) return false;
    corners_.resize(count);
    std::iota(corners_.begin(), corners_.end(), 0U);
    if (!mesh.tvFaces.IsEmpty()) textures_ = corners_;
    ends_.push_back(static_cast<std::uint32_t>(count));
    return true;
}

/// Joins the groups on both sides of each edge that is inside a polygon.
void MeshPolygons::groupTriangles(const Mesh& mesh) {
    std::unordered_map<std::uint64_t, std::uint32_t> inner;  // by start and end vertex: its face
    const auto key = [](std::uint32_t from, std::uint32_t to) {
        return std::uint64_t{from} << 32 | to;
    };
    for (std::uint32_t face = 0; face < group_.size(); ++face) {
        const Face& triangle = faceAt(mesh, face);
        for (std::size_t i = 0; i < 3; ++i) {
            if (triangle.flags & kEdgeFlags[i]) continue;
            const std::uint32_t from = triangle.v[i], to = triangle.v[(i + 1) % 3];
            inner.emplace(key(from, to), face);
            const auto mate = inner.find(key(to, from));
            if (mate == inner.end() || !inOnePlane(mesh, face, mate->second)) continue;
            const std::uint32_t a = groupOf(face), b = groupOf(mate->second);
            group_[std::max(a, b)] = std::min(a, b);
        }
    }
}

std::uint32_t MeshPolygons::groupOf(std::uint32_t face) {
    while (group_[face] != face) {
        group_[face] = group_[group_[face]];
        face = group_[face];
    }
    return face;
}

/// The outline around `faces`, as long as it is one that passes no vertex twice.
bool MeshPolygons::appendOutline(const Mesh& mesh, std::span<const std::uint32_t> faces) {
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> edges;  // with start's texture
    std::map<std::uint32_t, std::uint32_t> textureOf;
    for (const std::uint32_t face : faces) {
        const Face& triangle = faceAt(mesh, face);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::uint32_t from = triangle.v[i], to = triangle.v[(i + 1) % 3];
            const std::uint32_t texture =
                mesh.tvFaces.IsEmpty() ? 0 : mesh.tvFaces[static_cast<int>(face)].t[i];
            if (textureOf.emplace(from, texture).first->second != texture) return false;
            if (edges.erase({to, from}) == 0) edges.insert({{from, to}, texture});
        }
    }
    std::map<std::uint32_t, OutlineEdge> next;
    for (const auto& [edge, texture] : edges) {
        if (!next.insert({edge.first, {edge.second, texture}}).second) return false;
    }
    if (next.size() < 3) return false;
    const std::size_t start = corners_.size();
    const std::uint32_t first = faceAt(mesh, faces.front()).v[0];
    std::uint32_t at = next.contains(first) ? first : next.begin()->first;
    for (std::size_t i = 0; i < next.size(); ++i) {
        const auto edge = next.find(at);
        const bool early = i > 0 && edge != next.end() && at == corners_[start];
        if (edge == next.end() || early) {
            corners_.resize(start);
            if (!mesh.tvFaces.IsEmpty()) textures_.resize(start);
            return false;
        }
        corners_.push_back(at);
        if (!mesh.tvFaces.IsEmpty()) textures_.push_back(edge->second.texture);
        at = edge->second.to;
    }
    ends_.push_back(static_cast<std::uint32_t>(corners_.size()));
    return true;
}

void MeshPolygons::appendTriangle(const Mesh& mesh, std::uint32_t face) {
    const Face& triangle = faceAt(mesh, face);
    corners_.insert(corners_.end(), std::begin(triangle.v), std::end(triangle.v));
    if (!mesh.tvFaces.IsEmpty()) {
        const TVFace& textured = mesh.tvFaces[static_cast<int>(face)];
        textures_.insert(textures_.end(), std::begin(textured.t), std::end(textured.t));
    }
    ends_.push_back(static_cast<std::uint32_t>(corners_.size()));
}

std::span<const std::uint32_t> MeshPolygons::part(const std::vector<std::uint32_t>& all,
                                                  std::size_t polygon) const noexcept {
    const std::size_t start = polygon == 0 ? 0 : ends_[polygon - 1];
    return std::span(all).subspan(start, ends_[polygon] - start);
}

std::span<const std::uint32_t> MeshPolygons::corners(std::size_t polygon) const noexcept {
    return part(corners_, polygon);
}

std::span<const std::uint32_t> MeshPolygons::textures(std::size_t polygon) const noexcept {
    return textures_.empty() ? std::span<const std::uint32_t>() : part(textures_, polygon);
}

}  // namespace interchange
