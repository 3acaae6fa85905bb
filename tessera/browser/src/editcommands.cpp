#include "editcommands.h"

#include "attributestore.h"
#include "clientlink.h"
#include "propertyside.h"
#include "recordkinds.h"
#include "selectioncommands.h"
#include "usermessages.h"

#include <base/utf16.h>
#include <fltkilnutil/actions.h>
#include <fltkilnutil/fltdefinitions.h>
#include <fltkilnutil/kilnflt.h>
#include <framework/cwaitcursor.h>
#include <quillon/fltopcode.h>
#include <resources/resource.h>

#include <algorithm>

using framework::CWaitCursor;

namespace tessera {
namespace {

/// Why an item may not be attached below another: the message, or 0 when it may. `shown` is what
/// the item's node shows.
UINT attachRefusal(const TreeItem& dragged, const TreeItem& target, const FltShownNodes& shown) {
    if (TreeModel::isWithin(target, dragged) || shown.contains(nodeOf(target.node)))
        return IDS_ATTACH_BELOW_CHILD;
    if (isOfKind(target.node, FltNodeKind::Face) && !isOfKind(dragged.node, FltNodeKind::Face))
        return IDS_ATTACH_TO_FACE;
    return 0;
}

HTREEITEM parentOf(const TreeItem& item) {
    return item.parent ? item.parent->handle : nullptr;
}

}  // namespace

void EditCommands::initialise() {
    createKind_.Attach(form_.Item(IDC_CREATE_KIND));
    nameKinds();
}

void EditCommands::nameKinds() {
    const int chosen = std::max(0, createKind_.Selected());
    createKind_.Clear();
    for (int row = 0; row < creatableKindCount(); ++row) createKind_.Add(kindName(row));
    createKind_.Select(chosen);
}

// ---------------------------------------------------------------- move

void EditCommands::move(BrowserEvent direction) {
    const CWaitCursor wait;
    {
        const auto bulk = tree_.bulkOperation();
        const RedrawPause pause(tree_);
        const TreeItem* const item = tree_.Selection().first();
        if (tree_.Selection().count() > 1) selectCaretOnly();
        if (item) sendMove(direction, *item);
    }
    selection_.countSelected();
}

// Several nodes do not move together, so the others are unselected; the caret keeps its mark.
void EditCommands::selectCaretOnly() {
    TreeItem* const caret = tree_.Find(tree_.Caret());
    const bool selected = caret && caret->selected;
    tree_.Selection().clear(true);
    if (caret) tree_.Selection().set(*caret, selected);
}

// The client deletes all children of the parent and adds them again.
void EditCommands::sendMove(BrowserEvent direction, const TreeItem& item) {
    const HTREEITEM parent = parentOf(item);
    TreeItem* const before = tree_.Find(parent);
    const auto arrangement =
        before ? tree_.Branches().remember(before) : TreeBranches::Arrangement();
    client_.sendEdit(direction, item, parent);
    TreeItem* const after = tree_.Find(parent);
    if (!after) return;
    tree_.Branches().restore(arrangement, after);
    if (const HTREEITEM caret = tree_.Caret()) tree_.EnsureVisible(caret);
}

// ---------------------------------------------------------------- create

void EditCommands::create() {
    if (!client_.isBound() || tree_.Selection().count() != 1) return beepSimply();
    createBelow(createKind_.Selected());
}

void EditCommands::createBelow(int row) {
    const TreeItem* const parent = tree_.Selection().first();
    if (parent && row >= 0) createIn(*parent, row);
}

// The top level has no place beside it.
void EditCommands::createBeside(int row) {
    const TreeItem* const item = tree_.Selection().first();
    if (!item || !item->parent || row < 0) return beepSimply();
    createIn(*item->parent, row);
}

void EditCommands::createIn(const TreeItem& below, int row) {
    const TreeItem* parent = &below;
    if (!client_.isBound() || !tree_.isUsable()) return beepSimply();
    if (!mayCreate(*parent, row)) return;
    const HTREEITEM item = parent->handle;
    const std::uint16_t opcode = confirmedOpcode(item, row);
    parent = tree_.Find(item);
    if (!parent) return;  // the client has changed the tree meanwhile
    const auto argument =
        static_cast<std::uintptr_t>(static_cast<std::intptr_t>(static_cast<std::int16_t>(opcode)));
    const TreeItem* const lastBefore = parent->lastChild;
    client_.sendEdit(BrowserEvent::kCreate, *parent, nullptr, argument, kFltRevision);
    const TreeItem* const now = tree_.Find(item);
    // The new node is shown. The selection stays, so that the next one becomes its sibling.
    if (now && now->lastChild != lastBefore) tree_.Expand(item, TVE_EXPAND);
    tree_.Invalidate();
}

bool EditCommands::mayCreate(const TreeItem& parent, int choice) const {
    // The list never offers instance references, so below a face nothing can be created.
    constexpr int kInstanceReferenceRow = 16;
    if (!parent.node) {
        showMessage(form_, IDS_NO_PARENT_SELECTED);
        return false;
    }
    if (choice != kInstanceReferenceRow && isOfKind(parent.node, FltNodeKind::Face)) {
        showMessage(form_, IDS_CREATE_BELOW_FACE);
        return false;
    }
    return true;
}

// The opcode of the chosen kind; an object's for a client that does not know the question.
std::uint16_t EditCommands::confirmedOpcode(HTREEITEM parent, int choice) const {
    std::uint32_t unknown = 1;
    client_.send(BrowserEvent::kConfirmKind, parent, nullptr,
                 reinterpret_cast<std::uintptr_t>(&unknown));
    return unknown == 0 ? kRecordKinds[static_cast<std::size_t>(choice)].opcode
                        : std::uint16_t{kFltObject};
}

// ---------------------------------------------------------------- attach

void EditCommands::attach(HTREEITEM draggedHandle, HTREEITEM targetHandle) {
    TreeItem* const dragged = tree_.Find(draggedHandle);
    const TreeItem* const target = tree_.Find(targetHandle);
    if (!dragged || !target) return;
    if (const UINT refusal =
            attachRefusal(*dragged, *target, FltShownNodes(nodeOf(dragged->node)))) {
        showMessage(form_, refusal);
        return;
    }
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    const NodeHandle node = dragged->node;
    sendAttach(*dragged, targetHandle);
    selectLastChild(targetHandle, node);
}

bool EditCommands::mayAttach(const std::vector<TreeItem*>& items, const TreeItem& target) const {
    for (const TreeItem* item : items) {
        const UINT refusal = attachRefusal(*item, target, FltShownNodes(nodeOf(item->node)));
        if (!refusal) continue;
        showMessage(form_, refusal);
        return false;
    }
    return true;
}

void EditCommands::attachAll(const std::vector<TreeItem*>& items, HTREEITEM target) {
    std::vector<HTREEITEM> handles;
    std::vector<NodeHandle> nodes;
    for (const TreeItem* item : items) {
        handles.push_back(item->handle);
        nodes.push_back(item->node);
    }
    const RedrawPause pause(tree_);
    client_.sendTogether(nodes, [&] {
        fltkilnutil::ActionScope scope(fltkilnutil::Action::kAttach);
        for (const HTREEITEM handle : handles)
            if (TreeItem* const item = tree_.Find(handle); item && tree_.Find(target))
                sendAttach(*item, target);
        scope.Commit();
    });
}

// The client adds the branch again behind the other children. What was open in it stays open.
void EditCommands::sendAttach(TreeItem& dragged, HTREEITEM target) {
    const NodeHandle node = dragged.node;
    TreeBranches::Arrangement arrangement = tree_.Branches().remember(&dragged);
    arrangement.firstShown = 0;
    client_.sendEdit(BrowserEvent::kAttach, dragged, target);
    const TreeItem* const now = tree_.Find(target);
    if (!arrangement.open.empty() && now && now->lastChild && now->lastChild->node == node)
        tree_.Branches().restore(arrangement, now->lastChild);
}

std::function<bool(HTREEITEM)> EditCommands::dropTest(HTREEITEM dragged) const {
    return [this, dragged, shown = FltShownNodes(nodeOf(tree_.Node(dragged)))](HTREEITEM handle) {
        const TreeItem* const item = tree_.Find(dragged);
        const TreeItem* const target = tree_.Find(handle);
        return item && target && attachRefusal(*item, *target, shown) == 0;
    };
}

// The dropped node stays selected: the client has added it again behind the other children.
void EditCommands::selectLastChild(HTREEITEM parent, NodeHandle node) {
    const TreeItem* const item = tree_.Find(parent);
    if (!item || !item->lastChild || item->lastChild->node != node) return;
    selection_.select(item->lastChild->handle);
    tree_.EnsureVisible(tree_.Caret());
}

// ---------------------------------------------------------------- rename

bool EditCommands::rename(const TVITEMW& edited) {
    // A label edit may have begun before the scene changed behind the tree.
    if (!tree_.isUsable() || !client_.isBound() || !edited.pszText || !*edited.pszText)
        return false;
    const TreeItem* const item = tree_.Find(edited.hItem);
    if (!item) return false;
    const std::string text = base::toUtf8(edited.pszText);
    client_.sendEdit(BrowserEvent::kRename, *item, parentOf(*item),
                     reinterpret_cast<std::uintptr_t>(text.c_str()));
    if (tree_.Find(edited.hItem)) {
        tree_.SetItemText(edited.hItem, text);
        properties_.itemRenamed(edited.hItem);
    }
    return true;
}

}  // namespace tessera
