#include "nodecommands.h"

#include "browserfill.h"
#include "nodecopy.h"
#include "ownedit.h"
#include "treenodes.h"

#include <diagnostics/log.h>
#include <fltkilnutil/actions.h>
#include <kiln/kiln.h>
#include <tessera/browserclient.h>
#include <tessera/lodviewer.h>

#include <algorithm>
#include <span>
#include <vector>

namespace tessera {

namespace {

using fltkilnutil::Action, fltkilnutil::ActionScope;

using Items = std::span<const BrowserItem>;

// As those of the event handler, the lines in the log name the panel.
constexpr const char* kSource = "avfltpanel";
constexpr int kLine = 483;

/// The nodes of the items; empty when one of them has no node that can be deleted or copied.
std::vector<INode*> nodesOf(Items items) {
    std::vector<INode*> nodes;
    for (const BrowserItem item : items) {
        INode* const node = nodeOf(item);
        if (!node || node->IsRootNode()) return {};
        nodes.push_back(node);
    }
    return nodes;
}

/// A node of several items, those of references to it, is deleted once.
bool removeNodes(Interface& host, Items items) {
    std::vector<INode*> nodes = nodesOf(items);
    if (nodes.empty()) return false;
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    const bool others = std::any_of(nodes.begin(), nodes.end(), [](INode* node) {
        return isListed(node->GetParentNode()) || holdsDefinition(node);
    });
    const OwnEdit edit(others);
    ActionScope scope(Action::kDelete);
    for (INode* node : nodes)
        if (host.IsNodeInScene(node)) host.DeleteNode(node);
    scope.Commit();
    for (const BrowserItem item : items) _zufltguidelnode(item);
    return true;
}

/// Where the copy of a node goes: below its own parent, or below another item's node.
INode* placeOf(INode* node, BrowserItem parentItem, bool beside) {
    return beside ? node->GetParentNode() : nodeOf(parentItem);
}

bool copyNodes(Interface& host, Items items, const BrowserItem* parentItems, bool beside,
               NodeHandle* made) {
    const std::vector<INode*> nodes = nodesOf(items);
    if (nodes.empty() || nodes.size() != items.size()) return false;
    bool others = false;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        INode* const place = placeOf(nodes[i], parentItems[i], beside);
        if (!place) return false;
        others = others || isListed(place) || isReference(place) || holdsDefinition(nodes[i]);
    }
    const OwnEdit edit(others);
    std::vector<INode*> copies;
    ActionScope scope(beside ? Action::kDuplicate : Action::kPaste);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        INode* const place = placeOf(nodes[i], parentItems[i], beside);
        INode* const copy = copySubtree(host, *nodes[i], *place);
        if (!copy) return false;
        copies.push_back(copy);
    }
    scope.Commit();
    for (std::size_t i = 0; i < copies.size(); ++i) {
        made[i] = reinterpret_cast<NodeHandle>(copies[i]);
        BrowserFill().add(parentItems[i], copies[i]);
    }
    return true;
}

bool remove(const BrowserItem* items, std::size_t count, void* clientData) {
    return diagnostics::guarded(kSource, kLine, false, [&] {
        return removeNodes(*static_cast<Interface*>(clientData), {items, count});
    });
}

bool copy(const BrowserItem* items, const BrowserItem* parents, std::size_t count, bool beside,
          NodeHandle* made, void* clientData) {
    return diagnostics::guarded(kSource, kLine, false, [&] {
        return copyNodes(*static_cast<Interface*>(clientData), {items, count}, parents, beside,
                         made);
    });
}

void onSelectionChange(void*, NotifyInfo*) {
    hostSelectionChanged();
}

void watchSelection(bool watch, void*) {
    if (watch)
        RegisterNotification(onSelectionChange, nullptr, NOTIFY_SELECTION_CHANGED);
    else
        UnRegisterNotification(onSelectionChange, nullptr, NOTIFY_SELECTION_CHANGED);
}

std::size_t selected(NodeHandle* nodes, std::size_t room, void* clientData) {
    Interface& host = *static_cast<Interface*>(clientData);
    const auto count = static_cast<std::size_t>(host.GetSelNodeCount());
    for (std::size_t i = 0; i < std::min(count, room); ++i)
        nodes[i] = reinterpret_cast<NodeHandle>(host.GetSelNode(static_cast<int>(i)));
    return count;
}

void levelEdited(void* clientData) {
    diagnostics::guarded(kSource, kLine, false, [&] {
        LodViewer(*static_cast<Interface*>(clientData)).Refresh();
        return true;
    });
}

}  // namespace

const NodeCommands kNodeCommands{remove, copy, watchSelection, selected, levelEdited};

void leaveSelection() noexcept {
    watchSelection(false, nullptr);
}

}  // namespace tessera
