#include "nodeclipboard.h"

#include "clientlink.h"
#include "editcommands.h"
#include "selectioncommands.h"
#include "usermessages.h"

#include <framework/cwaitcursor.h>

#include <algorithm>

using framework::CWaitCursor;

namespace tessera {

// The selected items in the order of the tree, without those below another. Empty when there is one
// that is no node of the scene's: the scene's root and what the form adds itself.
std::vector<TreeItem*> NodeClipboard::chosen() const {
    std::vector<TreeItem*> items;
    if (!tree_.isUsable()) return items;
    std::vector<TreeItem*> selected = tree_.Model().selected();
    if (selected.empty()) return items;
    // Looking at a path for each is quicker than a walk over everything, as long as there are few.
    const auto above = [](const TreeItem* item) {
        const TreeItem* at = item->parent;
        while (at && !at->selected) at = at->parent;
        return at != nullptr;
    };
    if (std::ranges::any_of(selected,
                            [](const TreeItem* item) { return !item->node || !item->parent; }))
        return items;
    if (selected.size() == 1) return selected;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at))
        if (at->selected && !above(at)) items.push_back(at);
    return items;
}

bool NodeClipboard::canCut() const {
    return client_.isBound() && !chosen().empty();
}

bool NodeClipboard::canCopy() const {
    return client_.commands() && !chosen().empty();
}

bool NodeClipboard::canPaste() const {
    const TreeItem* const target = tree_.Selection().first();
    return tree_.isUsable() && !nodes_.empty() && target && target->node &&
           (cut_ ? client_.isBound() : client_.commands() != nullptr);
}

void NodeClipboard::note(bool cut) {
    cut_ = cut;
    nodes_.clear();
    for (const TreeItem* item : chosen()) nodes_.push_back(item->node);
}

void NodeClipboard::cut() {
    if (!canCut()) return beepSimply();
    note(true);
}

void NodeClipboard::copy() {
    if (!canCopy()) return beepSimply();
    note(false);
}

// The nodes' first items count: one that references show has several. What is pasted onto itself
// is pasted where it stands.
void NodeClipboard::paste() {
    if (!canPaste()) return beepSimply();
    const CWaitCursor wait;
    const std::vector<TreeItem*> originals = selection_.firstItemsOf(nodes_);
    const TreeItem* const target = tree_.Selection().first();
    if (originals.empty()) return beepSimply();
    if (!cut_ && std::ranges::find(originals, target->node, &TreeItem::node) != originals.end()) {
        makeCopies(originals, nullptr);
    } else if (!edits_.mayAttach(originals, *target)) {
        return;
    } else if (!cut_) {
        makeCopies(originals, target);
    } else {
        edits_.attachAll(originals, target->handle);
        selection_.selectNodes(nodes_);
        nodes_.clear();
    }
}

void NodeClipboard::duplicate() {
    if (!canDuplicate()) return beepSimply();
    const CWaitCursor wait;
    makeCopies(chosen(), nullptr);
}

// Below the target, or each beside its original. The copies are selected.
bool NodeClipboard::makeCopies(const std::vector<TreeItem*>& originals, const TreeItem* target) {
    std::vector<HTREEITEM> items;
    std::vector<HTREEITEM> parents;
    double effort = 0;
    for (const TreeItem* item : originals) {
        const TreeItem& parent = target ? *target : *item->parent;
        items.push_back(item->handle);
        parents.push_back(parent.handle);
        effort += tree_.Refill().effortOfAddingLike(*item, parent);
    }
    std::vector<NodeHandle> made(items.size());
    const RedrawPause pause(tree_);
    const bool done = client_.edit(made, effort, [&](const NodeCommands& commands) {
        return commands.copy(items.data(), parents.data(), items.size(), !target, made.data(),
                             client_.clientData());
    });
    if (done)
        selection_.selectNodes(made);
    else
        beepSimply();
    return done;
}

// What stands behind the last of them is selected then, so that the next key has something to act
// on.
void NodeClipboard::remove() {
    if (!canDelete()) return beepSimply();
    const CWaitCursor wait;
    std::vector<HTREEITEM> items;
    const std::vector<TreeItem*> originals = chosen();
    items.reserve(originals.size());
    double effort = 0;
    for (const TreeItem* item : originals) {
        items.push_back(item->handle);
        effort += tree_.Refill().effortOfDeleting(*item, true);
    }
    const TreeItem* next = originals.back();
    while (next->next && next->next->selected) next = next->next;
    const TreeItem* before = originals.back()->previous;
    while (before && before->selected) before = before->previous;
    next = next->next ? next->next : before ? before : originals.back()->parent;
    const HTREEITEM left = next->handle;
    const NodeHandle node = next->node;
    const RedrawPause pause(tree_);
    const bool done = client_.edit({node}, effort, [&](const NodeCommands& commands) {
        return commands.remove(items.data(), items.size(), client_.clientData());
    });
    if (!done) return beepSimply();
    forget();
    if (tree_.Find(left)) selection_.selectOnly(left);
}

}  // namespace tessera
