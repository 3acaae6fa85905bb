// The window of what nodes look like in the built plug-in, by keys and what its grid shows.
#include "../support/colordialog.h"
#include "lookrows.h"

#include <fltkilnutil/fltfields.h>
#include <fltkilnutil/texturemaps.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltlod.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::StartsWith;

namespace {

class LookWindowTest : public LookRowsTest {
protected:
    /// Two faces below the selected object: in gray 10 and gray 20, with one texture.
    LookWindowTest() : LookRowsTest(IDC_LOOK_ROWS) {
        FltColorPalette colors;
        for (unsigned i = 0; i < FltColorPalette::kEntries; ++i) {
            const int gray = static_cast<int>(i & 0xFF);
            colors.colors.push_back(FltPackedColor::fromComponents(gray, gray, gray, 255));
        }
        FltTexture walls, roof;
        walls.index = 3;
        fltSetText(walls.fileName, "walls.rgb");
        roof.index = 7;
        fltSetText(roof.fileName, "roof.rgb");
        scene_.keep(scene_.database, {&colors, &roof, &walls});
        FltFace face;
        face.primaryColorIndex = 10 << 7 | 127;
        face.textureIndex = 3;
        fltPutRecord(scene_.face, face);
        face.primaryColorIndex = 20 << 7 | 127;
        other_ = scene_.addFace(scene_.object, square(10, 20), face);
        scene_.host.SelectNode(scene_.object);
        core_.history().clear();
    }

    void open() { openBy(IDC_OPEN_LOOK); }
    static FltFace faceOf(INode* node) {
        FltFace face;
        EXPECT_TRUE(fltGetRecord(node, face));
        return face;
    }
    std::string status() const { return textOf(control(IDC_LOOK_STATUS)); }

    INode* other_;
};

}  // namespace

TEST_F(LookWindowTest, ShowsAndSetsWhatFacesHaveInCommon) {
    open();
    EXPECT_EQ(status(), "Nodes: 3, faces and meshes: 2");
    EXPECT_EQ(value("Color entry"), "");
    EXPECT_EQ(note("Color entry"), "the nodes have different values");
    EXPECT_EQ(value("Color intensity"), "127");
    EXPECT_EQ(value("Texture"), "3: walls.rgb");
    EXPECT_EQ(value("Material"), "-1: none");
    enter("Transparency", L"50 %");
    EXPECT_EQ(status(), "Nodes that have the value now: 2");
    EXPECT_EQ(value("Transparency"), "32768");
    EXPECT_EQ(note("Transparency"), "50 %");
    EXPECT_FALSE(testinput::pumpUntil([&] { return status().starts_with("Nodes: "); }, 400))
        << "what was done is said until something else changes";
    EXPECT_EQ(faceOf(other_).transparency, 32768);
    EXPECT_EQ(core_.history().doneCount(), 1U);
    // What differs stays as it is unless something is entered.
    goTo("Color entry");
    testinput::key(VK_RETURN);
    testinput::key(VK_RETURN);
    EXPECT_EQ(status(), "Nodes that have the value now: 2");
    enter("Transparency", L"70000");
    EXPECT_THAT(status(), StartsWith("Not done: Transparency cannot be 70000"));
    EXPECT_EQ(value("Transparency"), "32768");
    // Escape takes back what is typed, and the window stays.
    testinput::type(L"12");
    testinput::key(VK_ESCAPE);
    EXPECT_EQ(value("Transparency"), "32768");
    EXPECT_TRUE(IsWindowVisible(window()));
    EXPECT_EQ(core_.history().doneCount(), 1U);
    ASSERT_TRUE(core_.history().undo());
    EXPECT_TRUE(testinput::pumpUntil([&] { return value("Transparency") == "0"; }));
}

TEST_F(LookWindowTest, ChoosesColorsAndEntries) {
    open();
    enter("Color", L"30 30 30");
    for (INode* const node : {scene_.face, other_}) {
        EXPECT_EQ(faceOf(node).primaryColorIndex, 30U << 7 | 127);
        EXPECT_EQ(node->GetWireColor(), 0x1E1E1EU);
    }
    EXPECT_EQ(value("Color entry"), "30");
    EXPECT_EQ(note("Color entry"), "30 30 30");
    enter("Color", L"30 30");
    EXPECT_EQ(status(), "Not done: Color cannot be 30 30");
    // The list is searched for what names contain.
    goTo("Texture");
    testinput::key('H', {VK_MENU});
    testinput::type(L"oo");
    testinput::key(VK_RETURN);
    EXPECT_EQ(value("Texture"), "7: roof.rgb");
    EXPECT_EQ(faceOf(other_).textureIndex, 7);
    const BitmapTex* const map = fltkilnutil::textureMapOf(other_->GetTexmap());
    ASSERT_NE(map, nullptr);
    EXPECT_STREQ(map->GetMapName(), "roof.rgb");
    EXPECT_EQ(core_.history().doneCount(), 2U);
}

// By its button, by a click on the patch, and given up: nothing has changed then.
TEST_F(LookWindowTest, AsksForColors) {
    scene_.edit<FltFace>(other_, [](FltFace& face) {
        face.flags &= ~(kFltSurfaceNoColor | kFltSurfacePackedColors);
    });
    core_.history().clear();
    scene_.host.SelectNode(other_);
    open();
    ASSERT_EQ(value("Color"), "20 20 20");
    goTo("Color");
    {
        const ColorDialog dialog({{200, 30, 10}});
        testinput::key('H', {VK_MENU});
        ASSERT_TRUE(dialog.offered());
        EXPECT_EQ(dialog.offered()->green, 20);
    }
    EXPECT_EQ(value("Color"), "200 30 10");
    EXPECT_EQ(other_->GetWireColor(), 0x0A1EC8U);
    const RECT cell = Seen(grid()).place(valueId("Color"));
    POINT patch{cell.right - (cell.bottom - cell.top) / 2, (cell.top + cell.bottom) / 2};
    ScreenToClient(grid(), &patch);
    for (const bool isAnswered : {false, true}) {
        using Color = ColorDialog::Color;
        const ColorDialog dialog(isAnswered ? std::optional<Color>({1, 2, 3}) : std::nullopt);
        testinput::click(grid(), patch);
        ASSERT_TRUE(dialog.offered());
        EXPECT_EQ(dialog.offered()->red, 200);
        EXPECT_EQ(value("Color"), isAnswered ? "1 2 3" : "200 30 10");
        EXPECT_EQ(core_.history().doneCount(), isAnswered ? 2U : 1U);
    }
}

// What only files hold of groups, levels of detail and switches.
TEST_F(LookWindowTest, HasRowsForWhatIsNoFace) {
    const auto fieldOf = [](INode* node, const char* key) {
        const FltField field = fltFieldFind(node, key);
        return field && fltFieldLoad(node, field, kFltRevision)
                   ? std::string(field.row->value.text())
                   : "none";
    };
    open();
    scene_.host.SelectNode(scene_.group);
    ASSERT_TRUE(testinput::pumpUntil([&] { return value("Loop count") == "0"; }));
    enter("Loop count", L"7");
    enter("Loop duration (s)", L"2.5");
    enter("Last frame duration (s)", L"0.5");
    EXPECT_EQ(fieldOf(scene_.group, "FltGrpLoopCount"), "7");
    EXPECT_EQ(fieldOf(scene_.group, "FltGrpLoopDuration"), "2.5");
    EXPECT_EQ(fieldOf(scene_.group, "FltGrpLastFrame"), "0.5");
    enter("Loop count", L"often");
    EXPECT_EQ(status(), "Not done: Loop count cannot be often");
    EXPECT_EQ(value("Significant size"), "none");
    EXPECT_EQ(core_.history().doneCount(), 3U);

    INode* const level = scene_.add(scene_.group, FltLod());
    scene_.host.SelectNode(level);
    ASSERT_TRUE(testinput::pumpUntil([&] { return value("Significant size") == "0"; }));
    enter("Significant size", L"12.25");
    EXPECT_EQ(fieldOf(level, "FltLodSize"), "12.25");
    EXPECT_EQ(value("Significant size"), "12.25");

    FltSwitch record;
    record.maskWords.append(1);
    record.maskWords.append(2);
    INode* const choice = scene_.add(scene_.group, record);
    scene_.host.SelectNode(choice);
    ASSERT_TRUE(testinput::pumpUntil([&] { return value("Name of mask 1").empty(); }));
    EXPECT_EQ(value("Name of mask 2"), "none");
    enter("Name of mask 1", L"wreck");
    EXPECT_EQ(fieldOf(choice, "FltSwitchMaskName1"), "wreck");
    EXPECT_EQ(fieldOf(choice, "FltSwitchMaskName0"), "");
    ASSERT_TRUE(core_.history().undo());
    EXPECT_TRUE(testinput::pumpUntil([&] { return value("Name of mask 1").empty(); }));
}

TEST_F(LookWindowTest, FollowsTheSelectionAndTheLanguage) {
    open();
    goTo("Draw type");
    scene_.host.SelectNode(other_);
    EXPECT_TRUE(testinput::pumpUntil([&] { return value("Color entry") == "20"; }));
    EXPECT_EQ(status(), "Nodes: 1, faces and meshes: 1");
    scene_.host.SelectNode(scene_.add(scene_.group, FltLod()));
    EXPECT_TRUE(testinput::pumpUntil([&] { return value("Color entry") == "none"; }));
    EXPECT_EQ(status(), "Nodes: 1, faces and meshes: 0");
    scene_.host.ClearNodeSelection();
    EXPECT_TRUE(testinput::pumpUntil([&] { return status() == "No node is selected"; }));
    // With the object alone nothing is left of its faces.
    scene_.host.SelectNode(scene_.object);
    EXPECT_TRUE(testinput::pumpUntil([&] { return value("Texture") == "3: walls.rgb"; }));
    testinput::key('B', {VK_MENU});
    EXPECT_EQ(status(), "Nodes: 1, faces and meshes: 0");
    EXPECT_EQ(value("Texture"), "none");
    testinput::key('B', {VK_MENU});
    const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
    EXPECT_EQ(textOf(window()), "外观");
    EXPECT_EQ(value("纹理"), "3: walls.rgb");
}
