// Commands on one very large branch of the scene, by the module's own client of the browser.
#include "measure.h"
#include "sampletree.h"
#include "windowbench.h"

#include <input.h>
#include <kiln/host/core.h>
#include <kiln/host/module.h>
#include <moduleexports.h>
#include <resources/resource.h>

#include <commctrl.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>

namespace bench {
namespace {

constexpr int kLeavesOfGroup = 249;
constexpr int kBranchGroups = 600;  // 150,000 items with their leaves
constexpr int kOtherGroups = 200;
constexpr int kRepetitions = 2;
constexpr double kFillLimit = 2;  // times the first filling

/// Of a branch of that many groups.
constexpr double itemsOf(int groups) {
    return 1. + groups * (1. + kLeavesOfGroup);
}

/// The host's window with one page in it, which is the utility's.
class Host : public kiln::HostWindow {
public:
    Host()
        : main_(CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 900, 100, 300, 500,
                                nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)) {}
    ~Host() override { DestroyWindow(main_); }
    HWND mainWindow() override { return main_; }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char*, LPARAM param,
                       DWORD, int) override {
        return page_ =
                   CreateDialogParamW(module, MAKEINTRESOURCEW(dialogId), main_, procedure, param);
    }
    void deleteRollupPage(HWND page) override { DestroyWindow(page); }
    void openBrowser() const { SendDlgItemMessageW(page_, IDC_BROWSER, BM_CLICK, 0, 0); }

private:
    HWND main_;
    HWND page_ = nullptr;
};

/// A scene with a large branch in front of a smaller one, shown by the browser.
class LargeBranch {
public:
    LargeBranch();
    ~LargeBranch();
    LargeBranch(const LargeBranch&) = delete;
    LargeBranch& operator=(const LargeBranch&) = delete;

    /// How long it took the form to open, with all of the scene.
    double filling() const noexcept { return filling_; }
    enum class Chosen { kBranch, kGroups, kLeaves };

    /// A key with the large branch selected, or all groups or leaves in it; the tree then shows the
    /// scene.
    double press(WORD key, Chosen what, std::initializer_list<WORD> held = {});
    double push(int button);
    /// The large branch is cut and pasted below the other one.
    double cutAndPaste();
    /// Undoes the last step, and shows it.
    double undo() const;

private:
    INode* addBranch(int groups);
    HWND tree() const { return GetDlgItem(form_, IDC_TREE); }
    HTREEITEM item(INode* node) const;
    void select(Chosen what) const;
    double measure(const std::function<void()>& work) const;

    kiln::Core& core_;
    Host host_;
    HWND form_ = nullptr;
    double filling_ = 0;
    INode* large_ = nullptr;
    INode* other_ = nullptr;
};

BOOL CALLBACK findForm(HWND window, LPARAM found) {
    if (!GetDlgItem(window, IDC_TREE)) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

int itemCount(INode* node) {
    int count = 1;
    for (int i = 0; i < node->NumberOfChildren(); ++i) count += itemCount(node->GetChildNode(i));
    return count;
}

LargeBranch::LargeBranch() : core_(kiln::Core::create()) {
    std::string module = "Z:" MODULE_FILE;
    std::ranges::replace(module, '/', '\\');
    kiln::loadModule(module);
    core_.setHostWindow(&host_);
    large_ = addBranch(kBranchGroups);
    other_ = addBranch(kOtherGroups);
    core_.history().endCommand();
    core_.openUtility(kiln::classesOf(UTILITY_CLASS_ID).front());
    filling_ = millisecondsOf([this] {
        host_.openBrowser();
        testinput::pump();
    });
    EnumThreadWindows(GetCurrentThreadId(), findForm, reinterpret_cast<LPARAM>(&form_));
    if (!form_ || !testinput::activate(form_)) throw std::runtime_error("no form");
}

LargeBranch::~LargeBranch() {
    core_.closeUtility();
    browser().destroy();
    testinput::pump();
    core_.newScene();
    core_.setHostWindow(nullptr);
    kiln::Core::destroy();
}

INode* LargeBranch::addBranch(int groups) {
    const SampleTree nodes = makeBranches(groups, kLeavesOfGroup);
    for (const SampleNode& node : nodes)
        if (node.parent >= 0)
            nodes[static_cast<std::size_t>(node.parent)].node->AttachChild(node.node, false);
    return nodes.front().node;
}

HTREEITEM LargeBranch::item(INode* node) const {
    const HTREEITEM root = TreeView_GetRoot(tree());
    HTREEITEM at = TreeView_GetChild(tree(), root);
    while (at && browser().nodeOf(at) != reinterpret_cast<tessera::NodeHandle>(node))
        at = TreeView_GetNextSibling(tree(), at);
    return at;
}

// What is shown afterwards is the whole scene.
double LargeBranch::measure(const std::function<void()>& work) const {
    testinput::pump();
    const double time = millisecondsOf([&] {
        work();
        testinput::pump();
    });
    const auto count = static_cast<unsigned>(itemCount(GetCOREInterface()->GetRootNode()));
    if (TreeView_GetCount(tree()) != count)
        throw std::runtime_error("the tree shows another scene");
    return time;
}

void LargeBranch::select(Chosen what) const {
    SetFocus(tree());
    const HTREEITEM branch = item(large_);
    TreeView_Expand(tree(), TreeView_GetRoot(tree()), TVE_EXPAND);
    const auto selectBelow = [this](HTREEITEM parent) {
        for (HTREEITEM at = TreeView_GetChild(tree(), parent); at;
             at = TreeView_GetNextSibling(tree(), at))
            TreeView_SetItemState(tree(), at, TVIS_SELECTED, TVIS_SELECTED);
    };
    if (what == Chosen::kBranch) {
        browser().selectNode(branch);
    } else {
        TreeView_Expand(tree(), branch, TVE_EXPAND);
        const HTREEITEM first = TreeView_GetChild(tree(), branch);
        if (what == Chosen::kGroups) {
            browser().selectNode(first);
            selectBelow(branch);
        } else {
            TreeView_Expand(tree(), first, TVE_EXPAND);
            browser().selectNode(TreeView_GetChild(tree(), first));
            for (HTREEITEM group = first; group; group = TreeView_GetNextSibling(tree(), group)) {
                TreeView_Expand(tree(), group, TVE_EXPAND);
                selectBelow(group);
            }
        }
    }
    testinput::pump();
}

double LargeBranch::press(WORD key, Chosen what, std::initializer_list<WORD> held) {
    select(what);
    return measure([&] { testinput::key(key, held); });
}

double LargeBranch::push(int button) {
    select(Chosen::kBranch);
    return measure([&] { SendDlgItemMessageW(form_, button, BM_CLICK, 0, 0); });
}

double LargeBranch::cutAndPaste() {
    select(Chosen::kBranch);
    testinput::key('X', {VK_CONTROL});
    browser().selectNode(item(other_));
    return measure([] { testinput::key('V', {VK_CONTROL}); });
}

double LargeBranch::undo() const {
    return measure([this] {
        core_.history().endCommand();
        core_.history().undo();
        browser().refresh();  // instead of waiting until it follows by itself
    });
}

}  // namespace

void browserBranch() {
    LargeBranch bench;
    std::vector<double> down, erase, eraseUndone, eraseGroups, eraseGroupsUndone, eraseLeaves,
        eraseLeavesUndone, duplicate, duplicateUndone, paste, pasteUndone;
    for (int i = 0; i < kRepetitions; ++i) {
        down.push_back(bench.push(IDC_DOWN));
        bench.push(IDC_UP);
        paste.push_back(bench.cutAndPaste());
        pasteUndone.push_back(bench.undo());
        duplicate.push_back(bench.press('D', LargeBranch::Chosen::kBranch, {VK_CONTROL}));
        duplicateUndone.push_back(bench.undo());
        erase.push_back(bench.press(VK_DELETE, LargeBranch::Chosen::kBranch));
        eraseUndone.push_back(bench.undo());
        eraseGroups.push_back(bench.press(VK_DELETE, LargeBranch::Chosen::kGroups));
        eraseGroupsUndone.push_back(bench.undo());
        eraseLeaves.push_back(bench.press(VK_DELETE, LargeBranch::Chosen::kLeaves));
        eraseLeavesUndone.push_back(bench.undo());
    }
    const auto print = [&](const char* what, const std::vector<double>& times) {
        reportRatio(kFillLimit, std::string(what) + " : first fill", fastest(times),
                    bench.filling());
    };
    print("moving a branch of 150,000 down", down);
    print("cutting and pasting it", paste);
    print("undo of that", pasteUndone);
    const double all = 1 + itemsOf(kBranchGroups) + itemsOf(kOtherGroups);
    reportRatio(kFillLimit, "duplicating it : first fill of as many items", fastest(duplicate),
                bench.filling() * (all + itemsOf(kBranchGroups)) / all);
    print("undo of that copying", duplicateUndone);
    print("deleting it", erase);
    print("undo of that deletion", eraseUndone);
    print("deleting the 600 groups in it", eraseGroups);
    print("undo of deleting them", eraseGroupsUndone);
    print("deleting the 149,400 leaves in it", eraseLeaves);
    print("undo of deleting those", eraseLeavesUndone);
}

}  // namespace bench
