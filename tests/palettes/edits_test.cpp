// Edits of palettes, by the bytes that a file has afterwards.
#include "palettescene.h"

#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/texturemaps.h>
#include <kiln/mesh.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltopcode.h>

#include <array>

namespace {

using Edits = PaletteScene;

constexpr std::uint32_t kNegative = 0xFFFFFFFE;

/// Light source palette entry.
Bytes lightEntry(std::string_view name, std::uint32_t index, float red) {
    Bytes body;
    body.u32(index).zeros(8).field(name, 20).zeros(4);
    for (int i = 0; i < 4; ++i) body.f32(0);
    body.f32(red).f32(0.5F).f32(0.5F).f32(1);
    for (int i = 0; i < 4; ++i) body.f32(1);
    body.u32(1).zeros(40);
    for (const float value : {0.F, 90.F, 0.F, 0.F, 1.F, 0.F, 0.F}) body.f32(value);
    return body.u32(1).zeros(76);
}

Bytes lightSource(std::string_view id, std::uint32_t index) {
    return Bytes().field(id, 8).u32(0).u32(index).zeros(4).u32(0x80000000).zeros(44);
}

}  // namespace

// What is wrong with entries is told, and an edit beside them changes none of their bytes.
TEST_F(Edits, KeepWhatIsWrongBesideThem) {
    const Bytes cut = Bytes().field("no index", 200), short_ = Bytes().field("short", 200).u32(3);
    const std::vector<Bytes> all = {textureEntry("a.rgb", 1),
                                    textureEntry("b.rgb", 1),
                                    textureEntry("minus", kNegative),
                                    textureEntry("huge", 40000),
                                    cut,
                                    short_,
                                    textureEntry("\xE4.rgb", 2)};
    FltBytes file;
    for (const Bytes& body : all) file.record(kFltTexture, body);
    read(file.push().group("g").pop());

    const palettes::Database palettes(*database);
    std::string shown;
    for (const palettes::Entry& entry : palettes.entries(Palette::kTexture)) {
        shown += entry.name + (entry.hasIndex ? " " + std::to_string(entry.index) : " -");
        for (const auto& [is, mark] : {std::pair(entry.isDoubled, " doubled"),
                                       {entry.isBeyond, " beyond"},
                                       {entry.isCut, " cut"},
                                       {!entry.isText, " no text"}})
            if (is) shown += mark;
        shown += '\n';
    }
    EXPECT_EQ(shown,
              "a.rgb 1\nb.rgb 1 doubled\nminus -2 beyond\nhuge 40000 beyond\nno index - cut\n"
              "short 3 cut\n\xC3\xA4.rgb 2 no text\n");
    EXPECT_EQ(palettes.find(Palette::kTexture, 1)->name, "a.rgb");
    EXPECT_EQ(palettes.freeIndex(Palette::kTexture), 0);

    const std::string before = core.sceneText();
    set(Palette::kTexture, 1, "paletteX", "258");
    expectUndoTo(before);
    EXPECT_EQ(exportedRecords(kFltTexture),
              records(kFltTexture, {all[0], textureEntry("b.rgb", 1, 258), all[2], all[3], all[4],
                                    all[5], all[6]}));
    // A field behind the end of a record makes it long enough.
    set(Palette::kTexture, 5, "paletteX", "1");
    palettes::deleteEntry(*database, Palette::kTexture, entry(Palette::kTexture, 4));
    EXPECT_EQ(palettes::addEntry(*database, Palette::kTexture, "new.rgb"), 0);
    EXPECT_EQ(palettes::copyEntry(*database, Palette::kTexture, entry(Palette::kTexture, 0)), 4);
    EXPECT_EQ(exportedRecords(kFltTexture),
              records(kFltTexture, {all[0], textureEntry("b.rgb", 1, 258), all[2], all[3],
                                    textureEntry("short", 3, 1), all[6], textureEntry("new.rgb", 0),
                                    textureEntry("a.rgb", 4)}));
}

// With an entry go the extensions that belong to it, and no others.
TEST_F(Edits, DeleteEntriesWithTheirExtensions) {
    const auto extension = [](unsigned value) { return Bytes().zeros(18).u16(value); };
    FltBytes file;
    for (const unsigned i : {1U, 2U}) {
        file.record(kFltTexture, textureEntry("t", i)).record(kFltPushExtension, extension(i));
        file.record(700, Bytes().u32(i).zeros(16));
        file.record(kFltPopExtension, extension(i));
    }
    read(file.push().group("g").pop());
    palettes::deleteEntry(*database, Palette::kTexture, entry(Palette::kTexture, 0));
    EXPECT_EQ(exportedRecords(kFltTexture), records(kFltTexture, {textureEntry("t", 2)}));
    EXPECT_EQ(exportedRecords(kFltPushExtension), records(kFltPushExtension, {extension(2)}));
    EXPECT_EQ(exportedRecords(700), records(700, {Bytes().u32(2).zeros(16)}));
}

// Reserved bytes and what stands behind the fields stay; what a field cannot hold is refused.
TEST_F(Edits, ChangeTheFieldAlone) {
    const Bytes longer = materialEntry("steel", 3).u32(0x01020304);
    read(FltBytes().record(kFltMaterial, longer).push().group("g").pop());
    set(Palette::kMaterial, 0, "diffuse", "1 0.5 0");
    set(Palette::kMaterial, 0, "name", "steel plate");
    Bytes expected = longer;
    const Bytes diffuse = Bytes().f32(1).f32(0.5F).f32(0), name = Bytes().field("steel plate", 12);
    std::ranges::copy(name.operator std::span<const std::uint8_t>(), &expected.vector()[4]);
    std::ranges::copy(diffuse.operator std::span<const std::uint8_t>(), &expected.vector()[32]);
    EXPECT_EQ(exportedRecords(kFltMaterial), records(kFltMaterial, {expected}));

    const auto refused = [&](const char* field, const char* value) {
        return refusal([&] { set(Palette::kMaterial, 0, field, value); });
    };
    EXPECT_EQ(refused("diffuse", "1 0.5"), "the field diffuse cannot be 1 0.5");
    EXPECT_EQ(refused("diffuse", "1 0.5 0 1"), "the field diffuse cannot be 1 0.5 0 1");
    EXPECT_EQ(refused("alpha", "nan"), "the field alpha cannot be nan");
    EXPECT_EQ(refused("flags", "4294967296"), "the field flags cannot be 4294967296");
    EXPECT_EQ(refused("name", "twelve chars"), "the field name cannot be twelve chars");
    EXPECT_EQ(refused("index", "1"), "there is no field index");
    EXPECT_EQ(refused("gloss", "1"), "there is no field gloss");
    // An entry that was read before an edit is none any more.
    const palettes::Entry old = entry(Palette::kMaterial, 0);
    palettes::addEntry(*database, Palette::kMaterial, "other");
    EXPECT_EQ(refusal([&] { palettes::deleteEntry(*database, Palette::kMaterial, old); }),
              "there is no entry 3");
}

// The first entry of a palette stands in front of vertices and hierarchy, also where nothing is
// kept.
TEST_F(Edits, MakePalettesThatAreNotThere) {
    read(
        FltBytes().palette({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}).push().polygon("f", {0, 1, 2}).pop());
    palettes::addEntry(*database, Palette::kMaterial, "steel");
    palettes::addEntry(*database, Palette::kAnimation, "blink");
    const std::initializer_list<std::array<const char*, 2>> morse = {{"type", "3"},
                                                                     {"morseTiming", "1"},
                                                                     {"wordRate", "12"},
                                                                     {"characterRate", "18"},
                                                                     {"morseText", "SOS PARIS"}};
    for (const auto& [field, value] : morse) set(Palette::kAnimation, 0, field, value);
    EXPECT_EQ(refusal([&] { set(Palette::kAnimation, 0, "wordRate", "fast"); }),
              "the field wordRate cannot be fast");
    FltLightPointAnimation blink;
    blink.readBytes(exportedRecords(kFltLightPointAnimation), kFltRevision);
    EXPECT_EQ(blink.type, FltLightPointAnimation::kMorseCode);
    EXPECT_EQ(blink.morseTiming, FltLightPointAnimation::kFarnsworth);
    EXPECT_EQ(blink.wordRate, 12);
    EXPECT_EQ(blink.characterRate, 18);
    EXPECT_STREQ(blink.morseText, "SOS PARIS");
    EXPECT_EQ(palettes::findOrAddColor(*database, {1, 2, 3}), 127);
    const std::vector<std::uint8_t> file = exported();
    std::vector<int> opcodes;
    for (const FltRecordView record : FltRecordRange(file)) opcodes.push_back(record.opcode());
    EXPECT_EQ(opcodes,
              (std::vector<int>{kFltHeader, kFltMaterial, kFltLightPointAnimation, kFltColorPalette,
                                kFltVertexPalette, kFltVertexWithColor, kFltVertexWithColor,
                                kFltVertexWithColor, kFltPushLevel, kFltFace, kFltPushLevel,
                                kFltVertexList, kFltPopLevel, kFltPopLevel}));
    INode* const own = host.CreateObjectNode(new DummyObject, "own");
    fltEnsureKind(own, FltNodeKind::Header, kFltRevision);
    EXPECT_EQ(palettes::addEntry(*own, Palette::kTexture, "x.rgb"), 0);
    EXPECT_EQ(palettes::Database(*own).find(Palette::kTexture, 0)->name, "x.rgb");
}

// Faces and vertices by index follow a color; packed ones, and those of other entries, do not.
TEST_F(Edits, ColorsReachWhatShowsThem) {
    constexpr std::uint32_t kTen = 10 << 7 | 127, kTenDark = 10 << 7 | 64, kEleven = 11 << 7 | 127;
    FltBytes file;
    file.record(kFltColorPalette, grays());
    file.record(kFltVertexPalette, Bytes().u32(8 + 4 * 40));
    const auto vertex = [&](double x, double y, unsigned flags, std::uint32_t color) {
        file.record(kFltVertexWithColor,
                    Bytes().u16(0).u16(flags).f64(x).f64(y).f64(0).u32(0xFF0A0A0A).u32(color));
    };
    vertex(0, 0, 0, kTen);
    vertex(1, 0, 0, kEleven);
    vertex(1, 1, 0x1000, kTen);
    vertex(0, 1, 0, kTenDark);
    file.push();
    for (const auto& [name, color] :
         {std::pair("ten", kTen), {"dark", kTenDark}, {"eleven", kEleven}})
        file.record(kFltFace, FaceOf{.color = color}.body(name)).push().list({0, 1, 2, 3}).pop();
    read(file.pop());
    ASSERT_EQ(exportedRecords(kFltColorPalette), records(kFltColorPalette, {grays()}));
    const std::vector<std::uint8_t> vertices = exportedRecords(kFltVertexWithColor);

    const std::string before = core.sceneText();
    palettes::setColor(*database, 10, {200, 100, 0});
    expectUndoTo(before);
    EXPECT_EQ(node("ten").GetWireColor(), 0x0064C8U);
    EXPECT_EQ(node("dark").GetWireColor(), 0x003265U);
    EXPECT_EQ(node("eleven").GetWireColor(), 0x0B0B0BU);
    const Mesh& mesh = static_cast<TriObject*>(node("eleven").GetObjectRef())->GetMesh();
    ASSERT_EQ(mesh.colors.Count(), 4);
    EXPECT_EQ(mesh.colors[0], 0x0064C8U);
    EXPECT_EQ(mesh.colors[1], 0x0B0B0BU);
    EXPECT_EQ(mesh.colors[2], 0x0A0A0AU);
    EXPECT_EQ(mesh.colors[3], 0x003265U);
    // They are still named by index in a file.
    EXPECT_EQ(exportedRecords(kFltVertexWithColor), vertices);
    Bytes changed = grays();
    changed.vector()[128 + 40 + 1] = 0;
    changed.vector()[128 + 40 + 2] = 100;
    changed.vector()[128 + 40 + 3] = 200;
    EXPECT_EQ(exportedRecords(kFltColorPalette), records(kFltColorPalette, {changed}));
}

TEST_F(Edits, ColorsHaveNames) {
    const Bytes sky = Bytes().u16(12).u16(5).u16(20).u16(6).text("sky").u8(0),
                sea = Bytes().u16(14).u16(7).u16(21).u16(0).text("sea").zeros(3);
    const Bytes names = Bytes().u32(2).append(sky).append(sea);
    read(FltBytes().record(kFltColorPalette, grays(names)).push().group("g").pop());
    EXPECT_EQ(palettes::Database(*database).colorName(20), "sky");
    palettes::setColorName(*database, 20, "");
    palettes::setColorName(*database, 1023, "ice");
    const Bytes ice = Bytes().u16(12).u16(0).u16(1023).u16(0).text("ice").u8(0);
    EXPECT_EQ(exportedRecords(kFltColorPalette),
              records(kFltColorPalette, {grays(Bytes().u32(2).append(sea).append(ice))}));
    EXPECT_EQ(palettes::Database(*database).colorName(1023), "ice");

    // A table that ends too soon stays as it is, and the colors can be edited.
    const Bytes cut = Bytes().u32(3).append(sky);
    read(FltBytes().record(kFltColorPalette, grays(cut)).push().group("g").pop());
    EXPECT_EQ(refusal([&] { palettes::setColorName(*database, 1, "x"); }),
              "the names of the colors cannot be read");
    palettes::setColor(*database, 0, {0, 0, 1});
    Bytes changed = grays(cut);
    changed.vector()[128 + 1] = 1;
    EXPECT_EQ(exportedRecords(kFltColorPalette), records(kFltColorPalette, {changed}));
}

// A color that is there is found; a new one takes the place of one that nobody shows or has named.
TEST_F(Edits, FindOrAddColors) {
    const Bytes names = Bytes().u32(1).u16(10).u16(0).u16(1023).u16(0).text("x").u8(0);
    FltBytes file;
    file.record(kFltColorPalette, grays(names)).push();
    file.record(kFltFace, FaceOf{.color = 1022 << 7}.body("f"));
    read(file.pop());
    EXPECT_EQ(palettes::findOrAddColor(*database, {5, 5, 5}), 5 << 7 | 127);
    EXPECT_EQ(palettes::findOrAddColor(*database, {5, 6, 7}), 1021 << 7 | 127);
    EXPECT_EQ(palettes::findOrAddColor(*database, {5, 6, 7}), 1021 << 7 | 127);
    EXPECT_EQ(palettes::findOrAddColor(*database, {5, 6, 8}), 1020 << 7 | 127);
    EXPECT_EQ(refusal([&] { palettes::addEntry(*database, Palette::kColor, "x"); }),
              "the number of colors is fixed; none is added, deleted or renumbered");
}

// The 32 colors of older files have intensities, the 56 behind them have one each.
TEST_F(Edits, ColorsOfOlderFilesAreEditedInTheirForm) {
    Bytes colors;
    colors.zeros(124).u32(9);  // reserved, and not 0
    for (unsigned i = 0; i < 88; ++i) colors.u16(i).u16(2 * i).u16(200);
    const auto face = [](std::string_view id, unsigned color) {
        Bytes body = FaceOf{}.body(id);
        body.vector()[16] = static_cast<std::uint8_t>(color >> 8);
        body.vector()[17] = static_cast<std::uint8_t>(color);
        return body;
    };
    constexpr unsigned kFixed = 32 << 7;
    FltBytes file("old", 1420);
    file.record(kFltColorPalette, colors).push();
    file.record(kFltFace, face("full", 5 << 7 | 127)).record(kFltFace, face("dark", 5 << 7));
    file.record(kFltFace, face("fixed", kFixed + 3)).record(kFltFace, face("none", kFixed + 56));
    read(file.pop());
    EXPECT_EQ(node("full").GetWireColor(), 0xC80A05U);
    EXPECT_EQ(node("dark").GetWireColor(), 0U);
    EXPECT_EQ(node("fixed").GetWireColor(), 0xC84623U);
    EXPECT_EQ(palettes::Database(*database).colorCount(), 88U);
    const palettes::Usage usage = palettes::usageOf(*database);
    EXPECT_EQ(usage.of(Palette::kColor, 5), 2U);
    EXPECT_EQ(usage.of(Palette::kColor, 35), 1U);
    EXPECT_EQ(usage.of(Palette::kColor, 32), 0U);

    const std::string before = core.sceneText();
    palettes::setColor(*database, 35, {1, 2, 3});
    expectUndoTo(before);
    EXPECT_EQ(node("fixed").GetWireColor(), 0x030201U);
    palettes::setColor(*database, 5, {127, 0, 0});
    EXPECT_EQ(node("full").GetWireColor(), 0x00007FU);
    EXPECT_EQ(palettes::findOrAddColor(*database, {40, 80, 200}), static_cast<int>(kFixed) + 8);
    INode* const faces[] = {&node("dark")};
    palettes::assign(*database, faces, Palette::kColor, static_cast<int>(kFixed) + 8);
    EXPECT_EQ(node("dark").GetWireColor(), 0xC85028U);
    Bytes changed = colors;
    const auto set = [&](std::size_t entry, std::initializer_list<std::uint8_t> rgb) {
        std::size_t place = 128 + 6 * entry + 1;
        for (const std::uint8_t value : rgb) {
            changed.vector()[place] = value;
            place += 2;
        }
    };
    set(35, {1, 2, 3});
    set(5, {127, 0, 0});
    EXPECT_EQ(exportedRecords(kFltColorPalette), records(kFltColorPalette, {changed}));
    EXPECT_EQ(refusal([&] { palettes::setColorName(*database, 5, "x"); }),
              "the colors of this format have no names");
    EXPECT_EQ(refusal([&] { palettes::setColor(*database, 88, {}); }), "there is no entry 88");
    EXPECT_EQ(refusal([&] { palettes::assign(*database, faces, Palette::kColor, kFixed + 56); }),
              "there is no entry 4152");

    // What does not fit is neither shown nor edited.
    const Bytes cut = Bytes().append(colors).zeros(8);
    Bytes wide = colors;
    wide.vector()[128 + 6 * 87] = 1;
    for (const Bytes& other : {cut, wide}) {
        FltBytes odd("odd", 1420);
        odd.record(kFltColorPalette, other).push().record(kFltFace, face("f", kFixed));
        read(odd.pop());
        EXPECT_EQ(node("f").GetWireColor(), DEFAULT_WIRE_COLOR);
        EXPECT_EQ(refusal([&] { palettes::setColor(*database, 0, {}); }),
                  "color palettes of this format are not edited");
        EXPECT_EQ(exportedRecords(kFltColorPalette), records(kFltColorPalette, {other}));
    }
    // Where there is none one of that form is made.
    read(FltBytes("none", 1420).push().group("g").pop());
    palettes::setColor(*database, 87, {4, 5, 6});
    EXPECT_EQ(palettes::textOfColor(palettes::colorAt(palettes::Database(*database), 87)), "4 5 6");
    EXPECT_EQ(palettes::Database(*database).colorCount(), 88U);
}

// The materials of older files are a table: one of them changes in it, and it keeps its places.
TEST_F(Edits, TablesOfMaterialsAreEditedInPlace) {
    const auto row = [](std::string_view name, float green) {
        Bytes body;
        for (int i = 0; i < 12; ++i) body.f32(i == 4 ? green : 0.5F);
        body.f32(20).f32(1).u32(3).field(name, 12);
        for (int i = 0; i < 28; ++i) body.u32(7);  // reserved, and not 0
        return body;
    };
    Bytes table = row("steel", 0.25F);
    table.append(row("brick", 0.5F)).u16(9);
    FltBytes file("old", 1420);
    read(file.record(kFltMaterialTable, table).push().group("g").pop());
    EXPECT_EQ(entry(Palette::kMaterial, 1).name, "brick");
    EXPECT_EQ(entry(Palette::kMaterial, 1).index, 1);
    const std::string before = core.sceneText();
    set(Palette::kMaterial, 0, "diffuse", "0.5 1 0.5");
    expectUndoTo(before);
    set(Palette::kMaterial, 1, "name", "wall");
    Bytes expected = row("steel", 1);
    expected.append(row("wall", 0.5F)).u16(9);
    EXPECT_EQ(exportedRecords(kFltMaterialTable), records(kFltMaterialTable, {expected}));
    EXPECT_TRUE(exportedRecords(kFltMaterial).empty());
    const std::string reason =
        "the materials of this database are a table: they are edited, and none is added, deleted "
        "or renumbered";
    EXPECT_EQ(refusal([&] { palettes::addEntry(*database, Palette::kMaterial, "x"); }), reason);
    const palettes::Database now(*database);
    const palettes::Entry& steel = now.entries(Palette::kMaterial).front();
    EXPECT_EQ(refusal([&] { palettes::deleteEntry(*database, Palette::kMaterial, steel); }),
              reason);
    EXPECT_EQ(refusal([&] { palettes::compact(*database, Palette::kMaterial); }), reason);
    set(Palette::kMaterial, 0, "alpha", "0.5");
    EXPECT_EQ(
        refusal([&] { palettes::setField(*database, Palette::kMaterial, steel, "alpha", "1"); }),
        "there is no entry 0");
}

// The picture of faces, and the look of lights, are those of their entries.
TEST_F(Edits, TheSceneFollowsEntries) {
    FltBytes file;
    file.record(kFltTexture, textureEntry("a.rgb", 0))
        .record(kFltTexture, textureEntry("b.rgb", 1));
    file.record(kFltLightSourcePalette, lightEntry("sun", 0, 1)).push();
    file.record(kFltFace, FaceOf{.texture = 0}.body("fa"))
        .record(kFltFace, FaceOf{.texture = 1}.body("fb"));
    file.record(kFltLightSource, lightSource("l1", 0))
        .record(kFltLightSource, lightSource("l2", 0));
    read(file.pop());
    const auto picture = [&](const char* name) {
        const BitmapTex* const map = fltkilnutil::textureMapOf(node(name).GetTexmap());
        return std::string(map == nullptr ? "none" : map->GetMapName());
    };
    std::string before = core.sceneText();
    set(Palette::kTexture, 0, "fileName", "dir/c.rgb");
    expectUndoTo(before);
    EXPECT_EQ(picture("fa") + " " + picture("fb"), "dir/c.rgb b.rgb");

    KilnLight own;
    ASSERT_TRUE(fltGetOptions(&node("l2"), own));
    own.palette.diffuseGreen = 0.125F;
    fltPutOptions(&node("l2"), own);
    core.history().endCommand();
    before = core.sceneText();
    set(Palette::kLightSource, 0, "diffuseRed", "0.25");
    expectUndoTo(before);
    KilnLight first, second;
    ASSERT_TRUE(fltGetOptions(&node("l1"), first) && fltGetOptions(&node("l2"), second));
    EXPECT_EQ(first.palette.diffuseRed, 0.25F);
    EXPECT_EQ(second.palette.diffuseRed, 1.F);

    before = core.sceneText();
    palettes::deleteEntry(*database, Palette::kTexture, entry(Palette::kTexture, 1));
    expectUndoTo(before);
    EXPECT_EQ(picture("fb"), "none");
    EXPECT_EQ(faceOf("fb").textureIndex, 1);
    EXPECT_EQ(exportedRecords(kFltTexture), records(kFltTexture, {textureEntry("dir/c.rgb", 0)}));
}

/// The file on disk, in `folder`.
std::string saved(const TemporaryFolder& folder, FltBytes file) {
    std::string path = folder.file("other.flt");
    const std::span<const std::uint8_t> bytes = file.push().group("g").pop();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path;
}

// Entries of another file that are not there yet come with indices of their own.
TEST_F(Edits, EntriesComeFromOtherFiles) {
    FltBytes other("other");
    other.record(kFltTexture, textureEntry("a.rgb", 7))
        .record(kFltTexture, textureEntry("b.rgb", 1));
    const std::string path = saved(folder, other.record(kFltTexture, textureEntry("b.rgb", 9)));
    read(FltBytes().record(kFltTexture, textureEntry("a.rgb", 1)).push().group("g").pop());
    EXPECT_EQ(palettes::importEntries(*database, Palette::kTexture, path), 1U);
    EXPECT_EQ(palettes::importEntries(*database, Palette::kTexture, path), 0U);
    EXPECT_EQ(exportedRecords(kFltTexture),
              records(kFltTexture, {textureEntry("a.rgb", 1), textureEntry("b.rgb", 0)}));
    EXPECT_EQ(palettes::importEntries(*database, Palette::kMaterial, path), 0U);
}

Bytes withColor(Bytes palette, std::size_t entry, std::initializer_list<std::uint8_t> bgr) {
    std::ranges::copy(bgr, palette.vector().begin() + static_cast<std::ptrdiff_t>(129 + 4 * entry));
    return palette;
}

Bytes nameOfColor(unsigned entry, std::string_view name) {
    const auto length = static_cast<unsigned>(9 + name.size());
    return Bytes().u16(length).u16(0).u16(entry).u16(0).text(name).u8(0);
}

// In their places where those are free; what is used or named stays, and what is there already is
// not taken twice.
TEST_F(Edits, ColorsComeFromOtherFiles) {
    Bytes theirs = grays(Bytes().u32(2).append(nameOfColor(3, "rust")).append(nameOfColor(9, "x")));
    theirs = withColor(withColor(theirs, 3, {3, 2, 1}), 700, {9, 8, 7});
    theirs = withColor(withColor(theirs, 5, {6, 5, 4}), 701, {6, 5, 4});
    theirs = withColor(withColor(theirs, 702, {20, 21, 22}), 800, {30, 31, 32});
    const std::string path = saved(folder, FltBytes().record(kFltColorPalette, theirs));
    Bytes ours = grays(Bytes().u32(1).append(nameOfColor(3, "mine")));
    // Colors that nothing else has, of which the other file has one.
    ours = withColor(withColor(ours, 0, {1, 0, 0}), 800, {20, 21, 22});
    FltBytes file;
    file.record(kFltColorPalette, ours).push();
    file.record(kFltFace, FaceOf{.color = 5 << 7}.body("f"));
    read(file.record(kFltFace, FaceOf{.color = 1 << 7}.body("g")).pop());
    const std::string before = core.sceneText();
    EXPECT_EQ(palettes::importEntries(*database, Palette::kColor, path), 4U);
    expectUndoTo(before);
    EXPECT_EQ(palettes::importEntries(*database, Palette::kColor, path), 0U);
    Bytes after =
        grays(Bytes().u32(2).append(nameOfColor(3, "mine")).append(nameOfColor(2, "rust")));
    after = withColor(withColor(after, 0, {1, 0, 0}), 700, {9, 8, 7});
    after = withColor(withColor(after, 2, {3, 2, 1}), 4, {6, 5, 4});
    after = withColor(withColor(after, 6, {30, 31, 32}), 800, {20, 21, 22});
    EXPECT_EQ(exportedRecords(kFltColorPalette), records(kFltColorPalette, {after}));
}

// The older form has no names.
TEST_F(Edits, ColorsComeIntoThoseOfOlderFiles) {
    const Bytes theirs =
        withColor(grays(Bytes().u32(1).append(nameOfColor(40, "fog"))), 40, {3, 2, 1});
    const std::string path = saved(folder, FltBytes().record(kFltColorPalette, theirs));
    Bytes ours;
    ours.zeros(128);
    for (unsigned i = 0; i < 88; ++i) ours.u16(i < 44 ? 7 : 9).u16(0).u16(0);
    FltBytes file("old", 1420);
    read(file.record(kFltColorPalette, ours).push().group("g").pop());
    EXPECT_EQ(refusal([&] { palettes::importEntries(*database, Palette::kColor, path); }),
              "all colors are in use")
        << "for 256";
    Bytes few;
    few.zeros(128);
    for (unsigned i = 0; i < 1024; ++i) few.u32(i == 40 ? 0xFF030201 : 0xFF000007);
    few.append(Bytes().u32(1).append(nameOfColor(40, "fog")));
    const std::string other = saved(folder, FltBytes().record(kFltColorPalette, few));
    EXPECT_EQ(palettes::importEntries(*database, Palette::kColor, other), 1U);
    const palettes::Database now(*database);
    EXPECT_EQ(palettes::colorAt(now, 40), (palettes::Rgb{1, 2, 3}));
    EXPECT_EQ(palettes::colorAt(now, 41), (palettes::Rgb{7, 0, 0}));
    EXPECT_EQ(now.colorName(40), "");
}

TEST_F(Edits, AllColorsComeWhereThereAreNone) {
    const Bytes theirs = grays(Bytes().u32(1).append(nameOfColor(200, "fog")));
    const std::string path = saved(folder, FltBytes().record(kFltColorPalette, theirs));
    read(FltBytes().push().group("g").pop());
    EXPECT_EQ(palettes::importEntries(*database, Palette::kColor, path), 255U) << "and white";
    const palettes::Database now(*database);
    for (const std::int32_t entry : {0, 7, 200, 254})
        EXPECT_EQ(palettes::colorAt(now, entry).green, entry);
    EXPECT_EQ(now.colorName(200), "fog");
    EXPECT_EQ(palettes::colorAt(now, 1023), (palettes::Rgb{255, 255, 255}));
}

TEST_F(Edits, ColorsThatDoNotFitStayWhereTheyAre) {
    Bytes theirs = grays();
    for (unsigned i = 0; i < 1024; ++i)
        theirs = withColor(theirs, i,
                           {static_cast<std::uint8_t>(i), 77, static_cast<std::uint8_t>(i >> 8)});
    FltBytes file;
    file.record(kFltColorPalette, grays()).push();
    read(file.record(kFltFace, FaceOf{.color = 5 << 7}.body("f")).pop());
    const std::string before = core.sceneText();
    const auto refused = [&](const Bytes& record) {
        const std::string path = saved(folder, FltBytes().record(kFltColorPalette, record));
        return refusal([&] { palettes::importEntries(*database, Palette::kColor, path); });
    };
    EXPECT_EQ(refused(theirs), "all colors are in use");
    EXPECT_EQ(refused(Bytes().zeros(128 + 4 * 100)),
              "color palettes of this format are not edited");
    const std::string none = saved(folder, FltBytes());
    EXPECT_EQ(palettes::importEntries(*database, Palette::kColor, none), 0U);
    EXPECT_EQ(core.sceneText(), before);
}

// The materials of a table become records, but for those that are there.
TEST_F(Edits, MaterialsComeFromTables) {
    const auto row = [](std::string_view name, float shininess) {
        Bytes body;
        for (int i = 0; i < 12; ++i) body.f32(0.25F);
        return body.f32(shininess).f32(1).u32(0x80000000).field(name, 12).zeros(112);
    };
    FltBytes other("other", 1420);
    other.record(kFltMaterialTable, row("steel", 12).append(row("brick", 3)).append(row("tin", 4)));
    const std::string path = saved(folder, other);
    const auto material = [](std::string_view name, std::uint32_t index, float shininess) {
        Bytes body = materialEntry(name, index);
        const Bytes value = Bytes().f32(shininess).f32(1).u32(0);
        std::ranges::copy(value.operator std::span<const std::uint8_t>(), body.vector().end() - 12);
        return body;
    };
    const Bytes steel = material("steel", 1, 12);
    read(FltBytes().record(kFltMaterial, steel).push().group("g").pop());
    const std::string before = core.sceneText();
    EXPECT_EQ(palettes::importEntries(*database, Palette::kMaterial, path), 2U);
    expectUndoTo(before);
    EXPECT_EQ(palettes::importEntries(*database, Palette::kMaterial, path), 0U);
    EXPECT_EQ(exportedRecords(kFltMaterial),
              records(kFltMaterial,
                      {steel, material("brick", 0, 3).zeros(4), material("tin", 2, 4).zeros(4)}));
}
