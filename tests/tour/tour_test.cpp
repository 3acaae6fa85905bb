// The whole of the system as its user meets it: the workbench with the module and the importer, by
// mouse and keyboard alone. An airfield is imported, worked on, saved, and found again as it was.
#include "user.h"

#include <airport.h>
#include <base/utf16.h>
#include <resources/resource.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

using user::eventually;
using user::must;
using user::mustCome;
using user::Picture;

namespace {

// Controls of the workbench.
constexpr int kScriptLog = 1, kScriptLine = 2;
/// What the browser's name line says of the scene's root.
constexpr wchar_t kRootLine[] = L"Non-OpenFlight Selection";

void clickOn(HWND window) {
    must(user::click(window), base::toUtf8(user::text(window)) + " under the mouse");
}

std::wstring stagePath(const wchar_t* file) {
    std::wstring path = L"Z:" STAGE;
    path.append(L"/").append(file);
    for (wchar_t& c : path)
        if (c == L'/') c = L'\\';
    return path;
}

/// The workbench in a process of its own, and the hands on it.
class Workbench {
public:
    Workbench() {
        mustCome([this] { return (main_ = program_.window(L"WorkbenchMain")) != nullptr; },
                 "the main window");
        viewport_ = FindWindowExW(main_, nullptr, L"WorkbenchViewport", nullptr);
        panel_ = FindWindowExW(main_, nullptr, L"WorkbenchCommandPanel", nullptr);
        const HWND script = FindWindowExW(main_, nullptr, L"WorkbenchScriptPane", nullptr);
        log_ = GetDlgItem(script, kScriptLog);
        line_ = GetDlgItem(script, kScriptLine);
        // As large as the screen, so that the form can lie beside what is looked at.
        const RECT place = user::area(main_);
        user::click({(place.left + place.right) / 2, place.top + 12}, 2);
        mustCome([this] { return IsZoomed(main_) && GetForegroundWindow() == main_; },
                 "the whole screen");
    }

    // ------------------------------------------------------------ the workbench

    /// Leaves the program; true when it ends by itself, without a question.
    bool close() {
        goToMain();
        user::key(VK_F4, {VK_MENU});
        return program_.ends();
    }

    /// Gives a file's name to the dialog that the key opens.
    void answerFileDialog(WORD controlKey, const std::wstring& caption, const std::wstring& path) {
        goToMain();
        user::key(controlKey, {VK_CONTROL});
        HWND dialog = nullptr;
        mustCome(
            [&] {
                return (dialog = user::dialogNamed(program_.id(), caption)) &&
                       GetForegroundWindow() == dialog;
            },
            "a file dialog");
        user::type(path);
        user::key(VK_RETURN);
        mustCome([&] { return !IsWindow(dialog) || !IsWindowVisible(dialog); }, "its end");
    }

    std::wstring title() const { return user::text(main_); }
    std::wstring log() const { return user::text(log_); }

    /// Enters a line into the script field and returns what it answered.
    std::wstring script(const std::wstring& entered) {
        goToMain();
        const std::wstring echo = L"\r\n> " + entered + L"\r\n";
        const std::size_t before = log().size();
        clickOn(line_);
        user::type(entered);
        mustCome([&] { return user::text(line_) == entered; }, "the script line");
        user::key(VK_RETURN);
        std::wstring added;
        mustCome([&] { return (added = log().substr(before)).size() > echo.size(); }, "an answer");
        return added.substr(echo.size());
    }

    /// The part of the viewport that the form leaves free.
    Picture view() const {
        RECT free = user::area(viewport_);
        free.left = user::area(form_).right;
        return user::look(free);
    }

    void zoomToSelected() {
        const Picture before = view();
        goToMain();
        user::key('V', {VK_MENU});
        user::key('D');
        must(viewChanges(before), "the close-up");
    }

    /// A picture of the viewport that is not the one before.
    bool viewChanges(const Picture& before) const {
        return eventually([&] { return view() != before; });
    }

    void openUtility() {
        const HWND button = FindWindowExW(panel_, nullptr, L"Button", L"Aviary (C)");
        must(button != nullptr, "the utility's button");
        clickOn(button);
        mustCome([this] { return page() != nullptr; }, "its page");
    }

    void pressOnPage(int id) {
        goToMain();
        clickOn(GetDlgItem(page(), id));
    }

    // ------------------------------------------------------------ the browser

    void openBrowser() {
        pressOnPage(IDC_BROWSER);
        mustCome(
            [this] {
                return (form_ = user::windowWith(program_.id(), IDC_TREE)) &&
                       GetForegroundWindow() == form_;
            },
            "the browser");
        // Into the left upper corner of the viewport; what it shows is to the right.
        const RECT now = user::area(form_), view = user::area(viewport_);
        const POINT grip{now.left + 120, now.top + 12};
        user::drag(grip, {view.left + 120, view.top + 12});
        mustCome([&] { return user::area(form_).left == view.left; }, "its place");
        unfold(kRootLine);
        unfold(L"标头:airport");
        unfold(L"组:机库 hangar");
    }

    /// Goes down the tree from its top, past all items that are in sight, to the one of that name.
    void select(const std::wstring& nameLine) {
        goToTree();
        user::key(VK_HOME);
        mustCome([this] { return name() == kRootLine; }, "the tree's first item");
        row_ = 0;
        for (std::wstring at = name(); at != nameLine; at = name()) {
            user::key(VK_DOWN);
            ++row_;
            mustCome([&] { return name() != at; }, "an item below " + base::toUtf8(at));
        }
    }

    /// The same, and shows what is below it.
    void unfold(const std::wstring& nameLine) {
        select(nameLine);
        user::key(VK_RIGHT);
    }

    void press(int id) {
        goToForm();
        mustCome([=, this] { return IsWindowEnabled(control(id)); }, "a command");
        clickOn(control(id));
    }

    std::wstring name() const { return user::text(control(IDC_NAME)); }
    std::wstring comment() const { return user::text(control(IDC_COMMENT)); }

    void rename(const std::wstring& name, const std::wstring& nameLine) {
        user::key(VK_F2);
        HWND edit = nullptr;
        mustCome(
            [&] {
                return (edit = FindWindowExW(control(IDC_TREE), nullptr, L"Edit", nullptr)) &&
                       IsWindowVisible(edit);
            },
            "the label's editor");
        user::key('A', {VK_CONTROL});
        user::type(name);
        mustCome([&] { return user::text(edit) == name; }, "the new name");
        user::key(VK_RETURN);
        mustCome([&] { return this->name() == nameLine; }, "the renamed item");
    }

    void createBelowSelected(const std::wstring& kind) {
        const HWND list = control(IDC_CREATE_KIND);
        goToForm();
        clickOn(list);
        user::type(kind);
        mustCome([&] { return user::text(list) == kind; }, "the kind");
        user::key(VK_RETURN);
        press(IDC_CREATE);
    }

    void writeComment(const std::wstring& text) {
        goToForm();
        clickOn(control(IDC_COMMENT));
        user::key(VK_END, {VK_CONTROL});
        user::type(text);
        mustCome([&] { return comment().ends_with(text); }, "the comment");
        user::key(VK_TAB);
    }

    /// Opens the editor of a row's value, counted from 0.
    HWND editValue(int row) {
        goToForm();
        const HWND grid = control(IDC_GRID);
        const RECT place = user::area(grid);
        // An empty place below the rows takes the keyboard there and changes nothing.
        user::click({place.left + 20, place.bottom - 8});
        user::key(VK_HOME, {VK_CONTROL});
        for (int i = 0; i < row; ++i) user::key(VK_DOWN);
        user::key(VK_F2);
        HWND edit = nullptr;
        mustCome([&] { return (edit = GetWindow(grid, GW_CHILD)) && IsWindowVisible(edit); },
                 "the value's editor");
        return edit;
    }

    void setValue(int row, const std::wstring& value) {
        const HWND edit = editValue(row);
        user::key('A', {VK_CONTROL});
        user::type(value);
        mustCome([&] { return user::text(edit) == value; }, "the value");
        user::key(VK_RETURN);
        mustCome([&] { return !IsWindow(edit) || !IsWindowVisible(edit); }, "its end");
    }

    std::wstring value(int row) {
        const HWND edit = editValue(row);
        const std::wstring shown = user::text(edit);
        user::key(VK_ESCAPE);
        mustCome([&] { return !IsWindow(edit) || !IsWindowVisible(edit); }, "the editor's end");
        return shown;
    }

    /// Where an item's icon is on the screen: before the label, which is painted as selected, in
    /// the item's own row. (A press on the label itself would edit it.)
    POINT icon(const std::wstring& nameLine) {
        select(nameLine);
        const RECT tree = user::area(control(IDC_TREE));
        const LONG height =
            static_cast<LONG>(SendMessageW(control(IDC_TREE), TVM_GETITEMHEIGHT, 0, 0));
        std::optional<RECT> bar;
        mustCome(
            [&] {
                bar = user::look(tree).extentOf(GetSysColor(COLOR_HIGHLIGHT));
                return bar && (bar->top + bar->bottom) / 2 / height == row_ &&
                       bar->bottom - bar->top <= height;
            },
            "one selected label");
        return {tree.left + bar->left - 10, tree.top + (bar->top + bar->bottom) / 2};
    }

    /// Presses a key more often than there are steps, while the keyboard is in the tree.
    void undoAll() { pressOften('Z'); }
    void redoAll() { pressOften('Y'); }

    // ------------------------------------------------------------ the mask editor

    void openMasks() {
        press(IDC_TOOL);
        mustCome(
            [this] {
                return (masks_ = user::windowWith(program_.id(), IDC_MASK)) &&
                       GetForegroundWindow() == masks_;
            },
            "the mask editor");
    }
    std::wstring mask() const { return user::text(GetDlgItem(masks_, IDC_MASK)); }
    std::wstring maskIndex() const { return user::text(GetDlgItem(masks_, IDC_MASK_INDEX)); }
    void pressInMasks(int id) { clickOn(GetDlgItem(masks_, id)); }
    void typeMask(const std::wstring& bits) {
        clickOn(GetDlgItem(masks_, IDC_MASK));
        user::key('A', {VK_CONTROL});
        user::type(bits);
        mustCome([&] { return mask() == bits; }, "the mask");
        user::key(VK_RETURN);
    }
    void closeMasks() {
        user::key(VK_ESCAPE);
        mustCome([this] { return !IsWindowVisible(masks_); }, "the mask editor's end");
    }

private:
    // The dialog of the open rollup page, or null.
    HWND page() const {
        const HWND rollup = FindWindowExW(panel_, nullptr, L"WorkbenchRollup", nullptr);
        return rollup ? FindWindowExW(rollup, nullptr, L"#32770", nullptr) : nullptr;
    }

    HWND control(int id) const { return GetDlgItem(form_, id); }

    void goTo(HWND window) {
        const auto isInFront = [=] { return GetForegroundWindow() == window; };
        // A click does nothing while a dialog that is just going, as that of progress, has the
        // window disabled. Then a person clicks again.
        for (int tries = 0; tries < 20 && !isInFront(); ++tries) {
            const RECT place = user::area(window);
            user::click({place.right - 200, place.top + 12});  // its caption
            if (eventually(isInFront, 2)) return;
        }
        must(isInFront(), "the window in front");
    }
    void goToMain() { goTo(main_); }
    void goToForm() { goTo(form_); }

    void pressOften(WORD key) {
        goToTree();
        for (int i = 0; i < 30; ++i) user::key(key, {VK_CONTROL});
    }

    void goToTree() {
        goToForm();
        if (user::Program::focusBeside(form_) == control(IDC_TREE)) return;
        // The tree's lower end is empty or belongs to some item; F6 is not for it, a click is.
        const RECT place = user::area(control(IDC_TREE));
        user::click({place.right - 30, place.bottom - 30});
        mustCome([&] { return user::Program::focusBeside(form_) == control(IDC_TREE); },
                 "the keyboard in the tree");
    }

    user::Program program_{L"\"" + stagePath(L"workbench.exe") + L"\""};
    HWND main_ = nullptr, viewport_ = nullptr, panel_ = nullptr, log_ = nullptr, line_ = nullptr;
    HWND form_ = nullptr;
    HWND masks_ = nullptr;
    LONG row_ = 0;  // of the item selected last, counted from the top of the tree
};

class Tour : public testing::Test {
public:
    /// Something the user does, and what there is to see of it. Begins where the step before ended.
    struct Step {
        const char* name;
        void (Tour::*go)();
    };

    Tour() {
        folder_ = std::filesystem::temp_directory_path() / "tessera_tour";
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        if (!samples::writeScene(samples::makeAirport(), (folder_ / "airport.flt").string()))
            throw std::runtime_error("no sample scene");
        // The program's settings, and what it saves aside, are the test's own.
        SetEnvironmentVariableW(L"APPDATA", folder_.c_str());
    }
    ~Tour() override { std::filesystem::remove_all(folder_); }

    void walk(std::span<const Step> steps) {
        for (const Step& step : steps) {
            SCOPED_TRACE(step.name);
            try {
                (this->*step.go)();
            } catch (const std::exception& failure) {
                FAIL() << failure.what();
            }
        }
    }

    void start() { bench_.emplace(); }

    void importTheAirfield() {
        bench_->answerFileDialog('I', L"导入", path("airport.flt"));
        mustCome([&] { return bench_->log().find(L"-- airport.flt：") != std::wstring::npos; },
                 "the import");
    }

    void openTheBrowser() {
        bench_->openUtility();
        bench_->openBrowser();
    }

    void renameTheTower() {
        bench_->select(L"组:塔台 control tower");
        bench_->rename(L"指挥塔 new tower", L"组:指挥塔 new tower");
    }

    void makeALevelOfDetail() {
        bench_->select(L"组:机库 hangar");
        bench_->createBelowSelected(L"细节级别");
        bench_->select(kLevel);
        bench_->setValue(kSwitchIn, L"700");
        bench_->setValue(kSwitchOut, L"10");
        EXPECT_EQ(bench_->script(kReadDistances), L"$机库 hangar 700 10");
    }

    // There the preview decides about them.
    void dragTheDoorsBelowIt() {
        const POINT target = bench_->icon(kLevel);
        const POINT doors = bench_->icon(kDoors);
        must(user::drag(doors, target), "the mouse");
        mustCome([&] { return bench_->script(L"print $'机库门 hangar doors'.parent") == L"$l001"; },
                 "the doors below the level of detail");
    }

    void lookFromNearAndFar() {
        EXPECT_EQ(bench_->script(L"select $'机库 hangar'; print 1"), L"1");
        bench_->zoomToSelected();
        Picture before = bench_->view();
        bench_->pressOnPage(IDC_LOD_MOST);  // the middle of 0 and 10
        EXPECT_TRUE(bench_->viewChanges(before)) << "no doors from so near";
        EXPECT_EQ(bench_->script(L"print Aviary.GetLodDistance"), L"5.0");
        before = bench_->view();
        EXPECT_EQ(bench_->script(L"Aviary.LodLessDetail(); print 1"), L"1");
        EXPECT_TRUE(bench_->viewChanges(before)) << "and half open again";
        EXPECT_EQ(bench_->script(L"print Aviary.GetLodDistance"), L"305.0");
    }

    void commentOnTheDoors() {
        bench_->unfold(kLevel);
        bench_->select(kDoors);
        bench_->writeComment(L" 已检查 checked");
        EXPECT_TRUE(bench_->comment().ends_with(L"已检查 checked"));
    }

    void editAMask() {
        bench_->openMasks();
        EXPECT_EQ(bench_->maskIndex(), L"1");
        EXPECT_EQ(bench_->mask(), L"010");
        const Picture before = bench_->view();
        bench_->pressInMasks(IDC_SHOW_MASK);
        bench_->typeMask(L"110");
        EXPECT_EQ(bench_->script(L"print 1"), L"1");  // by now the mask has been taken
        EXPECT_TRUE(bench_->view() == before) << "the box is not checked";
        bench_->pressInMasks(IDC_SHOW_MASK);
        EXPECT_TRUE(bench_->viewChanges(before)) << "now the closed doors are there too";
    }

    void addAMask() {
        const Picture before = bench_->view();
        bench_->pressInMasks(IDC_MASK_NEW);
        EXPECT_TRUE(bench_->viewChanges(before)) << "and the open ones";
        bench_->typeMask(L"001");
        EXPECT_EQ(bench_->maskIndex(), L"3");
        bench_->closeMasks();
    }

    void undoEverything() {
        nodes_ = bench_->script(kCountNodes);
        bench_->undoAll();
        mustCome([&] { return bench_->title().find(L'*') == std::wstring::npos; }, "no star");
        EXPECT_EQ(bench_->script(kCountNodes), L"0");
    }

    void redoEverything() {
        bench_->redoAll();
        mustCome([&] { return bench_->title().find(L'*') != std::wstring::npos; }, "the star");
        EXPECT_EQ(bench_->script(kCountNodes), nodes_);
        EXPECT_EQ(bench_->script(kReadDistances), L"$机库 hangar 700 10");
    }

    void save() {
        bench_->answerFileDialog('S', L"另存为", path("tour.kiln"));
        mustCome([&] { return bench_->title() == L"tour.kiln - Workbench"; }, "the saved scene");
    }

    void leave() { EXPECT_TRUE(bench_->close()); }

    void openWhatWasSaved() {
        bench_.emplace();
        bench_->answerFileDialog('O', L"打开", path("tour.kiln"));
        mustCome([&] { return bench_->title() == L"tour.kiln - Workbench"; }, "the opened scene");
    }

    void findTheTowerAndTheLevelAgain() {
        bench_->select(L"组:指挥塔 new tower");
        EXPECT_EQ(bench_->script(kReadDistances), L"$机库 hangar 700 10");
        bench_->unfold(kLevel);
        EXPECT_EQ(bench_->value(kSwitchIn), L"700");
        EXPECT_EQ(bench_->value(kSwitchOut), L"10");
    }

    void findTheDoorsAgain() {
        bench_->select(kDoors);
        EXPECT_EQ(bench_->comment(), L"Masks: 0 closed, 1 half open, 2 open 已检查 checked");
        bench_->openMasks();
        EXPECT_EQ(bench_->maskIndex(), L"3");
        EXPECT_EQ(bench_->mask(), L"001");
        bench_->closeMasks();
    }

private:
    static constexpr int kSwitchIn = 0, kSwitchOut = 1;  // rows of a level of detail
    static constexpr const wchar_t* kLevel = L"细节级别:l001";
    static constexpr const wchar_t* kDoors = L"切换:机库门 hangar doors";
    static constexpr const wchar_t* kReadDistances =
        L"print $l001.parent (getAttr $l001 \"FltLodMin\") (getAttr $l001 \"FltLodMax\")";

    static constexpr const wchar_t* kCountNodes = L"print objects.count";

    std::wstring path(const char* name) const { return (folder_ / name).wstring(); }

    std::filesystem::path folder_;
    std::optional<Workbench> bench_;
    std::wstring nodes_;  // how many there were before all was undone
};

TEST_F(Tour, WhatIsDoneToAnAirfieldIsFoundAgain) {
    const Step steps[] = {
        {"start the workbench", &Tour::start},
        {"import the airfield", &Tour::importTheAirfield},
        {"open the browser", &Tour::openTheBrowser},
        {"rename the tower", &Tour::renameTheTower},
        {"make a level of detail", &Tour::makeALevelOfDetail},
        {"drag the doors below it", &Tour::dragTheDoorsBelowIt},
        {"look at them from near and far", &Tour::lookFromNearAndFar},
        {"comment on the doors", &Tour::commentOnTheDoors},
        {"edit a mask", &Tour::editAMask},
        {"add a mask", &Tour::addAMask},
        {"undo all of it", &Tour::undoEverything},
        {"redo all of it", &Tour::redoEverything},
        {"save", &Tour::save},
        {"leave", &Tour::leave},
        {"open what was saved", &Tour::openWhatWasSaved},
        {"open the browser again", &Tour::openTheBrowser},
        {"find the tower and the level of detail", &Tour::findTheTowerAndTheLevelAgain},
        {"find the doors, their comment and masks", &Tour::findTheDoorsAgain},
        {"leave again", &Tour::leave},
    };
    walk(steps);
}

}  // namespace
