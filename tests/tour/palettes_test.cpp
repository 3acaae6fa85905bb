// What a modeller does with the windows of the palettes, by mouse: a runway gets a texture, a tower
// another color, what nobody uses is found; and all of it is undone.
#include "user.h"

#include "../../palettes/plugin/resource.h"

#include <base/utf16.h>
#include <fltscene.h>
#include <quillon/fltobject.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

using user::eventually;
using user::must;
using user::mustCome;
using user::Picture;

namespace {

std::wstring programLine(const std::filesystem::path& file) {
    std::wstring path = L"Z:" STAGE L"/workbench.exe";
    std::ranges::replace(path, L'/', L'\\');
    return L"\"" + path + L"\" \"" + file.wstring() + L"\" --language en";
}

class PalettesByMouse : public testing::Test {
protected:
    PalettesByMouse() {
        folder_ = std::filesystem::temp_directory_path() / "tessera_palette_tour";
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        SetEnvironmentVariableW(L"APPDATA", folder_.c_str());
        samples::FltScene scene;
        scene.colors = {{220, 30, 20}, {30, 190, 40}};
        for (const char* const file : {"asphalt.rgb", "spare.rgb"}) scene.addTexture(file);
        const auto addSquare = [&](double x, std::uint32_t color) {
            scene.root.add(FltObject())
                .addFace({{x, 0, 0}, {x + 10, 0, 0}, {x + 10, 10, 0}, {x, 10, 0}}, color);
        };
        addSquare(0, 0);   // the tower
        addSquare(14, 1);  // the runway
        const std::filesystem::path file = folder_ / "places.flt";
        samples::writeSceneFile(scene, file);
        program_.emplace(programLine(file));
        mustCome([this] { return (main_ = program_->window(L"WorkbenchMain")) != nullptr; },
                 "the main window");
        viewport_ = FindWindowExW(main_, nullptr, L"WorkbenchViewport", nullptr);
        panel_ = FindWindowExW(main_, nullptr, L"WorkbenchCommandPanel", nullptr);
    }
    ~PalettesByMouse() override {
        program_.reset();
        std::filesystem::remove_all(folder_);
    }

    // ------------------------------------------------------------ the scene

    Picture view() const { return user::look(user::area(viewport_)); }

    /// The middle of what is red, or green, in the viewport; none where there is too little of it.
    std::optional<POINT> middleOf(bool red) const {
        const RECT place = user::area(viewport_);
        const Picture picture = view();
        LONG x = 0, y = 0, count = 0;
        for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
            const int r = picture.pixels[i] >> 16 & 0xFF, g = picture.pixels[i] >> 8 & 0xFF,
                      b = picture.pixels[i] & 0xFF;
            const int wanted = red ? r : g, other = std::max(red ? g : r, b);
            if (wanted < 60 || wanted < 2 * other) continue;
            x += static_cast<LONG>(i) % picture.width;
            y += static_cast<LONG>(i) / picture.width;
            ++count;
        }
        constexpr LONG kFew = 500;
        if (count < kFew) return std::nullopt;
        return POINT{place.left + x / count, place.top + y / count};
    }
    void select(bool red) const {
        std::optional<POINT> place;
        mustCome([&] { return (place = middleOf(red)).has_value(); }, "what is to be selected");
        const Picture before = view();
        must(user::click(*place), "the mouse in the viewport");
        mustCome([&] { return view() != before; }, "the selection in the viewport");
    }

    // ------------------------------------------------------------ the windows

    HWND page() const {
        const HWND rollup = FindWindowExW(panel_, nullptr, L"WorkbenchRollup", nullptr);
        return rollup ? FindWindowExW(rollup, nullptr, L"#32770", nullptr) : nullptr;
    }
    static void clickOn(HWND control) {
        must(user::click(control), base::toUtf8(user::text(control)) + " under the mouse");
    }
    /// Presses a button of the page, which opens the window that has a control.
    HWND open(int button, int control) const {
        clickOn(GetDlgItem(page(), button));
        HWND window = nullptr;
        mustCome(
            [&] {
                return (window = user::windowWith(program_->id(), control)) &&
                       GetForegroundWindow() == window;
            },
            "the window");
        return window;
    }
    static void close(HWND window) {
        user::key(VK_ESCAPE);
        mustCome([&] { return !IsWindowVisible(window); }, "the window's end");
    }
    static void mustSay(HWND window, int label, const std::wstring& text) {
        const bool says = eventually([&] { return user::text(GetDlgItem(window, label)) == text; });
        must(says, base::toUtf8(text) + "; said is " +
                       base::toUtf8(user::text(GetDlgItem(window, label))));
    }
    /// Clicks along the tabs until the window says that.
    static void clickTab(HWND window, const std::wstring& text) {
        const RECT tabs = user::area(GetDlgItem(window, IDC_TABS));
        constexpr LONG kStep = 25;
        const auto isThere = [&] { return user::text(GetDlgItem(window, IDC_STATUS)) == text; };
        for (LONG x = tabs.left + kStep / 2; x < tabs.right && !isThere(); x += kStep) {
            must(user::click({x, (tabs.top + tabs.bottom) / 2}), "the mouse on the tabs");
            eventually(isThere, 1);
        }
        must(isThere(), "the tab that says " + base::toUtf8(text));
    }

    std::filesystem::path folder_;
    std::optional<user::Program> program_;
    HWND main_ = nullptr, viewport_ = nullptr, panel_ = nullptr;
};

}  // namespace

TEST_F(PalettesByMouse, ColorTextureAndTakeBack) {
    const HWND utility = FindWindowExW(panel_, nullptr, L"Button", L"OpenFlight Palettes");
    must(utility != nullptr, "the utility's button");
    clickOn(utility);
    mustCome([this] { return page() != nullptr; }, "its page");

    select(false);
    HWND palettes = open(IDC_OPEN_PALETTES, IDC_ENTRIES);
    clickTab(palettes, L"Entries: 2, shown: 2");
    const RECT list = user::area(GetDlgItem(palettes, IDC_ENTRIES));
    must(user::click({list.left + 100, list.top + 40}), "the mouse on the first entry");
    clickOn(GetDlgItem(palettes, IDC_ASSIGN));
    mustSay(palettes, IDC_STATUS, L"Assigned to nodes: 1");
    clickOn(GetDlgItem(palettes, IDC_UNUSED));
    mustSay(palettes, IDC_STATUS, L"Entries: 2, shown: 1");
    close(palettes);

    select(true);
    const HWND look = open(IDC_OPEN_LOOK, IDC_LOOK_ROWS);
    mustSay(look, IDC_LOOK_STATUS, L"Nodes: 2, faces and meshes: 1");
    // The patch of the first row, behind that of the titles, asks for a color.
    const RECT rows = user::area(GetDlgItem(look, IDC_LOOK_ROWS));
    HWND colors = nullptr;
    for (LONG y = rows.top + 8; colors == nullptr && y < rows.top + 60; y += 8) {
        must(user::click({rows.right - 30, y}), "the mouse on the patch");
        eventually([&] { return (colors = user::windowWith(program_->id(), 720)) != nullptr; }, 1);
    }
    must(colors != nullptr, "the dialog of colors");
    const RECT basic = user::area(GetDlgItem(colors, 720));  // the platform's number of them
    must(user::click({basic.left + 3 * (basic.right - basic.left) / 8 - 10, basic.top + 10}),
         "the mouse on a green");
    clickOn(GetDlgItem(colors, IDOK));
    mustSay(look, IDC_LOOK_STATUS, L"Nodes that have the value now: 1");
    close(look);
    EXPECT_TRUE(eventually([this] { return !middleOf(true); })) << "nothing is red";

    // Both steps go; the palettes' window, open again, shows that nobody uses either texture.
    palettes = open(IDC_OPEN_PALETTES, IDC_ENTRIES);
    mustSay(palettes, IDC_STATUS, L"Entries: 2, shown: 1");
    close(palettes);
    const RECT place = user::area(main_);
    user::click({(place.left + place.right) / 2, place.top + 12});
    mustCome([this] { return GetForegroundWindow() == main_; }, "the main window");
    for (int i = 0; i < 2; ++i) user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(eventually([this] { return middleOf(true).has_value(); })) << "the tower is red";
    palettes = open(IDC_OPEN_PALETTES, IDC_ENTRIES);
    mustSay(palettes, IDC_STATUS, L"Entries: 2, shown: 2");
}
