#include "walk.h"

#include "commands.h"
#include "mainwindow.h"
#include "screenshot.h"

#include <framework/text.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>

namespace workbench {
namespace {

constexpr int kOpenBrowserButton = 1003;  // the first button of the utility's rollup page
constexpr int kAboutButton = 1136;
constexpr int kExpandButton = 1123;  // of the form that it opens
constexpr int kToolButton = 1118;
constexpr DWORD kRestMilliseconds = 200;
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

kiln::Status press(HWND parent, int id) {
    const HWND button = ::GetDlgItem(parent, id);
    if (!button) return kiln::Status::failure("there is no control " + std::to_string(id));
    if (!::IsWindowEnabled(button))
        return kiln::Status::failure("control " + std::to_string(id) + " is disabled");
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
    step("view from above", [this] {
        window_.run(CMD_VIEW_TOP);
        window_.run(CMD_VIEW_ALL);
        return shot("08-top");
    });
    step("wireframe", [this] {
        window_.run(CMD_VIEW_PERSPECTIVE);
        window_.run(CMD_VIEW_WIREFRAME);
        window_.run(CMD_VIEW_ALL);
        return shot("09-wireframe");
    });
    step("picture of each kind of item", [this] { return shootKinds(); });
    step("picture of the tool", [this] { return shootTool(); });
    step("picture of the about box", [this] { return shootAbout(); });
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
    for (ULONGLONG now = start; now - lastWork < kRestMilliseconds && now - start < kPatience;
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
    const std::vector<ClassDesc*> all = kiln::classesOf(UTILITY_CLASS_ID);
    ClassDesc* wanted =
        utility_.empty() ? (all.empty() ? nullptr : all.front()) : window_.utilityNamed(utility_);
    if (!wanted) return kiln::Status::failure("there is no such utility");
    if (!window_.panel().pressUtility(wanted->ClassName()))
        return kiln::Status::failure("the panel has no button for it");
    settle();
    if (window_.core().openedUtility() != wanted) return kiln::Status::failure("it did not open");
    return require(window_.panel().firstPage() != nullptr, "it has no rollup page");
}

kiln::Status Walk::openBrowser() {
    const kiln::Status pressed = press(window_.panel().firstPage(), kOpenBrowserButton);
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
    const kiln::Status pressed = press(form_, kExpandButton);
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
        std::snprintf(name, sizeof name, "10-kind-%02d", icon);
        const kiln::Status status = shot(name);
        if (!status.ok()) return status;
    }
    return {};
}

// The tool belongs to some kinds of items only. Forms without one have nothing to show here.
kiln::Status Walk::shootTool() {
    const HWND button = ::GetDlgItem(form_, kToolButton);
    if (!button) return {};
    for (const auto& [icon, item] : firstOfEachIcon(tree_)) {
        if (!selectItem(tree_, item)) return kiln::Status::failure("an item could not be selected");
        settle();
        if (!::IsWindowEnabled(button)) continue;
        const kiln::Status pressed = press(form_, kToolButton);
        if (!pressed.ok()) return pressed;
        settle();
        const HWND tool = ::GetActiveWindow();
        if (tool == form_) return kiln::Status::failure("no window appeared");
        const kiln::Status status = shot("11-tool");
        ::SendMessageW(tool, WM_CLOSE, 0, 0);
        return status;
    }
    return {};
}

// The box runs a message loop of its own, so that its picture is taken from within.
kiln::Status Walk::shootAbout() {
    const HWND page = window_.panel().firstPage();
    if (!::GetDlgItem(page, kAboutButton)) return {};
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
    const kiln::Status pressed = press(page, kAboutButton);
    ::KillTimer(nullptr, timer);
    return pressed.ok() ? status : pressed;
}

kiln::Status Walk::selectInViewport() {
    return require(window_.selectTallest(), "there is nothing to select");
}

// With what it belongs to, so that there is more to see than one face.
kiln::Status Walk::closeUp() {
    Interface& host = window_.core().hostInterface();
    INode* parent = host.GetSelNode(0)->GetParentNode();
    if (!parent->IsRootNode()) host.SelectNode(parent);
    window_.run(CMD_VIEW_SELECTED);
    return {};
}

kiln::Status Walk::runScript() {
    window_.setPictureFolder(folder_);
    window_.run(CMD_VIEW_SHADED_EDGES);
    return window_.scripts().run(script_);
}

}  // namespace workbench
