#include "fixture.h"

#include <cmath>

namespace {

TEST(Matrix3Test, InverseUndoesAndProductComposes) {
    const Matrix3 a = ScaleMatrix({2, -3, 0.25}) * RotAngleAxisMatrix(Normalize({1, 1, 0}), 1.1) *
                      TransMatrix({4, 5, 6});
    const Matrix3 b({1, 2, 0}, {0, 1, 3}, {1, 0, 1}, {-1, 0, 2});
    EXPECT_LT(difference(a * Inverse(a), Matrix3()), 1e-14);
    const Point3 p{1, 2, 3};
    EXPECT_LT(Length((a * b).PointTransform(p) - b.PointTransform(a.PointTransform(p))), 1e-12);
    // Counter-clockwise, row vectors.
    const Matrix3 quarter = RotAngleAxisMatrix({0, 0, 1}, std::acos(-1.0) / 2);
    EXPECT_LT(Length(quarter.VectorTransform({1, 0, 0}) - Point3{0, 1, 0}), 1e-15);

    EXPECT_FALSE(IsInvertible(ScaleMatrix({1, 1, 0})));
    EXPECT_FALSE(IsInvertible(TransMatrix({NAN, 0, 0})));
    EXPECT_TRUE(Inverse(ScaleMatrix({1, 1, 0})).IsIdentity());
}

double areaOf(const Mesh& mesh) {
    double area = 0;
    for (const Face& face : mesh.faces) {
        const Point3& a = mesh.verts[static_cast<int>(face.v[0])];
        const Point3& b = mesh.verts[static_cast<int>(face.v[1])];
        const Point3& c = mesh.verts[static_cast<int>(face.v[2])];
        area += CrossProd(b - a, c - a).z / 2;
    }
    return area;
}

int outlineEdges(const Mesh& mesh) {
    int edges = 0;
    for (const Face& face : mesh.faces)
        for (const DWORD edge : {EDGE_A, EDGE_B, EDGE_C}) edges += (face.flags & edge) != 0;
    return edges;
}

struct PolygonCase {
    const char* name;
    std::vector<Point3> points;
    double area;
};

TEST(MeshTest, CutsPolygonsIntoTrianglesOfTheSameArea) {
    const PolygonCase cases[] = {
        {"square", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 1},
        {"arrow with its notch at the first corner", {{1, 1}, {0, 0}, {4, 1}, {0, 2}}, 3},
        {"letter L", {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 3}, {0, 3}}, 4},
        {"far from the origin, with a corner on an edge",
         {{1e7, 1e7}, {1e7 + 1, 1e7}, {1e7 + 2, 1e7}, {1e7 + 2, 1e7 + 2}, {1e7, 1e7 + 2}},
         4},
    };
    for (const PolygonCase& one : cases) {
        Mesh mesh;
        std::vector<DWORD> corners;
        for (const Point3& point : one.points)
            corners.push_back(static_cast<DWORD>(mesh.verts.Append(point)));
        const int count = static_cast<int>(corners.size());
        ASSERT_TRUE(mesh.AppendPolygon(count, corners.data())) << one.name;
        EXPECT_EQ(mesh.faces.Count(), count - 2) << one.name;
        EXPECT_DOUBLE_EQ(areaOf(mesh), one.area) << one.name;
        EXPECT_EQ(outlineEdges(mesh), count) << one.name;
        EXPECT_TRUE(mesh.IsConsistent());
    }
}

TEST(MeshTest, RefusesCornersThatAreNotThere) {
    Mesh mesh;
    for (int i = 0; i < 3; ++i) mesh.verts.Append(Point3{});
    constexpr DWORD kGood[] = {0, 1, 2};
    constexpr DWORD kBad[] = {0, 1, 3};
    EXPECT_FALSE(mesh.AppendPolygon(2, kGood));
    EXPECT_FALSE(mesh.AppendPolygon(3, kBad));
    EXPECT_FALSE(mesh.AppendPolygon(3, kGood, kGood)) << "there are no texture vertices";
    EXPECT_TRUE(mesh.AppendPolygon(3, kGood)) << "no area is no reason";
    EXPECT_EQ(mesh.faces.Count(), 1);
    mesh.faces[0].v[2] = 3;
    EXPECT_FALSE(mesh.IsConsistent());
}

TEST(ObjectsTest, ConvertToMeshes) {
    BoxObject box(1, 2, 3);
    Object* const mesh = box.ConvertToType(0, TRIOBJ_CLASS_ID);
    ASSERT_NE(mesh, nullptr);
    EXPECT_NE(mesh, &box);
    const Mesh& faces = static_cast<TriObject*>(mesh)->GetMesh();
    EXPECT_EQ(faces.faces.Count(), 12);
    double volume = 0;  // positive only when every side faces outwards
    for (const Face& face : faces.faces)
        volume += DotProd(faces.verts[static_cast<int>(face.v[0])],
                          CrossProd(faces.verts[static_cast<int>(face.v[1])],
                                    faces.verts[static_cast<int>(face.v[2])])) /
                  6;
    EXPECT_DOUBLE_EQ(volume, 6);
    EXPECT_EQ(mesh->GetLocalBoundBox(0).Max(), box.GetLocalBoundBox(0).Max());
    EXPECT_EQ(mesh->ConvertToType(0, TRIOBJ_CLASS_ID), mesh);
    mesh->DeleteThis();

    SplineShape line;
    for (const Point3& point : {Point3{0, 0}, Point3{1, 0}, Point3{0, 1}})
        line.GetPoints().Append(point);
    EXPECT_FALSE(line.CanConvertToType(TRIOBJ_CLASS_ID));
    EXPECT_EQ(line.ConvertToType(0, TRIOBJ_CLASS_ID), nullptr);
    line.SetClosed(true);
    Object* const surface = line.ConvertToType(0, TRIOBJ_CLASS_ID);
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(static_cast<TriObject*>(surface)->GetMesh().faces.Count(), 1);
    surface->DeleteThis();

    // An outline that crosses itself everywhere, as a file may hold it: cutting it may not take
    // more than time in proportion.
    unsigned state = 1;
    const auto random = [&] { return double(state = state * 1103515245U + 12345U) * 1e-6; };
    SplineShape wild;
    for (int i = 0; i < 30'000; ++i) wild.GetPoints().Append(Point3{random(), random(), 0});
    wild.SetClosed(true);
    Object* const cut = wild.ConvertToType(0, TRIOBJ_CLASS_ID);
    ASSERT_NE(cut, nullptr);
    EXPECT_TRUE(static_cast<TriObject*>(cut)->GetMesh().IsConsistent());
    EXPECT_GT(static_cast<TriObject*>(cut)->GetMesh().faces.Count(), 0);
    cut->DeleteThis();

    DummyObject dummy;
    GenLight light(SPOT_LIGHT_CLASS_ID);
    EXPECT_FALSE(dummy.IsRenderable() || light.IsRenderable() || line.IsRenderable());
    EXPECT_FALSE(dummy.CanConvertToType(TRIOBJ_CLASS_ID));
}

}  // namespace
