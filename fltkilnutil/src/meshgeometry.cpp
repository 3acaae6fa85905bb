#include <fltkilnutil/meshgeometry.h>

#include <kiln/triangulator.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <span>
#include <utility>

namespace fltkilnutil {

namespace {

constexpr DWORD kEdges[] = {EDGE_A, EDGE_B, EDGE_C};

template <typename T>
Tab<T> taken(const Tab<T>& from, const VertexOrder& order) {
    Tab<T> result;
    result.SetCount(static_cast<int>(order.size()));
    std::ranges::transform(order, result.begin(),
                           [&](std::uint32_t i) { return from[static_cast<int>(i)]; });
    return result;
}

constexpr DWORD kGone = 0xFFFFFFFF;

/// Twice the triangle's area, and the square of its longest edge.
std::pair<double, double> extentOf(const Mesh& mesh, const Face& face) {
    const auto corner = [&](std::size_t i) { return mesh.verts[static_cast<int>(face.v[i])]; };
    const Point3 a = corner(1) - corner(0), b = corner(2) - corner(0), c = b - a;
    return {Length(CrossProd(a, b)), std::max({DotProd(a, a), DotProd(b, b), DotProd(c, c)})};
}

bool hasArea(const Mesh& mesh, const Face& face) {
    constexpr double kLeast = 1e-6;
    const auto [area, edge] = extentOf(mesh, face);
    return std::isfinite(edge) && area > kLeast * edge;
}

}  // namespace

bool isOnePolygon(const Mesh& mesh) {
    const int count = mesh.verts.Count();
    if (count < 3 || mesh.faces.IsEmpty() || mesh.faces.Count() > count - 2) return false;
    const auto vertices = static_cast<DWORD>(count);
    DWORD steps = 0;
    for (const Face& face : mesh.faces) {
        for (std::size_t i = 0; i < 3; ++i) {
            if ((face.flags & kEdges[i]) == 0) continue;
            const DWORD from = face.v[i], to = face.v[(i + 1) % 3];
            if (from >= vertices || to >= vertices) return false;
            for (DWORD at = from; at != to;) {
                at = at + 1 == vertices ? 0 : at + 1;
                // The outline goes around once.
                if (++steps > vertices) return false;
                const Point3& here = mesh.verts[static_cast<int>(at)];
                if (at != to && here != mesh.verts[static_cast<int>(from)] &&
                    here != mesh.verts[static_cast<int>(to)])
                    return false;
            }
        }
    }
    return steps == vertices;
}

bool isTexturedByVertex(const Mesh& mesh) {
    return mesh.tVerts.Count() == mesh.verts.Count() &&
           std::ranges::equal(mesh.tvFaces, mesh.faces, [](const TVFace& t, const Face& f) {
               return std::ranges::equal(t.t, f.v);
           });
}

void takeVertices(Mesh& mesh, const VertexOrder& order) {
    if (isTexturedByVertex(mesh)) mesh.tVerts = taken(mesh.tVerts, order);
    mesh.verts = taken(mesh.verts, order);
    if (!mesh.normals.IsEmpty()) mesh.normals = taken(mesh.normals, order);
    if (!mesh.colors.IsEmpty()) mesh.colors = taken(mesh.colors, order);
}

bool recut(Mesh& mesh) {
    const auto count = static_cast<std::size_t>(mesh.verts.Count());
    if (count < 3) return false;
    Triangulator triangulator;
    const std::span<const Triangle> triangles =
        triangulator.cut(std::span(std::as_const(mesh).verts.Addr(0), count));
    if (triangles.empty()) return false;
    const DWORD group = mesh.faces.IsEmpty() ? 0 : mesh.faces[0].smGroup;
    const bool isTextured = !mesh.tvFaces.IsEmpty();
    mesh.faces.ZeroCount();
    mesh.tvFaces.ZeroCount();
    for (const Triangle& triangle : triangles) {
        const auto& [a, b, c] = triangle.corner;
        Face face{{a, b, c}, 0, group};
        for (std::size_t i = 0; i < 3; ++i)
            if (triangle.outline[i]) face.flags |= kEdges[i];
        mesh.faces.Append(face);
        if (isTextured) mesh.tvFaces.Append(TVFace{{a, b, c}});
    }
    return true;
}

VertexOrder removeUnusedVertices(Mesh& mesh) {
    std::vector<DWORD> becomes(static_cast<std::size_t>(mesh.verts.Count()), kGone);
    for (const Face& face : mesh.faces)
        for (const DWORD corner : face.v) becomes[corner] = 0;
    VertexOrder order;
    for (std::uint32_t i = 0; i < becomes.size(); ++i) {
        if (becomes[i] == kGone) continue;
        becomes[i] = static_cast<DWORD>(order.size());
        order.push_back(i);
    }
    if (order.size() == becomes.size()) return order;
    const bool isTextured = isTexturedByVertex(mesh);
    takeVertices(mesh, order);
    for (Face& face : mesh.faces)
        for (DWORD& corner : face.v) corner = becomes[corner];
    if (!isTextured) return order;
    for (TVFace& face : mesh.tvFaces)
        for (DWORD& corner : face.t) corner = becomes[corner];
    return order;
}

bool splitIntoTriangles(Mesh& mesh) {
    const bool isWhole = std::ranges::any_of(
        mesh.faces, [](const Face& face) { return (face.flags & EDGE_ALL) != EDGE_ALL; });
    for (Face& face : mesh.faces) face.flags |= EDGE_ALL;
    return isWhole;
}

/// A polygon's vertices are turned around, so that it stays one; other triangles by themselves.
VertexOrder flip(Mesh& mesh) {
    VertexOrder order(static_cast<std::size_t>(mesh.verts.Count()));
    std::iota(order.begin(), order.end(), 0U);
    for (Point3f& normal : mesh.normals) normal = Point3f(-normal.x, -normal.y, -normal.z);
    const bool isPlainlyTextured = mesh.tvFaces.IsEmpty() || isTexturedByVertex(mesh);
    if (isOnePolygon(mesh) && isPlainlyTextured) {
        Mesh turned = mesh;
        VertexOrder around = order;
        std::reverse(around.begin() + 1, around.end());
        takeVertices(turned, around);
        if (recut(turned)) {
            mesh = std::move(turned);
            return around;
        }
    }
    for (Face& face : mesh.faces) {
        std::swap(face.v[1], face.v[2]);
        const DWORD ends = face.flags & (EDGE_A | EDGE_C);
        if (ends == EDGE_A || ends == EDGE_C) face.flags ^= EDGE_A | EDGE_C;
    }
    for (TVFace& face : mesh.tvFaces) std::swap(face.t[1], face.t[2]);
    return order;
}

bool dropDegenerate(Mesh& mesh) {
    const auto isKept = [&](const Face& face) { return hasArea(mesh, face); };
    if (isOnePolygon(mesh) && std::ranges::any_of(mesh.faces, isKept)) return false;
    int kept = 0;
    for (int i = 0; i < mesh.faces.Count(); ++i) {
        if (!isKept(mesh.faces[i])) continue;
        mesh.faces[kept] = mesh.faces[i];
        if (!mesh.tvFaces.IsEmpty()) mesh.tvFaces[kept] = mesh.tvFaces[i];
        ++kept;
    }
    if (kept == mesh.faces.Count()) return false;
    mesh.faces.SetCount(kept);
    if (!mesh.tvFaces.IsEmpty()) mesh.tvFaces.SetCount(kept);
    return true;
}

}  // namespace fltkilnutil
