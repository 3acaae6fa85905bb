// The guide's tour by keyboard alone: no event of a mouse is made here. A file is opened, looked
// at, worked on in the browser, taken back and exported, and each window that the guide names is
// reached.
#include "user.h"

#include <airport.h>
#include <base/utf16.h>
#include <resources/resource.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

using user::eventually;
using user::mustCome;
using user::Picture;

namespace {

constexpr int kScriptLog = 1, kScriptLine = 2;  // controls of the workbench
constexpr wchar_t kTower[] = L"Group:塔台 control tower";
constexpr wchar_t kHangar[] = L"Group:机库 hangar";
constexpr wchar_t kDoors[] = L"Switch:机库门 hangar doors";

std::wstring programLine() {
    std::wstring path = L"Z:" STAGE L"/workbench.exe";
    for (wchar_t& c : path)
        if (c == L'/') c = L'\\';
    return L"\"" + path + L"\" --language en";
}

class ByKeyboardAlone : public testing::Test {
public:
    ByKeyboardAlone() {
        folder_ = std::filesystem::temp_directory_path() / "tessera_keyboard_tour";
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        user::must(samples::writeScene(samples::makeAirport(), path("airport.flt").string()),
                   "the sample scene");
        SetEnvironmentVariableW(L"APPDATA", folder_.c_str());
    }
    ~ByKeyboardAlone() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path path(const char* name) const { return folder_ / name; }

    // ------------------------------------------------------------ the keyboard

    HWND focus() const { return user::Program::focusBeside(main_); }
    static void alt(WORD letter) { user::key(letter, {VK_MENU}); }

    /// Presses a key until the keyboard is where it is wanted.
    template <typename Wanted>
    void go(WORD key, const std::string& where, Wanted wanted) const {
        constexpr int kMost = 40;
        for (int i = 0; i < kMost && !wanted(focus()); ++i) {
            const HWND before = focus();
            user::key(key);
            // From one window to another it is nowhere for a moment, or passes through a third.
            mustCome(
                [&] {
                    const HWND now = focus();
                    Sleep(now && now != before ? 30 : 0);
                    return now && now != before && focus() == now;
                },
                "the way on to " + where);
        }
        wchar_t kind[64] = L"";
        GetClassNameW(focus(), kind, 64);
        user::must(wanted(focus()), where + "; the keyboard is in " + base::toUtf8(kind) + " " +
                                        base::toUtf8(user::text(focus())));
    }
    void tabTo(HWND control, const std::string& where) const {
        go(VK_TAB, where, [control](HWND at) { return at == control; });
    }
    void goToUtilities() const {
        alt('U');
        mustCome([this] { return GetParent(focus()) == panel_; }, "the utilities");
    }
    /// To the pane, or the window, in which a control is.
    void paneOf(HWND within, const std::string& where) const {
        go(VK_F6, where, [within](HWND at) { return at == within || IsChild(within, at); });
    }
    void answer(HWND dialog, const std::wstring& text) const {
        user::type(text);
        user::key(VK_RETURN);
        mustCome([dialog] { return !IsWindow(dialog) || !IsWindowVisible(dialog); },
                 "the end of a dialog");
    }
    HWND dialog(const std::wstring& caption) const {
        HWND found = nullptr;
        mustCome(
            [&] {
                return (found = user::dialogNamed(program_->id(), caption)) &&
                       GetForegroundWindow() == found;
            },
            base::toUtf8(caption));
        return found;
    }

    // ------------------------------------------------------------ what is seen

    std::wstring script(const std::wstring& line) const {
        paneOf(line_, "the script line");
        const std::wstring echo = L"\r\n> " + line + L"\r\n";
        const std::size_t before = user::text(log_).size();
        user::type(line);
        mustCome([&] { return user::text(line_) == line; }, "what was typed");
        user::key(VK_RETURN);
        std::wstring added;
        mustCome([&] { return (added = user::text(log_).substr(before)).size() > echo.size(); },
                 "an answer");
        return added.substr(echo.size());
    }
    Picture view() const { return user::look(user::area(viewport_)); }
    bool viewChanges(const Picture& before) const {
        return eventually([&] { return view() != before; });
    }
    HWND page() const {
        const HWND rollup = FindWindowExW(panel_, nullptr, L"WorkbenchRollup", nullptr);
        return rollup ? FindWindowExW(rollup, nullptr, L"#32770", nullptr) : nullptr;
    }
    HWND control(int id) const { return GetDlgItem(form_, id); }
    std::wstring name() const { return user::text(control(IDC_NAME)); }

    // ------------------------------------------------------------ the browser

    /// Down the tree from its top, past all items in sight, to the one of that name.
    void select(const std::wstring& nameLine) const {
        alt('H');
        mustCome([this] { return focus() == control(IDC_TREE); }, "the tree");
        user::key(VK_HOME);
        mustCome([this] { return name() == L"Non-OpenFlight Selection"; }, "the first item");
        for (std::wstring at = name(); at != nameLine; at = name()) {
            user::key(VK_DOWN);
            mustCome([&] { return name() != at; }, "an item below " + base::toUtf8(at));
        }
    }

    // ------------------------------------------------------------ the tour

    void start() {
        program_.emplace(programLine());
        mustCome([this] { return (main_ = program_->window(L"WorkbenchMain")) != nullptr; },
                 "the main window");
        viewport_ = FindWindowExW(main_, nullptr, L"WorkbenchViewport", nullptr);
        panel_ = FindWindowExW(main_, nullptr, L"WorkbenchCommandPanel", nullptr);
        const HWND pane = FindWindowExW(main_, nullptr, L"WorkbenchScriptPane", nullptr);
        log_ = GetDlgItem(pane, kScriptLog);
        line_ = GetDlgItem(pane, kScriptLine);
        mustCome([this] { return GetForegroundWindow() == main_ && focus() == viewport_; },
                 "the keyboard in the viewport");
    }

    void openTheAirport() {
        user::key('O', {VK_CONTROL});
        answer(dialog(L"Open"), path("airport.flt").wstring());
        mustCome([this] { return user::text(main_).starts_with(L"airport.flt"); }, "the airport");
        mustCome([this] { return focus() == viewport_; }, "the keyboard in the viewport");
    }

    void lookAround() {
        struct {
            const char* what;
            WORD key;
            bool withCtrl;
        } const steps[] = {
            {"turn", VK_LEFT, false},     {"shift", VK_RIGHT, true}, {"shift", VK_UP, true},
            {"go nearer", VK_ADD, false}, {"see all", 'Z', false},   {"see from above", 'T', false},
            {"perspective", 'P', false},  {"wires", VK_F4, false},   {"shade", VK_F2, false}};
        for (const auto& [what, key, withCtrl] : steps) {
            const Picture before = view();
            if (withCtrl)
                user::key(key, {VK_CONTROL});
            else
                user::key(key);
            EXPECT_TRUE(viewChanges(before)) << what;
        }
    }

    void openTheBrowser() {
        goToUtilities();
        const HWND utility = FindWindowExW(panel_, nullptr, L"Button", L"Aviary (C)");
        tabTo(utility, "the utility");
        user::key(VK_RETURN);
        mustCome([this] { return page() && IsWindowVisible(page()); }, "its page");
        // The keyboard is in the page, which folds and unfolds by the title before it.
        paneOf(line_, "the script line");
        goToUtilities();
        const HWND title = FindWindowExW(GetParent(page()), nullptr, L"Button", nullptr);
        tabTo(title, "the page's title");
        for (const bool open : {false, true}) {
            user::key(VK_SPACE);
            EXPECT_TRUE(eventually([&] { return !!IsWindowVisible(page()) == open; })) << open;
        }
        tabTo(GetDlgItem(page(), IDC_BROWSER), "the button of the browser");
        user::key(VK_RETURN);
        mustCome(
            [this] {
                return (form_ = user::windowWith(program_->id(), IDC_TREE)) &&
                       GetForegroundWindow() == form_;
            },
            "the browser");
        select(L"Non-OpenFlight Selection");
        user::key(VK_RIGHT);
        select(L"Header:airport");
        user::key(VK_RIGHT);
        select(kHangar);
        user::key(VK_RIGHT);
    }

    void editAttributeAndComment() {
        select(kTower);
        alt('A');
        mustCome([this] { return focus() == control(IDC_GRID); }, "the grid");
        user::key(VK_HOME, {VK_CONTROL});
        user::type(L"7");
        user::key(VK_RETURN);
        alt('O');
        mustCome([this] { return focus() == control(IDC_COMMENT); }, "the comment");
        user::type(L"seen");
        mustCome([this] { return user::text(control(IDC_COMMENT)).starts_with(L"seen"); },
                 "the comment's text");
        EXPECT_EQ(script(L"print (getAttr $'塔台 control tower' \"FltGrpRelPriority\")"), L"7");
        EXPECT_TRUE(
            script(L"print (Aviary.GetComment $'塔台 control tower')").starts_with(L"seen"));
        paneOf(form_, "the browser");
        EXPECT_TRUE(eventually([this] { return focus() == control(IDC_COMMENT); }))
            << "where it was left";
    }

    void editMasks() {
        select(kDoors);
        alt('M');
        HWND masks = nullptr;
        mustCome(
            [&] {
                return (masks = user::windowWith(program_->id(), IDC_MASK)) &&
                       GetForegroundWindow() == masks;
            },
            "the mask editor");
        const auto field = [masks](int id) { return GetDlgItem(masks, id); };
        const auto mask = [&] { return user::text(field(IDC_MASK)); };
        tabTo(field(IDC_MASK), "the mask");
        user::key('A', {VK_CONTROL});
        user::type(L"110");
        user::key(VK_RETURN);
        tabTo(field(IDC_MASK_INVERT), "the button that inverts");
        user::key(VK_RETURN);
        EXPECT_TRUE(eventually([&] { return mask() == L"001"; }));
        tabTo(field(IDC_MASK_NEW), "the button for a new mask");
        user::key(VK_SPACE);
        EXPECT_TRUE(eventually([&] { return user::text(field(IDC_MASK_INDEX)) == L"3"; }));
        tabTo(field(IDC_MASK_INDEX), "the index");
        user::key(VK_DOWN);
        EXPECT_TRUE(eventually([&] { return user::text(field(IDC_MASK_INDEX)) == L"2"; }));
        tabTo(field(IDC_SHOW_MASK), "the box");
        user::key(VK_SPACE);
        EXPECT_TRUE(eventually([&] {
            return SendMessageW(field(IDC_SHOW_MASK), BM_GETCHECK, 0, 0) == BST_UNCHECKED;
        }));
        // There and back without closing it.
        paneOf(viewport_, "the viewport");
        paneOf(masks, "the mask editor again");
        user::key(VK_ESCAPE);
        mustCome([&] { return !IsWindowVisible(masks); }, "the mask editor's end");
        mustCome([this] { return GetForegroundWindow() == form_; }, "the browser in front");
    }

    void createANode() {
        nodes_ = script(L"print objects.count");
        paneOf(form_, "the browser");
        select(kHangar);
        alt('K');
        mustCome([this] { return focus() == control(IDC_CREATE_KIND); }, "the kinds");
        user::type(L"L");  // the first kind with that letter
        mustCome([this] { return user::text(control(IDC_CREATE_KIND)) == L"Level of Detail"; },
                 "the kind");
        alt('C');
        EXPECT_EQ(script(L"print $l001.parent"), L"$机库 hangar");
        paneOf(form_, "the browser");
    }

    void undoAndRedo() {
        alt('H');
        user::key('Z', {VK_CONTROL});
        EXPECT_EQ(script(L"print objects.count"), nodes_);
        paneOf(form_, "the browser");
        alt('H');
        user::key('Y', {VK_CONTROL});
        EXPECT_EQ(script(L"print $l001.parent"), L"$机库 hangar");
    }

    void stepLevelsOfDetail() {
        const std::wstring before = script(L"print Aviary.GetLodDistance");
        paneOf(panel_, "the panel");
        tabTo(GetDlgItem(page(), IDC_LOD_LEAST), "the least detail");
        user::key(VK_RETURN);
        EXPECT_NE(script(L"print Aviary.GetLodDistance"), before);
    }

    void openTheOtherUtilities() {
        for (const wchar_t* const name : {L"OpenFlight Checks", L"OpenFlight Palettes"}) {
            paneOf(line_, "the script line");
            goToUtilities();
            const HWND utility = FindWindowExW(panel_, nullptr, L"Button", name);
            user::must(utility != nullptr, base::toUtf8(name));
            tabTo(utility, base::toUtf8(name));
            const HWND before = page();
            user::key(VK_SPACE);
            mustCome([&] { return page() != before && IsWindowVisible(page()); }, "its page");
            tabTo(GetNextDlgTabItem(page(), nullptr, FALSE), "its first button");
            user::key(VK_RETURN);
            mustCome([this] { return GetForegroundWindow() != main_; }, "its window");
            const HWND window = GetForegroundWindow();
            paneOf(viewport_, "the viewport");
            paneOf(window, "its window again");
        }
    }

    void exportIt() {
        paneOf(viewport_, "the viewport");
        user::key('E', {VK_CONTROL});
        answer(dialog(L"Export"), path("out.flt").wstring());
        mustCome([this] { return user::text(log_).find(L"-- out.flt: ") != std::wstring::npos; },
                 "the export");
        EXPECT_GT(std::filesystem::file_size(path("out.flt")), 10000u);
    }

    void leave() {
        user::key(VK_F4, {VK_MENU});
        dialog(L"Workbench");
        alt('N');  // the changes are not to be saved
        EXPECT_TRUE(program_->ends());
    }

    std::filesystem::path folder_;
    std::optional<user::Program> program_;
    HWND main_ = nullptr, viewport_ = nullptr, panel_ = nullptr, log_ = nullptr, line_ = nullptr;
    HWND form_ = nullptr;
    std::wstring nodes_;
};

TEST_F(ByKeyboardAlone, TheTourOfTheGuideIsDone) {
    struct {
        const char* name;
        void (ByKeyboardAlone::*go)();
    } const steps[] = {
        {"start the workbench", &ByKeyboardAlone::start},
        {"open the airport", &ByKeyboardAlone::openTheAirport},
        {"look around", &ByKeyboardAlone::lookAround},
        {"open the browser", &ByKeyboardAlone::openTheBrowser},
        {"edit an attribute and a comment", &ByKeyboardAlone::editAttributeAndComment},
        {"edit masks", &ByKeyboardAlone::editMasks},
        {"create a node", &ByKeyboardAlone::createANode},
        {"undo and redo", &ByKeyboardAlone::undoAndRedo},
        {"step levels of detail", &ByKeyboardAlone::stepLevelsOfDetail},
        {"open the other utilities", &ByKeyboardAlone::openTheOtherUtilities},
        {"export", &ByKeyboardAlone::exportIt},
        {"leave", &ByKeyboardAlone::leave},
    };
    for (const auto& [name, step] : steps) {
        SCOPED_TRACE(name);
        try {
            (this->*step)();
        } catch (const std::exception& failure) {
            FAIL() << failure.what();
        }
    }
}

}  // namespace
