// Files into the scene, out of it, and in again: the scene stays the same.
#include "exportscene.h"
#include "fltbytes.h"

#include <airport.h>

#include <quillon/fltopcode.h>
#include <cstdlib>

namespace {

class RoundTrip : public ExportScene {
protected:
    /// What the scene holds: every node with its object, place and chunks, byte for byte.
    std::string scene() const { return core.sceneText(); }

    /// The scene after `file` was read into an empty one.
    std::string sceneOf(std::span<const std::uint8_t> file) {
        core.newScene();
        import(file);
        return scene();
    }

    /// The file made of `file`, after checking that both make the same scene.
    std::vector<std::uint8_t> roundTrip(std::span<const std::uint8_t> file) {
        const std::string before = sceneOf(file);
        std::vector<std::uint8_t> out = exported();
        EXPECT_EQ(sceneOf(out), before);
        return out;
    }
};

const std::initializer_list<std::array<double, 3>> kPoints = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0},
                                                              {2, 1, 0}, {0, 4, 0}, {8, 0, 0}};

Bytes named(std::string_view id, std::size_t rest) {
    return Bytes().field(id, 8).zeros(rest);
}

/// A record body in which every byte says something.
Bytes counting(std::string_view id, std::size_t size) {
    Bytes body;
    body.field(id, 8);
    for (std::size_t i = 8; i < size; ++i) body.u8(static_cast<unsigned>(i % 7 + 1));
    return body;
}

}  // namespace

TEST_F(RoundTrip, KeepsTheHierarchy) {
    FltBytes levels("f");
    levels.push().group("a").push().object("b").push().pop().object("c").pop().group("d").pop();
    FltBytes twoLevels("f");
    twoLevels.push().group("a").push().object("b").pop().comment("between").push().object("c");
    twoLevels.pop().pop().comment("at the end");
    FltBytes nestedLevels("f");
    nestedLevels.push().push().group("a").pop().group("b").pop();
    FltBytes noLevels("f");
    noLevels.group("a").group("b");
    FltBytes subfaces("f");
    subfaces.palette(kPoints)
        .push()
        .face("f")
        .record(kFltPushSubface)
        .polygon("s", {0, 1, 2})
        .record(kFltPopSubface);
    subfaces.push().list({0, 1, 2, 4}).pop().polygon("g", {1, 2, 4}).record(kFltPushSubface);
    subfaces.polygon("t", {1, 2, 4}).record(kFltPopSubface).pop();
    FltBytes faceInFace("f");
    faceInFace.palette(kPoints).push().face("f").push().list({0, 1, 2}).polygon("g", {1, 2, 4});
    faceInFace.pop().pop();
    const struct {
        const char* name;
        FltBytes file;
    } cases[] = {
        {"levels", levels},      {"two levels", twoLevels}, {"nested levels", nestedLevels},
        {"no levels", noLevels}, {"subfaces", subfaces},    {"face in face", faceInFace}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        roundTrip(test.file);
    }
}

// Most programs pad the records that begin and end a level.
TEST_F(RoundTrip, KeepsFacesInPaddedLevels) {
    FltBytes file("f");
    const auto face = [&file](std::string_view name) -> FltBytes& {
        const Bytes padding = Bytes().zeros(4);
        return file.face(name)
            .record(kFltPushLevel, padding)
            .list({0, 1, 2, 4})
            .record(kFltPopLevel, padding);
    };
    file.palette(kPoints).push();
    face("named");
    face("");
    face("told").comment("behind");
    face("outer").record(kFltPushSubface).polygon("inner", {0, 1, 2}).record(kFltPopSubface);
    face("last").pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    INode& database = *host.GetRootNode()->GetChildNode(0);
    ASSERT_EQ(database.NumberOfChildren(), 5);
    for (int i = 0; i < database.NumberOfChildren(); ++i) {
        Object* const object = database.GetChildNode(i)->GetObjectRef();
        EXPECT_EQ(static_cast<TriObject*>(object)->GetMesh().verts.Count(), 4) << i;
    }
}

TEST_F(RoundTrip, GivesBackEveryByteOfWhatItDoesNotKnow) {
    FltBytes file("f");
    file.record(kFltColorPalette, counting("colors", 200))
        .record(kFltTexture, counting("texture", 212));
    file.record(kFltMaterial, counting("material", 80)).record(700, counting("unknown", 64));
    file.palette(kPoints).push().group("a").record(kFltLongId,
                                                   Bytes().text("a long name").zeros(5));
    knownFindings = "832: UNDEFINED: unknown opcode 700\n1166: UNDEFINED: unknown opcode 300\n";
    file.comment("one").record(kFltMultiTexture, counting("multi", 24)).comment("two").record(300);
    file.record(kFltPushExtension)
        .group("x")
        .push()
        .polygon("y", {1, 2, 4})
        .pop()
        .comment("inside")
        .record(kFltPopExtension);
    file.record(kFltPushAttribute)
        .record(kFltAdaptiveAttribute, counting("attr", 16))
        .record(kFltPopAttribute);
    file.push()
        .record(kFltReplicate, Bytes().u16(3).u16(0))
        .polygon("p", {0, 1, 2})
        .record(kFltSound, named("s", 60));
    file.push().object("o").pop().pop().comment("three").pop();
    const std::vector<std::uint8_t> out = roundTrip(file);

    // The vertices that nobody uses go; the rest stands as it did, up to paddings of our own.
    const auto records = [](std::span<const std::uint8_t> bytes, bool vertices) {
        std::vector<std::vector<std::uint8_t>> all;
        FltFileReader reader(bytes);
        while (reader.next()) {
            const bool moves = reader.opcode() >= 67 && reader.opcode() <= 72;
            if (moves != vertices) continue;
            const auto record = bytes.subspan(reader.offset(), reader.length());
            all.emplace_back(record.begin(), record.end());
            // One of our own layout is padded, and its length says so.
            if (reader.opcode() == 4) all.back().resize(28), all.back()[3] = 28;
        }
        return all;
    };
    const auto before = records(file, false), after = records(out, false);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(after[i], before[i]) << i;
}

TEST_F(RoundTrip, KeepsLongerRecordsAndReservedBytes) {
    FltBytes file("f");
    file.push().record(kFltGroup, counting("group", 60)).record(kFltObject, counting("object", 28));
    file.record(kFltLod, counting("lod", 100)).record(kFltFace, counting("face", 76));
    file.record(kFltSwitch,
                Bytes().field("switch", 8).u32(9).u32(0).u32(1).u32(1).u32(7).u32(8).u32(9));
    file.record(kFltExternalRef, counting("file.flt", 220))
        .record(kFltInstanceDef, Bytes().u16(7).u16(3));
    file.record(kFltInstanceRef, Bytes().u16(7).u16(3)).record(kFltDof, counting("dof", 380));
    file.record(kFltBsp, counting("bsp", 44)).record(kFltClipRegion, counting("clip", 276));
    file.record(kFltLightPoint, counting("lp", 156)).pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    ASSERT_EQ(out.size(), file.size());
    const auto differs = std::mismatch(file.vector().begin() + FltBytes::kHeaderLength,
                                       file.vector().end(), out.begin() + FltBytes::kHeaderLength);
    EXPECT_EQ(differs.first - file.vector().begin(), static_cast<std::ptrdiff_t>(file.size()));
}

// What other programs write: longer records that have nothing behind our fields, and unpadded ones.
TEST_F(RoundTrip, KeepsTheLengthOfLongerRecords) {
    FltBytes file("f");
    file.palette({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}}).push();
    file.record(kFltGroup, named("group", 32)).push();
    file.record(kFltLod, named("lod", 68)).record(kFltDof, named("dof", 376)).push();
    file.record(kFltObject, named("object", 16)).push().record(kFltFace, named("face", 72)).push();
    file.list({0, 1, 2}).pop().pop().pop().pop().pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    // Only the object, 28 bytes, comes back padded to a multiple of 8.
    ASSERT_EQ(out.size(), file.size() + 4);
    FltFileReader before(file), after(out);
    while (before.next()) {
        ASSERT_TRUE(after.next());
        EXPECT_EQ(after.opcode(), before.opcode());
        EXPECT_EQ(after.length(), before.opcode() == 4 ? 32 : before.length()) << before.opcode();
    }
}

// Others light faces whose vertices have no normals, and give normals to faces that are not lit.
TEST_F(RoundTrip, AddsNoNormalsAndTakesNoneAway) {
    FltBytes file("f");
    file.record(kFltVertexPalette, Bytes().u32(8 + 3 * 40 + 3 * 56));
    Bytes without, with;
    for (std::uint32_t i = 0; i < 3; ++i) {
        without.u32(8 + i * 40), with.u32(8 + 3 * 40 + i * 56);
        file.record(kFltVertexWithColor,
                    Bytes().u16(0).u16(0x2000).f64(i).f64(i * i).f64(0).u32(~0U).u32(~0U));
    }
    for (unsigned i = 0; i < 3; ++i) {
        Bytes vertex;
        vertex.u16(0).u16(0x2000).f64(i).f64(i * i).f64(0).f32(0).f32(0).f32(1);
        file.record(kFltVertexWithNormal, vertex.u32(~0U).u32(~0U).zeros(4));
    }
    file.push();
    for (const unsigned mode : {0U, 1U, 2U, 3U}) {
        Bytes face;
        face.field("face", 8).zeros(32).u32(0x60000000).u8(mode).zeros(15);
        face.u16(0xFFFF).zeros(14);
        file.record(kFltFace, face).push().record(kFltVertexList, without).pop();
        file.record(kFltFace, face).push().record(kFltVertexList, with).pop();
    }
    const std::vector<std::uint8_t> out = roundTrip(file.pop());
    EXPECT_EQ(out, file.vector());
}

// A corner takes 4 bytes in a list; what a vertex says must not be kept at any length for each.
TEST_F(RoundTrip, KeepsVerticesOfBoundedLength) {
    FltBytes file("f");
    constexpr std::uint32_t kLength = 60'000;
    file.record(kFltVertexPalette, Bytes().u32(8 + 3 * kLength));
    Bytes corners;
    for (std::uint32_t i = 0; i < 3; ++i) {
        Bytes vertex;
        vertex.u32(0).f64(i).f64(i * i).f64(0);
        for (std::uint32_t at = 32; at < kLength; ++at) vertex.u8(at % 251 + 1);
        file.record(kFltVertexWithColor, vertex);
    }
    for (std::uint32_t i = 0; i < 3'000; ++i) corners.u32(8 + i % 3 * kLength);
    file.push()
        .record(kFltLightPoint, named("points", 148))
        .push()
        .record(kFltVertexList, corners)
        .pop();
    file.face("face").push().list({}).record(kFltVertexList, corners).pop().pop();
    import(file);
    EXPECT_LT(scene().size(), 40 * file.size());
    const std::vector<std::uint8_t> out = exported();
    const auto index = interchange::readFileIndex(out);
    ASSERT_EQ(index.corners.size(), 3'000U);
    const auto vertex = index.recordAt(index.corners.front()).bytes();
    ASSERT_EQ(vertex.size(), 128U);
    EXPECT_TRUE(
        std::ranges::equal(vertex.subspan(32),
                           std::span(file.vector()).subspan(FltBytes::kHeaderLength + 8 + 32, 96)));
    core.newScene();
    const std::string again = sceneOf(out);
    EXPECT_EQ(sceneOf(exported()), again);
}

TEST_F(RoundTrip, LeavesUnnamedNodesUnnamed) {
    FltBytes file("");
    file.palette(kPoints).push().group("").object("").polygon("", {0, 1, 2}).group("g002").pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    EXPECT_EQ(tree(), "airfield(g001,o001,q001,g002)");
    EXPECT_EQ(out.size(), file.size() - 3 * FltBytes::kVertexLength + 4) << "and the object padded";
}

TEST_F(RoundTrip, KeepsPlaces) {
    FltBytes file("f");
    const auto point = [](Bytes& body, double x, double y, double z) { body.f64(x).f64(y).f64(z); };
    Bytes edge, translate, scale, turn, toPoint, put;
    point(edge.zeros(4), 1, 0, 0), point(edge, 1, 0, 5), edge.f32(90).zeros(4);
    point(translate.zeros(4), 0, 0, 0), point(translate, 1, 2, 3);
    point(scale.zeros(4), 1, 1, 1), scale.f32(2).f32(3).f32(4).zeros(4);
    point(turn.zeros(4), 1, 2, 3), turn.f32(0).f32(0).f32(1).f32(30);
    point(toPoint.zeros(4), 0, 0, 0), point(toPoint, 1, 0, 0), point(toPoint, 0, 1, 0);
    toPoint.f32(2).f32(1).f32(90).zeros(4);
    for (const double at : {0.0, 5.0}) {
        point(at == 0.0 ? put.zeros(4) : put, at, 0, 0), point(put, at + 1, 0, 0);
        point(put, at, at == 0.0 ? 1 : 0, at == 0.0 ? 0 : 1);
    }
    file.push()
        .group("a")
        .matrix(1, 2, 3)
        .record(kFltTranslate, translate)
        .record(kFltScale, scale);
    file.group("b")
        .record(kFltRotateAboutEdge, edge)
        .record(kFltRotateAboutPoint, turn)
        .group("c")
        .record(kFltRotateScaleAboutPoint, toPoint);
    file.group("d").record(kFltPut, put).push().group("e").matrix(0.1F, 0.2F, 0.3F).pop().pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    EXPECT_EQ(out.size(), file.size());

    INode* const database = host.GetRootNode()->GetChildNode(0);
    const auto image = [&](int child, const Point3& p) {
        return database->GetChildNode(child)->GetNodeTM(0).PointTransform(p);
    };
    const auto isNear = [](const Point3& a, const Point3& b) { return Length(a - b) < 1e-6; };
    EXPECT_EQ(image(0, {0, 0, 0}), (Point3{1, 2, 3})) << "the matrix is the whole placement";
    EXPECT_TRUE(isNear(image(2, {1, 0, 0}), {0, 2, 0})) << "turned by 90 degrees and doubled";
    EXPECT_TRUE(isNear(image(3, {0, 1, 0}), {5, 0, 1})) << "the side of y comes to lie on z";
}

TEST_F(RoundTrip, KeepsVerticesOfEveryKind) {
    FltBytes file("f");
    const auto palette = static_cast<std::uint32_t>(file.size());
    file.record(kFltVertexPalette, Bytes().u32(0));
    std::vector<std::uint32_t> offsets;
    const std::pair<unsigned, std::size_t> kinds[] = {{68, 36}, {68, 40}, {69, 52}, {69, 56},
                                                      {70, 60}, {70, 64}, {71, 44}, {71, 48}};
    double corner = 0;
    for (const auto& [opcode, length] : kinds) {
        for (int i = 0; i < 3; ++i, ++corner) {
            offsets.push_back(static_cast<std::uint32_t>(file.size()) - palette);
            Bytes vertex;
            vertex.u16(7).u16(i == 0 ? 0x1000 : 0x2000).f64(corner).f64(corner * corner).f64(0);
            for (std::size_t at = 32; at < length; at += 4)
                vertex.f32(static_cast<float>(at) + static_cast<float>(i));
            file.record(opcode, vertex);
        }
    }
    file.push();
    for (std::size_t i = 0; i < offsets.size(); i += 3) {
        Bytes list;
        for (std::size_t j = 0; j < 3; ++j) list.u32(offsets[i + j]);
        file.face("same").push().record(kFltVertexList, list).pop();
    }
    Bytes mixed, flat, morph;
    for (const std::size_t i : {0U, 3U, 6U, 9U, 12U, 15U, 18U, 21U}) mixed.u32(offsets[i]);
    for (const std::size_t i : {0U, 1U, 0U}) flat.u32(offsets[i]);
    for (const std::size_t i : {0U, 3U, 6U, 9U, 12U, 15U}) morph.u32(offsets[i]);
    file.face("mixed")
        .push()
        .record(kFltVertexList, mixed)
        .record(kFltUvList, Bytes().u32(0x80000000).zeros(64))
        .pop();
    file.face("flat")
        .push()
        .record(kFltVertexList, flat)
        .pop()
        .face("morph")
        .push()
        .record(kFltMorphVertexList, morph)
        .pop();
    file.record(kFltLightPoint, named("points", 148)).push().record(kFltVertexList, mixed).pop();
    file.record(kFltIndexedLightPoint, named("indexed", 16))
        .push()
        .record(kFltVertexList, mixed)
        .pop();
    file.group("other").push().record(kFltVertexList, flat).pop().pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    EXPECT_EQ(out.size(), file.size());
}

TEST_F(RoundTrip, ContinuesWhatIsTooLongForOneRecord) {
    FltBytes file("f");
    Bytes first, rest;
    for (int i = 0; i < 10'000; ++i) first.u32(8), rest.u32(8 + 40);
    file.palette(kPoints).push().record(kFltLightPoint, named("points", 148)).push();
    file.record(kFltVertexList, first).record(kFltContinuation, rest).pop().pop();
    roundTrip(file);
    const INode* const node = host.GetRootNode()->GetChildNode(0)->GetChildNode(0);
    const auto& mesh = dynamic_cast<TriObject&>(*node->GetObjectRef()).GetMesh();
    ASSERT_EQ(mesh.verts.Count(), 20'000);
    EXPECT_EQ(mesh.verts[19'999], (Point3{4, 0, 0}));
}

TEST_F(RoundTrip, ShowsMeshesAndGivesThemBack) {
    // Position, packed color, normal and base texture coordinates of six vertices.
    Bytes pool;
    pool.u32(6).u32(0xB8000000);
    for (int i = 0; i < 6; ++i) {
        pool.f64(i / 2).f64(i % 2).f64(0).u32(0xFF332211).f32(0).f32(0).f32(1).f32(0.5F).f32(0.25F);
    }
    const auto primitive = [](unsigned type, std::initializer_list<unsigned> indices) {
        Bytes body;
        body.u16(type).u16(1).u32(static_cast<std::uint32_t>(indices.size()));
        for (const unsigned index : indices) body.u8(index);
        return body;
    };
    FltBytes file("f");
    file.push().record(kFltMesh, named("mesh", 72)).record(kFltLocalVertexPool, pool).push();
    file.record(kFltMeshPrimitive, primitive(1, {0, 2, 1, 3}))
        .record(kFltMeshPrimitive, primitive(2, {0, 2, 3, 1}));
    file.record(kFltMeshPrimitive, primitive(3, {0, 2, 1, 3}))
        .record(kFltMeshPrimitive, primitive(4, {0, 2, 4, 5, 1}));
    file.record(kFltMeshPrimitive, primitive(4, {0, 2, 6})).pop().group("g").pop();
    const std::vector<std::uint8_t> out = roundTrip(file);
    EXPECT_EQ(out, file.vector());

    const INode* const node = host.GetRootNode()->GetChildNode(0)->GetChildNode(0);
    EXPECT_STREQ(node->GetName(), "mesh");
    const auto& mesh = dynamic_cast<TriObject&>(*node->GetObjectRef()).GetMesh();
    EXPECT_TRUE(mesh.IsConsistent());
    EXPECT_EQ(mesh.verts.Count(), 6);
    EXPECT_EQ(mesh.faces.Count(), 2 + 2 + 2 + 3) << "the last names a vertex that is not there";
    for (int i = 0; i < mesh.faces.Count(); ++i) {
        EXPECT_EQ(mesh.FaceNormal(i), (Point3{0, 0, 1})) << i;
    }
    EXPECT_EQ(mesh.colors[5], 0x332211U);
    EXPECT_EQ(mesh.tVerts[5], Point3f(0.5F, 0.25F, 0));
}

TEST_F(RoundTrip, GivesTheSamplesBack) {
    const std::string path = pathOf("airfield.flt");
    ASSERT_TRUE(samples::writeScene(samples::makeAirport(), path));
    std::vector<std::string> paths = {path};
    // Other people's files, where there are any: a folder of them.
    if (const char* const more = std::getenv("TESSERA_FLT_SAMPLES"); more != nullptr && *more) {
        for (const auto& entry : std::filesystem::directory_iterator(more)) {
            if (entry.path().extension() == ".flt") paths.push_back(entry.path().string());
        }
    }
    for (const std::string& each : paths) {
        SCOPED_TRACE(each);
        const std::vector<std::uint8_t> file = contentOf(each);
        roundTrip(file);
    }
}
