#include "scenemeshes.h"

#include <fltkilnutil/kilnflt.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

namespace fltkilnutil {

namespace {

/// Has `change` change a copy of each mesh, and takes those that are others then. `change` returns
/// the order of the vertices, an empty one for the same.
template <typename Change>
GeometryResult forEachMesh(Interface& host, std::span<INode* const> tops, bool turnsCorners,
                           Change&& change) {
    GeometryResult result;
    for (const SceneMesh& at : meshesOf(host, nodesIn(tops), result.passedOver)) {
        if (turnsCorners && at.keepsCorners) {
            ++result.passedOver;
            continue;
        }
        Mesh mesh = at.mesh();
        const VertexOrder order = change(mesh);
        if (putMesh(at, std::move(mesh), order.empty() ? nullptr : &order)) ++result.changed;
    }
    return result;
}

// ---------------------------------------------------------------- welding

/// The vertices of a mesh in the world, and back.
class Placed {
public:
    explicit Placed(INode& node) : place_(node.GetNodeTM(0)) {
        isHere_ = place_.IsIdentity();
        if (!isHere_) back_ = Inverse(place_);
    }

    bool canGoBack() const { return isHere_ || IsInvertible(place_); }
    Point3 world(const Point3& point) const {
        return isHere_ ? point : place_.PointTransform(point);
    }
    Point3 local(const Point3& point) const {
        return isHere_ ? point : back_.PointTransform(point);
    }
    /// The direction across surfaces that such a one has in the node's own space.
    Point3 localNormal(const Point3& normal) const {
        if (isHere_) return normal;
        const Point3 turned{DotProd(normal, place_.GetRow(0)), DotProd(normal, place_.GetRow(1)),
                            DotProd(normal, place_.GetRow(2))};
        return Normalize(place_.Determinant() < 0 ? -turned : turned);
    }

private:
    Matrix3 place_;
    Matrix3 back_;
    bool isHere_ = false;
};

/// Corners of one polygon that follow one another in one place become one.
VertexOrder mergeCorners(Mesh& mesh, std::span<const std::uint32_t> places, bool hasMoved) {
    VertexOrder order;
    for (std::uint32_t i = 0; i < places.size(); ++i)
        if (order.empty() || places[i] != places[order.back()]) order.push_back(i);
    while (order.size() > 1 && places[order.back()] == places[order.front()]) order.pop_back();
    if (order.size() == places.size() && !hasMoved) return {};
    Mesh merged = mesh;
    takeVertices(merged, order);
    if (!recut(merged)) return {};
    mesh = std::move(merged);
    return order;
}

/// Vertices in one place become one where nothing else tells them apart; triangles that lose a
/// corner by that go.
VertexOrder mergeVertices(Mesh& mesh, std::span<const std::uint32_t> places) {
    const bool isTextured = isTexturedByVertex(mesh);
    const auto isAlike = [&](int a, int b) {
        return (mesh.normals.IsEmpty() || mesh.normals[a] == mesh.normals[b]) &&
               (mesh.colors.IsEmpty() || mesh.colors[a] == mesh.colors[b]) &&
               (!isTextured || mesh.tVerts[a] == mesh.tVerts[b]);
    };
    std::vector<std::uint32_t> sorted(places.size()), becomes(places.size());
    std::iota(sorted.begin(), sorted.end(), 0U);
    std::iota(becomes.begin(), becomes.end(), 0U);
    std::ranges::stable_sort(sorted, {}, [&](std::uint32_t i) { return places[i]; });
    constexpr std::size_t kMostCompared = 64;
    std::vector<std::uint32_t> different;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        if (i == 0 || places[sorted[i]] != places[sorted[i - 1]]) different.clear();
        const auto same = std::ranges::find_if(different, [&](std::uint32_t other) {
            return isAlike(static_cast<int>(sorted[i]), static_cast<int>(other));
        });
        if (same != different.end())
            becomes[sorted[i]] = *same;
        else if (different.size() < kMostCompared)
            different.push_back(sorted[i]);
    }
    const auto stays = [&](std::uint32_t i) { return becomes[i] == i; };
    if (std::ranges::all_of(sorted, stays)) return {};
    const Mesh before = mesh;
    int kept = 0;
    for (int f = 0; f < mesh.faces.Count(); ++f) {
        Face face = mesh.faces[f];
        for (DWORD& corner : face.v) corner = becomes[corner];
        const auto collapses = [](const Face& of) {
            return of.v[0] == of.v[1] || of.v[1] == of.v[2] || of.v[2] == of.v[0];
        };
        if (collapses(face) && !collapses(before.faces[f])) continue;
        mesh.faces[kept] = face;
        if (!mesh.tvFaces.IsEmpty()) {
            mesh.tvFaces[kept] = mesh.tvFaces[f];
            if (isTextured) std::ranges::copy(face.v, mesh.tvFaces[kept].t);
        }
        ++kept;
    }
    if (kept == 0) {  // it would be gone
        mesh = before;
        return {};
    }
    mesh.faces.SetCount(kept);
    if (!mesh.tvFaces.IsEmpty()) mesh.tvFaces.SetCount(kept);
    return removeUnusedVertices(mesh);
}

// ---------------------------------------------------------------- normals

/// The directions of the polygons around one place, each with its weight.
struct Around {
    struct Part {
        Point3 normal;
        double weight;
    };
    static constexpr std::size_t kMost = 256;
    std::vector<Part> parts;

    void add(const Point3& normal, double weight) {
        for (Part& part : parts)
            if (part.normal == normal) {
                part.weight += weight;
                return;
            }
        if (parts.size() < kMost) parts.push_back({normal, weight});
    }
    Point3 average(const Point3& own, double leastCosine) const {
        Point3 sum;
        const bool hasOwn = own != Point3();
        for (const Part& part : parts)
            if (!hasOwn || DotProd(part.normal, own) >= leastCosine)
                sum = sum + part.normal * part.weight;
        const Point3 normal = Normalize(sum);
        if (normal != Point3()) return normal;
        return hasOwn ? own : Point3{0, 0, 1};
    }
};

double angleAt(const Point3& corner, const Point3& a, const Point3& b) {
    const double cosine = DotProd(Normalize(a - corner), Normalize(b - corner));
    return std::acos(std::clamp(cosine, -1.0, 1.0));
}

/// The corners of one mesh for normals: where each vertex is, and the direction of each triangle.
struct NormalSource {
    SceneMesh at;
    std::vector<std::uint32_t> places;  ///< by vertex
    std::vector<Point3> directions;     ///< by triangle; (0, 0, 0) for one without area
};

/// In the world; those of one polygon are the same.
std::vector<Point3> directionsOf(const Mesh& mesh, std::span<const Point3> world) {
    const bool isOne = isOnePolygon(mesh);
    std::vector<Point3> directions;
    Point3 all;
    for (const Face& face : mesh.faces) {
        const Point3 area =
            CrossProd(world[face.v[1]] - world[face.v[0]], world[face.v[2]] - world[face.v[0]]);
        const bool isFinite = std::isfinite(area.x + area.y + area.z);
        directions.push_back(isFinite ? Normalize(area) : Point3());
        if (isFinite) all = all + area;
    }
    if (isOne) std::ranges::fill(directions, Normalize(all));
    return directions;
}

/// Gives the mesh the normals that `normalOf(triangle, vertex)` says; a vertex with several becomes
/// several.
template <typename NormalOf>
VertexOrder takeNormals(Mesh& mesh, NormalOf&& normalOf) {
    constexpr std::uint32_t kNone = 0xFFFFFFFF;
    const auto count = static_cast<std::uint32_t>(mesh.verts.Count());
    Tab<Face> faces = mesh.faces;
    VertexOrder order(count);
    std::iota(order.begin(), order.end(), 0U);
    std::vector<Point3f> normals(count, Point3f(0, 0, 1));
    std::vector<bool> isTaken(count, false);
    std::vector<std::uint32_t> next(count, kNone);  // another vertex in place of the same
    for (int f = 0; f < faces.Count(); ++f) {
        for (std::size_t c = 0; c < 3; ++c) {
            std::uint32_t vertex = faces[f].v[c];
            const Point3f normal(normalOf(static_cast<std::size_t>(f), vertex));
            if (!isTaken[vertex]) {
                isTaken[vertex] = true;
                normals[vertex] = normal;
                continue;
            }
            while (normals[vertex] != normal && next[vertex] != kNone) vertex = next[vertex];
            if (normals[vertex] != normal) {
                next[vertex] = static_cast<std::uint32_t>(order.size());
                order.push_back(order[vertex]);
                normals.push_back(normal);
                isTaken.push_back(true);
                next.push_back(kNone);
                vertex = next[vertex];
            }
            mesh.faces[f].v[c] = vertex;
        }
    }
    if (order.size() != count) {
        // What stands by vertex is taken over by the faces that it goes with.
        std::swap(mesh.faces, faces);
        const bool isTextured = isTexturedByVertex(mesh);
        mesh.normals.ZeroCount();
        takeVertices(mesh, order);
        std::swap(mesh.faces, faces);
        for (int f = 0; isTextured && f < mesh.faces.Count(); ++f)
            std::ranges::copy(mesh.faces[f].v, mesh.tvFaces[f].t);
    }
    mesh.normals.SetCount(static_cast<int>(normals.size()));
    std::ranges::copy(normals, mesh.normals.begin());
    return order;
}

}  // namespace

bool isStateOfSwitch(INode& node) {
    for (INode* above = node.GetParentNode(); above != nullptr; above = above->GetParentNode()) {
        FltNodeKind kind{};
        if (fltGetKind(above, true, kind)) return kind == FltNodeKind::Switch;
    }
    return false;
}

GeometryResult weldVertices(Interface& host, std::span<INode* const> tops, double distance) {
    GeometryResult result;
    PointGrid grid(distance);
    for (const SceneMesh& at : meshesOf(host, nodesIn(tops), result.passedOver)) {
        const Placed placed(*at.node);
        Mesh mesh = at.mesh();
        std::vector<std::uint32_t> places;
        for (Point3& vertex : mesh.verts) {
            const Point3 world = placed.world(vertex);
            places.push_back(grid.add(world));
            const Point3& first = grid.at(places.back());
            if (first != world && placed.canGoBack()) vertex = placed.local(first);
        }
        // What has moved is cut anew, and so is what has fewer corners.
        VertexOrder order;
        const bool isPlainlyTextured = mesh.tvFaces.IsEmpty() || isTexturedByVertex(mesh);
        if (isOnePolygon(at.mesh())) {
            const bool mayMerge = isPlainlyTextured && !at.keepsCorners;
            const bool hasMoved = !std::ranges::equal(mesh.verts, at.mesh().verts);
            if (mayMerge) order = mergeCorners(mesh, places, hasMoved);
            if (!mayMerge && isPlainlyTextured && hasMoved) recut(mesh);
        } else if (!at.keepsCorners) {
            order = mergeVertices(mesh, places);
        }
        if (putMesh(at, std::move(mesh), order.empty() ? nullptr : &order)) ++result.changed;
    }
    return result;
}

GeometryResult triangulate(Interface& host, std::span<INode* const> tops) {
    return forEachMesh(host, tops, true, [](Mesh& mesh) {
        splitIntoTriangles(mesh);
        return VertexOrder();
    });
}

GeometryResult flipPolygons(Interface& host, std::span<INode* const> tops) {
    return forEachMesh(host, tops, true, flip);
}

GeometryResult dropDegenerate(Interface& host, std::span<INode* const> tops) {
    GeometryResult result;
    std::vector<INode*> empty;
    for (const SceneMesh& at : meshesOf(host, nodesIn(tops), result.passedOver)) {
        Mesh mesh = at.mesh();
        if (!dropDegenerate(mesh)) continue;
        if (mesh.faces.IsEmpty()) {
            if (at.node->NumberOfChildren() != 0 || isStateOfSwitch(*at.node))
                ++result.passedOver;
            else
                empty.push_back(at.node);
            continue;
        }
        if (at.keepsCorners) {
            ++result.passedOver;
            continue;
        }
        const VertexOrder order = removeUnusedVertices(mesh);
        if (putMesh(at, std::move(mesh), &order)) ++result.changed;
    }
    for (INode* const node : empty) host.DeleteNode(node);
    result.changed += static_cast<std::uint32_t>(empty.size());
    return result;
}

GeometryResult computeNormals(Interface& host, std::span<INode* const> tops, double degrees) {
    GeometryResult result;
    std::vector<NormalSource> sources;
    std::vector<Point3> world;
    Box3 box;
    const std::vector<SceneMesh> meshes = meshesOf(host, nodesIn(tops), result.passedOver);
    const auto takeWorld = [&](const SceneMesh& at) {
        const Placed placed(*at.node);
        world.clear();
        for (const Point3& vertex : at.mesh().verts) world.push_back(placed.world(vertex));
    };
    for (const SceneMesh& at : meshes) {
        takeWorld(at);
        for (const Point3& point : world)
            if (std::isfinite(point.x + point.y + point.z)) box += point;
    }
    const bool isFlat = degrees == 0;
    PointGrid grid(Length(box.Max() - box.Min()) * 1e-6);
    std::vector<Around> around;
    for (const SceneMesh& at : meshes) {
        takeWorld(at);
        NormalSource& source = sources.emplace_back();
        source.at = at;
        source.directions = directionsOf(at.mesh(), world);
        if (isFlat) continue;
        for (const Point3& point : world) source.places.push_back(grid.add(point));
        around.resize(grid.size());
        for (int f = 0; f < at.mesh().faces.Count(); ++f) {
            const Point3& direction = source.directions[static_cast<std::size_t>(f)];
            const Face& face = at.mesh().faces[f];
            for (std::size_t c = 0; direction != Point3() && c < 3; ++c)
                around[source.places[face.v[c]]].add(
                    direction, angleAt(world[face.v[c]], world[face.v[(c + 1) % 3]],
                                       world[face.v[(c + 2) % 3]]));
        }
    }
    const double leastCosine = std::cos(degrees * std::numbers::pi / 180) - 1e-9;
    for (const NormalSource& source : sources) {
        const Placed placed(*source.at.node);
        Mesh mesh = source.at.mesh();
        const VertexOrder order = takeNormals(mesh, [&](std::size_t f, std::size_t vertex) {
            const Point3& own = source.directions[f];
            if (isFlat) return placed.localNormal(own == Point3() ? Point3{0, 0, 1} : own);
            return placed.localNormal(around[source.places[vertex]].average(own, leastCosine));
        });
        const bool isSplit =
            order.size() != static_cast<std::size_t>(source.at.mesh().verts.Count());
        if (isSplit && source.at.keepsCorners) {
            ++result.passedOver;
            continue;
        }
        if (putMesh(source.at, std::move(mesh), isSplit ? &order : nullptr)) ++result.changed;
    }
    return result;
}

}  // namespace fltkilnutil
