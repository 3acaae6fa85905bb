// The window of the palettes in the built plug-in, by keys, clicks and what its controls show.
#include "../../palettes/plugin/resource.h"
#include "../support/colordialog.h"
#include "../support/filedialog.h"
#include "../support/pluginwindowtest.h"
#include "../support/seen.h"

#include <base/file.h>
#include <base/paths.h>
#include <palettes/edits.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltstream.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

using palettes::Palette;
using testing::ElementsAre;

namespace {

FltMaterial material(std::int32_t index, const char* name, FltColor3f diffuse) {
    FltMaterial made;
    made.index = index;
    fltSetText(made.name, name);
    made.diffuse = made.ambient = diffuse;
    made.specular = {0.8F, 0.8F, 0.8F};
    made.shininess = 40;
    return made;
}

class PaletteWindowTest : public PluginWindowTest {
protected:
    PaletteWindowTest() : PluginWindowTest(IDC_ENTRIES) {
        FltColorPalette colors;
        for (unsigned i = 0; i < FltColorPalette::kEntries; ++i) {
            const unsigned level = i / 32 * 8, hue = i % 32 * 8;
            colors.colors.push_back(FltPackedColor::fromComponents(
                static_cast<int>(hue), static_cast<int>(level), static_cast<int>(255 - hue), 255));
        }
        FltTexture missing;
        fltSetText(missing.fileName, "no/such/picture.rgb");
        const FltMaterial steel = material(4, "steel", {0.45F, 0.5F, 0.55F}),
                          brick = material(2, "brick", {0.7F, 0.25F, 0.15F}),
                          twice = material(2, "twice", {0.2F, 0.6F, 0.2F});
        scene_.keep(scene_.database, {&colors, &missing, &steel, &brick, &twice});
        FltFace face;
        face.materialIndex = 4;
        fltPutRecord(scene_.face, face);
        core_.history().clear();
    }

    void open() { openBy(IDC_OPEN_PALETTES); }
    /// Goes to a palette by the keyboard.
    void show(Palette palette) {
        for (int i = 0; i < 7; ++i) {
            if (SendMessageW(control(IDC_TABS), TCM_GETCURSEL, 0, 0) ==
                static_cast<LRESULT>(palette))
                return;
            testinput::key(VK_TAB, {VK_CONTROL});
        }
        FAIL() << "no such tab";
    }

    std::string status() const { return textOf(control(IDC_STATUS)); }
    /// Takes the last step back; the list then shows entries of these names.
    void undo(const std::vector<std::string>& names) {
        ASSERT_TRUE(core_.history().undo());
        EXPECT_TRUE(testinput::pumpUntil([&] { return column(2) == names; }));
    }
};

}  // namespace

TEST_F(PaletteWindowTest, ListsSortsAndFiltersEntries) {
    open();
    EXPECT_EQ(status(), "Color 0 at intensity 127: color index 127, users: 0");
    // Of the colors the one of that number, or those with that in the name, go on being there.
    palettes::setColorName(*scene_.database, 40, "Sea");
    const auto swatch = [this](int entry) {
        RECT area{};
        GetClientRect(control(IDC_SWATCHES), &area);
        return testinput::pixel(control(IDC_SWATCHES), {area.right * (entry % 32 * 2 + 1) / 64,
                                                        area.bottom * (entry / 32 * 2 + 1) / 64});
    };
    for (const wchar_t* const wanted : {L"sea", L"40"}) {
        SetWindowTextW(control(IDC_SEARCH), wanted);
        EXPECT_TRUE(testinput::pumpUntil(
            [&] { return status() == "Color 40 at intensity 127: color index 5247, users: 0"; }));
        EXPECT_EQ(swatch(41), GetSysColor(COLOR_BTNFACE));
        EXPECT_EQ(swatch(40), RGB(64, 8, 191));
    }
    SetWindowTextW(control(IDC_SEARCH), L"");
    testinput::pump();
    EXPECT_EQ(swatch(41), RGB(72, 8, 183));
    show(Palette::kMaterial);
    EXPECT_THAT(column(1), ElementsAre("4", "2", "2"));
    EXPECT_THAT(column(2), ElementsAre("steel", "brick", "twice"));
    EXPECT_THAT(column(3), ElementsAre("1", "0", "0"));
    EXPECT_THAT(column(4), ElementsAre("", "", "doubled index"));
    clickHeading(2);
    EXPECT_THAT(column(2), ElementsAre("brick", "steel", "twice"));
    push(IDC_UNUSED);
    EXPECT_THAT(column(2), ElementsAre("brick", "twice"));
    testinput::key('R', {VK_MENU});
    EXPECT_EQ(GetFocus(), control(IDC_SEARCH));
    testinput::type(L"TW");
    EXPECT_THAT(column(2), ElementsAre("twice"));
    EXPECT_EQ(status(), "Entries: 3, shown: 1");
    SetWindowTextW(control(IDC_SEARCH), L"");
    show(Palette::kTexture);
    EXPECT_TRUE(testinput::pumpUntil(
        [&] { return column(4) == std::vector<std::string>{"picture not found"}; }));
}

// All of it by the keyboard, each edit a step, and shown as it is after undoing it.
TEST_F(PaletteWindowTest, EditsAreShownAndUndone) {
    open();
    show(Palette::kMaterial);
    push(IDC_ADD);
    EXPECT_THAT(column(2), ElementsAre("steel", "brick", "twice", "new"));
    EXPECT_THAT(column(1), ElementsAre("4", "2", "2", "0"));
    undo({"steel", "brick", "twice"});
    // The name is the second field of the first entry.
    SetFocus(list());
    testinput::key(VK_HOME);
    testinput::key(VK_RETURN);
    ASSERT_EQ(GetFocus(), control(IDC_FIELDS));
    testinput::key(VK_DOWN);
    testinput::type(L"iron");
    testinput::key(VK_RETURN);
    EXPECT_THAT(column(2), ElementsAre("iron", "brick", "twice"));
    undo({"steel", "brick", "twice"});
    // What is not used goes without a question.
    SetFocus(list());
    testinput::key(VK_DOWN);
    testinput::key(VK_DELETE);
    EXPECT_THAT(column(2), ElementsAre("steel", "twice"));
    undo({"steel", "brick", "twice"});
    push(IDC_COMPACT);
    EXPECT_THAT(column(1), ElementsAre("1", "0", "2"));
    EXPECT_EQ(status(), "Indices changed: 2");
    FltFace face;
    fltGetRecord(scene_.face, face);
    EXPECT_EQ(face.materialIndex, 1);
}

TEST_F(PaletteWindowTest, UsersAreSelectedAndGetEntries) {
    open();
    show(Palette::kMaterial);
    scene_.host.SelectNode(scene_.object);
    SetFocus(list());
    testinput::key(VK_END);
    testinput::key(VK_UP);
    push(IDC_ASSIGN);
    EXPECT_EQ(status(), "Assigned to nodes: 1");
    EXPECT_THAT(column(3), ElementsAre("0", "1", "0"));
    SetFocus(list());
    testinput::key(VK_HOME);
    push(IDC_SELECT_USERS);
    EXPECT_EQ(status(), "No node uses this entry");
    push(IDC_PICK);
    push(IDC_SELECT_USERS);
    EXPECT_EQ(status(), "Nodes selected: 1");
    EXPECT_EQ(scene_.host.GetSelNode(0), scene_.face);
    // A color by the arrows, at an intensity by the arrows.
    show(Palette::kColor);
    SetFocus(control(IDC_SWATCHES));
    testinput::key(VK_DOWN);
    testinput::key(VK_RIGHT);
    SetFocus(control(IDC_INTENSITY));
    testinput::key(VK_LEFT);
    push(IDC_ASSIGN);
    FltFace face;
    fltGetRecord(scene_.face, face);
    EXPECT_EQ(face.primaryColorIndex, 33U * 128 + 126);
    EXPECT_EQ(status(), "Assigned to nodes: 1");
    SetFocus(control(IDC_FIELDS));
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::type(L"10 20 300");
    testinput::key(VK_RETURN);
    EXPECT_THAT(status(), testing::StartsWith("Not done: the field color cannot be"));
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::type(L"10 20 30");
    testinput::key(VK_RETURN);
    EXPECT_EQ(palettes::textOfColor(palettes::colorAt(palettes::Database(*scene_.database), 33)),
              "10 20 30");
    EXPECT_EQ(scene_.face->GetWireColor(), 0x1E140AU);
}

// All light points below the selection become users of palettes, and say all themselves again.
TEST_F(PaletteWindowTest, LightPointsGoIntoPalettesAndBack) {
    const auto kindOf = [](INode* node) {
        FltNodeKind kind{};
        fltGetKind(node, false, kind);
        return static_cast<int>(kind);
    };
    FltLightPoint record;
    record.directionalAmbientIntensity = 0.5F;
    INode* const light = scene_.add(scene_.group, record);
    scene_.add(scene_.group, record);
    core_.history().clear();
    open();
    show(Palette::kAppearance);
    testinput::key('I', {VK_MENU});
    EXPECT_EQ(status(), "No node is selected");
    scene_.host.SelectNode(scene_.face);
    testinput::key('I', {VK_MENU});
    EXPECT_EQ(status(), "Not done: there are no light points that can be converted");
    EXPECT_EQ(core_.history().doneCount(), 0U);
    scene_.host.SelectNode(scene_.group);
    testinput::key('I', {VK_MENU});
    EXPECT_EQ(status(), "Light points converted: 2");
    EXPECT_EQ(kindOf(light), kFltIndexedLightPoint);
    EXPECT_THAT(column(3), ElementsAre("2"));
    EXPECT_EQ(core_.history().doneCount(), 1U);
    testinput::key('I', {VK_MENU});
    EXPECT_EQ(status(), "Not done: there are no light points that can be converted");
    testinput::click(control(IDC_INLINE_LIGHTS), {10, 5});
    EXPECT_EQ(status(), "Light points converted: 2");
    EXPECT_EQ(kindOf(light), kFltLightPoint);
    FltLightPoint back;
    ASSERT_TRUE(fltGetRecord(light, back));
    EXPECT_EQ(back.directionalAmbientIntensity, 0.5F);
    EXPECT_THAT(column(3), ElementsAre("0"));
    ASSERT_TRUE(core_.history().undo());
    ASSERT_TRUE(core_.history().undo());
    EXPECT_TRUE(testinput::pumpUntil([&] { return rows() == 0; }));
    EXPECT_EQ(kindOf(light), kFltLightPoint);
}

// 32 colors with intensities, and 56 that have one alone.
TEST_F(PaletteWindowTest, ColorsOfOlderFilesAreEdited) {
    fltkilnutil::SourceRecordsWriter kept;
    constexpr std::uint32_t kOld = 1420;
    FltColorPalette colors;
    colors.colors.assign(FltColorPalette::kOldEntries, {0, 30, 20, 10});
    colors.fixedColors.assign(FltColorPalette::kFixedColors, {0, 60, 50, 40});
    FltToken token;
    colors.writeToken(token, kOld);
    token.finish();
    kept.begin(kOld);
    kept.record({token.data(), token.length()});
    fltkilnutil::storeSourceChunk(*scene_.database, fltkilnutil::SourceChunk::records,
                                  kept.bytes());
    core_.history().clear();
    open();
    EXPECT_EQ(status(), "Color 0 at intensity 127: color index 127, users: 0");
    SetFocus(control(IDC_SWATCHES));
    testinput::key(VK_END);
    EXPECT_EQ(status(), "Color 87 of one intensity: color index 4151, users: 0");
    {
        const ColorDialog dialog({{7, 8, 9}});
        testinput::key(VK_RETURN);
        ASSERT_TRUE(dialog.offered());
        EXPECT_EQ(dialog.offered()->blue, 60);
    }
    scene_.host.SelectNode(scene_.face);
    push(IDC_ASSIGN);
    FltFace face;
    fltGetRecord(scene_.face, face);
    EXPECT_EQ(face.primaryColorIndex, 4151U);
    EXPECT_EQ(scene_.face->GetWireColor(), 0x090807U);
    SetFocus(control(IDC_SWATCHES));
    testinput::key(VK_HOME);
    SetFocus(control(IDC_INTENSITY));
    testinput::key(VK_LEFT);
    EXPECT_EQ(status(), "Color 0 at intensity 126: color index 126, users: 0");
    push(IDC_PICK);
    EXPECT_EQ(status(), "Color 87 of one intensity: color index 4151, users: 1");
    EXPECT_EQ(core_.history().doneCount(), 2U);
}

// A file without colors of its own, then one with a new one where there was one that nobody uses.
TEST_F(PaletteWindowTest, ColorsComeFromAFile) {
    FltColorPalette colors;
    colors.readOfFile(palettes::Database(*scene_.database).colorRecord().bytes(), kFltRevision);
    const std::filesystem::path path = std::filesystem::temp_directory_path() / L"颜色.flt";
    const auto write = [&] {
        FltStream stream;
        ASSERT_TRUE(stream.open(base::toUtf8(path.wstring()), FltHeader()));
        colors.writeToken(stream.token(), stream.revision());
        stream.writeToken(stream.token());
        ASSERT_TRUE(stream.close());
    };
    open();
    show(Palette::kColor);
    const auto import = [&] {
        const FileDialog dialog(path.wstring());
        SetFocus(control(IDC_SWATCHES));
        testinput::key('F', {VK_MENU});
        testinput::pump();
        EXPECT_TRUE(dialog.wasShown());
    };
    write();
    import();
    EXPECT_EQ(status(), "Entries imported: 0");
    EXPECT_EQ(core_.history().doneCount(), 0U);
    colors.colors[900] = {255, 3, 2, 1};
    write();
    import();
    EXPECT_EQ(status(), "Entries imported: 1");
    EXPECT_EQ(palettes::colorAt(palettes::Database(*scene_.database), 900),
              (palettes::Rgb{1, 2, 3}));
    EXPECT_EQ(core_.history().doneCount(), 1U);
    std::filesystem::remove(path);
}

// The file beside the picture is written, and nothing of the scene.
TEST_F(PaletteWindowTest, AttributesOfPicturesAreEdited) {
    std::string picture("\1\xDA\0\1\0\3\0\2\0\1\0\1", 12);
    picture.resize(512 + 2, '\x40');
    const std::string attributes = std::string(64, '\0') + "rest";
    const auto write = [&](const char* name, const std::string& bytes) {
        std::ofstream(base::pathFrom(scene_.folder.file(name)), std::ios::binary) << bytes;
    };
    write("picture.rgb", picture);
    write("picture.rgb.attr", attributes);
    open();
    show(Palette::kTexture);
    const auto valueOf = [this](std::wstring_view field) {
        const Seen seen(control(IDC_FIELDS));
        for (long id = 3; id < seen.children(); id += 2)
            if (seen.name(id) == field) return base::toUtf8(seen.value(id + 1));
        return std::string("none");
    };
    ASSERT_TRUE(testinput::pumpUntil([&] { return valueOf(L".attr wrap") == "0: repeat"; }));
    EXPECT_EQ(valueOf(L".attr minFilter"), "0: point");
    SetFocus(control(IDC_FIELDS));
    testinput::key(VK_END, {VK_CONTROL});
    testinput::key(VK_RETURN);
    testinput::type(L"dec");
    testinput::key(VK_RETURN);
    EXPECT_EQ(valueOf(L".attr environment"), "2: decal");
    EXPECT_THAT(status(), testing::EndsWith("is written; this is not undone"));
    std::string expected = attributes, written;
    expected[63] = 2;
    EXPECT_FALSE(base::readFile(scene_.folder.file("picture.rgb.attr"), written));
    EXPECT_EQ(written, expected);
    EXPECT_EQ(core_.history().doneCount(), 0U);
}
