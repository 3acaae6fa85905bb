#include "selectioncommands.h"

#include "attributestore.h"
#include "clientlink.h"
#include "propertyside.h"
#include "usermessages.h"

#include <framework/cwaitcursor.h>
#include <resources/resource.h>

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

void SelectionCommands::expandSelected(bool expand) {
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    std::vector<TreeItem*> tops;
    for (TreeItem* at = tree_.Model().first(); at;) {
        if (at->selected) tops.push_back(at);
        at = at->selected ? TreeModel::skipping(*at) : TreeModel::following(*at);
    }
    if (expand)
        tree_.Branches().expandAll(tops);
    else
        tree_.Branches().collapseAll(tops);
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
    HTREEITEM last = nullptr;
    {
        const auto bulk = tree_.bulkOperation();
        const std::vector<NodeHandle> nodes = hostSelection();
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
    markMatches(node, *kind, *attribute);
    tree_.Selection().add(caret, true);
    countSelected();
}

// Adds to the selection every node of the kind whose attribute has the value that the node has.
void SelectionCommands::markMatches(NodeHandle node, FltNodeKind kind, int attribute) {
    const FltAttrGroup* set = loadAttributes(node);
    const FltAttrDesc* row = set ? attributeAt(*set, attribute) : nullptr;
    if (!row) return;
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
}

}  // namespace tessera
