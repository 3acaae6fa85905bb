// Triangle meshes.
#pragma once

#include <kiln/geometry.h>
#include <kiln/tab.h>

/// Bits of `Face::flags`: the edge from corner 0 to 1 (A), 1 to 2 (B), 2 to 0 (C) is an outline of
/// the polygon the triangle was cut from.
inline constexpr DWORD EDGE_A = 1;
inline constexpr DWORD EDGE_B = 2;
inline constexpr DWORD EDGE_C = 4;
inline constexpr DWORD EDGE_ALL = EDGE_A | EDGE_B | EDGE_C;

/// One triangle, counter-clockwise seen from its front.
struct Face {
    DWORD v[3] = {0, 0, 0};  ///< indices into `Mesh::verts`
    DWORD flags = EDGE_ALL;
    DWORD smGroup = 0;  ///< smoothing groups, one bit each

    bool operator==(const Face&) const = default;
};

/// The texture corners of one triangle.
struct TVFace {
    DWORD t[3] = {0, 0, 0};  ///< indices into `Mesh::tVerts`

    bool operator==(const TVFace&) const = default;
};

/// A triangle mesh in object space.
struct KILNAPI Mesh {
    Tab<Point3> verts;
    Tab<Face> faces;
    Tab<Point3f> tVerts;   ///< texture coordinates; empty when there are none
    Tab<TVFace> tvFaces;   ///< as many as `faces`, or empty
    Tab<Point3f> normals;  ///< one per vertex, or empty
    Tab<COLORREF> colors;  ///< one per vertex, or empty

    /// Cuts a polygon over the vertices `corners` (indices into `verts`, counter-clockwise, at
    /// least 3) into triangles as `Triangulator` does and appends them, with the polygon's outline
    /// in the edge flags; one that has no area becomes a fan. When `texCorners` is given it holds
    /// as many indices into `tVerts`. False, and nothing is appended, for fewer than 3 corners or
    /// an index out of range.
    bool AppendPolygon(int count, const DWORD* corners, const DWORD* texCorners = nullptr);
    /// The normal of face `index` at unit length; (0, 0, 0) for one without area.
    Point3 FaceNormal(int index) const;
    Box3 BoundingBox() const;
    /// Whether every index is in range and every optional array has its size.
    bool IsConsistent() const;
    void Clear();

    bool operator==(const Mesh&) const = default;
};
