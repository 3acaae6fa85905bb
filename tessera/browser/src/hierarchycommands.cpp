// The form's commands on the tree.
#include "attributestore.h"
#include "bulkoperation.h"
#include "hierarchy.h"
#include "recordkinds.h"

#include <fltkilnutil/kilnflt.h>
#include <framework/cwaitcursor.h>
#include <framework/text.h>
#include <quillon/fltopcode.h>
#include <resources/resource.h>

#include <unordered_set>

namespace tessera {
namespace {

constexpr UINT kSimpleBeep = 0xFFFFFFFF;

void beep() {
    ::MessageBeep(kSimpleBeep);
}

HTREEITEM handleOf(const TreeItem* item) {
    return item ? item->handle : nullptr;
}

// The callback carries 32-bit words by address.
std::uintptr_t addressOf(std::uint32_t& word) {
    return reinterpret_cast<std::uintptr_t>(&word);
}

}  // namespace

bool Hierarchy::pushed(int id) {
    switch (id) {
        case IDC_REFRESH:
            refresh();
            return true;
        case IDC_UP:
            moveSelected(BrowserEvent::moveUp);
            return true;
        case IDC_DOWN:
            moveSelected(BrowserEvent::moveDown);
            return true;
        case IDC_EXPAND:
            expandSelected(true);
            return true;
        case IDC_COLLAPSE:
            expandSelected(false);
            return true;
        case IDC_SELECT_SET:
            selectInHost();
            return true;
        case IDC_SELECT_GET:
            selectFromHost();
            return true;
        case IDC_FIND:
            find();
            return true;
        case IDC_CREATE:
            create();
            return true;
        case IDC_TOOL:
            openSwitchEditor();
            return true;
        default:
            return false;
    }
}

void Hierarchy::moveSelected(BrowserEvent event) {
    const CWaitCursor wait;
    {
        const BulkOperation bulk(bulk_);
        const RedrawPause pause(tree_);
        const TreeItem* const first = tree_.FirstSelected();
        const HTREEITEM item = handleOf(first);
        const HTREEITEM parent = first ? handleOf(first->parent) : nullptr;
        if (tree_.SelectedCount() > 1) selectCaretOnly();
        if (item) sendRebuilding(event, item, parent);
    }
    countSelected();
}

// The client puts all children of the parent in anew.
void Hierarchy::sendRebuilding(BrowserEvent event, HTREEITEM item, HTREEITEM parent) {
    TreeItem* const before = tree_.Find(parent);
    const auto arrangement = before ? tree_.Remember(before) : CTreeCtrlEx::Arrangement();
    sendEdit(event, item, parent);
    TreeItem* const after = tree_.Find(parent);
    if (!after) return;
    tree_.Restore(arrangement, after);
    if (const HTREEITEM caret = tree_.Caret()) tree_.EnsureVisible(caret);
}

// Several nodes do not move together, so the others are let go; the caret keeps its mark.
void Hierarchy::selectCaretOnly() {
    TreeItem* const caret = tree_.Find(tree_.Caret());
    const bool selected = caret && caret->selected;
    tree_.ClearSelection(true);
    if (caret) tree_.SetSelected(*caret, selected);
}

void Hierarchy::expandSelected(bool expand) {
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    std::vector<TreeItem*> tops;
    for (TreeItem* at = tree_.Model().first(); at;) {
        if (at->selected) tops.push_back(at);
        at = at->selected ? TreeModel::skipping(*at) : TreeModel::following(*at);
    }
    if (expand)
        tree_.ExpandAll(tops);
    else
        tree_.CollapseAll(tops);
}

void Hierarchy::selectInHost() {
    if (!hasClient()) return;
    const CWaitCursor wait;
    struct State {
        HTREEITEM item;
        HTREEITEM parent;
        bool selected;
    };
    // Noted beforehand: the client may change the tree while it is told.
    std::vector<State> states;
    states.reserve(tree_.Model().size());
    for (const TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
        states.push_back({at->handle, handleOf(at->parent), at->selected});
    send(BrowserEvent::selectInHost);
    for (const State& state : states) {
        send(BrowserEvent::itemState, state.item, nullptr, state.selected ? TVIS_SELECTED : 0);
        if (state.selected) send(BrowserEvent::selectInHost, state.item, state.parent);
    }
}

std::vector<NodeHandle> Hierarchy::hostSelection() {
    std::uint32_t count = 0;
    send(BrowserEvent::countSelected, nullptr, nullptr, addressOf(count));
    std::vector<NodeHandle> nodes;
    for (std::uint32_t i = 0; i < count; ++i) {
        NodeHandle node = 0;
        send(BrowserEvent::getSelected, nullptr, nullptr, i,
             reinterpret_cast<std::uintptr_t>(&node));
        nodes.push_back(node);
    }
    return nodes;
}

void Hierarchy::selectFromHost() {
    const CWaitCursor wait;
    HTREEITEM last = nullptr;
    {
        const BulkOperation bulk(bulk_);
        const std::vector<NodeHandle> nodes = hostSelection();
        const std::unordered_set<NodeHandle> wanted(nodes.begin(), nodes.end());
        const RedrawPause pause(tree_);
        tree_.ClearSelection(true);
        std::vector<TreeItem*> matches;
        if (!wanted.empty())
            for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
                if (at->node && wanted.count(at->node) != 0) matches.push_back(at);
        for (TreeItem* match : matches) tree_.SetSelected(*match, true);
        tree_.Reveal(matches);
        if (!matches.empty()) {
            last = matches.back()->handle;
            tree_.EnsureVisible(last);
        }
    }
    showNode(last);
    countSelected();
}

void Hierarchy::spin(int step) {
    const TreeItem* const found = commandsEnabled_ && current_ && tree_.SelectedCount() > 1
                                      ? tree_.NextSelected(current_, step >= 0)
                                      : nullptr;
    if (!found) {
        beep();
        return;
    }
    const HTREEITEM item = found->handle;
    showNode(item);
    tree_.EnsureVisible(item);
}

// ---------------------------------------------------------------- find

void Hierarchy::find() {
    const HTREEITEM caret = tree_.Caret();
    const NodeHandle node = tree_.Node(caret);
    if (!node) {
        message(IDS_SELECTION_NEEDED);
        return;
    }
    const std::optional<FltNodeKind> kind = recordKind(node);
    if (!kind) {
        message(IDS_NO_RECORD_SELECTED);
        return;
    }
    const std::optional<int> row = searchedAttribute();
    if (!row) {
        message(IDS_NO_FIELD_SELECTED);
        return;
    }
    const CWaitCursor wait;
    const BulkOperation bulk(bulk_);
    const RedrawPause pause(tree_);
    tree_.Select(nullptr);
    markMatches(node, *kind, *row);
    tree_.SelectAlso(caret, true);
    countSelected();
}

// Adds to the selection every node of the kind whose attribute has the value that the node has.
void Hierarchy::markMatches(NodeHandle node, FltNodeKind kind, int row) {
    const FltAttrGroup* set = loadAttributes(node);
    const FltAttrDesc* attribute = set ? attributeAt(*set, row) : nullptr;
    if (!attribute) return;
    const FltAttrType type = attribute->type;
    const std::string value = attribute->value.text();
    std::vector<TreeItem*> matches;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at)) {
        if (!at->node || !isOfKind(at->node, kind)) continue;
        set = loadAttributes(at->node);
        attribute = set ? attributeAt(*set, row) : nullptr;
        if (attribute && sameValue(*attribute, type, value.c_str())) matches.push_back(at);
    }
    for (TreeItem* match : matches) tree_.SetSelected(*match, true);
    tree_.Reveal(matches);
}

// ---------------------------------------------------------------- create, attach, rename

void Hierarchy::create() {
    if (!hasClient() || tree_.SelectedCount() != 1) {
        beep();
        return;
    }
    const TreeItem* parent = tree_.FirstSelected();
    const int choice = createKind_.Selected();
    if (!parent || choice < 0 || !mayCreate(*parent, choice)) return;
    const HTREEITEM item = parent->handle;
    std::uint16_t opcode = kRecordKinds[static_cast<std::size_t>(choice)].opcode;
    std::uint32_t unknown = 1;
    send(BrowserEvent::confirmKind, item, nullptr, addressOf(unknown));
    if (unknown != 0) opcode = kFltObject;
    parent = tree_.Find(item);
    if (!parent) return;  // the client has changed the tree meanwhile
    const auto argument =
        static_cast<std::uintptr_t>(static_cast<std::intptr_t>(static_cast<std::int16_t>(opcode)));
    const TreeItem* const lastBefore = parent->lastChild;
    sendEdit(BrowserEvent::create, item, nullptr, argument, kFltRevision);
    const TreeItem* const now = tree_.Find(item);
    // What was made can be seen, and the next one goes beside it.
    if (now && now->lastChild != lastBefore) tree_.Expand(item, TVE_EXPAND);
    tree_.Invalidate();
}

bool Hierarchy::mayCreate(const TreeItem& parent, int choice) {
    // The list never offers instance references, so below a face nothing can be created.
    constexpr int kInstanceReferenceRow = 16;
    if (!parent.node) {
        message(IDS_NO_PARENT_SELECTED);
        return false;
    }
    if (choice != kInstanceReferenceRow && isOfKind(parent.node, FltNodeKind::Face)) {
        message(IDS_CREATE_BELOW_FACE);
        return false;
    }
    return true;
}

void Hierarchy::drop(HTREEITEM draggedHandle, HTREEITEM targetHandle) {
    const TreeItem* const dragged = tree_.Find(draggedHandle);
    const TreeItem* const target = tree_.Find(targetHandle);
    if (!dragged || !target || !mayAttach(*dragged, *target)) return;
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    const NodeHandle node = dragged->node;
    sendEdit(BrowserEvent::attach, draggedHandle, targetHandle);
    selectLastChild(targetHandle, node);
}

// The node stays in hand: the client adds it again behind the other children.
void Hierarchy::selectLastChild(HTREEITEM parent, NodeHandle node) {
    const TreeItem* const item = tree_.Find(parent);
    if (!item || !item->lastChild || item->lastChild->node != node) return;
    selectNode(item->lastChild->handle);
    tree_.EnsureVisible(tree_.Caret());
}

bool Hierarchy::mayAttach(const TreeItem& dragged, const TreeItem& target) {
    if (TreeModel::isWithin(target, dragged)) {
        message(IDS_ATTACH_BELOW_CHILD);
        return false;
    }
    if (isOfKind(target.node, FltNodeKind::Face) && !isOfKind(dragged.node, FltNodeKind::Face)) {
        message(IDS_ATTACH_TO_FACE);
        return false;
    }
    return true;
}

bool Hierarchy::rename(const TVITEMW& edited) {
    // A label edit may have begun before the scene changed behind the tree.
    if (!commandsEnabled_ || !hasClient() || !edited.pszText || !*edited.pszText) return false;
    const TreeItem* const item = tree_.Find(edited.hItem);
    if (!item) return false;
    const std::string text = toUtf8(edited.pszText);
    sendEdit(BrowserEvent::rename, edited.hItem, handleOf(item->parent),
             reinterpret_cast<std::uintptr_t>(text.c_str()));
    if (tree_.Find(edited.hItem)) {
        tree_.SetItemText(edited.hItem, text);
        if (edited.hItem == current_)
            if (const FltAttrGroup* set = loadAttributes(tree_.Node(current_))) showName(*set);
    }
    return true;
}

}  // namespace tessera
