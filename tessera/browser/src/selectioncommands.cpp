#include "selectioncommands.h"

#include "attributestore.h"
#include "clientlink.h"
#include "propertyside.h"
#include "usermessages.h"

#include <framework/cwaitcursor.h>
#include <resources/resource.h>

#include <algorithm>
#include <optional>
#include <unordered_set>

using framework::CWaitCursor, framework::DrawingPause;

namespace tessera {

void SelectionCommands::initialise() {
    subtree_.Attach(form_.Item(IDC_SUBTREE));
}

// ---------------------------------------------------------------- caret and count

void SelectionCommands::caretChanged(HTREEITEM old, HTREEITEM now) {
    if (tree_.isBulkOperation() || tree_.isClearing()) return;
    properties_.show(now);
    spread(old, now);
    countSelected();
}

void SelectionCommands::select(HTREEITEM item) {
    if (item && !tree_.Find(item)) return;
    tree_.endFilling();
    const HTREEITEM old = tree_.Caret();
    {
        const auto bulk = tree_.bulkOperation();
        // Where branches open or the tree scrolls, it would draw its bars each time.
        std::optional<DrawingPause> pause;
        if (!tree_.IsInView(item)) pause.emplace(tree_.Handle());
        tree_.Select(item);
    }
    properties_.show(item);
    if (!tree_.isBulkOperation() && old != item) spread(old, item);
    countSelected();
    tree_.Invalidate();
}

// With Subtree checked.
void SelectionCommands::spread(HTREEITEM old, HTREEITEM now) {
    if (!subtree_.IsChecked()) return;
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    const auto bulk = tree_.bulkOperation();
    TreeSelection& selection = tree_.Selection();
    // The new item may lie below the old one, whose mark it must not take.
    const bool selected = selection.contains(now);
    selection.spread(old);
    if (TreeItem* item = tree_.Find(now)) selection.set(*item, selected);
    selection.spread(now);
}

void SelectionCommands::countSelected() {
    const std::size_t count = tree_.Selection().count();
    if (count == selectedCount_) return;
    selectedCount_ = count;
    form_.EnableItem(IDC_CREATE, count == 1 && tree_.isUsable());
}

void SelectionCommands::forgetCount() {
    selectedCount_ = 0;
    form_.EnableItem(IDC_CREATE, false);
}

void SelectionCommands::step(int step) {
    const HTREEITEM current = properties_.current();
    TreeSelection& selection = tree_.Selection();
    const TreeItem* const found = tree_.isUsable() && current && selection.count() > 1
                                      ? selection.next(current, step >= 0)
                                      : nullptr;
    if (!found) return beepSimply();
    const HTREEITEM item = found->handle;
    properties_.show(item);
    tree_.EnsureVisible(item);
}

// The selected items without those below another.
std::vector<TreeItem*> SelectionCommands::selectedTops() const {
    std::vector<TreeItem*> tops;
    for (TreeItem* at = tree_.Model().first(); at;) {
        if (at->selected) tops.push_back(at);
        at = at->selected ? TreeModel::skipping(*at) : TreeModel::following(*at);
    }
    return tops;
}

void SelectionCommands::expandSelected(bool expand) {
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    const std::vector<TreeItem*> tops = selectedTops();
    if (expand)
        tree_.Branches().expandAll(tops);
    else
        tree_.Branches().collapseAll(tops);
}

void SelectionCommands::expandToLevel(int level) {
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    tree_.Branches().expandToLevel(selectedTops(), level);
}

// ---------------------------------------------------------------- one selection for another

void SelectionCommands::selectOnly(HTREEITEM item) {
    tree_.endFilling();
    tree_.Selection().click(item, false, false);
    tree_.EnsureVisible(item);
}

void SelectionCommands::selectItems(const std::vector<TreeItem*>& items) {
    if (items.empty() || !tree_.isUsable()) return beepSimply();
    tree_.endFilling();
    const HTREEITEM first = items.front()->handle;
    {
        const auto bulk = tree_.bulkOperation();
        const RedrawPause pause(tree_);
        tree_.Branches().reveal(items);
        tree_.Selection().selectOnly(first);
        for (TreeItem* item : items) tree_.Selection().set(*item, true);
        tree_.EnsureVisible(first);
    }
    properties_.show(first);
    countSelected();
}

std::vector<TreeItem*> SelectionCommands::firstItemsOf(const std::vector<NodeHandle>& nodes) const {
    std::unordered_set<NodeHandle> seen;
    std::vector<TreeItem*> items = itemsOf(nodes);
    std::erase_if(items, [&](const TreeItem* item) { return !seen.insert(item->node).second; });
    return items;
}

void SelectionCommands::selectNodes(const std::vector<NodeHandle>& nodes) {
    const std::vector<TreeItem*> items = firstItemsOf(nodes);
    if (!items.empty()) selectItems(items);
}

void SelectionCommands::selectChildren() {
    const CWaitCursor wait;
    std::vector<TreeItem*> items;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
        if (at->parent && at->parent->selected) items.push_back(at);
    selectItems(items);
}

void SelectionCommands::selectParents() {
    const CWaitCursor wait;
    std::vector<TreeItem*> items;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at)) {
        const TreeItem* child = at->firstChild;
        while (child && !child->selected) child = child->next;
        if (child) items.push_back(at);
    }
    selectItems(items);
}

void SelectionCommands::selectSameKind() {
    const CWaitCursor wait;
    std::vector<std::optional<FltNodeKind>> kinds;
    for (const TreeItem* item : tree_.Model().selected()) {
        if (!item->node || !tree_.isUsable()) continue;
        const std::optional<FltNodeKind> kind = recordKind(item->node);
        if (std::ranges::find(kinds, kind) == kinds.end()) kinds.push_back(kind);
    }
    std::vector<TreeItem*> items;
    if (!kinds.empty())
        for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
            if (at->node && at->parent &&
                std::ranges::find(kinds, recordKind(at->node)) != kinds.end())
                items.push_back(at);
    selectItems(items);
}

// ---------------------------------------------------------------- the host's selection

void SelectionCommands::selectInHost() {
    if (!client_.isBound()) return;
    const CWaitCursor wait;
    struct State {
        HTREEITEM item;
        HTREEITEM parent;
        bool selected;
    };
    // Copied first: the client may change the tree while it handles the events.
    std::vector<State> states;
    states.reserve(tree_.Model().size());
    for (const TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
        states.push_back({at->handle, at->parent ? at->parent->handle : nullptr, at->selected});
    client_.send(BrowserEvent::kSelectInHost);
    for (const State& state : states) {
        client_.send(BrowserEvent::kItemState, state.item, nullptr,
                     state.selected ? TVIS_SELECTED : 0);
        if (state.selected) client_.send(BrowserEvent::kSelectInHost, state.item, state.parent);
    }
}

std::vector<NodeHandle> SelectionCommands::hostSelection() const {
    std::uint32_t count = 0;
    client_.send(BrowserEvent::kCountSelected, nullptr, nullptr,
                 reinterpret_cast<std::uintptr_t>(&count));
    std::vector<NodeHandle> nodes;
    for (std::uint32_t i = 0; i < count; ++i) {
        NodeHandle node = 0;
        client_.send(BrowserEvent::kGetSelected, nullptr, nullptr, i,
                     reinterpret_cast<std::uintptr_t>(&node));
        nodes.push_back(node);
    }
    return nodes;
}

std::vector<TreeItem*> SelectionCommands::itemsOf(const std::vector<NodeHandle>& nodes) const {
    const std::unordered_set<NodeHandle> wanted(nodes.begin(), nodes.end());
    std::vector<TreeItem*> items;
    if (wanted.empty()) return items;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
        if (at->node && wanted.contains(at->node)) items.push_back(at);
    return items;
}

void SelectionCommands::selectFromHost() {
    const CWaitCursor wait;
    selectInstead(hostSelection());
}

void SelectionCommands::followHost(const std::vector<NodeHandle>& nodes) {
    std::unordered_set<NodeHandle> selected;
    for (const TreeItem* item : tree_.Model().selected()) selected.insert(item->node);
    if (selected == std::unordered_set<NodeHandle>(nodes.begin(), nodes.end())) return;
    const auto keep = properties_.keepFocus();
    selectInstead(nodes);
}

// The caret stays where it is, marked or not.
void SelectionCommands::selectInstead(const std::vector<NodeHandle>& nodes) {
    HTREEITEM last = nullptr;
    {
        const auto bulk = tree_.bulkOperation();
        const RedrawPause pause(tree_);
        tree_.Selection().clear(true);
        const std::vector<TreeItem*> matches = itemsOf(nodes);
        for (TreeItem* match : matches) tree_.Selection().set(*match, true);
        tree_.Branches().reveal(matches);
        if (!matches.empty()) {
            last = matches.back()->handle;
            tree_.EnsureVisible(last);
        }
    }
    properties_.show(last);
    countSelected();
}

// ---------------------------------------------------------------- find

void SelectionCommands::find() {
    const HTREEITEM caret = tree_.Caret();
    const NodeHandle node = tree_.Node(caret);
    if (!node) return showMessage(form_, IDS_SELECTION_NEEDED);
    const std::optional<FltNodeKind> kind = recordKind(node);
    if (!kind) return showMessage(form_, IDS_NO_RECORD_SELECTED);
    const std::optional<int> attribute = properties_.focusedAttribute();
    if (!attribute) return showMessage(form_, IDS_NO_FIELD_SELECTED);
    const CWaitCursor wait;
    const auto bulk = tree_.bulkOperation();
    const RedrawPause pause(tree_);
    tree_.Select(nullptr);
    const std::vector<TreeItem*> found = markMatches(node, *kind, *attribute);
    tree_.Selection().add(caret, true);
    countSelected();
    const auto first = std::ranges::find_if(
        found, [caret](const TreeItem* match) { return match->handle != caret; });
    if (first != found.end()) tree_.EnsureVisible((*first)->handle);
    if (onFound) onFound(found.size());
}

// Adds to the selection every node of the kind whose attribute has the value that the node has.
std::vector<TreeItem*> SelectionCommands::markMatches(NodeHandle node, FltNodeKind kind,
                                                      int attribute) {
    const FltAttrGroup* set = loadAttributes(node);
    const FltAttrDesc* row = set ? attributeAt(*set, attribute) : nullptr;
    if (!row) return {};
    const FltAttrType type = row->type;
    const std::string value = row->value.text();
    std::vector<TreeItem*> matches;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at)) {
        if (!at->node || !isOfKind(at->node, kind)) continue;
        set = loadAttributes(at->node);
        row = set ? attributeAt(*set, attribute) : nullptr;
        if (row && sameValue(*row, type, value.c_str())) matches.push_back(at);
    }
    for (TreeItem* match : matches) tree_.Selection().set(*match, true);
    tree_.Branches().reveal(matches);
    return matches;
}

}  // namespace tessera
