#include <kiln/mesh.h>
#include <kiln/triangulator.h>

#include <cstdint>
#include <span>
#include <vector>

namespace {

// What is left for a polygon that covers nothing.
std::vector<Triangle> fan(std::uint32_t count) {
    std::vector<Triangle> triangles;
    triangles.reserve(count - 2);
    for (std::uint32_t i = 1; i + 1 < count; ++i)
        triangles.push_back({{0, i, i + 1}, {i == 1, true, i + 2 == count}});
    return triangles;
}

DWORD outlineFlags(const Triangle& triangle) {
    constexpr DWORD kEdges[] = {EDGE_A, EDGE_B, EDGE_C};
    DWORD flags = 0;
    for (int i = 0; i < 3; ++i)
        if (triangle.outline[i]) flags |= kEdges[i];
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

    std::vector<Point3> outline;
    outline.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) outline.push_back(verts[static_cast<int>(corners[i])]);
    Triangulator triangulator;
    std::span<const Triangle> triangles = triangulator.cut(outline);
    std::vector<Triangle> flat;
    if (triangles.empty()) triangles = flat = fan(static_cast<std::uint32_t>(count));
    for (const Triangle& triangle : triangles) {
        Face face;
        TVFace texFace;
        for (int i = 0; i < 3; ++i) {
            face.v[i] = corners[triangle.corner[i]];
            if (texCorners) texFace.t[i] = texCorners[triangle.corner[i]];
        }
        face.flags = outlineFlags(triangle);
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
