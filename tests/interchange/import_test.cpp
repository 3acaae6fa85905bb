#include "fltbytes.h"
#include "importscene.h"

#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <gtest/gtest.h>
#include <quillon/fltface.h>
#include <quillon/fltgroup.h>
#include <quillon/fltheader.h>
#include <quillon/fltlod.h>
#include <quillon/fltopcode.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>

#include <limits>
#include <string>

namespace {

class ImportTest : public ImportScene {};

const std::initializer_list<std::array<double, 3>> kPoints = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0},
                                                              {2, 1, 0}, {0, 4, 0}, {8, 0, 0}};

FltNodeKind kindOf(INode* node) {
    FltNodeKind kind{};
    EXPECT_TRUE(fltGetKind(node, false, kind));
    return kind;
}

std::string commentOf(INode* node) {
    std::string text;
    EXPECT_TRUE(fltGetComment(node, text));
    return text;
}

const Mesh& meshOf(INode* node) {
    auto* object = dynamic_cast<TriObject*>(node->GetObjectRef());
    EXPECT_NE(object, nullptr);
    static const Mesh none;
    return object == nullptr ? none : object->GetMesh();
}

}  // namespace

TEST_F(ImportTest, BuildsTheTreeBelowOneNode) {
    FltBytes file("field");
    file.comment("top").palette(kPoints).push().group("runway").comment("one").comment("two");
    file.push().polygon("rwy0", {0, 1, 2}).pop().group("").pop();
    INode* database = import(file);

    EXPECT_EQ(tree(), "field(runway(rwy0),g001)");
    EXPECT_EQ(commentOf(database), "top");
    INode* runway = database->GetChildNode(0);
    EXPECT_EQ(commentOf(runway), "one\ntwo");
    EXPECT_EQ(kindOf(database), FltNodeKind::Header);
    EXPECT_EQ(kindOf(runway), FltNodeKind::Group);
    EXPECT_EQ(kindOf(runway->GetChildNode(0)), FltNodeKind::Face);
    std::string text;
    EXPECT_FALSE(fltGetComment(database->GetChildNode(1), text));
}

TEST_F(ImportTest, NamesNodesAsTheFileDoes) {
    const struct {
        const char* name;
        FltBytes file;
        std::string tree;
    } cases[] = {
        {"header says nothing", FltBytes(""), "airfield"},
        {"header says only db", FltBytes("db"), "airfield"},
        {"header says db at length", FltBytes("db").longId("db"), "db"},
        {"long identifier before ID", FltBytes("f").group("short").longId("塔台 control tower"),
         "f(塔台 control tower)"},
        {"empty long identifier", FltBytes("f").group("short").longId(""), "f(short)"},
        {"full ID", FltBytes("airfield").group("building"), "airfield(building)"},
        {"same names stay the same", FltBytes("f").group("a").group("a"), "f(a,a)"},
        {"no ID in the record", FltBytes("f").record(kFltExternalRef, Bytes().zeros(212)),
         "f(x001)"},
        {"numbers go on", FltBytes("f").group("").group("g001").group("").object(""),
         "f(g001,g001,g002,o001)"},
    };
    for (const auto& test : cases) {
        core.newScene();
        import(test.file);
        EXPECT_EQ(tree(), test.tree) << test.name;
    }
}

TEST_F(ImportTest, KeepsRecordsOfAnyLengthAtItsOwnRevision) {
    FltBytes file("f", 1610);
    Bytes lod;
    lod.field("near", 8).u32(0).f64(500).f64(100).zeros(44).zeros(24);
    file.record(kFltGroup, Bytes().field("longer", 8).u16(7).zeros(30))
        .record(kFltGroup, Bytes().field("short", 8));
    file.record(kFltLod, lod);
    INode* database = import(file);

    FltHeader header;
    ASSERT_TRUE(fltGetRecord(database, header));
    EXPECT_EQ(header.formatRevision, 1610);
    FltGroup group;
    ASSERT_TRUE(fltGetRecord(database->GetChildNode(0), group));
    EXPECT_EQ(group.relativePriority, 7);
    ASSERT_TRUE(fltGetRecord(database->GetChildNode(1), group));
    EXPECT_EQ(fltText(group.asciiId), "short");
    EXPECT_EQ(group.relativePriority, 0)
        << "what a short record lacks is zero, not its neighbour's";
    FltLod record;
    ASSERT_TRUE(fltGetRecord(database->GetChildNode(2), record));
    EXPECT_EQ(record.switchInDistance, 500);
    EXPECT_EQ(record.switchOutDistance, 100);
    for (int i = 0; i < 3; ++i) {
        std::uint32_t revision = 0;
        EXPECT_TRUE(fltGetParameter(database->GetChildNode(i), revision));
        EXPECT_EQ(revision, kFltRevision);
    }
}

TEST_F(ImportTest, ReadsFacesOfOlderRevisionsByTheirLayout) {
    Bytes face;
    face.field("old", 8).zeros(8).u16(5).u16(5).zeros(40);
    FltFace record;
    ASSERT_TRUE(
        fltGetRecord(import(FltBytes("f", 1420).record(kFltFace, face))->GetChildNode(0), record));
    EXPECT_EQ(record.primaryColorIndex, 5U);
    EXPECT_EQ(record.colorNameIndex, -1);
}

TEST_F(ImportTest, TurnsPolygonsIntoMeshes) {
    FltBytes file("f");
    file.palette(kPoints).push().polygon("tri", {0, 1, 2}).polygon("concave", {0, 1, 2, 3, 4});
    file.polygon("line", {0, 1, 5}).polygon("point", {2}).polygon("none", {}).face("bare").pop();
    INode* database = import(file);

    const Mesh& triangle = meshOf(database->GetChildNode(0));
    ASSERT_EQ(triangle.faces.Count(), 1);
    EXPECT_EQ(triangle.faces[0].flags, EDGE_ALL);
    EXPECT_EQ(triangle.FaceNormal(0), (Point3{0, 0, 1}));
    EXPECT_EQ(triangle.verts[2], (Point3{4, 4, 0}));
    EXPECT_EQ(meshOf(database->GetChildNode(1)).faces.Count(), 3);
    for (int i = 2; i < 6; ++i) {
        const Mesh& mesh = meshOf(database->GetChildNode(i));
        EXPECT_EQ(mesh.faces.Count() + mesh.verts.Count(), 0)
            << database->GetChildNode(i)->GetName();
    }
}

TEST_F(ImportTest, ColorsAndHidesFaces) {
    constexpr std::uint32_t kPacked = 0x10000000, kNone = 0x40000000, kHidden = 0x04000000;
    Bytes palette;
    palette.zeros(128 + 4 * 5).u8(255).u8(30).u8(20).u8(10).zeros(4 * 1018);
    FltBytes file("f");
    file.record(kFltColorPalette, palette).push();
    file.face("packed", kPacked, 0xFF332211).face("full", 0, 0, 5 * 128 + 127);
    file.face("half", 0, 0, 5 * 128 + 63).face("hidden", kHidden | kPacked, 0xFF332211);
    const int kUncolored = 4;
    file.face("none", kNone, 0, 5 * 128 + 127).face("beyond", 0, 0, 0xFFFFFFFF).pop();
    INode* database = import(file);

    const auto colorOf = [&](int i) { return database->GetChildNode(i)->GetWireColor(); };
    EXPECT_EQ(colorOf(0), 0x332211U);
    EXPECT_EQ(colorOf(1), 0x1E140AU);
    EXPECT_EQ(colorOf(2), 0x0F0A05U);
    EXPECT_FALSE(database->GetChildNode(0)->IsHidden());
    EXPECT_TRUE(database->GetChildNode(3)->IsHidden());
    const COLORREF hostColor = import(FltBytes().group("plain"))->GetChildNode(0)->GetWireColor();
    for (int i = kUncolored; i < 6; ++i) EXPECT_EQ(colorOf(i), hostColor) << i;
}

TEST_F(ImportTest, MovesNodesByTheirMatrix) {
    Bytes quarterTurn, broken;
    for (const float value :
         {0.F, 1.F, 0.F, 0.F, -1.F, 0.F, 0.F, 0.F, 0.F, 0.F, 1.F, 0.F, 10.F, 20.F, 30.F, 1.F}) {
        quarterTurn.f32(value);
    }
    for (int i = 0; i < 16; ++i) broken.f32(std::numeric_limits<float>::quiet_NaN());
    FltBytes file("f");
    file.push()
        .group("a")
        .record(kFltMatrix, quarterTurn)
        .push()
        .group("b")
        .record(kFltMatrix, quarterTurn)
        .pop();
    file.group("c").record(kFltMatrix, broken).pop();
    INode* database = import(file);

    INode* outer = database->GetChildNode(0);
    EXPECT_EQ(outer->GetNodeTM(0).PointTransform({1, 0, 0}), (Point3{10, 21, 30}));
    EXPECT_EQ(outer->GetChildNode(0)->GetNodeTM(0).PointTransform({0, 0, 0}),
              (Point3{-10, 30, 60}));
    EXPECT_TRUE(database->GetChildNode(1)->GetNodeTM(0).IsIdentity());
}

TEST_F(ImportTest, MakesLightsOfLightSources) {
    const auto entry = [](std::uint32_t index, std::uint32_t type) {
        Bytes body;
        body.u32(index).zeros(8).field("lamp", 20).zeros(20).f32(1).f32(0.5F).f32(0).zeros(20);
        return body.u32(type).zeros(148);
    };
    const auto source = [](std::uint32_t index) {
        Bytes body;
        body.field("ls", 8).zeros(4).u32(index).zeros(12).f64(1).f64(2).f64(3);
        return body.f32(0).f32(90);
    };
    FltBytes file("f");
    file.record(kFltLightSourcePalette, entry(3, 2))
        .record(kFltLightSourcePalette, entry(4, 0))
        .record(kFltLightSourcePalette, entry(5, 1));
    for (const std::uint32_t index : {3U, 4U, 5U, 9U}) file.record(kFltLightSource, source(index));
    INode* database = import(file);

    const Class_ID classes[] = {FSPOT_LIGHT_CLASS_ID, DIR_LIGHT_CLASS_ID, OMNI_LIGHT_CLASS_ID,
                                DIR_LIGHT_CLASS_ID};
    for (int i = 0; i < 4; ++i) {
        INode* node = database->GetChildNode(i);
        ASSERT_NE(node->GetObjectRef(), nullptr);
        EXPECT_EQ(node->GetObjectRef()->ClassID(), classes[i]) << i;
        EXPECT_EQ(node->GetNodeTM(0).GetTrans(), (Point3{1, 2, 3}));
        KilnLight options;
        EXPECT_TRUE(fltGetOptions(node, options));
        EXPECT_EQ(options.palette.paletteIndex, i < 3 ? i + 3 : -1);
    }
    EXPECT_EQ(dynamic_cast<GenLight&>(*database->GetChildNode(0)->GetObjectRef()).GetColor(),
              0x0080FFU);
    const Point3 beam = database->GetChildNode(0)->GetNodeTM(0).VectorTransform({0, 0, -1});
    EXPECT_NEAR(beam.z, -1, 1e-12) << "a light high above shines straight down";
}

TEST_F(ImportTest, KeepsThePointsOfLightPoints) {
    FltBytes file("f");
    file.palette(kPoints).push().record(kFltLightPoint, Bytes().field("lp", 8).zeros(144));
    file.push().list({0, 5, 2}).pop().record(kFltIndexedLightPoint,
                                             Bytes().field("indexed", 8).u32(2).zeros(12));
    file.push().list({0, 5, 2}).pop().pop();
    INode* const top = import(file);
    for (int i = 0; i < 2; ++i) {
        const Mesh& mesh = meshOf(top->GetChildNode(i));
        EXPECT_EQ(mesh.faces.Count(), 0);
        ASSERT_EQ(mesh.verts.Count(), 3);
        EXPECT_EQ(mesh.colors.Count(), 3);
        EXPECT_EQ(mesh.verts[1], (Point3{8, 0, 0}));
    }
}

TEST_F(ImportTest, ColorsLightPointsByTheirVertices) {
    constexpr unsigned kPacked = 0x1000, kNoColor = 0x2000;
    Bytes colors;
    colors.zeros(128 + 4 * 5).u8(255).u8(30).u8(20).u8(10).zeros(4 * 1018);
    FltBytes file("f");
    file.record(kFltColorPalette, colors);
    const auto palette = static_cast<std::uint32_t>(file.size());
    file.record(kFltVertexPalette, Bytes().u32(0));
    Bytes list;
    // Each kind of vertex has its color behind other things: normal, both, texture coordinates.
    const std::pair<unsigned, std::size_t> kinds[] = {{68, 0}, {69, 12}, {70, 20}, {71, 8}};
    for (const unsigned flags : {kPacked, 0U, kNoColor}) {
        for (const auto& [opcode, before] : kinds) {
            list.u32(static_cast<std::uint32_t>(file.size()) - palette);
            Bytes vertex;
            vertex.u16(0).u16(flags).zeros(24).zeros(before).u32(0xFF332211).u32(5 * 128 + 127);
            file.record(opcode, vertex);
        }
    }
    file.push()
        .record(kFltLightPoint, Bytes().field("lp", 8).zeros(144))
        .push()
        .record(kFltVertexList, list)
        .pop()
        .pop();
    const Mesh& mesh = meshOf(import(file)->GetChildNode(0));
    ASSERT_EQ(mesh.colors.Count(), 12);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(mesh.colors[i], i < 4 ? 0x332211U : i < 8 ? 0x1E140AU : 0xFFFFFFU) << i;
    }
}

TEST_F(ImportTest, CutsCommentsThatNoRecordCanHold) {
    FltBytes file("f");
    const std::string line(30'000, 'x');
    file.comment(line).comment(line).comment(line);
    const std::string text = commentOf(import(file));
    EXPECT_GT(text.size(), 60'000U);
    EXPECT_EQ(text.substr(0, 30'001), line + '\n');
}

TEST_F(ImportTest, LeavesTheSceneAloneWhenTheFileIsCutAnywhere) {
    FltBytes file("f");
    file.palette(kPoints).push().group("g").longId("a long name").comment("text").push();
    file.polygon("face", {0, 1, 2})
        .record(kFltPushSubface)
        .polygon("sub", {0, 1, 2})
        .record(kFltPopSubface)
        .pop();
    file.record(kFltSwitch, Bytes().field("s", 8).zeros(8).u32(1).u32(1).u32(1)).pop();
    host.CreateObjectNode(new DummyObject, "already here");
    const std::string before = tree();
    for (std::size_t length = 0; length < file.size(); ++length) {
        const std::span<const std::uint8_t> part(file.vector().data(), length);
        try {
            import(part);
            core.newScene();
            host.CreateObjectNode(new DummyObject, "already here");
        } catch (const FltFileError& error) {
            EXPECT_LE(error.offset(), length);
            EXPECT_EQ(tree(), before) << length;
        }
    }
}

TEST_F(ImportTest, TakesBackWhatItBuiltWhenItCannotGoOn) {
    // A switch of the greatest length there is cannot be padded to a multiple of eight.
    FltBytes tooLong("f");
    const std::uint32_t words = (0xFFFF - 28) / 4;
    tooLong.push().group("a");
    const std::size_t offset = tooLong.size();
    tooLong.record(kFltSwitch, Bytes().field("s", 8).zeros(8).u32(words).u32(1).zeros(words * 4))
        .pop();
    try {
        import(tooLong);
        FAIL() << "the record was kept";
    } catch (const FltFileError& error) {
        EXPECT_EQ(error.offset(), offset);
    }
    EXPECT_EQ(tree(), "");

    FltBytes many("f");
    for (int i = 0; i < 1000; ++i) many.group("g");
    report.cancelAt = 0.5;
    EXPECT_THROW(import(many), interchange::Cancelled);
    EXPECT_EQ(tree(), "");
    EXPECT_EQ(host.GetNodeCount(), 0);
}
