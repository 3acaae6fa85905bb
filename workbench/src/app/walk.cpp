#include "walk.h"

#include "../ui/progressdialog.h"
#include "commands.h"
#include "filenames.h"
#include "mainwindow.h"
#include "screenshot.h"

#include <base/utf16.h>
#include <kiln/undo.h>
#include <workbench/joints.h>
#include <workbench/transforms.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <map>
#include <utility>
#include <vector>

using framework::CWnd, framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

// What buttons of plug-ins say.
using Labels = std::initializer_list<const wchar_t*>;
constexpr Labels kEditHierarchy = {L"Edit Hierarchy/Attributes", L"修改层次/属性"};
constexpr Labels kCheckScene = {L"Check &scene...", L"检查场景(&S)..."};
constexpr Labels kPalettes = {L"&Palettes...", L"调色板(&P)..."};
constexpr Labels kLook = {L"&Look...", L"外观(&L)..."};
constexpr Labels kExpand = {L"Expand", L"展开"};
constexpr Labels kTool = {L"Tool", L"工具"};
constexpr Labels kMostDetail = {L"最大细节", L"Most detail"};

constexpr DWORD kRestMilliseconds = 200;
constexpr DWORD kRestOfFlashes = 50;  // a scene whose lights flash rests for twice that at most
constexpr DWORD kPatience = 20000;
constexpr UINT kBoxMilliseconds = 500;  // a box has been painted by then
constexpr UINT_PTR kWatchdog = 77;
constexpr UINT kWatchdogMilliseconds = 100000;
constexpr int kMaxTreeDepth = 64;

void say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

// A message box that nobody answers would stop the walk for ever.
void CALLBACK onWatchdog(HWND, UINT, UINT_PTR, DWORD) {
    CWnd front;
    front.Attach(::GetForegroundWindow());
    say("failed: no progress; the window in front is \"" + front.Text() + "\"");
    front.Detach();
    std::_Exit(1);
}

BOOL CALLBACK findTree(HWND window, LPARAM found) {
    wchar_t name[32];
    ::GetClassNameW(window, name, 32);
    if (::lstrcmpiW(name, WC_TREEVIEWW) != 0) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

HWND treeOf(HWND form) {
    HWND tree = nullptr;
    ::EnumChildWindows(form, findTree, reinterpret_cast<LPARAM>(&tree));
    return tree;
}

// The visible window of this thread, apart from the main one, that holds a tree.
BOOL CALLBACK findForm(HWND window, LPARAM found) {
    if (!::IsWindowVisible(window) || !treeOf(window)) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

bool isPushButton(HWND window) {
    const LONG_PTR kind = ::GetWindowLongPtrW(window, GWL_STYLE) & BS_TYPEMASK;
    return kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON || kind == BS_OWNERDRAW;
}

/// The first push button of a window, or null.
HWND firstButton(HWND parent) {
    HWND button = ::FindWindowExW(parent, nullptr, WC_BUTTONW, nullptr);
    while (button && !isPushButton(button))
        button = ::FindWindowExW(parent, button, WC_BUTTONW, nullptr);
    return button;
}

/// The button of a window that says one of these, or null.
HWND buttonSaying(HWND parent, Labels labels) {
    for (const wchar_t* const label : labels)
        if (const HWND button = ::FindWindowExW(parent, nullptr, WC_BUTTONW, label)) return button;
    return nullptr;
}

kiln::Status press(HWND button) {
    if (!button) return kiln::Status::failure("there is no such button");
    if (!::IsWindowEnabled(button)) return kiln::Status::failure("the button is disabled");
    ::SendMessageW(button, BM_CLICK, 0, 0);
    return {};
}

kiln::Status require(bool holds, const char* otherwise) {
    return holds ? kiln::Status() : kiln::Status::failure(otherwise);
}

HTREEITEM itemAfter(HWND tree, UINT relation, HTREEITEM from) {
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(from)));
}

bool selectItem(HWND tree, HTREEITEM item) {
    ::SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    return itemAfter(tree, TVGN_CARET, nullptr) == item;
}

HTREEITEM following(HWND tree, HTREEITEM item) {
    if (const HTREEITEM child = itemAfter(tree, TVGN_CHILD, item)) return child;
    for (; item; item = itemAfter(tree, TVGN_PARENT, item))
        if (const HTREEITEM next = itemAfter(tree, TVGN_NEXT, item)) return next;
    return nullptr;
}

/// The first item with each icon, by icon.
std::map<int, HTREEITEM> firstOfEachIcon(HWND tree) {
    std::map<int, HTREEITEM> first;
    for (HTREEITEM item = itemAfter(tree, TVGN_ROOT, nullptr); item; item = following(tree, item)) {
        TVITEMW asked{};
        asked.mask = TVIF_HANDLE | TVIF_IMAGE;
        asked.hItem = item;
        if (::SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked)))
            first.emplace(asked.iImage, item);
    }
    return first;
}

}  // namespace

Walk::Walk(MainWindow& window, std::string file, std::string folder, std::string utility,
           std::string script, std::function<void(MSG&)> pump)
    : window_(window),
      file_(std::move(file)),
      folder_(std::move(folder)),
      utility_(std::move(utility)),
      script_(std::move(script)),
      pump_(std::move(pump)) {}

int Walk::run() {
    // Out of the pictures.
    ::SetCursorPos(::GetSystemMetrics(SM_CXSCREEN) - 1, ::GetSystemMetrics(SM_CYSCREEN) - 1);
    step("open the file", [this] { return openFile(); });
    step("picture of the viewport", [this] { return shot("01-viewport"); });
    step("open the utility", [this] { return openUtility(); });
    step("picture of the command panel", [this] { return shot("02-panel"); });
    step("open the browser", [this] { return openBrowser(); });
    step("place the browser beside the viewport", [this] { return arrange(); });
    step("picture of the browser", [this] { return shot("03-browser"); });
    step("expand the tree", [this] { return expandTree(); });
    step("picture of the tree", [this] { return shot("04-tree"); });
    step("select an item of the tree", [this] { return selectInTree(); });
    step("picture of the attributes", [this] { return shot("05-attributes"); });
    step("select in the viewport", [this] { return selectInViewport(); });
    step("picture of the selection", [this] { return shot("06-selection"); });
    step("view what is selected", [this] { return closeUp(); });
    step("picture of the close-up", [this] { return shot("07-close-up"); });
    step("edit the scene", [this] { return edit(); });
    step("undo and redo with the list of steps", [this] { return undoAndRedo(); });
    step("show the greatest detail", [this] { return previewDetail(); });
    step("the usual views", [this] { return shootViews(); });
    step("turn around", [this] { return turnAround(); });
    step("the dialogs", [this] { return shootDialogs(); });
    step("picture of each kind of item", [this] { return shootKinds(); });
    step("picture of the tool", [this] { return shootTool(); });
    step("picture of the about box", [this] { return shootAbout(); });
    step("undo everything, and redo it", [this] { return undoAll(); });
    step("check the scene", [this] { return shootCheck(); });
    step("the palettes, and the look of what is selected", [this] { return shootPalettes(); });
    step("the joints", [this] { return shootJoints(); });
    step("export, and open what was exported", [this] { return exportAndOpen(); });
    if (!script_.empty()) step("run the script", [this] { return runScript(); });
    if (!failed_) say(summary_);
    return failed_ ? 1 : 0;
}

// Steps after a failure are not tried: they would only report its consequences.
void Walk::step(const char* name, const std::function<kiln::Status()>& action) {
    if (failed_) return;
    ::SetTimer(nullptr, kWatchdog, kWatchdogMilliseconds, onWatchdog);
    const kiln::Status status = action();
    settle();
    failed_ = !status.ok();
    say(std::string(failed_ ? "failed: " : "ok: ") + name +
        (failed_ ? ": " + status.message() : ""));
}

void Walk::settle() {
    const ULONGLONG start = ::GetTickCount64();
    ULONGLONG lastWork = start;
    const auto rest = [this] {
        return window_.view().scene().changes() ? kRestOfFlashes : kRestMilliseconds;
    };
    for (ULONGLONG now = start; now - lastWork < rest() && now - start < kPatience;
         now = ::GetTickCount64()) {
        MSG message;
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message != WM_TIMER) lastWork = now;
            pump_(message);
        }
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    }
    ::GdiFlush();
}

kiln::Status Walk::shot(const char* name) {
    settle();
    char frame[48];
    std::snprintf(frame, sizeof frame, "    drawn in %.1f ms",
                  window_.viewport().frameMilliseconds());
    say(frame);
    return saveScreenshot(folder_ + "\\" + name + ".png");
}

kiln::Status Walk::openFile() {
    const kiln::ImportResult result = window_.files().openFile(file_);
    if (!result.ok()) return kiln::Status::failure(result.message);
    summary_ = result.message;
    say("    " + summary_);
    return {};
}

kiln::Status Walk::openUtility() {
    if (utility_.empty() && openUtilityWith(kEditHierarchy)) return {};
    // The first one where none has the button.
    const auto utilities = kiln::classesOf(UTILITY_CLASS_ID);
    ClassDesc* const wanted = !utility_.empty() ? window_.utilities().named(utility_)
                                                : (utilities.empty() ? nullptr : utilities.front());
    if (!wanted) return kiln::Status::failure("there is no such utility");
    return openUtility(*wanted);
}

// Another press would close one that is open.
kiln::Status Walk::openUtility(ClassDesc& wanted) {
    const bool isOpen = window_.core().openedUtility() == &wanted;
    if (!isOpen && !window_.panel().pressUtility(wanted.ClassName()))
        return kiln::Status::failure("the panel has no button for it");
    settle();
    if (window_.core().openedUtility() != &wanted) return kiln::Status::failure("it did not open");
    return require(window_.panel().firstPage() != nullptr, "it has no rollup page");
}

// The button of the first utility whose page has one that says so.
HWND Walk::openUtilityWith(Labels labels) {
    for (ClassDesc* const utility : kiln::classesOf(UTILITY_CLASS_ID)) {
        if (!openUtility(*utility).ok()) continue;
        if (const HWND button = buttonSaying(window_.panel().firstPage(), labels)) return button;
    }
    return nullptr;
}

kiln::Status Walk::openBrowser() {
    kiln::Status pressed = press(firstButton(window_.panel().firstPage()));
    if (!pressed.ok()) return pressed;
    settle();
    ::EnumThreadWindows(::GetCurrentThreadId(), findForm, reinterpret_cast<LPARAM>(&form_));
    if (!form_) return kiln::Status::failure("no window with a tree appeared");
    tree_ = treeOf(form_);
    return require(itemAfter(tree_, TVGN_ROOT, nullptr) != nullptr, "its tree is empty");
}

// The form along the right edge, the main window in the rest of the desktop.
kiln::Status Walk::arrange() {
    RECT work, form;
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    ::GetWindowRect(form_, &form);
    const int width = widthOf(form);
    const int formLeft = static_cast<int>(work.right) - width;
    ::SetWindowPos(form_, nullptr, formLeft, work.top, width, heightOf(work), SWP_NOZORDER);
    window_.MoveTo({work.left, work.top, formLeft, work.bottom});
    window_.viewport().viewAll();
    return {};
}

kiln::Status Walk::expandTree() {
    const HTREEITEM root = itemAfter(tree_, TVGN_ROOT, nullptr);
    if (!selectItem(tree_, root)) return kiln::Status::failure("the root could not be selected");
    settle();
    kiln::Status pressed = press(buttonSaying(form_, kExpand));
    if (!pressed.ok()) return pressed;
    settle();
    const HTREEITEM child = itemAfter(tree_, TVGN_CHILD, root);
    return require(child && itemAfter(tree_, TVGN_NEXTVISIBLE, root) == child,
                   "the root shows no children");
}

// The deepest first child shows more of the attribute grid than the root does.
kiln::Status Walk::selectInTree() {
    HTREEITEM item = itemAfter(tree_, TVGN_ROOT, nullptr);
    for (int depth = 0; depth < kMaxTreeDepth; ++depth) {
        const HTREEITEM child = itemAfter(tree_, TVGN_CHILD, item);
        if (!child) break;
        item = child;
    }
    return require(selectItem(tree_, item), "the item could not be selected");
}

kiln::Status Walk::shootKinds() {
    for (const auto& [icon, item] : firstOfEachIcon(tree_)) {
        if (!selectItem(tree_, item)) return kiln::Status::failure("an item could not be selected");
        char name[32];
        std::snprintf(name, sizeof name, "12-kind-%02d", icon);
        kiln::Status status = shot(name);
        if (!status.ok()) return status;
    }
    return {};
}

// The tool belongs to some kinds of items only. Forms without one have nothing to show here.
kiln::Status Walk::shootTool() {
    const HWND button = buttonSaying(form_, kTool);
    if (!button) return {};
    for (const auto& [icon, item] : firstOfEachIcon(tree_)) {
        if (!selectItem(tree_, item)) return kiln::Status::failure("an item could not be selected");
        settle();
        if (!::IsWindowEnabled(button)) continue;
        kiln::Status pressed = press(button);
        if (!pressed.ok()) return pressed;
        settle();
        const HWND tool = ::GetActiveWindow();
        if (tool == form_) return kiln::Status::failure("no window appeared");
        kiln::Status status = shot("11-tool");
        ::SendMessageW(tool, WM_CLOSE, 0, 0);
        return status;
    }
    return {};
}

// The box runs a message loop of its own, so that its picture is taken from within.
kiln::Status Walk::shootAbout() {
    if (window_.utilities().withAbout().empty()) return {};
    static Walk* walk;
    static kiln::Status status;
    walk = this;
    status = kiln::Status::failure("no box appeared");
    const UINT_PTR timer =
        ::SetTimer(nullptr, 0, kBoxMilliseconds, [](HWND, UINT, UINT_PTR, DWORD) {
            const HWND box = ::GetActiveWindow();
            if (!box || ::IsWindowEnabled(walk->window_.Handle())) return;
            status = saveScreenshot(walk->folder_ + "\\12-about.png");
            ::PostMessageW(box, WM_COMMAND, IDOK, 0);
        });
    ::SetActiveWindow(window_.Handle());
    window_.run(CMD_HELP_ABOUT_UTILITY);
    ::KillTimer(nullptr, timer);
    return status;
}

// The check runs beside the messages of the host; its list has the size of what it found.
kiln::Status Walk::shootCheck() {
    const HWND button = openUtilityWith(kCheckScene);
    if (!button) {
        say("    no plug-in checks scenes");
        return {};
    }
    if (kiln::Status pressed = press(button); !pressed.ok()) return pressed;
    const HWND checks = ::GetActiveWindow();
    const HWND list = ::FindWindowExW(checks, nullptr, WC_LISTVIEWW, nullptr);
    if (!list) return kiln::Status::failure("no window with a list appeared");
    const ULONGLONG start = ::GetTickCount64();
    while (::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 0 &&
           ::GetTickCount64() - start < kPatience)
        settle();
    kiln::Status status = shot("12-check");
    ::SendMessageW(checks, WM_CLOSE, 0, 0);
    return status;
}

kiln::Status Walk::shootPalettes() {
    if (kiln::Status status = selectInViewport(); !status.ok()) return status;
    const HWND button = openUtilityWith(kPalettes);
    if (!button) {
        say("    no plug-in shows palettes");
        return {};
    }
    const HWND look = buttonSaying(::GetParent(button), kLook);
    if (kiln::Status pressed = press(button); !pressed.ok()) return pressed;
    const HWND palettes = ::GetActiveWindow();
    const HWND tabs = ::FindWindowExW(palettes, nullptr, WC_TABCONTROLW, nullptr);
    if (!tabs) return kiln::Status::failure("no window with tabs appeared");
    const auto count = static_cast<int>(::SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        ::SendMessageW(tabs, TCM_SETCURFOCUS, static_cast<WPARAM>(i), 0);
        char name[32];
        std::snprintf(name, sizeof name, "12-palette-%d", i + 1);
        if (kiln::Status status = shot(name); !status.ok()) return status;
    }
    ::SendMessageW(palettes, WM_CLOSE, 0, 0);
    if (kiln::Status pressed = press(look); !pressed.ok()) return pressed;
    kiln::Status status = shot("12-look");
    ::SendMessageW(::GetActiveWindow(), WM_CLOSE, 0, 0);
    return status;
}

// Of the scene's first joint, where it has one. The command opens the window, and closes it again.
kiln::Status Walk::shootJoints() {
    Interface& host = window_.core().hostInterface();
    const std::vector<KnownJoint> joints = allJoints(host);
    if (!joints.empty()) host.SelectNode(host.GetINodeByHandle(joints.front().node));
    window_.run(CMD_VIEW_JOINTS);
    kiln::Status status = shot("12-joints");
    window_.run(CMD_VIEW_JOINTS);
    return status;
}

kiln::Status Walk::selectInViewport() {
    return require(window_.view().selectTallest(), "there is nothing to select");
}

// With what it belongs to, so that there is more to see than one face.
kiln::Status Walk::closeUp() {
    Interface& host = window_.core().hostInterface();
    INode* parent = host.GetSelNode(0)->GetParentNode();
    if (!parent->IsRootNode()) host.SelectNode(parent);
    window_.run(CMD_VIEW_SELECTED);
    return {};
}

kiln::Status Walk::previewDetail() {
    const HWND button = buttonSaying(window_.panel().firstPage(), kMostDetail);
    if (!button) {
        say("    the page has no such button");
        return {};
    }
    window_.run(CMD_VIEW_SELECTED);  // before it may hide
    kiln::Status pressed = press(button);
    return pressed.ok() ? shot("09-most-detail") : pressed;
}

// As large as a hut, in a color of its own, and on the ground that the selection stands on.
kiln::Status Walk::edit() {
    Interface& host = window_.core().hostInterface();
    const render::Box around = window_.view().scene().model().selectedBox();
    if (around.empty()) return kiln::Status::failure("nothing with a size is selected");
    const render::Vec3d size = around.max - around.min;
    const double edge = std::max({size.x, size.y, 0.01}) * 0.6;
    INode* box = host.CreateObjectNode(new BoxObject(edge, edge, edge * 0.7), "附属楼 annex");
    if (!box) return kiln::Status::failure("no node could be made");
    box->SetWireColor(RGB(232, 150, 40));
    box->SetNodeTM(0, TransMatrix({around.min.x - edge, around.min.y, around.min.z}));
    INode* database = host.GetSelNode(0);
    while (!database->GetParentNode()->IsRootNode()) database = database->GetParentNode();
    database->AttachChild(box);
    if (kiln::Status status = shot("08-edited"); !status.ok()) return status;
    window_.run(CMD_VIEW_ALL);
    return shot("08-edited-whole");
}

kiln::Status Walk::undoAndRedo() {
    const Interface& host = window_.core().hostInterface();
    const int edited = host.GetNodeCount();
    window_.run(CMD_EDIT_HISTORY);
    window_.run(CMD_EDIT_UNDO);
    if (host.GetNodeCount() >= edited) return kiln::Status::failure("the edit is still there");
    if (kiln::Status status = shot("08-undone"); !status.ok()) return status;
    window_.run(CMD_EDIT_REDO);
    window_.run(CMD_EDIT_HISTORY);
    settle();
    if (host.GetNodeCount() != edited) return kiln::Status::failure("the edit has not come back");
    return {};
}

kiln::Status Walk::changeInSteps() {
    Interface& host = window_.core().hostInterface();
    window_.run(CMD_VIEW_PERSPECTIVE);
    window_.run(CMD_VIEW_ALL);
    if (kiln::Status status = selectInViewport(); !status.ok()) return status;
    const auto transform = [&](TextId name, const auto& by) {
        UndoScope scope(textOf(name).c_str());
        by();
        scope.Commit();
    };
    constexpr double kUp = 20, kTurn = 40, kWider = 1.5;
    const std::size_t before = window_.core().history().doneCount();
    INode* const node = host.GetSelNode(0);
    window_.run(CMD_EDIT_GROUP);
    INode* const group = host.GetSelNode(0);
    transform(TextId::kStepMove, [&] {
        moveSelectedTo(host, *selectedPlace(host) + Point3{0, 0, kUp});
    });
    transform(TextId::kStepRotate, [&] { rotateSelected(host, {0, 0, kTurn}); });
    transform(TextId::kStepScale, [&] { scaleSelected(host, {kWider, kWider, kWider}); });
    window_.run(CMD_EDIT_HIDE);
    window_.run(CMD_EDIT_UNHIDE_ALL);
    host.SelectNode(group);
    window_.run(CMD_EDIT_UNGROUP);
    host.SelectNode(node);
    window_.run(CMD_EDIT_DELETE);
    constexpr std::size_t kSteps = 8;
    const std::size_t steps = window_.core().history().doneCount() - before;
    if (steps == kSteps) return {};
    return kiln::Status::failure(std::to_string(steps) + " steps for as many changes as " +
                                 std::to_string(kSteps));
}

// Step by step to what was opened, and back to what has become of it, with a picture of each.
kiln::Status Walk::undoAll() {
    kiln::Core& core = window_.core();
    kiln::History& history = core.history();
    const std::size_t edited = history.doneCount();
    if (kiln::Status status = changeInSteps(); !status.ok()) return status;
    const std::string before = core.sceneText();
    window_.run(CMD_EDIT_HISTORY);
    const auto shoot = [this](const char* what, std::size_t steps) {
        char name[32];
        std::snprintf(name, sizeof name, "12-%s-%02u", what, static_cast<unsigned>(steps));
        return shot(name);
    };
    std::size_t steps = 0;
    while (history.canUndo()) {
        window_.run(CMD_EDIT_UNDO);
        if (kiln::Status status = shoot("undone", ++steps); !status.ok()) return status;
    }
    if (core.isModified()) return kiln::Status::failure("it is not the scene that was opened");
    for (std::size_t redone = 0; history.canRedo();) {
        window_.run(CMD_EDIT_REDO);
        if (kiln::Status status = shoot("redone", ++redone); !status.ok()) return status;
    }
    window_.run(CMD_EDIT_HISTORY);
    settle();
    say("    " + std::to_string(steps) + " steps");
    if (core.sceneText() != before)
        return kiln::Status::failure("it is not the scene that was undone");
    return require(history.goTo(edited), "the changes cannot be left out again");
}

kiln::Status Walk::shootViews() {
    constexpr struct {
        int command;
        const char* name;
    } kViews[] = {{CMD_VIEW_TOP, "10-view-top"},
                  {CMD_VIEW_FRONT, "10-view-front"},
                  {CMD_VIEW_LEFT, "10-view-left"},
                  {CMD_VIEW_RIGHT, "10-view-right"},
                  {CMD_VIEW_BACK, "10-view-back"},
                  {CMD_VIEW_BOTTOM, "10-view-bottom"},
                  {CMD_VIEW_PERSPECTIVE, "10-view-perspective"},
                  {CMD_VIEW_WIREFRAME, "10-view-wireframe"}};
    for (const auto& view : kViews) {
        window_.run(view.command);
        window_.run(CMD_VIEW_ALL);
        if (kiln::Status status = shot(view.name); !status.ok()) return status;
    }
    window_.run(CMD_VIEW_SHADED_EDGES);
    return {};
}

kiln::Status Walk::turnAround() {
    constexpr int kFrames = 120;
    Viewport& viewport = window_.viewport();
    const render::Camera before = viewport.camera();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kFrames; ++i) {
        viewport.camera().orbit(785.4f / kFrames, 0);
        viewport.redraw();
        viewport.Update();
    }
    ::GdiFlush();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    viewport.camera() = before;
    viewport.redraw();
    char line[64];
    std::snprintf(line, sizeof line, "    %.0f frames a second", kFrames / seconds);
    say(line);
    return {};
}

kiln::Status Walk::shootDialogs() {
    kiln::Status status = shootDialog(CMD_FILE_IMPORT, TextId::kImport, "11-import");
    if (status.ok() && !window_.core().exportKinds().empty())
        status = shootDialog(CMD_FILE_EXPORT, TextId::kExport, "11-export");
    return status.ok() ? shootProgress() : status;
}

namespace {

// The dialog runs a message loop of its own; a timer is what reaches into it.
struct DialogShot {
    std::wstring title;
    std::string path;
    int looks = 0;
    kiln::Status status = kiln::Status::failure("the dialog did not appear");
} dialogShot;

constexpr UINT kLookMilliseconds = 300;
constexpr int kLooksUntilDrawn = 3;

void CALLBACK onDialogTimer(HWND, UINT, UINT_PTR, DWORD) {
    const HWND dialog = ::FindWindowW(L"#32770", dialogShot.title.c_str());
    if (!dialog || !::IsWindowVisible(dialog) || ++dialogShot.looks != kLooksUntilDrawn) return;
    dialogShot.status = saveScreenshot(dialogShot.path);
    ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

}  // namespace

kiln::Status Walk::shootDialog(int command, TextId title, const char* name) {
    dialogShot = {base::toWide(textOf(title)), folder_ + "\\" + name + ".png"};
    const UINT_PTR timer = ::SetTimer(nullptr, 0, kLookMilliseconds, onDialogTimer);
    window_.run(command);
    ::KillTimer(nullptr, timer);
    return dialogShot.status;
}

kiln::Status Walk::shootProgress() {
    ProgressDialog dialog(window_.Handle(), textOf(TextId::kImporting, {fileName(file_)}));
    dialog.reveal();
    dialog.step(0.45);
    return shot("11-progress");
}

kiln::Status Walk::exportAndOpen() {
    const std::vector<kiln::FileKind> kinds = window_.core().exportKinds();
    if (kinds.empty()) {
        say("    no plug-in exports");
        return {};
    }
    const std::string path = folder_ + "\\edited." + kinds.front().extensions.front();
    kiln::ImportResult result = window_.files().exportFile(path, {});
    if (!result.ok()) return kiln::Status::failure(result.message);
    say("    " + result.message);
    result = window_.files().openFile(path);
    if (!result.ok()) return kiln::Status::failure(result.message);
    say("    " + result.message);
    return shot("13-exported-and-opened");
}

kiln::Status Walk::runScript() {
    window_.scripts().setPictureFolder(folder_);
    window_.run(CMD_VIEW_SHADED_EDGES);
    return window_.scripts().run(script_);
}

}  // namespace workbench
