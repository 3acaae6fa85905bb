// The browser's tree on large scenes, against a bare tree control that gets the same contents.
#include "baretree.h"
#include "measure.h"
#include "sampletree.h"
#include "windowbench.h"

#include <framework/win32.h>
#include <input.h>
#include <moduleexports.h>
#include <resources/resource.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace bench {
namespace {

using tessera::BrowserEvent;
using tessera::BrowserItem;
using tessera::NodeHandle;

constexpr int kSmall = 10'000;
constexpr int kLarge = 100'000;
constexpr int kBranching = 10;
constexpr int kRepetitions = 5;

constexpr double kBareLimit = 1.5;
constexpr double kGrowthLimit = 12;  // from kSmall to kLarge
constexpr double kMostRepaints = 3;
constexpr double kRefreshLimit = 2;  // times the first filling
constexpr double kReplaceLimit = 2;  // the same

// Few repetitions, since each of them begins with filling the tree.
constexpr int kBranches = 10'000;
constexpr int kLeaves = 9;
constexpr int kFillings = 2;
constexpr int kPauses = 50;
// Many nodes, but no more branches than a control that looks each parent up takes well.
constexpr int kHugeBranches = 1'000;
constexpr int kHugeLeaves = 486;

/// The browser with a client that fills it from a sample tree.
class Tree {
public:
    Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// What the next calls work on; empties the browser.
    void use(const SampleTree& nodes);
    HWND window() const { return form_.tree(); }

    Cost fill();
    Cost clear();
    Cost deleteChildren();
    /// Expand or Collapse with the root alone selected.
    Cost push(int button);
    /// The same with every branch selected, and the root not.
    Cost pushBranches(int button);
    /// Opens the root or leaves it shut.
    void showRoot(bool open);
    /// Refreshes what is shown, with the node after the root and the branches or without it.
    Cost refresh(bool allNodes);
    /// Refreshes while `nodes` have taken the place of what is shown.
    Cost replace(const SampleTree& nodes);
    /// The longest of the times that it takes a little now and then to delete what was replaced.
    double longestPause();
    /// Subtree on, the root selected.
    Cost spread();
    Cost selectSet();
    /// The host's selection: `count` nodes, evenly spread.
    Cost selectGet(int count);
    void collapse() { SendDlgItemMessageW(form_.handle(), IDC_COLLAPSE, BM_CLICK, 0, 0); }
    /// Every node of the last one's kind has the same values.
    Cost find();

private:
    static void client(BrowserEvent event, BrowserItem first, BrowserItem second,
                       std::uintptr_t argument, std::uintptr_t argument2, void* data);
    void rebuild();
    void answer(BrowserEvent event, std::uintptr_t argument, std::uintptr_t argument2);
    std::size_t selectedCount() const;
    static void require(bool holds, const char* what);

    Form form_;
    const SampleTree* nodes_ = nullptr;
    std::vector<BrowserItem> items_;
    int leftOut_ = -1;  ///< a node that the scene has lost
    int hostSelection_ = 0;
    int told_ = 0;  ///< nodes that SelectSet has selected in the host
    PaintCounter paints_;
};

Tree::Tree() : paints_(form_.tree()) {
    require(browser().create(nullptr, client, 0, this) == tessera::kBrowserDone, "binding");
}

// A figure of work that was not done would be worth nothing.
void Tree::require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(std::string(what) + " did not do its work");
}

void Tree::client(BrowserEvent event, BrowserItem first, BrowserItem, std::uintptr_t argument,
                  std::uintptr_t argument2, void* data) {
    auto& bench = *static_cast<Tree*>(data);
    if (event == BrowserEvent::kRebuild)
        bench.rebuild();
    else if (event == BrowserEvent::kSelectInHost)
        bench.told_ += first ? 1 : 0;
    else
        bench.answer(event, argument, argument2);
}

void Tree::answer(BrowserEvent event, std::uintptr_t argument, std::uintptr_t argument2) {
    switch (event) {
        case BrowserEvent::kConfirmForm:
            *reinterpret_cast<std::uint32_t*>(argument) = 0;
            break;
        case BrowserEvent::kCountSelected:
            *reinterpret_cast<std::uint32_t*>(argument) =
                static_cast<std::uint32_t>(hostSelection_);
            break;
        case BrowserEvent::kGetSelected: {
            const std::size_t step = nodes_->size() / static_cast<std::size_t>(hostSelection_);
            *reinterpret_cast<NodeHandle*>(argument2) =
                reinterpret_cast<NodeHandle>((*nodes_)[argument * step].node);
            break;
        }
        default:
            break;
    }
}

void Tree::rebuild() {
    browser().delNode(nullptr);
    items_.assign(nodes_->size(), nullptr);
    for (std::size_t i = 0; i < nodes_->size(); ++i) {
        if (static_cast<int>(i) == leftOut_) continue;
        const SampleNode& node = (*nodes_)[i];
        items_[i] = browser().addNode(
            node.parent < 0 ? nullptr : items_[static_cast<std::size_t>(node.parent)],
            node.name.c_str(), reinterpret_cast<NodeHandle>(node.node));
    }
}

void Tree::use(const SampleTree& nodes) {
    browser().delNode(nullptr);
    nodes_ = &nodes;
}

Cost Tree::fill() {
    const Cost cost = paints_.measure([] { browser().refresh(); });
    require(TreeView_GetCount(window()) == nodes_->size(), "filling");
    return cost;
}

Cost Tree::refresh(bool allNodes) {
    leftOut_ = allNodes ? -1 : kHugeBranches + 1;
    const Cost cost = paints_.measure([] { browser().refresh(); });
    require(TreeView_GetCount(window()) == nodes_->size() - (allNodes ? 0 : 1), "refreshing");
    leftOut_ = -1;
    return cost;
}

Cost Tree::replace(const SampleTree& nodes) {
    nodes_ = &nodes;
    return fill();
}

double Tree::longestPause() {
    std::vector<double> times;
    for (int i = 0; i < kPauses; ++i) {
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
        times.push_back(millisecondsOf([] { testinput::pump(); }));
    }
    return *std::ranges::max_element(times);
}

void Tree::showRoot(bool open) {
    TreeView_Expand(window(), items_.front(), open ? TVE_EXPAND : TVE_COLLAPSE);
}

Cost Tree::clear() {
    const Cost cost = paints_.measure([] { browser().delNode(nullptr); });
    require(TreeView_GetCount(window()) == 0, "clearing");
    return cost;
}

Cost Tree::deleteChildren() {
    const Cost cost = paints_.measure([this] { browser().delChildren(items_.front()); });
    require(TreeView_GetCount(window()) == 1, "deleting the children");
    return cost;
}

Cost Tree::push(int button) {
    CheckDlgButton(form_.handle(), IDC_SUBTREE, BST_UNCHECKED);
    SendMessageW(window(), TVM_SELECTITEM, TVGN_CARET, 0);
    browser().selectNode(items_.front());
    const Cost cost =
        paints_.measure([&] { SendDlgItemMessageW(form_.handle(), button, BM_CLICK, 0, 0); });
    std::size_t branch = 0;  // the deepest that there is at the end
    for (std::size_t i = 0; i < nodes_->size(); ++i)
        if ((*nodes_)[i].hasChildren) branch = i;
    const bool expanded =
        (TreeView_GetItemState(window(), items_[branch], TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
    require(expanded == (button == IDC_EXPAND), "expanding or collapsing");
    return cost;
}

Cost Tree::pushBranches(int button) {
    SendMessageW(window(), TVM_SELECTITEM, TVGN_CARET, 0);
    for (std::size_t i = 1; i < nodes_->size(); ++i)
        if ((*nodes_)[i].hasChildren)
            TreeView_SetItemState(window(), items_[i], TVIS_SELECTED, TVIS_SELECTED);
    const Cost cost =
        paints_.measure([&] { SendDlgItemMessageW(form_.handle(), button, BM_CLICK, 0, 0); });
    for (std::size_t i = 1; i < nodes_->size(); ++i)
        if ((*nodes_)[i].hasChildren)
            require(((TreeView_GetItemState(window(), items_[i], TVIS_EXPANDED) & TVIS_EXPANDED) !=
                     0) == (button == IDC_EXPAND),
                    "expanding or collapsing the branches");
    return cost;
}

std::size_t Tree::selectedCount() const {
    std::size_t count = 0;
    for (const BrowserItem item : items_)
        if (TreeView_GetItemState(window(), item, TVIS_SELECTED) & TVIS_SELECTED) ++count;
    return count;
}

Cost Tree::spread() {
    SendMessageW(window(), TVM_SELECTITEM, TVGN_CARET, 0);
    CheckDlgButton(form_.handle(), IDC_SUBTREE, BST_CHECKED);
    const Cost cost = paints_.measure([this] { browser().selectNode(items_.front()); });
    require(selectedCount() == items_.size(), "Subtree");
    return cost;
}

Cost Tree::selectSet() {
    told_ = 0;
    const Cost cost = paints_.measure(
        [this] { SendDlgItemMessageW(form_.handle(), IDC_SELECT_SET, BM_CLICK, 0, 0); });
    require(static_cast<std::size_t>(told_) == items_.size(), "SelectSet");
    return cost;
}

Cost Tree::selectGet(int count) {
    hostSelection_ = count;
    const Cost cost = paints_.measure(
        [this] { SendDlgItemMessageW(form_.handle(), IDC_SELECT_GET, BM_CLICK, 0, 0); });
    require(selectedCount() == static_cast<std::size_t>(count), "SelectGet");
    return cost;
}

Cost Tree::find() {
    CheckDlgButton(form_.handle(), IDC_SUBTREE, BST_UNCHECKED);
    SendMessageW(window(), TVM_SELECTITEM, TVGN_CARET, 0);
    browser().selectNode(items_.back());
    // A click on the first attribute's value chooses what is sought.
    const HWND grid = form_.grid();
    RECT area{};
    GetClientRect(grid, &area);
    const int line = HIWORD(GetDialogBaseUnits());
    const LPARAM at = MAKELPARAM(area.right * 3 / 4, line + line / 2 + 4);
    SendMessageW(grid, WM_LBUTTONDOWN, MK_LBUTTON, at);
    SendMessageW(grid, WM_LBUTTONUP, 0, at);
    SendMessageW(grid, WM_KEYDOWN, VK_ESCAPE, 0);
    const Cost cost =
        paints_.measure([this] { SendDlgItemMessageW(form_.handle(), IDC_FIND, BM_CLICK, 0, 0); });
    require(selectedCount() > items_.size() / 3, "Find");
    return cost;
}

// ---------------------------------------------------------------- the table

struct Pair {
    Cost browser;
    Cost bare;
};

int mostPaints = 0;

void printRatio(double limit, const std::string& what, const Cost& counter, const Cost& base) {
    mostPaints = std::max(mostPaints, counter.paints);
    reportRatio(limit, what, counter.milliseconds, base.milliseconds);
}

void printPair(const std::string& name, const Pair& pair) {
    printRatio(kBareLimit, name + " : bare control", pair.browser, pair.bare);
}

void printGrowth(const std::string& name, const Cost& small, const Cost& large) {
    printRatio(kGrowthLimit, name + ", 100,000 nodes : 10,000", large, small);
}

void compareWithBare(Tree& bench, const SampleTree& nodes, const SampleTree& flat) {
    BareTree bare(bench.window());
    Pair fill, expand, collapse, clear, flatFill, flatDelete;
    for (int i = 0; i < kRepetitions; ++i) {
        bench.use(nodes);
        fill.browser.keepBest(bench.fill());
        fill.bare.keepBest(bare.fill(nodes));
        expand.browser.keepBest(bench.push(IDC_EXPAND));
        expand.bare.keepBest(bare.expandAll(nodes));
        collapse.browser.keepBest(bench.push(IDC_COLLAPSE));
        collapse.bare.keepBest(bare.collapseAll(nodes));
        clear.browser.keepBest(bench.clear());
        clear.bare.keepBest(bare.clear());

        bench.use(flat);
        flatFill.browser.keepBest(bench.fill());
        flatFill.bare.keepBest(bare.fill(flat));
        flatDelete.browser.keepBest(bench.deleteChildren());
        flatDelete.bare.keepBest(bare.deleteChildren());
        bench.clear();
        bare.clear();
    }
    printPair("fill 100,000", fill);
    printPair("expand all", expand);
    printPair("collapse all", collapse);
    printPair("clear", clear);
    printPair("fill 100,000 siblings", flatFill);
    printPair("delete all children", flatDelete);
}

struct Growing {
    Cost find, selectGetAll, selectGetTenth, selectSet, spread;
};

void measureGrowing(Tree& bench, const SampleTree& nodes, Growing& best) {
    const int count = static_cast<int>(nodes.size());
    bench.use(nodes);
    bench.fill();
    best.find.keepBest(bench.find());
    best.spread.keepBest(bench.spread());
    best.selectSet.keepBest(bench.selectSet());
    bench.collapse();
    best.selectGetAll.keepBest(bench.selectGet(count));
    bench.collapse();
    best.selectGetTenth.keepBest(bench.selectGet(count / kBranching));
    bench.clear();
}

void compareSizes(Tree& bench, const SampleTree& small, const SampleTree& large) {
    Growing ofSmall, ofLarge;
    for (int i = 0; i < kRepetitions; ++i) {
        measureGrowing(bench, small, ofSmall);
        measureGrowing(bench, large, ofLarge);
    }
    printGrowth("Find", ofSmall.find, ofLarge.find);
    printGrowth("SelectGet of all", ofSmall.selectGetAll, ofLarge.selectGetAll);
    printGrowth("SelectGet of every tenth", ofSmall.selectGetTenth, ofLarge.selectGetTenth);
    printGrowth("SelectSet of all", ofSmall.selectSet, ofLarge.selectSet);
    printGrowth("Subtree from the root", ofSmall.spread, ofLarge.spread);
}

struct Opening {
    Cost selectGet, find, expand, collapse;
};

// Everything that opens many branches, each time in a tree whose branches have not been open yet.
void measureOpening(Tree& bench, const SampleTree& nodes, bool rootOpen, Opening& best) {
    const auto begin = [&] {
        bench.use(nodes);
        bench.fill();
        bench.showRoot(rootOpen);
    };
    begin();
    best.selectGet.keepBest(bench.selectGet(static_cast<int>(nodes.size())));
    begin();
    best.find.keepBest(bench.find());
    begin();
    best.expand.keepBest(bench.pushBranches(IDC_EXPAND));
    best.collapse.keepBest(bench.pushBranches(IDC_COLLAPSE));
    bench.clear();
}

void compareOpening(Tree& bench, const SampleTree& nodes) {
    BareTree bare(bench.window());
    Cost expansion;
    Opening rootShut, rootOpen;
    for (int i = 0; i < kFillings; ++i) {
        bare.fill(nodes);
        expansion.keepBest(bare.expandAll(nodes));
        bare.clear();
        measureOpening(bench, nodes, false, rootShut);
        measureOpening(bench, nodes, true, rootOpen);
    }
    const auto print = [&](const char* where, const Opening& opening) {
        const std::string state = std::string(" of 10,000 branches, root ") + where;
        printPair("SelectGet" + state, {opening.selectGet, expansion});
        printPair("Find" + state, {opening.find, expansion});
        printPair("Expand" + state, {opening.expand, expansion});
        printPair("Collapse" + state, {opening.collapse, expansion});
    };
    print("shut", rootShut);
    print("open", rootOpen);
}

void compareRefresh(Tree& bench, const SampleTree& nodes) {
    bench.use(nodes);
    const Cost fill = bench.fill();
    Cost same, changed;
    for (int i = 0; i < kFillings; ++i) {
        same.keepBest(bench.refresh(true));
        changed.keepBest(bench.refresh(false));
        bench.refresh(true);
    }
    printRatio(kRefreshLimit, "refresh of 487,000 : first fill", same, fill);
    printRatio(kRefreshLimit, "the same without one node : first fill", changed, fill);
}

void compareReplacing(const std::string& name, const std::function<SampleTree()>& make) {
    Tree bench;
    const SampleTree one = make();
    const SampleTree other = make();
    bench.use(one);
    const Cost fill = bench.fill();
    Cost replacing;
    for (int i = 0; i < kFillings; ++i) replacing.keepBest(bench.replace(i % 2 == 0 ? other : one));
    printRatio(kReplaceLimit, "another scene of " + name + " : first fill", replacing, fill);
    report("another scene of " + name + ": longest pause while the former one goes",
           bench.longestPause(), "ms");
}

}  // namespace

void browserTree() {
    Tree bench;
    const SampleTree small = makeSampleTree(kSmall, kBranching);
    const SampleTree large = makeSampleTree(kLarge, kBranching);
    const SampleTree flat = makeSampleTree(kLarge, kLarge);
    compareWithBare(bench, large, flat);
    compareSizes(bench, small, large);
    reportWithin(kMostRepaints, "most repaints of the tree in one action", mostPaints, "paint");
}

void browserBranches() {
    Tree bench;
    compareOpening(bench, makeBranches(kBranches, kLeaves));
}

void browserRefresh() {
    Tree bench;
    compareRefresh(bench, makeBranches(kHugeBranches, kHugeLeaves));
}

void browserReplacing() {
    compareReplacing("100,000", [] { return makeSampleTree(kLarge, kBranching); });
    compareReplacing("487,000", [] { return makeBranches(kHugeBranches, kHugeLeaves); });
}

}  // namespace bench
