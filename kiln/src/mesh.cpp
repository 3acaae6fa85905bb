#include <kiln/mesh.h>

#include <cmath>
#include <optional>
#include <vector>

namespace {

struct Point2 {
    double x;
    double y;
};

double cross(const Point2& a, const Point2& b, const Point2& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// The polygon's corners in the plane it lies in, counter-clockwise; none when it has no area.
std::optional<std::vector<Point2>> flattened(const Tab<Point3>& verts, int count,
                                             const DWORD* corners) {
    const auto at = [&](int i) -> const Point3& { return verts[static_cast<int>(corners[i])]; };
    Point3 normal;  // relative to the first corner, which keeps far-off polygons exact
    for (int i = 1; i + 1 < count; ++i)
        normal = normal + CrossProd(at(i) - at(0), at(i + 1) - at(0));
    normal = Normalize(normal);
    if (!(Length(normal) > 0.5)) return std::nullopt;

    const Point3 seed = std::abs(normal.x) < 0.9 ? Point3{1, 0, 0} : Point3{0, 1, 0};
    const Point3 u = Normalize(CrossProd(seed, normal));
    const Point3 v = CrossProd(normal, u);
    std::vector<Point2> flat;
    flat.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const Point3 p = at(i) - at(0);
        flat.push_back({DotProd(p, u), DotProd(p, v)});
    }
    return flat;
}

struct Triangle {
    int corner[3];
};

// Cuts ears off until three corners are left. A remainder without a clear ear (the outline crosses
// itself) loses its corners in order.
std::vector<Triangle> cutEars(const std::vector<Point2>& flat) {
    std::vector<int> rest(flat.size());
    for (std::size_t i = 0; i < rest.size(); ++i) rest[i] = static_cast<int>(i);
    const auto point = [&](int corner) -> const Point2& {
        return flat[static_cast<std::size_t>(corner)];
    };
    const auto isEar = [&](int a, int b, int c) {
        if (cross(point(a), point(b), point(c)) <= 0) return false;
        for (const int other : rest) {
            if (other == a || other == b || other == c) continue;
            const Point2& p = point(other);
            if (cross(point(a), point(b), p) >= 0 && cross(point(b), point(c), p) >= 0 &&
                cross(point(c), point(a), p) >= 0)
                return false;
        }
        return true;
    };

    std::vector<Triangle> triangles;
    std::size_t at = 1;
    std::size_t misses = 0;
    while (rest.size() > 3) {
        const std::size_t size = rest.size();
        at %= size;
        const int a = rest[(at + size - 1) % size];
        const int b = rest[at];
        const int c = rest[(at + 1) % size];
        if (misses < size && !isEar(a, b, c)) {
            ++at;
            ++misses;
            continue;
        }
        triangles.push_back({{a, b, c}});
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(at));
        misses = 0;
    }
    triangles.push_back({{rest[0], rest[1], rest[2]}});
    return triangles;
}

bool isConvex(const std::vector<Point2>& flat) {
    const std::size_t size = flat.size();
    for (std::size_t i = 0; i < size; ++i)
        if (cross(flat[i], flat[(i + 1) % size], flat[(i + 2) % size]) < 0) return false;
    return true;
}

std::vector<Triangle> fan(int count) {
    std::vector<Triangle> triangles;
    for (int i = 1; i + 1 < count; ++i) triangles.push_back({{0, i, i + 1}});
    return triangles;
}

DWORD outlineFlags(const Triangle& triangle, int count) {
    constexpr DWORD kEdges[] = {EDGE_A, EDGE_B, EDGE_C};
    DWORD flags = 0;
    for (int i = 0; i < 3; ++i)
        if ((triangle.corner[i] + 1) % count == triangle.corner[(i + 1) % 3]) flags |= kEdges[i];
    return flags;
}

bool allBelow(int count, const DWORD* indices, int limit) {
    for (int i = 0; i < count; ++i)
        if (indices[i] >= static_cast<DWORD>(limit)) return false;
    return true;
}

}  // namespace

bool Mesh::AppendPolygon(int count, const DWORD* corners, const DWORD* texCorners) {
    if (count < 3 || !allBelow(count, corners, verts.Count())) return false;
    if (texCorners && !allBelow(count, texCorners, tVerts.Count())) return false;
    // Texture corners exist for all triangles or for none.
    if (faces.Count() > 0 && (texCorners != nullptr) != (tvFaces.Count() > 0)) return false;

    const auto flat = flattened(verts, count, corners);
    const bool asFan = !flat || isConvex(*flat);
    for (const Triangle& triangle : asFan ? fan(count) : cutEars(*flat)) {
        Face face;
        TVFace texFace;
        for (int i = 0; i < 3; ++i) {
            face.v[i] = corners[triangle.corner[i]];
            if (texCorners) texFace.t[i] = texCorners[triangle.corner[i]];
        }
        face.flags = outlineFlags(triangle, count);
        faces.Append(face);
        if (texCorners) tvFaces.Append(texFace);
    }
    return true;
}

Point3 Mesh::FaceNormal(int index) const {
    const Face& face = faces[index];
    const Point3& a = verts[static_cast<int>(face.v[0])];
    const Point3& b = verts[static_cast<int>(face.v[1])];
    const Point3& c = verts[static_cast<int>(face.v[2])];
    return Normalize(CrossProd(b - a, c - a));
}

Box3 Mesh::BoundingBox() const {
    Box3 box;
    for (const Point3& vert : verts) box += vert;
    return box;
}

bool Mesh::IsConsistent() const {
    for (const Face& face : faces)
        if (!allBelow(3, face.v, verts.Count())) return false;
    for (const TVFace& face : tvFaces)
        if (!allBelow(3, face.t, tVerts.Count())) return false;
    const auto matches = [](int count, int wanted) { return count == 0 || count == wanted; };
    return matches(tvFaces.Count(), faces.Count()) && matches(normals.Count(), verts.Count()) &&
           matches(colors.Count(), verts.Count());
}

void Mesh::Clear() {
    *this = Mesh();
}
