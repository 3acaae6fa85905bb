#include "treebranches.h"

#include "ctreectrlex.h"

#include <utility>

namespace tessera {
namespace {

// Below this many branches, changing them one by one in view costs less than the detour.
constexpr std::size_t kManyBranches = 8;

std::vector<TreeItem*> branchesBottomUp(const std::vector<TreeItem*>& tops) {
    std::vector<TreeItem*> branches;
    for (auto top = tops.rbegin(); top != tops.rend(); ++top)
        for (TreeItem* at : TreeModel::bottomUp(**top))
            if (at->firstChild) branches.push_back(at);
    return branches;
}

using ItemSet = std::unordered_set<const TreeItem*>;

/// The topmost branch above the item that is among `collapsed`, or the item itself.
const TreeItem* shownInsteadOf(const TreeItem* item, const ItemSet& collapsed) {
    const TreeItem* shown = item;
    for (const TreeItem* at = item; at; at = at->parent)
        if (collapsed.contains(at->parent)) shown = at->parent;
    return shown;
}

HTREEITEM handleOf(const TreeItem* item) {
    return item ? item->handle : nullptr;
}

/// The marks of an item and of everything above it, as they were.
class PathMarks {
public:
    explicit PathMarks(TreeItem* item) {
        for (TreeItem* at = item; at; at = at->parent) marks_.emplace_back(at, at->selected);
    }
    void restore(TreeSelection& selection) const {
        for (const auto& [item, selected] : marks_) selection.set(*item, selected);
    }

private:
    std::vector<std::pair<TreeItem*, bool>> marks_;
};

}  // namespace

void TreeBranches::expandAll(const std::vector<TreeItem*>& tops) const {
    change(branchesBottomUp(tops), TVE_EXPAND);
}

void TreeBranches::collapseAll(const std::vector<TreeItem*>& tops) const {
    change(branchesBottomUp(tops), TVE_COLLAPSE);
}

void TreeBranches::expandToLevel(const std::vector<TreeItem*>& tops, int level) const {
    std::vector<TreeItem*> open;
    std::vector<TreeItem*> closed;
    for (auto top = tops.rbegin(); top != tops.rend(); ++top) {
        std::vector<std::pair<TreeItem*, int>> branches;
        int depth = 0;
        for (TreeItem* at = *top; at;) {
            if (at->firstChild) branches.emplace_back(at, depth);
            if (at->firstChild) {
                at = at->firstChild;
                ++depth;
                continue;
            }
            while (at != *top && !at->next) {
                at = at->parent;
                --depth;
            }
            at = at == *top ? nullptr : at->next;
        }
        for (auto branch = branches.rbegin(); branch != branches.rend(); ++branch)
            (branch->second < level ? open : closed).push_back(branch->first);
    }
    change(closed, TVE_COLLAPSE);
    change(open, TVE_EXPAND);
}

void TreeBranches::reveal(const std::vector<TreeItem*>& items) const {
    change(TreeModel::ancestorsBottomUp(items), TVE_EXPAND);
}

// The top-level items to collapse while so many branches are changed.
std::vector<const TreeItem*> TreeBranches::topsToHide(std::size_t branchCount) const {
    std::vector<const TreeItem*> tops;
    if (branchCount < kManyBranches) return tops;
    for (const TreeItem* top = tree_.Model().first(); top; top = top->next)
        if (tree_.IsExpanded(*top)) tops.push_back(top);
    if (2 * tops.size() >= branchCount) tops.clear();
    return tops;
}

// Expands or collapses the branches, given bottom-up.
//
// The control goes over all its visible items at every change of a visible branch, and when one is
// collapsed over all that are still expanded behind it. So they are changed from the last to the
// first, out of its sight: below top-level items that are collapsed meanwhile.
void TreeBranches::change(const std::vector<TreeItem*>& branches, UINT code) const {
    if (branches.empty()) return;
    const RedrawPause pause(tree_);
    const ItemSet changed(branches.begin(), branches.end());
    const std::vector<const TreeItem*> hidden = topsToHide(branches.size());

    // The control moves its caret to what it collapses, and with it the mark.
    const ItemSet collapsed = code == TVE_COLLAPSE ? changed : ItemSet();
    const HTREEITEM caret = tree_.Caret();
    const HTREEITEM newCaret = handleOf(shownInsteadOf(tree_.Find(caret), collapsed));
    const HTREEITEM firstShown =
        handleOf(shownInsteadOf(tree_.Find(tree_.FirstVisible()), collapsed));
    const PathMarks marks(tree_.Find(caret));
    {
        const auto changing = tree_.Changing();
        for (const TreeItem* top : hidden) tree_.Expand(top->handle, TVE_COLLAPSE);
        for (const TreeItem* at : branches) tree_.Expand(at->handle, code);
        for (const TreeItem* top : hidden)
            if (!changed.contains(top)) tree_.Expand(top->handle, TVE_EXPAND);
        if (tree_.Caret() != newCaret) tree_.Select(newCaret);
        tree_.Selection().caretMoved();
        marks.restore(tree_.Selection());
        if (!hidden.empty()) tree_.ScrollTo(firstShown);
    }
    if (newCaret != caret) tree_.Selection().notify(caret, newCaret);
}

TreeBranches::Arrangement TreeBranches::remember(TreeItem* top) const {
    Arrangement arrangement;
    arrangement.firstShown = tree_.Node(tree_.FirstVisible());
    for (TreeItem* at = top ? top : tree_.Model().first(); at;) {
        const bool open = tree_.IsExpanded(*at);
        if (open && at->node) arrangement.open.insert(at->node);
        at = open ? TreeModel::following(*at, top) : TreeModel::skipping(*at, top);
    }
    return arrangement;
}

void TreeBranches::restore(const Arrangement& arrangement, TreeItem* top) const {
    const RedrawPause pause(tree_);
    std::vector<TreeItem*> tops;
    for (TreeItem* at = top ? top : tree_.Model().first(); at; at = top ? nullptr : at->next)
        tops.push_back(at);
    std::vector<TreeItem*> branches = branchesBottomUp(tops);
    std::erase_if(branches,
                  [&](const TreeItem* at) { return !arrangement.open.contains(at->node); });
    change(branches, TVE_EXPAND);
    scrollBack(arrangement);
}

void TreeBranches::scrollBack(const Arrangement& arrangement) const {
    if (!arrangement.firstShown || tree_.Node(tree_.FirstVisible()) == arrangement.firstShown)
        return;
    const TreeItem* at = tree_.Model().first();
    while (at && at->node != arrangement.firstShown) at = TreeModel::following(*at);
    if (at) tree_.ScrollTo(at->handle);
}

}  // namespace tessera
