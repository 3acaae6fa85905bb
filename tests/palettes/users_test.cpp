// Who uses entries, what renumbering and assigning does to them.
#include "palettescene.h"

#include <fltkilnutil/sourcerecords.h>
#include <fltkilnutil/texturemaps.h>
#include <quillon/fltbyteorder.h>

namespace {

constexpr std::uint32_t kNegative = 0xFFFFFFFE;

Bytes layers(unsigned texture, unsigned mapping) {
    return Bytes().u32(0x80000000).u16(texture).u16(0).u16(mapping).u16(0);
}
Bytes indexedLight(std::string_view id, std::uint32_t look, std::uint32_t motion) {
    return Bytes().field(id, 8).u32(look).u32(motion).u32(0).zeros(4);
}
Bytes appearance(std::uint32_t index, unsigned texture) {
    return Bytes().zeros(4).field("look", 256).u32(index).zeros(140).u16(texture).u16(0);
}
/// The record of a mesh, which is kept as it was read.
Bytes mesh(std::string_view id, unsigned texture, unsigned material) {
    Bytes body;
    body.field(id, 8).zeros(18).u16(0xFFFF).u16(texture).u16(material).zeros(12).u32(0x60000000);
    return body.zeros(16).u16(0xFFFF).zeros(14);
}

class Users : public PaletteScene {
protected:
    FltBytes file() {
        FltBytes all;
        for (const std::uint32_t index : {5U, 2U, 5U, kNegative, 300U})
            all.record(kFltTexture, textureEntry("t" + std::to_string(all.size()), index));
        all.record(kFltMaterial, materialEntry("m", 4));
        all.record(kFltLightPointAppearance, appearance(8, 300)).push();
        all.record(kFltFace, FaceOf{.texture = 5, .material = 4, .detail = 2}.body("fa"));
        all.record(kFltMultiTexture, layers(300, 7));
        all.record(kFltFace, FaceOf{.texture = 1, .material = 9}.body("fb"));  // not there
        all.record(kFltMesh, mesh("mesh", 300, 4));
        all.record(kFltIndexedLightPoint, indexedLight("lp", 8, 0xFFFFFFFF)).group("g").push();
        all.record(kFltFace, FaceOf{.texture = 2}.body("fc")).pop();
        return FltBytes(all);
    }
    std::string usersOf(Palette palette, std::int32_t index) {
        std::string names;
        for (INode* const user : palettes::usersOf(*database, palette, index))
            names += std::string(user->GetName()) + " ";
        return names;
    }
    std::string texturesOf(const char* name) {
        const FltFace face = faceOf(name);
        return std::to_string(face.textureIndex) + " " + std::to_string(face.detailTextureIndex);
    }
};

}  // namespace

TEST_F(Users, AreAllThatNameAnEntry) {
    read(file().pop());
    const palettes::Usage usage = palettes::usageOf(*database);
    EXPECT_EQ(usage.of(Palette::kTexture, 5), 1U);
    EXPECT_EQ(usage.of(Palette::kTexture, 2), 2U);
    EXPECT_EQ(usage.of(Palette::kTexture, 300), 3U);
    EXPECT_EQ(usage.of(Palette::kTexture, 0), 0U);
    EXPECT_EQ(usersOf(Palette::kTexture, 300), "airfield fa mesh ");
    EXPECT_EQ(usersOf(Palette::kTexture, 2), "fa fc ");
    EXPECT_EQ(usersOf(Palette::kMaterial, 4), "fa mesh ");
    EXPECT_EQ(usersOf(Palette::kAppearance, 8), "lp ");
    EXPECT_EQ(usersOf(Palette::kMapping, 7), "fa ") << "by a layer";
    EXPECT_EQ(palettes::indexUsedBy(node("fa"), Palette::kTexture), 5);
    EXPECT_EQ(palettes::indexUsedBy(node("g"), Palette::kTexture), -1);
}

// Of colors: those of faces by index, packed ones not, and of vertices in the pool of a mesh.
TEST_F(Users, OfColorsNameTheirIndex) {
    FltBytes all;
    all.record(kFltColorPalette, grays()).push();
    all.record(kFltFace, FaceOf{.color = 30 << 7}.body("index"));
    all.record(kFltFace, FaceOf{.color = 31 << 7, .flags = 0x30000000}.body("packed"));
    all.record(kFltMesh, mesh("mesh", 0xFFFF, 0xFFFF));
    all.record(kFltLocalVertexPool, Bytes().u32(1).u32(0xC0000000).zeros(24).u32(70 << 7 | 5));
    read(all.pop());
    EXPECT_EQ(usersOf(Palette::kColor, 30), "index ");
    EXPECT_EQ(usersOf(Palette::kColor, 31), "");
    EXPECT_EQ(usersOf(Palette::kColor, 70), "mesh ");
}

// Users keep what they show: also those that are kept as they were read. What shows nothing goes on
// showing nothing.
TEST_F(Users, AreRenumberedWithTheEntries) {
    read(file().pop());
    const std::string before = core.sceneText();
    EXPECT_EQ(palettes::compact(*database, Palette::kTexture), 5U);
    expectUndoTo(before);
    // 2, 5, 300, then the negative and the doubled one; 1 names no entry and must not.
    std::string indices;
    const palettes::Database compacted(*database);
    for (const palettes::Entry& entry : compacted.entries(Palette::kTexture))
        indices += std::to_string(entry.index) + " ";
    EXPECT_EQ(indices, "1 0 4 3 2 ");
    EXPECT_EQ(texturesOf("fa"), "1 0");
    EXPECT_EQ(texturesOf("fb"), "5 -1");
    EXPECT_EQ(texturesOf("fc"), "0 -1");
    EXPECT_EQ(usersOf(Palette::kTexture, 2), "airfield fa mesh ");
    EXPECT_EQ(exportedRecords(kFltMultiTexture), records(kFltMultiTexture, {layers(2, 7)}));
    EXPECT_EQ(exportedRecords(kFltLightPointAppearance),
              records(kFltLightPointAppearance, {appearance(8, 2)}));
    EXPECT_EQ(exportedRecords(kFltMesh), records(kFltMesh, {mesh("mesh", 2, 4)}));
    BitmapTex* const map = fltkilnutil::textureMapOf(node("fa").GetTexmap());
    ASSERT_NE(map, nullptr);
    std::uint32_t mark = 0;
    fltLoadBigEndian(fltkilnutil::sourceChunk(*map, fltkilnutil::SourceChunk::records).data(),
                     mark);
    EXPECT_EQ(mark, 1U);
    EXPECT_EQ(palettes::compact(*database, Palette::kTexture), 0U);
}

// What may use a palette unseen holds its numbers: other files, kinds of 16.x and unknown nodes.
TEST_F(Users, ThatAreNotSeenHoldTheNumbers) {
    const std::string reason =
        "there are records that may use this palette in ways that are not known";
    const auto refused = [&](Palette palette) {
        return refusal([&] { palettes::compact(*database, palette); });
    };
    read(
        file().record(kFltExternalRef, Bytes().field("x.flt", 200).zeros(4).u32(0x20000000)).pop());
    EXPECT_EQ(refused(Palette::kTexture), reason);
    EXPECT_EQ(palettes::compact(*database, Palette::kMaterial), 1U);
    read(file().record(kFltExternalRef, Bytes().field("x.flt", 200).zeros(4).u32(0)).pop());
    EXPECT_EQ(palettes::compact(*database, Palette::kTexture), 5U);
    FltBytes colors;
    colors.record(kFltColorPalette, grays()).push();
    colors.record(kFltExternalRef, Bytes().field("x.flt", 200).zeros(4).u32(0x80000000));
    read(colors.pop());
    EXPECT_EQ(palettes::findOrAddColor(*database, {5, 5, 5}), 5 << 7 | 127);
    EXPECT_EQ(refusal([&] { palettes::findOrAddColor(*database, {5, 5, 6}); }), reason);
    FltBytes shaders;
    shaders.record(kFltTexture, textureEntry("a", 3)).record(kFltShaderPalette, Bytes().zeros(12));
    read(shaders.push().group("g").pop());
    EXPECT_EQ(refused(Palette::kTexture), reason);
}

TEST_F(Users, GetEntriesAssigned) {
    read(file().pop());
    const std::string before = core.sceneText();
    INode* const chosen[] = {&node("g"), &node("fb"), &node("mesh"), &node("lp")};
    EXPECT_EQ(palettes::assign(*database, chosen, Palette::kTexture, 300), 3U);
    expectUndoTo(before);
    EXPECT_EQ(texturesOf("fc") + texturesOf("fb") + texturesOf("fa"), "300 -1300 -15 2");
    EXPECT_EQ(usersOf(Palette::kTexture, 300), "airfield fa fb mesh fc ");
    BitmapTex* const map = fltkilnutil::textureMapOf(node("fb").GetTexmap());
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->GetMapName(), palettes::Database(*database).find(Palette::kTexture, 300)->name);
    EXPECT_EQ(palettes::assign(*database, chosen, Palette::kTexture, -1), 3U);
    EXPECT_EQ(node("fb").GetTexmap(), nullptr);
    EXPECT_EQ(palettes::assign(*database, chosen, Palette::kAppearance, 8), 1U);
    INode* const light[] = {&node("lp")};
    EXPECT_EQ(refusal([&] { palettes::assign(*database, light, Palette::kMaterial, 4); }),
              "there is no node that can use this palette");
    EXPECT_EQ(refusal([&] { palettes::assign(*database, chosen, Palette::kTexture, 1); }),
              "there is no entry 1");
}

// A color by index takes the place of a packed one.
TEST_F(Users, GetColorsAssigned) {
    FltBytes all;
    all.record(kFltColorPalette, grays()).push();
    all.record(kFltFace, FaceOf{.flags = 0x70000000}.body("f"));
    read(all.pop());
    INode* const face[] = {&node("f")};
    EXPECT_EQ(palettes::assign(*database, face, Palette::kColor, 100 << 7 | 127), 1U);
    EXPECT_EQ(faceOf("f").primaryColorIndex, 100U << 7 | 127);
    EXPECT_EQ(faceOf("f").flags, 0x20000000U);
    EXPECT_EQ(node("f").GetWireColor(), 0x646464U);
    EXPECT_EQ(palettes::indexUsedBy(node("f"), Palette::kColor), 100 << 7 | 127);
    EXPECT_EQ(palettes::usageOf(*database).of(Palette::kColor, 100), 1U);
}
