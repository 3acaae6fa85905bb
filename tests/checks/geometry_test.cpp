// What is done to the geometry of nodes, and that an undo leads back.
#include "checkscene.h"

#include <checks/geometry.h>
#include <fltkilnutil/fltfields.h>
#include <fltkilnutil/meshgeometry.h>
#include <kiln/host/history.h>
#include <quillon/fltbounds.h>
#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltdof.h>
#include <quillon/fltlod.h>
#include <quillon/fltmesh.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltswitch.h>
#include <quillon/fltvertex.h>

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>

namespace {

using checks::GeometryAction, checks::GeometryOutcome;

using Bytes = std::vector<std::uint8_t>;

class GeometryTest : public testing::Test {
protected:
    GeometryOutcome run(GeometryAction action, double value = 0, INode* top = nullptr) {
        INode* const tops[] = {top != nullptr ? top : scene.host.GetRootNode()};
        return checks::carryOut(scene.host, action, tops, value);
    }
    INode* twoTriangles(double gap, double z = 0) {
        auto* const shown = new TriObject;
        Mesh& mesh = shown->GetMesh();
        for (const Point3& p : {Point3{0, 0, 0}, Point3{10, 0, 0}, Point3{10, 10, 0},
                                Point3{gap, 0, 0}, Point3{10, 10 + gap, 0}, Point3{0, 10, z}})
            mesh.verts.Append(p);
        mesh.faces.Append(Face{{0, 1, 2}});
        mesh.faces.Append(Face{{3, 4, 5}});
        return scene.add(scene.object, FltFace(), shown);
    }
    static Bytes bytesOf(INode* node, fltkilnutil::SourceChunk id) {
        const auto bytes = fltkilnutil::sourceChunk(*node, id);
        return {bytes.begin(), bytes.end()};
    }
    CheckScene scene;
};

std::string sceneText() {
    return kiln::Core::get()->sceneText();
}

TEST_F(GeometryTest, WeldingClosesGapsAndMergesCornersAcrossNodes) {
    // A neighbour whose edge misses the first face's by a little, in a moved and turned node.
    INode* const other = scene.addFace(scene.object, square(10, 0, -10.004));
    Matrix3 place = RotAngleAxisMatrix({0, 0, 1}, 1.5707963267948966);
    place.SetTrans({0, 0, 7});
    for (Point3& vertex : scene.meshOf(other).verts) vertex = Inverse(place).PointTransform(vertex);
    other->SetNodeTM(0, place);
    const Corners sliver = {{20, 0, 0}, {30, 0, 0}, {30, 0.004, 0}, {30, 10, 0}, {20, 10, 0}};
    INode* const five = scene.addFace(scene.object, sliver);
    const std::string before = sceneText();

    EXPECT_EQ(run(GeometryAction::kWeld, 0.01).changed, 2U);
    EXPECT_EQ(scene.meshOf(scene.face).verts[1], (Point3{10, 0, 0}));
    std::vector<Point3> world;
    for (const Point3& vertex : scene.meshOf(other).verts)
        world.push_back(other->GetNodeTM(0).PointTransform(vertex));
    EXPECT_NEAR(world[3].y, 0, 1e-9);
    EXPECT_NEAR(world[2].x, 10, 1e-9);
    EXPECT_EQ(scene.meshOf(five).verts.Count(), 4);
    EXPECT_EQ(scene.meshOf(five).faces.Count(), 2);
    EXPECT_TRUE(fltkilnutil::isOnePolygon(scene.meshOf(five)));
    EXPECT_EQ(run(GeometryAction::kWeld, 0.01).changed, 0U);

    kiln::History& history = kiln::Core::get()->history();
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(sceneText(), before);
    EXPECT_THROW(run(GeometryAction::kWeld, -1), std::invalid_argument);
    EXPECT_THROW(run(GeometryAction::kWeld, std::nan("")), std::invalid_argument);
    EXPECT_EQ(sceneText(), before);
}

TEST_F(GeometryTest, WeldingKeepsWhatElseTellsVerticesApart) {
    INode* const node = twoTriangles(0.001);
    Mesh& mesh = scene.meshOf(node);
    for (int i = 0; i < 6; ++i) mesh.colors.Append(i == 4 ? 0xFFU : 0U);
    EXPECT_EQ(run(GeometryAction::kWeld, 0.01, node).changed, 1U);
    // Vertex 3 became vertex 0; vertex 4 has moved onto vertex 2, which has another color.
    ASSERT_EQ(mesh.verts.Count(), 5);
    EXPECT_EQ(mesh.faces[1], (Face{{0, 3, 4}}));
    EXPECT_EQ(mesh.verts[3], mesh.verts[2]);
    EXPECT_EQ(mesh.colors[3], 0xFFU);
    // The nearest one may lie on either side of a place where the space is divided.
    INode* const left = scene.addFace(scene.object, square(5, -0.001, 60));
    INode* const right = scene.addFace(scene.object, square(5, 0.001, 60));
    EXPECT_EQ(run(GeometryAction::kWeld, 0.01).changed, 1U);
    EXPECT_EQ(scene.meshOf(right).verts, scene.meshOf(left).verts);
    // A polygon that would lose its area keeps its corners.
    INode* const small = scene.addFace(scene.object, square(0.001, 50));
    run(GeometryAction::kWeld, 0.01, small);
    EXPECT_EQ(scene.meshOf(small).verts.Count(), 4);
    // Coordinates that are none are near nothing.
    scene.meshOf(small).verts[0].x = std::numeric_limits<double>::quiet_NaN();
    run(GeometryAction::kWeld, 1e300, small);
}

TEST_F(GeometryTest, PolygonsAreTurnedOverAsAWholeAndBack) {
    Mesh& mesh = scene.meshOf(scene.face);
    mesh.normals.SetCount(4);
    mesh.tVerts.SetCount(4);
    for (int i = 0; i < 4; ++i) {
        mesh.normals[i] = Point3f{0, 0, 1};
        mesh.tVerts[i] = Point3f(static_cast<float>(i), 0, 0);
    }
    for (const Face& face : mesh.faces) mesh.tvFaces.Append({{face.v[0], face.v[1], face.v[2]}});
    INode* const loose = twoTriangles(5, 1);
    const Mesh before = mesh, looseBefore = scene.meshOf(loose);
    // What is kept of each vertex goes along.
    const auto tail = [](std::uint8_t mark) {
        Bytes entry(16);
        entry[1] = 70, entry[3] = 64, entry[7] = mark;
        entry.resize(8 + 64 - 52);
        return entry;
    };
    Bytes kept;
    for (std::uint8_t mark = 1; mark <= 4; ++mark)
        for (const std::uint8_t byte : tail(mark)) kept.push_back(byte);
    fltkilnutil::storeSourceChunk(*scene.face, fltkilnutil::SourceChunk::corners, kept);

    EXPECT_EQ(run(GeometryAction::kFlip).changed, 2U);
    EXPECT_EQ(mesh.FaceNormal(0), (Point3{0, 0, -1}));
    EXPECT_EQ(mesh.normals[0], (Point3f{0, 0, -1}));
    EXPECT_EQ(mesh.verts[1], before.verts[3]);
    EXPECT_EQ(mesh.tVerts[1], before.tVerts[3]);
    EXPECT_TRUE(fltkilnutil::isOnePolygon(mesh));
    EXPECT_EQ(scene.meshOf(loose).FaceNormal(1), -looseBefore.FaceNormal(1));
    const Bytes turned = bytesOf(scene.face, fltkilnutil::SourceChunk::corners);
    ASSERT_EQ(turned.size(), kept.size());
    EXPECT_EQ(turned[7], 1);
    EXPECT_EQ(turned[20 + 7], 4);
    EXPECT_EQ(run(GeometryAction::kFlip).changed, 2U);
    EXPECT_EQ(mesh, before);
    EXPECT_EQ(scene.meshOf(loose), looseBefore);
    EXPECT_EQ(bytesOf(scene.face, fltkilnutil::SourceChunk::corners), kept);
}

TEST_F(GeometryTest, DegenerateTrianglesAndFacesGo) {
    Mesh& mixed = scene.meshOf(twoTriangles(0));
    mixed.verts[5] = {5, 5 + 1e-9, 0};
    scene.addFace(scene.object, square(3, 40));
    INode* const line = scene.addFace(scene.object, square());
    INode* const inSwitch = scene.addFace(scene.add(scene.group, FltSwitch()), square());
    for (INode* const node : {line, inSwitch})
        for (Point3& vertex : scene.meshOf(node).verts) vertex.y = 0;
    const std::string before = sceneText();
    const GeometryOutcome outcome = run(GeometryAction::kDropDegenerate);
    EXPECT_EQ(outcome.changed, 2U);
    EXPECT_EQ(outcome.passedOver, 1U);  // masks count the children of a switch
    EXPECT_EQ(mixed.faces.Count(), 1);
    EXPECT_EQ(mixed.verts.Count(), 3);
    EXPECT_EQ(scene.object->NumberOfChildren(), 3);
    EXPECT_EQ(run(GeometryAction::kDropDegenerate).changed, 0U);
    ASSERT_TRUE(kiln::Core::get()->history().undo());
    EXPECT_EQ(sceneText(), before);
}

TEST_F(GeometryTest, NormalsAreFlatOrSmoothAcrossNodesUpToTheAngle) {
    // A roof of two faces, 90 degrees apart, and a third that lies flat; the second is mirrored.
    scene.host.DeleteNode(scene.face);
    INode* const left = scene.addFace(scene.object, {{0, 0, 0}, {1, 0, 1}, {1, 5, 1}, {0, 5, 0}});
    INode* const right = scene.addFace(scene.object, {{1, 0, 1}, {2, 0, 0}, {2, 5, 0}, {1, 5, 1}});
    const Matrix3 mirror = ScaleMatrix({1, -1, 1});
    for (Point3& vertex : scene.meshOf(right).verts) vertex = mirror.PointTransform(vertex);
    right->SetNodeTM(0, mirror);
    const std::string before = sceneText();
    kiln::Core::get()->history().endCommand();
    const std::size_t steps = kiln::Core::get()->history().doneCount();
    const float slope = static_cast<float>(std::sqrt(0.5));
    const auto normal = [&](INode* node, int i) { return scene.meshOf(node).normals[i]; };
    const auto near3 = [](float x, float y, float z) {
        return testing::AllOf(testing::Field(&Point3f::x, testing::FloatNear(x, 1e-6F)),
                              testing::Field(&Point3f::y, testing::FloatNear(y, 1e-6F)),
                              testing::Field(&Point3f::z, testing::FloatNear(z, 1e-6F)));
    };
    EXPECT_EQ(run(GeometryAction::kNormals, 0).changed, 2U);
    EXPECT_THAT(normal(left, 1), near3(-slope, 0, slope));
    run(GeometryAction::kNormals, 89);
    EXPECT_THAT(normal(left, 1), near3(-slope, 0, slope));
    EXPECT_EQ(run(GeometryAction::kNormals, 90).changed, 2U);
    EXPECT_THAT(normal(left, 1), near3(0, 0, 1));
    EXPECT_THAT(normal(left, 0), near3(-slope, 0, slope));
    // In its own space the mirrored face is turned over, and its normals look the way it does.
    EXPECT_THAT(normal(right, 0), near3(0, 0, -1));
    EXPECT_EQ(scene.meshOf(right).verts.Count(), 4);
    EXPECT_THROW(run(GeometryAction::kNormals, 181), std::invalid_argument);
    ASSERT_TRUE(kiln::Core::get()->history().goTo(steps));
    EXPECT_EQ(sceneText(), before);

    // A vertex of two triangles in one mesh becomes two where an edge is sharp.
    INode* const folded = twoTriangles(0, 10);
    Mesh& mesh = scene.meshOf(folded);
    mesh.faces[1] = Face{{0, 2, 5}};
    mesh.tVerts.SetCount(6);
    for (int i = 0; i < 6; ++i) mesh.tVerts[i] = Point3f(static_cast<float>(i), 1, 0);
    for (const Face& face : mesh.faces) mesh.tvFaces.Append({{face.v[0], face.v[1], face.v[2]}});
    run(GeometryAction::kNormals, 10, folded);
    ASSERT_EQ(mesh.verts.Count(), 8);
    EXPECT_TRUE(mesh.IsConsistent());
    EXPECT_EQ(mesh.faces[1], (Face{{6, 7, 5}}));
    EXPECT_EQ(mesh.verts[7], mesh.verts[2]);
    EXPECT_EQ(mesh.tVerts[7], (Point3f{2, 1, 0}));
    EXPECT_EQ(mesh.tvFaces[1].t[1], 7U);
    EXPECT_THAT(mesh.normals[0], near3(0, 0, 1));
}

TEST_F(GeometryTest, WhatCannotBeGivenBackIsPassedOver) {
    FltMesh mesh;
    auto* const shown = new TriObject;
    shown->GetMesh() = scene.meshOf(scene.face);
    INode* const record = scene.add(scene.object, mesh, shown);
    FltUvList layers;
    layers.mask = 0x80000000;
    layers.coordinates.resize(4);
    INode* const layered = scene.addFace(scene.object, square(10, 20));
    scene.keep(layered, {&layers});
    INode* const shared = scene.host.CreateObjectNode(scene.face->GetObjectRef(), "twin");
    const Mesh before = scene.meshOf(scene.face);
    INode* const tops[] = {scene.object};
    const GeometryOutcome outcome = checks::carryOut(scene.host, GeometryAction::kFlip, tops);
    EXPECT_EQ(outcome.changed, 0U);
    EXPECT_EQ(outcome.passedOver, 3U);
    // Once its twin is turned over too, it is; and only once.
    INode* const both[] = {scene.face, scene.object, shared, record};
    EXPECT_EQ(checks::carryOut(scene.host, GeometryAction::kFlip, both).changed, 1U);
    EXPECT_EQ(scene.meshOf(scene.face).FaceNormal(0), -before.FaceNormal(0));
    // Nothing that counts corners is in the way of normals.
    EXPECT_EQ(run(GeometryAction::kNormals, 0, layered).changed, 1U);
    // The history refers to a mesh that has changed; that is nobody who shows it.
    EXPECT_EQ(run(GeometryAction::kFlip, 0, scene.host.GetRootNode()).changed, 1U);
    EXPECT_EQ(scene.meshOf(scene.face), before);
}

TEST_F(GeometryTest, VolumesAndCentersFitWhatIsShown) {
    FltBoundingBox box;
    FltBoundingSphere sphere;
    FltBoundingCenter center;
    scene.keep(scene.group, {&box, &sphere, &center});
    INode* const frozen = scene.add(scene.database, [] {
        FltGroup group;
        group.flags = FltGroup::kFrozenVolume;
        return group;
    }());
    scene.keep(frozen, {&box});
    scene.addFace(frozen, square());
    FltLod level;
    level.centerX = 99;
    INode* const near1 = scene.add(scene.group, level);
    INode* const far1 = scene.add(scene.group, level);
    level.flags = static_cast<std::int32_t>(FltLod::kFrozenCenter);
    level.centerX = 98;
    INode* const fixed = scene.add(scene.group, level);
    for (INode* const node : {near1, far1, fixed}) scene.addFace(node, square(10, 30));
    scene.addFace(far1, square(10, 30, 0, 8));
    scene.object->SetNodeTM(0, TransMatrix({-100, 0, 0}));
    const std::string before = sceneText();

    EXPECT_EQ(run(GeometryAction::kFitBounds).changed, 3U);
    const auto kept = fltkilnutil::sourceRecordsOf(*scene.group);
    box.readBytes(kept.attached[0].record.bytes(), 1580);
    EXPECT_EQ(box.lowest, (FltPoint3d{-100, 0, 0}));
    EXPECT_EQ(box.highest, (FltPoint3d{40, 10, 8}));
    sphere.readBytes(kept.attached[1].record.bytes(), 1580);
    EXPECT_TRUE(sphere.center.empty());
    EXPECT_NEAR(sphere.radius, std::sqrt(140 * 140 + 100 + 64) / 2, 1e-9);
    center.readBytes(kept.attached[2].record.bytes(), 1580);
    EXPECT_EQ(center.center, (FltPoint3d{-30, 5, 4}));
    for (INode* const node : {near1, far1}) {
        ASSERT_TRUE(fltGetRecord(node, level));
        EXPECT_EQ((Point3{level.centerX, level.centerY, level.centerZ}), (Point3{35, 5, 4}));
    }
    ASSERT_TRUE(fltGetRecord(fixed, level));
    EXPECT_EQ(level.centerX, 98);
    EXPECT_EQ(run(GeometryAction::kFitBounds).changed, 0U);
    ASSERT_TRUE(kiln::Core::get()->history().undo());
    EXPECT_EQ(sceneText(), before);
}

TEST_F(GeometryTest, UnitsChangeEverythingThatIsALengthTogether) {
    FltDof dof;
    dof.origin = {1, 2, 3};
    dof.xTranslationMax = 5;
    dof.yawMax = 90;
    INode* const motion = scene.add(scene.group, dof);
    motion->SetLocalTM(0, TransMatrix({1, 0, 0}));
    FltClipRegion clip;
    clip.corner0X = 2;
    clip.plane0A = 1;
    clip.plane0D = 4;
    INode* const region = scene.add(scene.group, clip);
    FltBsp plane;
    plane.planeD = 3;
    INode* const bsp = scene.add(scene.group, plane);
    FltLod level;
    level.switchInDistance = 1000;
    level.centerY = 7;
    INode* const lod = scene.add(scene.group, level);
    const FltField size = fltFieldFind(lod, "FltLodSize");
    ASSERT_TRUE(size && fltFieldLoad(lod, size, 1580) && fltFieldStore(lod, size, "2"));
    // A mesh record, whose second vertex stands in two records, and a vertex without a mesh.
    FltVertex vertex;
    vertex.position = {1, 2, 3};
    FltBoundingSphere sphere;
    sphere.radius = 4;
    FltLocalVertexPool pool;
    pool.vertexCount = 2;
    pool.mask = 0xA0000000;
    pool.vertices.resize(2);
    pool.vertices[0].position = {10, 20, 30};
    pool.vertices[1].position = {1, 1, 1};
    FltToken token;
    pool.writeToken(token, 1580);
    Bytes whole(token.data(), token.data() + token.length());
    Bytes first(whole.begin(), whole.begin() + 4 + 8 + 28 + 12),
        rest(whole.begin() + 52, whole.end());
    first[3] = static_cast<std::uint8_t>(first.size());
    rest.insert(rest.begin(), {0, 23, 0, static_cast<std::uint8_t>(rest.size() + 4)});
    INode* const mesh = scene.add(scene.object, FltMesh());
    fltkilnutil::SourceRecordsWriter writer;
    writer.begin(1580);
    for (const FltRecord* const one :
         {static_cast<const FltRecord*>(&vertex), static_cast<const FltRecord*>(&sphere)}) {
        one->writeToken(token, 1580);
        token.finish();
        writer.record({token.data(), token.length()});
    }
    writer.record(first);
    writer.record(rest);
    fltkilnutil::storeSourceChunk(*mesh, fltkilnutil::SourceChunk::records, writer.bytes());
    INode* const foreign = scene.addFace(scene.host.GetRootNode(), square());
    const std::string before = sceneText();

    // The database, its face, the four nodes with records of lengths, and the mesh record.
    EXPECT_EQ(checks::changeUnits(scene.host, scene.database, 1).changed, 7U);
    FltHeader header;
    ASSERT_TRUE(fltGetRecord(scene.database, header));
    EXPECT_EQ(header.vertexCoordinateUnits, 1);
    EXPECT_EQ(scene.meshOf(scene.face).verts[2], (Point3{0.01, 0.01, 0}));
    EXPECT_EQ(scene.meshOf(foreign).verts[2], (Point3{10, 10, 0}));
    EXPECT_EQ(motion->GetLocalTM(0).GetTrans(), (Point3{0.001, 0, 0}));
    ASSERT_TRUE(fltGetRecord(motion, dof));
    EXPECT_EQ(dof.origin, (FltPoint3d{0.001, 0.002, 0.003}));
    EXPECT_EQ(dof.xTranslationMax, 0.005);
    EXPECT_EQ(dof.yawMax, 90);
    ASSERT_TRUE(fltGetRecord(region, clip));
    EXPECT_EQ(clip.corner0X, 0.002);
    EXPECT_EQ(clip.corner0Y, FltClipRegion::kUnsetCoordinate);
    EXPECT_EQ(clip.plane0D, 0.004);
    EXPECT_EQ(clip.plane0A, 1);
    ASSERT_TRUE(fltGetRecord(bsp, plane));
    EXPECT_EQ(plane.planeD, 0.003);
    ASSERT_TRUE(fltGetRecord(lod, level));
    EXPECT_EQ(level.switchInDistance, 1);
    EXPECT_EQ(level.centerY, 0.007);
    ASSERT_TRUE(fltFieldLoad(lod, fltFieldFind(lod, "FltLodSize"), 1580));
    EXPECT_STREQ(fltFieldFind(lod, "FltLodSize").row->value.text(), "0.002");
    const auto kept = fltkilnutil::sourceRecordsOf(*mesh);
    vertex.readBytes(kept.attached[0].record.bytes(), 1580);
    EXPECT_EQ(vertex.position, (FltPoint3d{0.001, 0.002, 0.003}));
    sphere.readBytes(kept.attached[1].record.bytes(), 1580);
    EXPECT_EQ(sphere.radius, 0.004);
    Bytes body(kept.attached[2].record.body().begin(), kept.attached[2].record.body().end());
    ASSERT_EQ(body.size() + 4, first.size());
    body.insert(body.end(), kept.attached[3].record.body().begin(),
                kept.attached[3].record.body().end());
    pool.readBody(body);
    EXPECT_EQ(pool.vertices[0].position, (FltPoint3d{0.01, 0.02, 0.03}));
    EXPECT_EQ(pool.vertices[1].position, (FltPoint3d{0.001, 0.001, 0.001}));
    ASSERT_TRUE(kiln::Core::get()->history().undo());
    EXPECT_EQ(sceneText(), before);

    // Refused: what is no database, what is shown outside of it, units that are none.
    EXPECT_THROW(checks::changeUnits(scene.host, nullptr, 1), std::invalid_argument);
    EXPECT_THROW(checks::changeUnits(scene.host, scene.group, 1), std::invalid_argument);
    EXPECT_THROW(checks::changeUnits(scene.host, scene.database, 2), std::invalid_argument);
    EXPECT_EQ(checks::changeUnits(scene.host, scene.database, 0).changed, 0U);
    foreign->SetObjectRef(scene.face->GetObjectRef());
    const std::string shared = sceneText();
    EXPECT_THROW(checks::changeUnits(scene.host, scene.database, 1), std::invalid_argument);
    EXPECT_EQ(sceneText(), shared);
}

TEST_F(GeometryTest, ADatabaseIsFoundFromWithinOrWhereItIsTheOnlyOne) {
    EXPECT_EQ(checks::databaseOf(scene.host, scene.face), scene.database);
    EXPECT_EQ(checks::databaseOf(scene.host, nullptr), scene.database);
    INode* const other = scene.add(nullptr, FltHeader());
    EXPECT_EQ(checks::databaseOf(scene.host, nullptr), nullptr);
    EXPECT_EQ(checks::databaseOf(scene.host, other), other);
}

TEST_F(GeometryTest, TrianglesBecomePolygonsOnce) {
    EXPECT_EQ(run(GeometryAction::kTriangulate).changed, 1U);
    for (const Face& face : scene.meshOf(scene.face).faces) EXPECT_EQ(face.flags, EDGE_ALL);
    EXPECT_EQ(run(GeometryAction::kTriangulate).changed, 0U);
    EXPECT_EQ(checks::carryOut(scene.host, GeometryAction::kTriangulate, {}).changed, 0U);
}

}  // namespace
