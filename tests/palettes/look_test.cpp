// What nodes have in common, and one field set on all of them.
#include "palettescene.h"

#include <fltkilnutil/texturemaps.h>
#include <palettes/look.h>

namespace {

using palettes::Look, palettes::LookRow;

class Looks : public PaletteScene {
protected:
    /// Faces "ten" and "twenty" in colors of those entries, with a texture; a packed one; a group.
    void readFaces() {
        constexpr std::uint32_t kPacked = 0x10000000, kNoAlternate = 0x20000000;
        FltBytes file;
        file.record(kFltColorPalette, grays());
        for (const std::uint32_t index : {1U, 2U})
            file.record(kFltTexture, textureEntry("t" + std::to_string(index) + ".rgb", index));
        file.push();
        file.record(kFltFace, FaceOf{.color = 10 << 7 | 127, .texture = 1}.body("ten"));
        file.record(kFltFace, FaceOf{.color = 20 << 7 | 127, .texture = 1}.body("twenty"));
        file.face("packed", kPacked | kNoAlternate, 0xFF030201);
        read(file.group("g").push().face("below").pop().pop());
    }
    std::vector<INode*> nodes(std::initializer_list<const char*> names) {
        std::vector<INode*> all;
        for (const char* const name : names) all.push_back(&node(name));
        return all;
    }
    static LookRow row(const Look& look, std::string_view caption) {
        const auto found = std::ranges::find(look.rows(), caption, &LookRow::caption);
        return found != look.rows().end() ? *found : LookRow();
    }
    std::string shown(const Look& look, std::string_view caption) {
        const LookRow found = row(look, caption);
        if (found.caption.empty()) return "none";
        if (found.isMixed) return "mixed";
        const std::string meaning = look.meaning(palettes::Database(*database), found);
        return found.value + (meaning.empty() ? "" : ": " + meaning);
    }
    std::size_t set(std::initializer_list<const char*> names, std::string_view caption,
                    std::string_view value) {
        const std::vector<INode*> all = nodes(names);
        return palettes::setLook(all, row(Look(all), caption), value);
    }
    std::string why(std::initializer_list<const char*> names, std::string_view caption,
                    std::string_view value) {
        return refusal([&] { set(names, caption, value); });
    }
};

}  // namespace

TEST_F(Looks, ShowWhatNodesHaveInCommon) {
    readFaces();
    const Look look(nodes({"ten", "twenty", "g"}));
    EXPECT_EQ(look.surfaces(), 2U);
    EXPECT_EQ(shown(look, "Color entry"), "mixed");
    EXPECT_EQ(shown(look, "Color intensity"), "127");
    EXPECT_EQ(shown(look, "Texture"), "1: t1.rgb");
    EXPECT_EQ(shown(look, "Material"), "-1");
    EXPECT_EQ(shown(look, "Transparency"), "0: 0 %");
    EXPECT_EQ(shown(look, "Loop count"), "0");
    EXPECT_EQ(shown(look, "Significant size"), "none");
    EXPECT_EQ(row(look, "Draw type").choices.size(), 8U);
    EXPECT_TRUE(look.color(palettes::Database(*database), false).isMixed);

    const Look ten(nodes({"ten"}));
    EXPECT_EQ(shown(ten, "Color entry"), "10: 10 10 10");
    EXPECT_EQ(shown(ten, "Packed color (R G B)"), "255 255 255: does not count");
    EXPECT_EQ(shown(ten, "Alternate color entry"), "0: does not count");
    EXPECT_EQ(ten.color(palettes::Database(*database), false).color, (palettes::Rgb{10, 10, 10}));
    EXPECT_EQ(ten.color(palettes::Database(*database), true).color, std::nullopt);
    const Look packed(nodes({"packed"}));
    EXPECT_EQ(shown(packed, "Packed color (R G B)"), "1 2 3");
    EXPECT_EQ(shown(packed, "Color entry"), "0: does not count");
    EXPECT_EQ(packed.color(palettes::Database(*database), false).color, (palettes::Rgb{1, 2, 3}));

    INode* const top[] = {&node("g"), &node("ten"), &node("g")};
    EXPECT_EQ(palettes::lookNodes(top, false), nodes({"g", "ten"}));
    EXPECT_EQ(palettes::lookNodes(top, true), nodes({"g", "ten", "below"}));
}

// The field alone, on all that have it, as one step; the scene shows it.
TEST_F(Looks, SetOneFieldOfManyNodes) {
    readFaces();
    const std::vector<std::uint8_t> faces = exportedRecords(kFltFace);
    const std::string before = core.sceneText();
    EXPECT_EQ(set({"ten", "g", "twenty"}, "Color intensity", "64"), 2U);
    expectUndoTo(before);
    EXPECT_EQ(faceOf("ten").primaryColorIndex, 10U << 7 | 64);
    EXPECT_EQ(faceOf("twenty").primaryColorIndex, 20U << 7 | 64);
    EXPECT_EQ(node("twenty").GetWireColor(), 0x0A0A0AU);
    std::vector<std::uint8_t> expected = faces;
    expected[71] = 0x40;
    expected[80 + 71] = 0x40;
    EXPECT_EQ(exportedRecords(kFltFace), expected);

    EXPECT_EQ(set({"ten", "twenty"}, "Transparency", "50 %"), 2U);
    EXPECT_EQ(faceOf("ten").transparency, 32768);
    EXPECT_EQ(why({"ten"}, "Light mode", "3"), "Light mode cannot be 3");
    EXPECT_EQ(set({"packed"}, "Packed color (R G B)", "9 8 7"), 1U);
    EXPECT_EQ(node("packed").GetWireColor(), 0x070809U);
    EXPECT_EQ(set({"g"}, "Loop duration (s)", "2.5"), 1U);
    for (const auto& [caption, value] : {std::pair("Color entry", "1024"),
                                         {"Color entry", "-1"},
                                         {"Color intensity", "128"},
                                         {"Transparency", "65536"},
                                         {"Transparency", "101 %"},
                                         {"Transparency", "nan %"},
                                         {"Packed color (R G B)", "1 2"},
                                         {"Packed color (R G B)", "1 2 256"},
                                         {"Texture", "1.5"},
                                         {"Texture", ""}})
        EXPECT_EQ(why({"ten", "twenty"}, caption, value),
                  std::string(caption) + " cannot be " + value);
    const LookRow texture = row(Look(nodes({"ten"})), "Texture");
    EXPECT_EQ(refusal([&] { palettes::setLook(nodes({"g"}), texture, "1"); }),
              "no selected node has this field");
}

TEST_F(Looks, TexturesAreShownByTheirPictures) {
    readFaces();
    EXPECT_EQ(set({"ten", "twenty"}, "Texture", "2"), 2U);
    BitmapTex* const map = fltkilnutil::textureMapOf(node("twenty").GetTexmap());
    ASSERT_NE(map, nullptr);
    EXPECT_STREQ(map->GetMapName(), "t2.rgb");
    EXPECT_EQ(node("ten").GetTexmap(), map);
    EXPECT_EQ(set({"ten"}, "Texture", "7"), 1U);
    EXPECT_EQ(node("ten").GetTexmap(), nullptr);
    EXPECT_EQ(faceOf("ten").textureIndex, 7);
    EXPECT_EQ(shown(Look(nodes({"ten"})), "Texture"), "7: no such entry");
}

// By index where that counts, packed where packed ones do.
TEST_F(Looks, GetAColorOfTheUsers) {
    readFaces();
    const std::string before = core.sceneText();
    EXPECT_EQ(palettes::setLookColor(nodes({"ten", "packed", "g", "below"}), false, {30, 30, 30}),
              3U);
    expectUndoTo(before);
    EXPECT_EQ(faceOf("ten").primaryColorIndex, 30U << 7 | 127);
    EXPECT_EQ(faceOf("below").primaryColorIndex, 30U << 7 | 127);
    EXPECT_EQ(faceOf("below").flags & 0x40000000, 0U);
    for (const char* const name : {"ten", "packed", "below"})
        EXPECT_EQ(node(name).GetWireColor(), 0x1E1E1EU) << name;
    EXPECT_EQ(shown(Look(nodes({"packed"})), "Packed color (R G B)"), "30 30 30");
    palettes::setLookColor(nodes({"ten"}), true, {40, 40, 40});
    EXPECT_EQ(faceOf("ten").alternateColorIndex, 40U << 7 | 127);
    EXPECT_EQ(node("ten").GetWireColor(), 0x1E1E1EU);
    EXPECT_EQ(refusal([&] {
                  palettes::setLookColor(nodes({"g"}), false, {1, 2, 3});
              }),
              "no selected node has this field");
}
