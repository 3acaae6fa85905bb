// Light points with looks of their own, and with looks of palettes, by the bytes of their files.
#include "palettescene.h"

#include <palettes/lightpoints.h>

#include <array>

namespace {

/// The 32 words of a light point's record behind its codes: no two the same.
std::array<std::uint32_t, 32> words(std::uint32_t flags) {
    std::array<std::uint32_t, 32> all;
    for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = 0x3F800000 + i;
    all[31] = flags;
    return all;
}
Bytes lightPoint(std::string_view id, const std::array<std::uint32_t, 32>& all) {
    Bytes body;
    body.field(id, 8).u16(258).u16(772);
    for (const std::uint32_t word : all) body.u32(word);
    return body.f32(0.5F).f32(0.25F).f32(0.125F);
}
Bytes indexed(std::string_view id, std::uint32_t look, std::uint32_t motion, std::uint32_t order) {
    return Bytes().field(id, 8).u32(look).u32(motion).u32(order).zeros(4);
}
Bytes appearance(std::string_view name, std::uint32_t index,
                 const std::array<std::uint32_t, 32>& all, unsigned texture = 0xFFFF) {
    Bytes body;
    body.zeros(4).field(name, 256).u32(index).u16(258).u16(772);
    for (std::size_t i = 0; i < 26; ++i) body.u32(all[i]);  // up to the animation
    return body.u32(all[29]).u32(all[31]).zeros(24).u16(texture).u16(0);
}
Bytes animation(std::string_view name, std::uint32_t index,
                const std::array<std::uint32_t, 32>& all, std::uint32_t type) {
    Bytes body;
    body.zeros(4).field(name, 256).u32(index).u32(all[26]).u32(all[27]).u32(all[28]);
    const std::uint32_t flags = type == 1 ? 0x80000000 : 0;  // counter-clockwise
    body.f32(0.5F).f32(0.25F).f32(0.125F).u32(flags).u32(type);
    return body.zeros(12 + 1024 + 4);
}

/// Records as export writes them.
std::vector<std::uint8_t> padded(std::uint16_t opcode, std::vector<Bytes> bodies) {
    Bytes all;
    for (Bytes& body : bodies) {
        body.zeros((8 - (body.size() + 4) % 8) % 8);
        all.u16(opcode).u16(static_cast<unsigned>(body.size() + 4)).append(body);
    }
    return all.vector();
}

using LightPoints = PaletteScene;
constexpr std::uint32_t kFlags = 0x50C18000, kRotates = 0x50B18000, kStill = 0x50818000;

}  // namespace

TEST_F(LightPoints, GoIntoPalettesAndBack) {
    auto other = words(kRotates), same = words(kFlags);
    same[30] = 7;  // the draw order is the light point's own
    const std::vector<Bytes> points = {lightPoint("a", words(kFlags)), lightPoint("b", other),
                                       lightPoint("c", same), lightPoint("e", words(kStill))};
    const Bytes longer = lightPoint("d", words(kFlags)).zeros(8).u32(5);
    FltBytes file;
    file.palette({{0, 0, 0}, {1, 0, 0}}).push().group("g").push();
    for (const Bytes& point : points) file.record(kFltLightPoint, point).push().list({0, 1}).pop();
    file.record(kFltLightPoint, longer);
    read(file.pop().pop());
    const std::vector<std::uint8_t> original = exportedRecords(kFltLightPoint);
    ASSERT_EQ(original,
              padded(kFltLightPoint, {points[0], points[1], points[2], points[3], longer}));
    const std::string before = core.sceneText();

    INode* const group[] = {&node("g")};
    palettes::ConvertedLightPoints converted = palettes::indexLightPoints(group);
    EXPECT_EQ(converted.done, 4U);
    EXPECT_EQ(converted.passedOver, 1U) << "what stands behind its fields would be lost";
    expectUndoTo(before);
    EXPECT_FALSE(fltHasRecord(&node("a"))) << "of a light point";
    EXPECT_EQ(exportedRecords(kFltIndexedLightPoint),
              padded(kFltIndexedLightPoint,
                     {indexed("a", 0, 0, 0x3F80001E), indexed("b", 1, 1, 0x3F80001E),
                      indexed("c", 0, 0, 7), indexed("e", 2, 2, 0x3F80001E)}));
    EXPECT_EQ(exportedRecords(kFltLightPointAppearance),
              padded(kFltLightPointAppearance,
                     {appearance("a", 0, words(kFlags)), appearance("b", 1, other),
                      appearance("e", 2, words(kStill))}));
    EXPECT_EQ(exportedRecords(kFltLightPointAnimation),
              padded(kFltLightPointAnimation,
                     {animation("a", 0, words(kFlags), 2), animation("b", 1, other, 1),
                      animation("e", 2, words(kStill), 0)}));
    EXPECT_EQ(palettes::usageOf(*database).of(Palette::kAppearance, 0), 2U);
    EXPECT_EQ(exportedRecords(kFltVertexList).size(), 4U * 12);

    converted = palettes::inlineLightPoints(group);
    EXPECT_EQ(converted.done, 4U);
    EXPECT_EQ(exportedRecords(kFltLightPoint), original);
    // And again, with the entries that are there.
    EXPECT_EQ(palettes::indexLightPoints(group).done, 4U);
    EXPECT_EQ(exportedRecords(kFltLightPointAppearance).size(), 3U * 416);
}

// What a light point's own record has no place for stays with the palettes.
TEST_F(LightPoints, KeepWhatTheirRecordCannotSay) {
    FltBytes file;
    file.record(kFltLightPointAppearance, appearance("plain", 3, words(kFlags)));
    file.record(kFltLightPointAppearance, appearance("picture", 4, words(kFlags), 2));
    Bytes morse = animation("morse", 0, words(kFlags), 3);
    file.record(kFltLightPointAnimation, morse).push();
    file.record(kFltIndexedLightPoint, indexed("still", 3, 0xFFFFFFFF, 1));
    file.record(kFltIndexedLightPoint, indexed("picture", 4, 0xFFFFFFFF, 1));
    file.record(kFltIndexedLightPoint, indexed("morse", 3, 0, 1));
    file.record(kFltIndexedLightPoint, indexed("nothing", 9, 0xFFFFFFFF, 1));
    read(file.pop());
    for (const char* const name : {"picture", "morse", "nothing"}) {
        INode* const one[] = {&node(name)};
        EXPECT_EQ(refusal([&] { palettes::inlineLightPoints(one); }),
                  "there are no light points that can be converted")
            << name;
    }
    const std::vector<std::uint8_t> entries = exportedRecords(kFltLightPointAppearance);
    INode* const all[] = {database};
    const palettes::ConvertedLightPoints converted = palettes::inlineLightPoints(all);
    EXPECT_EQ(converted.done, 1U);
    EXPECT_EQ(converted.passedOver, 3U);
    EXPECT_EQ(exportedRecords(kFltLightPointAppearance), entries);
    EXPECT_EQ(exportedRecords(kFltLightPoint).size(), 160U);
    // A light point without animation takes the entry that looks so, whatever its name.
    EXPECT_EQ(palettes::indexLightPoints(all).done, 1U);
    EXPECT_EQ(exportedRecords(kFltLightPointAppearance), entries);
}
