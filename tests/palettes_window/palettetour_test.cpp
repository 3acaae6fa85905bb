// What a modeller does with both windows of the palettes, by keys: a tower gets another color, a
// runway a texture, what nobody uses is found, and all of it is undone.
#include "lookrows.h"

#include <fltkilnutil/texturemaps.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

class PaletteTour : public LookRowsTest {
protected:
    PaletteTour() : LookRowsTest(IDC_ENTRIES) {
        FltColorPalette colors;
        constexpr FltPackedColor kGray{0xFF, 0x80, 0x80, 0x80};
        colors.colors.assign(FltColorPalette::kEntries, kGray);
        FltTexture asphalt, spare;
        asphalt.index = 4;
        fltSetText(asphalt.fileName, "asphalt.rgb");
        spare.index = 5;
        fltSetText(spare.fileName, "spare.rgb");
        scene_.keep(scene_.database, {&colors, &asphalt, &spare});
        tower_ = scene_.object;
        runway_ = scene_.add(scene_.group, FltObject());
        for (INode* const object : {tower_, runway_})
            for (const double x : {20.0, 40.0}) scene_.addFace(object, square(10, x));
        core_.history().clear();
    }

    /// Whether that holds for each face below a node.
    static bool forAll(INode* node, auto&& holds) {
        bool all = node->NumberOfChildren() > 1;
        for (int i = 0; i < node->NumberOfChildren(); ++i)
            all = all && holds(*node->GetChildNode(i));
        return all;
    }
    void goToTextures() const {
        for (int i = 0; i < 2; ++i) testinput::key(VK_TAB, {VK_CONTROL});
    }

    INode *tower_, *runway_;
};

}  // namespace

TEST_F(PaletteTour, ColorsTexturesAndTakesBack) {
    const auto isRed = [](INode& face) { return face.GetWireColor() == RGB(200, 30, 20); };
    const auto isAsphalt = [](INode& face) {
        const BitmapTex* const map = fltkilnutil::textureMapOf(face.GetTexmap());
        return map != nullptr && std::string_view(map->GetMapName()) == "asphalt.rgb";
    };

    openBy(IDC_OPEN_PALETTES);
    goToTextures();
    EXPECT_THAT(column(2), ElementsAre("asphalt.rgb", "spare.rgb"));
    EXPECT_THAT(column(3), ElementsAre("0", "0"));
    scene_.host.SelectNode(runway_);
    SetFocus(list());
    testinput::key(VK_HOME);
    testinput::key('S', {VK_MENU});
    EXPECT_THAT(column(3), ElementsAre("2", "0"));
    EXPECT_TRUE(forAll(runway_, isAsphalt));

    scene_.host.SelectNode(tower_);
    openBy(IDC_OPEN_LOOK, IDC_LOOK_ROWS);
    enter("Color", L"200 30 20");
    EXPECT_TRUE(forAll(tower_, isRed));
    EXPECT_EQ(value("Color"), "200 30 20");

    ASSERT_TRUE(testinput::activate(window()));
    testinput::key('N', {VK_MENU});
    EXPECT_TRUE(
        testinput::pumpUntil([&] { return column(2) == std::vector<std::string>{"spare.rgb"}; }));

    EXPECT_EQ(core_.history().doneCount(), 2U);
    while (core_.history().undo()) {
    }
    EXPECT_TRUE(testinput::pumpUntil([&] {
        return column(2) == std::vector<std::string>{"asphalt.rgb", "spare.rgb"} &&
               value("Color") != "200 30 20";
    }));
    EXPECT_FALSE(isAsphalt(*runway_->GetChildNode(0)));
    EXPECT_FALSE(isRed(*tower_->GetChildNode(0)));
}
