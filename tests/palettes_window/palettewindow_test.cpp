// The window of the palettes in the built plug-in, by keys, clicks and what its controls show.
#include "../../palettes/plugin/resource.h"
#include "../checks/checkscene.h"
#include "../support/spokenlanguage.h"

#include <base/utf16.h>
#include <framework/win32.h>
#include <input.h>
#include <kiln/host/host.h>
#include <palettes/edits.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

using palettes::Palette;
using testing::ElementsAre;

namespace {

/// A host window with one rollup page.
class PaletteHost : public kiln::HostWindow {
public:
    PaletteHost()
        : main_(CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50,
                                300, 300, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)) {}
    ~PaletteHost() override { DestroyWindow(main_); }

    HWND mainWindow() override { return main_; }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char*, LPARAM param,
                       DWORD, int) override {
        return page_ =
                   CreateDialogParamW(module, MAKEINTRESOURCEW(dialogId), main_, procedure, param);
    }
    void deleteRollupPage(HWND page) override { DestroyWindow(page); }

    HWND main_;
    HWND page_ = nullptr;
};

std::wstring modulePath() {
    std::wstring path = L"Z:" MODULE_FILE;
    for (wchar_t& c : path)
        if (c == L'/') c = L'\\';
    return path;
}

FltMaterial material(std::int32_t index, const char* name, FltColor3f diffuse) {
    FltMaterial made;
    made.index = index;
    fltSetText(made.name, name);
    made.diffuse = made.ambient = diffuse;
    made.specular = {0.8F, 0.8F, 0.8F};
    made.shininess = 40;
    return made;
}

class PaletteWindowTest : public testing::Test {
protected:
    PaletteWindowTest() : core_(kiln::Core::create()) {
        static const kiln::Status loaded = kiln::loadModule(base::toUtf8(modulePath()));
        EXPECT_TRUE(loaded.ok()) << loaded.message();
        core_.setHostWindow(&host_);
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
    ~PaletteWindowTest() override {
        core_.closeUtility();
        core_.setHostWindow(nullptr);
        DestroyWindow(window());
        testinput::pump();
    }

    void open() {
        ASSERT_TRUE(core_.openUtility(kiln::classesOf(UTILITY_CLASS_ID).front()).ok());
        SendMessageW(host_.page_, WM_COMMAND, IDC_OPEN_PALETTES, 0);
        ASSERT_NE(window(), nullptr);
        ASSERT_TRUE(testinput::activate(window()));
    }
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

    static HWND window() {
        HWND found = nullptr;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND candidate, LPARAM param) {
                if (!GetDlgItem(candidate, IDC_SWATCHES)) return TRUE;
                *reinterpret_cast<HWND*>(param) = candidate;
                return FALSE;
            },
            reinterpret_cast<LPARAM>(&found));
        return found;
    }
    HWND control(int id) const { return GetDlgItem(window(), id); }
    HWND list() const { return control(IDC_ENTRIES); }
    std::string status() const {
        wchar_t text[256] = L"";
        GetWindowTextW(control(IDC_STATUS), text, 256);
        return base::toUtf8(text);
    }
    std::vector<std::string> column(int number) const {
        std::vector<std::string> cells;
        const auto rows = static_cast<int>(SendMessageW(list(), LVM_GETITEMCOUNT, 0, 0));
        for (int row = 0; row < rows; ++row) {
            wchar_t text[256] = L"";
            LVITEMW item{};
            item.iSubItem = number;
            item.pszText = text;
            item.cchTextMax = 256;
            SendMessageW(list(), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                         reinterpret_cast<LPARAM>(&item));
            cells.push_back(base::toUtf8(text));
        }
        return cells;
    }
    void push(int id) const {
        SendMessageW(control(id), BM_CLICK, 0, 0);
        testinput::pump();
    }
    /// What the host does after each message: what was done becomes a step.
    void undo() {
        ASSERT_TRUE(core_.history().undo());
        ASSERT_TRUE(testinput::pumpUntil([] { return false; }, 400) == false);
    }

    const SpokenLanguage english_{KILN_LANGUAGE_ENGLISH};
    CheckScene scene_;
    kiln::Core& core_;
    PaletteHost host_;
};

}  // namespace

TEST_F(PaletteWindowTest, ListsSortsAndFiltersEntries) {
    open();
    EXPECT_EQ(status(), "Color 0 at intensity 127: color index 127, users: 0");
    show(Palette::kMaterial);
    EXPECT_THAT(column(1), ElementsAre("4", "2", "2"));
    EXPECT_THAT(column(2), ElementsAre("steel", "brick", "twice"));
    EXPECT_THAT(column(3), ElementsAre("1", "0", "0"));
    EXPECT_THAT(column(4), ElementsAre("", "", "doubled index"));
    const HWND header = reinterpret_cast<HWND>(SendMessageW(list(), LVM_GETHEADER, 0, 0));
    RECT name{};
    SendMessageW(header, HDM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&name));
    testinput::click(header, {name.left + 20, 5});
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
    undo();
    EXPECT_THAT(column(2), ElementsAre("steel", "brick", "twice"));
    // The name is the second field of the first entry.
    SetFocus(list());
    testinput::key(VK_HOME);
    testinput::key(VK_RETURN);
    ASSERT_EQ(GetFocus(), control(IDC_FIELDS));
    testinput::key(VK_DOWN);
    testinput::type(L"iron");
    testinput::key(VK_RETURN);
    EXPECT_THAT(column(2), ElementsAre("iron", "brick", "twice"));
    undo();
    EXPECT_THAT(column(2), ElementsAre("steel", "brick", "twice"));
    // What is not used goes without a question.
    SetFocus(list());
    testinput::key(VK_DOWN);
    testinput::key(VK_DELETE);
    EXPECT_THAT(column(2), ElementsAre("steel", "twice"));
    undo();
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
