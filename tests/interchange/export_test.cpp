// Scenes into files: what was edited, what was made in the scene, what goes wrong.
#include "exportscene.h"
#include "fltbytes.h"

#include "../tessera_core/recordingbrowser.h"

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <interchange/nodelooks.h>
#include <quillon/fltface.h>
#include <quillon/fltgroup.h>
#include <quillon/fltheader.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltobject.h>
#include <quillon/fltopcode.h>
#include <quillon/flttext.h>
#include <tessera/aviaryutil.h>

namespace {

class ExportTest : public ExportScene {
protected:
    INode* database() { return host.GetRootNode()->GetChildNode(0); }

    /// Exports the scene and imports the result in its place.
    INode* reimported(const interchange::ExportOptions& options = {}) {
        const std::vector<std::uint8_t> file = exported(options);
        core.newScene();
        return import(file);
    }

    template <typename Record>
    static Record recordOf(INode* node) {
        Record record;
        EXPECT_TRUE(fltGetRecord(node, record));
        return record;
    }
};

const std::initializer_list<std::array<double, 3>> kPoints = {
    {0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};

}  // namespace

TEST_F(ExportTest, SaysWhatAFileHasNoPlaceFor) {
    FltBytes file("f");
    file.push().group("g").face("p", kFltSurfaceNoColor | kFltSurfaceHidden).pop();
    const auto leftOut = [this](const interchange::ExportOptions& options = {}) {
        return interchange::leftOutOf(options, host);
    };
    INode* const first = import(file);
    EXPECT_EQ(leftOut(), "") << "all of it was read from such a file";
    INode* const group = first->GetChildNode(0);
    group->Hide(true);
    EXPECT_EQ(leftOut(), "that 1 node is hidden: g");
    for (const char* name : {"a", "b", "c", "d"})
        group->AttachChild(host.CreateObjectNode(new DummyObject, name));
    host.CreateObjectNode(new BoxObject, "house")
        ->AddAppDataChunk(Class_ID(1, 2), HELPER_CLASS_ID, 0, 0, nullptr);
    EXPECT_EQ(leftOut(),
              "4 nodes of no OpenFlight kind: a, b, c…\n"
              "that 1 node is hidden: g\n"
              "what other plug-ins keep on 1 node: house");
    host.SelectNode(group);
    interchange::ExportOptions selected;
    selected.selectedOnly = true;
    EXPECT_EQ(leftOut(selected), "that 1 node is hidden: g");

    core.newScene();
    INode* const own = import(file);
    import(FltBytes("other"), "other");
    interchange::ExportOptions part;
    part.database = own;
    EXPECT_EQ(leftOut(part), "1 other database");
    core.newScene();
    EXPECT_THROW(leftOut(), std::exception) << "nothing to write";
}

TEST_F(ExportTest, WritesEditsAndKeepsTheRest) {
    FltBytes file("f");
    Bytes group;
    group.field("old", 8).u16(1).u16(0xABCD).u32(5).zeros(16).u32(0xCAFE).u32(0xBEEF);
    file.push()
        .record(kFltGroup, group)
        .comment("old comment")
        .matrix(1, 2, 3)
        .longId("old name")
        .pop();
    INode* node = import(file)->GetChildNode(0);
    auto record = recordOf<FltGroup>(node);
    record.flags = 77;
    ASSERT_TRUE(fltPutRecord(node, record));
    ASSERT_TRUE(fltPutComment(node, "new comment"));
    node->SetName("新名");
    node->SetLocalTM(0, TransMatrix({4, 5, 6}));
    const std::vector<std::uint8_t> out = exported();

    Bytes edited;
    edited.field("old", 8).u16(1).u16(0xABCD).u32(77).zeros(16).u32(0xCAFE).u32(0xBEEF);
    FltBytes expected("f");
    expected.push().record(kFltGroup, edited).comment(std::string_view("new comment\0", 12));
    // A matrix comes padded to a multiple of 8.
    expected.matrix(4, 5, 6, 4).record(kFltLongId, Bytes().text("新名").zeros(6)).pop();
    const auto body = [](std::span<const std::uint8_t> bytes) {
        return std::vector<std::uint8_t>(bytes.begin() + FltBytes::kHeaderLength, bytes.end());
    };
    EXPECT_EQ(body(out), body(expected));
    node = reimported()->GetChildNode(0);
    EXPECT_STREQ(node->GetName(), "新名");
    EXPECT_EQ(node->GetNodeTM(0).GetTrans(), (Point3{4, 5, 6}));
    EXPECT_EQ(recordOf<FltGroup>(node).flags, 77);
    std::string comment;
    EXPECT_TRUE(fltGetComment(node, comment));
    EXPECT_EQ(comment, "new comment");
}

TEST_F(ExportTest, DropsPackedColorsOfEditedIndices) {
    constexpr std::uint32_t kPacked = 0x10000000;
    FltBytes file("f");
    file.palette(kPoints)
        .push()
        .face("kept", kPacked, 0xFF332211)
        .face("edited", kPacked, 0xFF332211);
    INode* const edited = import(file.pop())->GetChildNode(1);
    auto record = recordOf<FltFace>(edited);
    record.primaryColorIndex = 300;
    ASSERT_TRUE(fltPutRecord(edited, record));
    INode* const again = reimported();
    EXPECT_EQ(again->GetChildNode(0)->GetWireColor(), 0x332211U);
    EXPECT_NE(again->GetChildNode(1)->GetWireColor(), 0x332211U);
    EXPECT_EQ(recordOf<FltFace>(again->GetChildNode(1)).primaryColorIndex, 300U);
    EXPECT_EQ(recordOf<FltFace>(again->GetChildNode(1)).flags & kPacked, 0U);
}

// The record of a copied face has no packed color: that is among what its import kept.
TEST_F(ExportTest, KeepsPackedColorsTogetherWithTheirFlag) {
    constexpr std::uint32_t kPacked = 0x10000000;
    FltBytes file("f");
    file.palette(kPoints).push().polygon("plain", {0, 1, 2}).face("packed", kPacked, 0xFF332211);
    file.push().list({0, 1, 2}).pop().face("black", kPacked, 0).push().list({0, 1, 2}).pop().pop();
    INode* const database = import(file);
    INode* const packed = database->GetChildNode(1);
    ASSERT_TRUE(fltCopyData(packed, database->GetChildNode(0)));
    INode* const made = host.CreateObjectNode(new DummyObject, "made");
    ASSERT_TRUE(database->AttachChild(made, false));
    ASSERT_TRUE(fltCopyData(packed, made));
    for (const std::uint32_t revision : {1580U, 1420U}) {
        const std::vector<std::uint8_t> out = exported({revision, false});
        std::vector<std::pair<std::uint32_t, FltPackedColor>> colors;
        const interchange::FileIndex index = interchange::readFileIndex(out);
        for (const auto& node : index.nodes) {
            if (node.kind != kFltFace) continue;
            FltFace face;
            face.readBytes(index.recordAt(node.record).bytes(), revision);
            colors.emplace_back(face.flags & kPacked, face.packedPrimaryColor);
        }
        const FltPackedColor none{};
        const auto color = FltPackedColor::fromComponents(0x11, 0x22, 0x33, 0xFF);
        const decltype(colors) expected = {{0, none}, {kPacked, color}, {kPacked, none}, {0, none}};
        EXPECT_TRUE(colors == expected) << revision;
    }
}

// A face that has become several polygons: each is written as a face of that color.
TEST_F(ExportTest, GivesEveryPolygonOfAFaceItsPackedColor) {
    constexpr std::uint32_t kPacked = 0x10000000;
    FltBytes file("f");
    file.palette(kPoints).push().face("packed", kPacked, 0xFF332211);
    file.push().list({0, 1, 2}).pop().pop();
    INode* const face = import(file)->GetChildNode(0);
    Mesh& mesh = dynamic_cast<TriObject&>(*face->GetObjectRef()).GetMesh();
    mesh.faces.Append(mesh.faces[0]);
    ASSERT_EQ(mesh.faces.Count(), 2);
    INode* const again = reimported();
    ASSERT_EQ(again->NumberOfChildren(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(again->GetChildNode(i)->GetWireColor(), 0x332211U) << i;
        EXPECT_NE(recordOf<FltFace>(again->GetChildNode(i)).flags & kPacked, 0U) << i;
    }
}

TEST_F(ExportTest, WritesWhatWasMadeInTheScene) {
    // No header, a box that is a face by what it shows, a group with a light, and what is neither.
    INode* const box = host.CreateObjectNode(new BoxObject(2, 4, 6), "Box");
    INode* const helper = host.CreateObjectNode(new DummyObject, "helper");
    INode* const group = host.CreateObjectNode(new DummyObject, "a group with a long name");
    ASSERT_TRUE(fltEnsureKind(group, FltNodeKind::Group, kFltRevision));
    ASSERT_TRUE(fltPutRecord(group, FltGroup()));
    ASSERT_TRUE(helper->AttachChild(group, false));
    helper->SetLocalTM(0, TransMatrix({10, 0, 0}));
    group->SetLocalTM(0, TransMatrix({0, 5, 0}));
    auto* const omni = new GenLight(OMNI_LIGHT_CLASS_ID);
    omni->SetColor(0x0000FF);
    INode* const light = host.CreateObjectNode(omni, "lamp");
    ASSERT_TRUE(group->AttachChild(light, false));
    light->SetLocalTM(0, TransMatrix({1, 2, 3}));
    INode* const again = reimported();

    EXPECT_EQ(tree(), "airfield(Box(f1,f2,f3,f4,f5,f6),a group with a long name(lamp))");
    EXPECT_EQ(report.summary, "exported 4 nodes (1 group, 1 light source, 1 face, 1 header)");
    INode* const boxAgain = again->GetChildNode(0);
    EXPECT_EQ(fltText(recordOf<FltObject>(boxAgain).asciiId), "o1");
    EXPECT_EQ(recordOf<FltHeader>(again).nextFaceId, 7);
    for (int i = 0; i < 6; ++i) {
        const auto& mesh =
            dynamic_cast<TriObject&>(*boxAgain->GetChildNode(i)->GetObjectRef()).GetMesh();
        ASSERT_EQ(mesh.verts.Count(), 4) << "a side is one polygon";
        ASSERT_EQ(mesh.normals.Count(), 4) << "which is lit";
        for (const Point3f& normal : mesh.normals) EXPECT_EQ(normal, Point3f(mesh.FaceNormal(0)));
    }
    INode* const groupAgain = again->GetChildNode(1);
    EXPECT_EQ(groupAgain->GetNodeTM(0).GetTrans(), (Point3{10, 5, 0}));
    INode* const lightAgain = groupAgain->GetChildNode(0);
    EXPECT_EQ(lightAgain->GetNodeTM(0).GetTrans(), (Point3{11, 7, 3}));
    EXPECT_EQ(lightAgain->GetObjectRef()->ClassID(), OMNI_LIGHT_CLASS_ID);
    EXPECT_EQ(dynamic_cast<GenLight&>(*lightAgain->GetObjectRef()).GetColor(), 0x0000FFU);
    static_cast<void>(box);
}

TEST_F(ExportTest, GivesNewFacesTheLooksOfTheirNodes) {
    const auto add = [&](const char* name, COLORREF color) {
        INode* const node = host.CreateObjectNode(new BoxObject(2, 2, 2), name);
        node->SetWireColor(color);
        return node;
    };
    add("plain", 0x332211);
    INode* const edited = add("edited", 0x665544);
    ASSERT_TRUE(fltEnsureKind(edited, FltNodeKind::Face, kFltRevision));
    ASSERT_TRUE(fltPutRecord(edited, FltFace()));
    INode* const indexed = add("indexed", 0x998877);
    FltFace byIndex;
    byIndex.flags = 0;
    byIndex.primaryColorIndex = 5;
    ASSERT_TRUE(fltEnsureKind(indexed, FltNodeKind::Face, kFltRevision));
    ASSERT_TRUE(fltPutRecord(indexed, byIndex));
    INode* const painted = add("painted", 0x0000FF);
    KilnFace options;
    options.useMaterial = options.superFace = 1;
    ASSERT_TRUE(fltPutOptions(painted, options));
    painted->SetNodeTM(0, TransMatrix({5, 6, 7}));
    auto* const colored = new TriObject;
    Mesh& mesh = colored->GetMesh();
    for (const Point3& p : {Point3{0, 0, 0}, Point3{1, 0, 0}, Point3{0, 1, 0}}) {
        mesh.verts.Append(p);
        mesh.colors.Append(0x00FF00);
    }
    const DWORD corners[] = {0, 1, 2};
    ASSERT_TRUE(mesh.AppendPolygon(3, corners));
    host.CreateObjectNode(colored, "colored")->SetWireColor(0x123456);
    INode* const top = reimported({1420, false});

    const auto node = [&](const char* name) { return host.GetINodeByName(name); };
    const auto side = [&](const char* name, int i) { return node(name)->GetChildNode(i); };
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(side("plain", i)->GetWireColor(), 0x332211U) << i;
        EXPECT_EQ(recordOf<FltFace>(side("plain", i)).lightMode, 2);
        EXPECT_EQ(side("edited", i)->GetWireColor(), 0x665544U);
        EXPECT_EQ(recordOf<FltFace>(side("edited", i)).lightMode, 0) << "as its record says";
        EXPECT_EQ(recordOf<FltFace>(side("indexed", i)).primaryColorIndex, 5U);
        EXPECT_EQ(recordOf<FltFace>(side("indexed", i)).flags, 0U);
    }
    EXPECT_EQ(node("colored")->GetWireColor(), DEFAULT_WIRE_COLOR);
    EXPECT_EQ(recordOf<FltFace>(node("colored")).lightMode, 3);
    INode* const super = node("painted");
    EXPECT_EQ(super->NumberOfChildren(), 5) << "the other sides lie on the first";
    EXPECT_EQ(super->GetWireColor(), 0xFFFFFFU);
    EXPECT_EQ(super->GetChildNode(0)->GetNodeTM(0).GetTrans(), (Point3{5, 6, 7}));
    interchange::NodeLooks looks;
    looks.BeginLooks(&host);
    NodeLook look;
    ASSERT_TRUE(looks.GetLook(super, look));
    EXPECT_EQ(look.diffuse.red, 1);
    EXPECT_EQ(look.diffuse.blue, 0);
    EXPECT_EQ(look.layer, 0);
    static_cast<void>(top);
}

// Taking a face's picture away in its record takes it out of the file.
TEST_F(ExportTest, KeepsPicturesAsTheRecordSays) {
    FltBytes file("f");
    file.record(kFltTexture, Bytes().field("grass.rgb", 200).u32(0).zeros(8))
        .palette(kPoints)
        .push();
    Bytes face;
    face.field("a", 8).zeros(16).u16(0).u16(0xFFFF).zeros(12).u32(0x60000000).zeros(28);
    file.record(kFltFace, face).push().list({0, 1, 2}).pop().pop();
    INode* const node = import(file)->GetChildNode(0);
    ASSERT_NE(node->GetTexmap(), nullptr);
    auto record = recordOf<FltFace>(node);
    record.textureIndex = -1;
    ASSERT_TRUE(fltPutRecord(node, record));
    EXPECT_EQ(reimported()->GetChildNode(0)->GetTexmap(), nullptr);
}

// What hangs on a mesh hangs on what stands for it; a mesh on a face has no such place.
TEST_F(ExportTest, KeepsTogetherWhatHangsOnMeshes) {
    const auto add = [&](const char* name, INode* above) {
        INode* const node = host.CreateObjectNode(new BoxObject(2, 2, 2), name);
        EXPECT_TRUE(above == nullptr || above->AttachChild(node, false));
        return node;
    };
    INode* const house = add("house", nullptr);
    add("roof", house);
    ASSERT_TRUE(fltPutComment(house, "of wood"));
    INode* const post = add("post", nullptr);
    INode* const lamp = host.CreateObjectNode(new GenLight(OMNI_LIGHT_CLASS_ID), "lamp");
    ASSERT_TRUE(post->AttachChild(lamp, false));
    reimported();
    EXPECT_EQ(tree(),
              "airfield(house(f1,f2,f3,f4,f5,f6,roof(f7,f8,f9,f10,f11,f12)),"
              "post(f13,f14,f15,f16,f17,f18,lamp))");
    EXPECT_TRUE(fltHasRecord(host.GetINodeByName("house")));
    FltObject object;
    FltGroup group;
    EXPECT_TRUE(fltGetRecord(host.GetINodeByName("house"), object));
    EXPECT_TRUE(fltGetRecord(host.GetINodeByName("post"), group)) << "an object holds no lights";
    std::string comment;
    EXPECT_TRUE(fltGetComment(host.GetINodeByName("house"), comment));
    EXPECT_EQ(comment, "of wood");
    EXPECT_FALSE(fltGetComment(host.GetINodeByName("f1"), comment));

    add("mark", host.GetINodeByName("f2"));
    reimported();
    EXPECT_EQ(host.GetINodeByName("mark")->GetParentNode(), host.GetINodeByName("f2"));
}

// A mesh of several polygons becomes as many faces, each of which stands where the mesh did.
TEST_F(ExportTest, PlacesEveryFaceOfAMeshThatWasMoved) {
    INode* const box = host.CreateObjectNode(new BoxObject(2, 2, 2), "hut");
    box->SetNodeTM(0, TransMatrix({40, 100, 0}));
    const std::vector<std::uint8_t> file = exported();
    core.newScene();
    import(file);
    Box3 around;
    int faces = 0;
    std::vector<INode*> open{host.GetRootNode()};
    while (!open.empty()) {
        INode* const node = open.back();
        open.pop_back();
        for (int i = 0; i < node->NumberOfChildren(); ++i) open.push_back(node->GetChildNode(i));
        const auto* const mesh = dynamic_cast<TriObject*>(node->GetObjectRef());
        if (mesh == nullptr) continue;
        ++faces;
        for (const Point3& vertex : mesh->GetMesh().verts)
            around += node->GetNodeTM(0).PointTransform(vertex);
    }
    EXPECT_EQ(faces, 6);
    EXPECT_EQ(around.Min(), (Point3{39, 99, 0}));
    EXPECT_EQ(around.Max(), (Point3{41, 101, 2}));
}

TEST_F(ExportTest, ReturnsPlacesToTheLastBit) {
    const Matrix3 turned{{0, 1, 0}, {-1, 0, 0}, {0, 0, 0.5}, {6378137.3, -0.1, 1e-9}};
    const Matrix3 places[] = {TransMatrix({6378137.3, 0, 0}), turned, TransMatrix({1, 2, 3})};
    for (const Matrix3& place : places) {
        host.CreateObjectNode(new BoxObject(2, 2, 2), "hut")->SetNodeTM(0, place);
    }
    const std::vector<std::uint8_t> file = exported();
    core.newScene();
    import(file);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(database()->GetChildNode(i)->GetNodeTM(0), places[i]);
    EXPECT_EQ(exported(), file);

    Bytes translation;
    translation.u16(78).u16(56).zeros(4 + 24).f64(6378137.3).f64(0).f64(0);
    FltFileReader reader(file);
    std::vector<unsigned> steps;
    while (reader.next()) {
        if (reader.opcode() != 49 && reader.opcode() != 78 && reader.opcode() != 94) continue;
        steps.push_back(reader.opcode());
        if (steps.size() != 2) continue;
        EXPECT_TRUE(std::ranges::equal(std::span(file).subspan(reader.offset(), reader.length()),
                                       translation.vector()));
    }
    EXPECT_EQ(steps, (std::vector<unsigned>{49, 78, 49, 94, 78, 49}));
}

// The steps behind a matrix may be another program's, for another purpose.
TEST_F(ExportTest, BelievesTheMatrixRatherThanItsSteps) {
    FltBytes file("f");
    file.push().group("a").matrix(6378137.5F, 0, 0);
    file.record(kFltTranslate, Bytes().zeros(4 + 24).f64(6378137.3).f64(0).f64(0));
    file.group("b")
        .matrix(1, 0, 0)
        .record(kFltTranslate, Bytes().zeros(4 + 24).f64(2).f64(0).f64(0))
        .pop();
    INode* const top = import(file);
    EXPECT_EQ(top->GetChildNode(0)->GetNodeTM(0).GetTrans(), (Point3{6378137.3, 0, 0}));
    EXPECT_EQ(top->GetChildNode(1)->GetNodeTM(0).GetTrans(), (Point3{1, 0, 0}));
}

TEST_F(ExportTest, WritesEditedLightPoints) {
    FltBytes file("f");
    file.palette(kPoints).push();
    file.record(kFltLightPoint, Bytes().field("lp", 8).zeros(144)).push().list({0, 1, 2}).pop();
    file.record(kFltIndexedLightPoint, Bytes().field("indexed", 8).u32(2).zeros(12))
        .push()
        .list({0, 1, 2})
        .pop();
    const auto mesh = [](INode* node) -> Mesh& {
        return dynamic_cast<TriObject&>(*node->GetObjectRef()).GetMesh();
    };
    INode* const top = import(file.pop());
    for (int i = 0; i < 2; ++i) mesh(top->GetChildNode(i)).verts[1] = {7, 8, 9};
    INode* const again = reimported();
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(mesh(again->GetChildNode(i)).verts.Count(), 3);
        EXPECT_EQ(mesh(again->GetChildNode(i)).verts[1], (Point3{7, 8, 9}));
    }
}

TEST_F(ExportTest, MovesNodesAmongParents) {
    FltBytes file("f");
    file.palette(kPoints).push().group("a").push().object("b").object("c").pop().comment("x");
    file.group("d").face("e").push().list({0, 1, 2}).pop().pop();
    INode* const top = import(file);
    ASSERT_TRUE(top->GetChildNode(1)->AttachChild(top->GetChildNode(0)->GetChildNode(0), false));
    ASSERT_TRUE(top->GetChildNode(2)->AttachChild(top->GetChildNode(1), false));
    const std::string before = tree();
    reimported();
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(before, "f(a(c),e(d(b)))");
}

TEST_F(ExportTest, WritesTheRevisionAskedFor) {
    FltBytes file("f", 1610);
    file.palette(kPoints).push().group("a").polygon("f", {0, 1, 2}).pop();
    import(file);
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {0, 1610},    {1420, 1420}, {1500, 1500}, {1510, 1510},
        {1540, 1540}, {1580, 1580}, {1600, 1600}, {1660, 1660}};
    for (const auto& [asked, written] : cases) {
        const std::vector<std::uint8_t> out = exported({asked, false});
        const interchange::FileIndex index = interchange::readFileIndex(out);
        EXPECT_EQ(index.revision, written);
        EXPECT_EQ(index.nodes.size(), 3U);
        const std::size_t face = index.recordAt(index.nodes[2].record).length();
        EXPECT_EQ(face, written < 1510 ? 64U : 80U);
    }
    EXPECT_EQ(interchange::exportFile(pathOf("x.flt").c_str(), {1590, false}, report, host),
              IMPEXP_FAIL);
    EXPECT_EQ(report.error, "revision 1590 cannot be written; 1420 to 1580 and 1600 to 1660 can");
    EXPECT_FALSE(std::filesystem::exists(pathOf("x.flt")));

    core.newScene();
    import(FltBytes("f", 1700).push().group("a").pop());
    knownFindings = "";
    EXPECT_EQ(interchange::readFileIndex(exported()).revision, 1660U) << "the nearest";
}

TEST_F(ExportTest, SaysWhatAnOlderRevisionCannot) {
    FltBytes file("f", 1610);
    file.record(kFltShaderPalette, Bytes().zeros(60))
        .palette(kPoints)
        .push()
        .group("a")
        .record(kFltLightPointSystem, Bytes().zeros(16));
    file.record(kFltLightPoint, Bytes().zeros(152)).record(kFltLightPoint, Bytes().zeros(152));
    // A color beyond 16 bits, one within, and one that nobody sees.
    file.face("far", 0, 0, 70'000).face("near", 0x20000000, 0, 7).face("no", 0x60000000, 0, 70'000);
    INode* const database = import(file.pop());
    auto header = recordOf<FltHeader>(database);
    header.earthMajorAxis = 6378137;
    ASSERT_TRUE(fltPutRecord(database, header));
    const auto saidOf = [&](std::uint32_t revision) {
        exported({revision, false});
        return report.summary.substr(report.summary.rfind(')') + 1);
    };
    EXPECT_EQ(saidOf(0), "");
    EXPECT_EQ(saidOf(1660), "");
    EXPECT_EQ(saidOf(1600), "") << "what 16.x got since 16.0 is not told apart";
    EXPECT_EQ(saidOf(1580), ", which OpenFlight 15.8 cannot say in full: 1 shader");
    EXPECT_EQ(
        saidOf(1570),
        ", which OpenFlight 15.7 cannot say in full: 1 light point system, 1 shader, fields of "
        "the header");
    EXPECT_EQ(saidOf(1420),
              ", which OpenFlight 14.2 cannot say in full: 2 light points, 1 light point system, 1 "
              "shader, colors of 1 face, fields of the header");
}

// A header as published, in the places of which every byte says something.
TEST_F(ExportTest, GivesHeadersBackByteForByte) {
    const auto headerOf = [](std::uint32_t revision, std::size_t length) {
        Bytes body;
        body.field("base", 8).u32(revision);
        for (std::size_t at = 16; at < length; ++at) body.u8(static_cast<unsigned>(at % 83 + 1));
        return body;
    };
    const std::pair<std::uint32_t, std::size_t> cases[] = {
        {1420, 256}, {1420, 280}, {1510, 280}, {1540, 280}, {1560, 278}, {1570, 304}, {1570, 320},
        {1580, 324}, {1580, 328}, {1580, 200}, {1580, 401}, {1610, 324}, {1660, 324}};
    for (const auto& [revision, length] : cases) {
        SCOPED_TRACE(std::to_string(revision) + ", " + std::to_string(length));
        core.newScene();
        Bytes file;
        file.u16(1).u16(static_cast<unsigned>(length)).append(headerOf(revision, length));
        INode* const database = import(file);
        EXPECT_EQ(exported(), file.vector());

        // An edit touches its own bytes alone.
        auto header = recordOf<FltHeader>(database);
        header.projectionType = 0x11223344;
        std::vector<std::uint8_t> edited = file.vector();
        const auto edit = [&](std::size_t at, std::initializer_list<std::uint8_t> bytes) {
            std::ranges::copy(bytes, edited.begin() + static_cast<std::ptrdiff_t>(at));
        };
        edit(92, {0x11, 0x22, 0x33, 0x44});
        if (revision > 1420 && length > 270) {
            header.earthEllipsoidModel = 5;
            edit(268, {0, 0, 0, 5});
        }
        if (revision >= 1580 && length > 300) {
            header.radius = 1;
            header.utmZone = 33;
            header.earthMinorAxis = 2;
            edit(276, {0, 33});
            edit(292, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0});
            edit(316, {0x40, 0, 0, 0, 0, 0, 0, 0});
        }
        ASSERT_TRUE(fltPutRecord(database, header));
        EXPECT_EQ(exported(), edited);
    }
    // A header too short for the counter that names the new node keeps its length.
    core.newScene();
    Bytes cut;
    cut.u16(1).u16(200).append(headerOf(1580, 200));
    INode* const points = host.CreateObjectNode(new DummyObject, "points");
    ASSERT_TRUE(import(cut)->AttachChild(points, false));
    ASSERT_TRUE(fltEnsureKind(points, FltNodeKind::LightPoint, kFltRevision));
    ASSERT_TRUE(fltPutRecord(points, FltLightPoint()));
    const std::vector<std::uint8_t> out = exported();
    ASSERT_GT(out.size(), 200U);
    EXPECT_TRUE(std::equal(cut.vector().begin(), cut.vector().end(), out.begin()));
    EXPECT_EQ(interchange::readFileIndex(out).nodes.size(), 2U);
}

TEST_F(ExportTest, MakesNewMaterialsOpaque) {
    INode* const box = host.CreateObjectNode(new BoxObject(2, 2, 2), "box");
    KilnFace options;
    options.useMaterial = 1;
    ASSERT_TRUE(fltPutOptions(box, options));
    const std::vector<std::uint8_t> out = exported();
    FltFileReader reader(out);
    while (reader.next() && reader.opcode() != kFltMaterial) {
    }
    ASSERT_EQ(reader.opcode(), kFltMaterial);
    FltMaterial material;
    material.readToken(reader.token(), reader.revision());
    EXPECT_EQ(material.shininess, 0);
    EXPECT_EQ(material.alpha, 1);
}

TEST_F(ExportTest, WritesEditedLights) {
    const auto source = [](std::string_view id, std::uint32_t index) {
        Bytes body;
        body.field(id, 8).zeros(4).u32(index).zeros(12).f64(1).f64(2).f64(3);
        return body.f32(10).f32(20);
    };
    FltBytes file("f");
    file.record(kFltLightSourcePalette, Bytes().u32(0).zeros(8).field("lamp", 20).zeros(204))
        .push();
    file.record(kFltLightSource, source("moved", 0)).record(kFltLightSource, source("edited", 0));
    file.record(kFltLightSource, source("bright", 0))
        .record(kFltLightSource, source("lost", 9))
        .pop();
    INode* const top = import(file);
    top->GetChildNode(0)->SetLocalTM(
        0, top->GetChildNode(0)->GetLocalTM(0) * TransMatrix({100, 0, 0}));
    auto record = recordOf<FltLightSource>(top->GetChildNode(1));
    record.positionX = 50;
    ASSERT_TRUE(fltPutRecord(top->GetChildNode(1), record));
    KilnLight options;
    ASSERT_TRUE(fltGetOptions(top->GetChildNode(2), options));
    options.palette.diffuseGreen = 0.5F;
    ASSERT_TRUE(fltPutOptions(top->GetChildNode(2), options));

    INode* const again = reimported();
    record = recordOf<FltLightSource>(again->GetChildNode(0));
    EXPECT_EQ(record.positionX, 101);
    EXPECT_NEAR(record.yaw, 10, 1e-4);
    EXPECT_EQ(record.paletteIndex, 0);
    EXPECT_EQ(again->GetChildNode(1)->GetNodeTM(0).GetTrans(), (Point3{50, 2, 3}));
    EXPECT_EQ(recordOf<FltLightSource>(again->GetChildNode(2)).paletteIndex, 1)
        << "the lights that look as before keep the entry";
    ASSERT_TRUE(fltGetOptions(again->GetChildNode(2), options));
    EXPECT_EQ(options.palette.diffuseGreen, 0.5F);
    EXPECT_EQ(fltText(options.palette.name), "lamp");
    EXPECT_EQ(recordOf<FltLightSource>(again->GetChildNode(3)).paletteIndex, 9);
}

TEST_F(ExportTest, GivesNewPaletteEntriesFreeIndices) {
    const auto entry = [](std::uint32_t index, std::string_view name) {
        return Bytes().u32(index).zeros(8).field(name, 20).zeros(204);
    };
    const auto picture = [](std::uint32_t index, std::string_view name) {
        return Bytes().field(name, 200).u32(index).zeros(8);
    };
    const auto source = [](std::string_view id, std::uint32_t index) {
        return Bytes().field(id, 8).zeros(4).u32(index).zeros(48);
    };
    FltBytes file("f");
    file.record(kFltLightSourcePalette, entry(0, "first"))
        .record(kFltLightSourcePalette, entry(0x7FFFFFFF, "last"));
    file.record(kFltTexture, picture(0, "a.rgb")).record(kFltTexture, picture(0x7FFFFFFF, "b.rgb"));
    file.record(kFltTexture, picture(40'000, "c.rgb")).palette(kPoints).push();
    for (const std::uint32_t index : {0U, 0x7FFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFFFU}) {
        file.record(kFltLightSource, source("light", index));
    }
    file.polygon("new", {0, 1, 2}).polygon("far", {0, 1, 2}).polygon("same", {0, 1, 2}).pop();
    INode* const top = import(file);
    const char* const pictures[] = {"new.rgb", "c.rgb", "a.rgb"};
    for (int i = 0; i < 3; ++i) {
        auto* const map = new BitmapTex;
        map->SetMapName(pictures[i]);
        top->GetChildNode(4 + i)->SetTexmap(map);
    }
    INode* const again = reimported();
    const std::int32_t lights[] = {0, 0x7FFFFFFF, 1, 2};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(recordOf<FltLightSource>(again->GetChildNode(i)).paletteIndex, lights[i]) << i;
    }
    // A face has 16 bits for the index.
    const std::int16_t textures[] = {1, 2, 0};
    for (int i = 0; i < 3; ++i) {
        INode* const face = again->GetChildNode(4 + i);
        EXPECT_EQ(recordOf<FltFace>(face).textureIndex, textures[i]) << pictures[i];
        ASSERT_NE(face->GetTexmap(), nullptr);
        EXPECT_STREQ(static_cast<BitmapTex*>(face->GetTexmap())->GetMapName(), pictures[i]);
    }
}

TEST_F(ExportTest, WritesWhatIsSelected) {
    FltBytes file("f");
    file.push().group("a").push().object("b").object("c").pop().group("d").push().object("e").pop();
    INode* const top = import(file.pop());
    host.SelectNode(top->GetChildNode(0)->GetChildNode(1));
    host.SelectNode(top->GetChildNode(1), false);
    reimported({0, true});
    EXPECT_EQ(tree(), "f(a(c),d(e))");
}

// Directly, by way of a definition, and by way of a node above; once, however many refer to them.
TEST_F(ExportTest, BringsTheDefinitionsOfWhatIsSelectedAlong) {
    const auto numbered = [](unsigned number) { return Bytes().u16(0).u16(number); };
    FltBytes file("f");
    file.push().group("lib").push();
    for (const unsigned number : {1U, 2U, 3U, 4U}) {
        const std::string name = "def" + std::to_string(number);
        file.record(kFltInstanceDef, numbered(number)).longId(name).push().object("o" + name);
        if (number < 3)
            file.record(kFltInstanceRef, numbered(3 - number))
                .longId("to" + std::to_string(number));
        file.pop();
    }
    file.record(kFltInstanceDef, numbered(1)).longId("second").pop();
    file.group("a")
        .push()
        .record(kFltInstanceRef, numbered(1))
        .longId("r1")
        .record(kFltInstanceRef, numbered(1))
        .longId("r2");
    file.record(kFltInstanceRef, numbered(9)).longId("lost").pop();
    file.record(kFltInstanceRef, numbered(4)).longId("above").push().group("in").group("out").pop();
    INode* const top = import(file.pop());
    host.SelectNode(top->GetChildNode(1));
    host.SelectNode(host.GetINodeByName("in"), false);
    reimported({0, true});
    EXPECT_EQ(tree(),
              "f(lib(def1(odef1,to1),def2(odef2,to2),def4(odef4)),a(r1,r2,lost),above(in))");
}

TEST_F(ExportTest, WritesTheDatabaseThatItIsTold) {
    const auto numbered = [](unsigned number) { return Bytes().u16(0).u16(number); };
    const auto file = [&](const char* group) {
        FltBytes bytes;
        bytes.push()
            .record(kFltInstanceDef, numbered(1))
            .longId(group + std::string(" definition"));
        bytes.group(group).push().record(kFltInstanceRef, numbered(1)).longId("ref").pop().pop();
        return bytes;
    };
    INode* const tower = import(file("a"), "塔台 tower.flt");
    EXPECT_EQ(interchange::sourceFileOf(*tower), "塔台 tower.flt");
    const std::string text = core.sceneText();
    INode* const field = import(file("b"), "field.flt");
    const std::string path = pathOf("airfield.flt");
    std::ofstream(path) << "old";
    host.SelectNode(field);
    INode* const deleted = import(file("c"));
    host.DeleteNode(deleted);
    for (INode* const wrong : {static_cast<INode*>(nullptr), field->GetChildNode(0), deleted}) {
        report.progress = 0;
        EXPECT_EQ(interchange::exportFile(path.c_str(), {0, false, wrong}, report, host),
                  IMPEXP_FAIL);
        EXPECT_EQ(report.error, "a file holds one database, and which one is not said");
        EXPECT_EQ(contentOf(path).size(), 3U) << "the file is as it was";
    }
    const auto written = [&](const interchange::ExportOptions& options) {
        const std::string former = core.sceneText();
        reimported(options);
        const std::string names = tree();
        EXPECT_TRUE(core.loadSceneText(former, "former").ok());
        return names;
    };
    EXPECT_EQ(written({0, false, field}), "airfield(b definition,b(ref))");
    EXPECT_EQ(report.summary.substr(report.summary.size() - 25), "left out 1 other database");

    // A scene file keeps which file a database came from, and cannot make it a path.
    ASSERT_TRUE(core.loadSceneText(text, "tower").ok());
    EXPECT_EQ(interchange::sourceFileOf(*database()), "塔台 tower.flt");
    import(file("b"), "..\\..\\field.flt");
    INode* const other = host.GetRootNode()->GetChildNode(1);
    EXPECT_EQ(interchange::sourceFileOf(*other), "field.flt");
    // What is selected says which one is meant, unless it lies in both.
    host.SelectNode(other->GetChildNode(1));
    EXPECT_EQ(written({0, true}), "airfield(b definition,b(ref))");
    host.SelectNode(host.GetRootNode()->GetChildNode(0), false);
    host.SelectNode(host.GetRootNode()->GetChildNode(1)->GetChildNode(1), false);
    report.progress = 0;
    EXPECT_EQ(interchange::exportFile(path.c_str(), {0, true}, report, host), IMPEXP_FAIL);
}

TEST_F(ExportTest, LeavesTheOldFileAlone) {
    const std::string path = pathOf("old.flt");
    std::ofstream(path) << "old";
    const auto isOld = [&] {
        const auto content = contentOf(path);
        int files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            files += entry.path().filename() != "airfield.flt";
        }
        return files == 1 && std::string(content.begin(), content.end()) == "old";
    };
    EXPECT_EQ(interchange::exportFile(path.c_str(), {}, report, host), IMPEXP_FAIL);
    EXPECT_EQ(report.error, "the scene has no OpenFlight nodes to write");
    EXPECT_TRUE(isOld());

    FltBytes many("f");
    for (int i = 0; i < 1000; ++i) many.group("g");
    import(many);
    for (const double when : {0.3, 0.7, 1.0}) {
        report.progress = 0;
        report.cancelAt = when;
        EXPECT_EQ(interchange::exportFile(path.c_str(), {}, report, host), IMPEXP_CANCEL);
        EXPECT_TRUE(isOld()) << when;
    }
    report.cancelAt = 2;
    report.progress = 0;
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    EXPECT_EQ(interchange::exportFile(path.c_str(), {}, report, host), IMPEXP_FAIL);
    EXPECT_NE(report.error.find("cannot write " + path), std::string::npos) << report.error;
    EXPECT_TRUE(isOld());
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);

    report.progress = 0;
    const std::string nowhere = pathOf("nowhere") + "/x.flt";
    EXPECT_EQ(interchange::exportFile(nowhere.c_str(), {}, report, host), IMPEXP_FAIL);
    EXPECT_NE(report.error.find("cannot write " + nowhere), std::string::npos) << report.error;

    INode* deep = host.GetRootNode()->GetChildNode(0);
    for (std::size_t i = 0; i < interchange::kDeepestLevel; ++i) {
        INode* const child = host.CreateObjectNode(new DummyObject, "deep");
        ASSERT_TRUE(fltEnsureKind(child, FltNodeKind::Group, kFltRevision));
        ASSERT_TRUE(deep->AttachChild(child, false));
        deep = child;
    }
    report.progress = 0;
    EXPECT_EQ(interchange::exportFile(path.c_str(), {}, report, host), IMPEXP_FAIL);
    EXPECT_NE(report.error.find("deeper than 512"), std::string::npos) << report.error;
    EXPECT_TRUE(isOld());
}

// The siblings stand below rotated, skewed and singular matrices, and have matrices or none.
TEST_F(ExportTest, IsAsItWasAfterSiblingsWereMovedAndMovedBack) {
    const std::array<std::array<float, 9>, 3> matrices = {{
        {0.6F, 0.8F, 0, -0.8F, 0.6F, 0, 0, 0, 1},
        {1, 0.3F, 0, 0, 0.7F, 0.1F, 0.2F, 0, 1.1F},
        {1, 2, 3, 2, 4, 6, 0, 0, 1},
    }};
    FltBytes file("f");
    file.push();
    for (const auto& m : matrices) {
        Bytes matrix;
        for (std::size_t row = 0; row < 3; ++row) {
            matrix.f32(m[3 * row]).f32(m[3 * row + 1]).f32(m[3 * row + 2]).f32(0);
        }
        file.group("p").record(kFltMatrix, matrix.f32(7).f32(8).f32(9).f32(1)).push();
        file.group("a").group("b").matrix(1, 2, 3).group("c").pop();
    }
    INode* const top = import(file.pop());
    const std::vector<std::uint8_t> before = exported();
    tessera::aviaryUtil().Browser();
    for (int i = 0; i < top->NumberOfChildren(); ++i) {
        const auto* const parents = recordingBrowser().top.children[0]->children[0].get();
        const auto& parent = parents->children[static_cast<std::size_t>(i)];
        INode* const second = top->GetChildNode(i)->GetChildNode(1);
        const auto send = [&](tessera::BrowserEvent event, std::size_t at) {
            recordingBrowser().send(event, parent->children[at].get(), parent.get());
        };
        send(tessera::BrowserEvent::kMoveDown, 0);
        EXPECT_EQ(second->GetParentNode()->GetChildNode(0), second);
        send(tessera::BrowserEvent::kMoveUp, 1);
        EXPECT_EQ(second->GetParentNode()->GetChildNode(1), second);
    }
    EXPECT_EQ(exported(), before);
}
