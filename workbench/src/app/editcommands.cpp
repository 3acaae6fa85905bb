#include "editcommands.h"

#include <kiln/selection.h>
#include <kiln/subtree.h>

#include <unordered_set>

namespace workbench {

void selectAll(Interface& host, std::span<INode* const> shown) {
    for (INode* node : shown) host.SelectNode(node, false);
}

void invertSelection(Interface& host, std::span<INode* const> shown) {
    for (INode* node : shown) {
        if (node->Selected())
            host.DeSelectNode(node);
        else
            host.SelectNode(node, false);
    }
}

void hideSelected(Interface& host) {
    for (INode* node : SelectedNodes(host)) node->Hide(true);
    host.ClearNodeSelection();
}

// Lights go on shining on what is left.
void isolateSelected(Interface& host, std::span<INode* const> shown) {
    std::unordered_set<const INode*> kept;
    for (INode* node : SelectedNodes(host)) {
        for (const INode* above = node; above && kept.insert(above).second;)
            above = above->GetParentNode();
        ForEachInSubtree(node, [&](INode& below) { kept.insert(&below); });
    }
    if (kept.empty()) return;
    for (INode* node : shown) {
        const Object* const object = node->GetObjectRef();
        const bool isLight = object && object->SuperClassID() == LIGHT_CLASS_ID;
        if (!isLight && !kept.contains(node)) node->Hide(true);
    }
}

void unhideAll(Interface& host) {
    ForEachInSubtree(host.GetRootNode(), [](INode& node) { node.Hide(false); });
}

void groupSelected(Interface& host) {
    Tab<INode*> nodes;
    for (INode* node : SelectedNodes(host)) nodes.Append(1, &node);
    if (INode* head = host.GroupNodes(nodes)) host.SelectNode(head);
}

void ungroupSelected(Interface& host) {
    for (INode* node : SelectedNodes(host))
        if (host.IsNodeInScene(node) && node->IsGroupHead()) host.UngroupNode(node);
}

void deleteNodes(Interface& host, std::span<INode* const> nodes) {
    // A node may have gone with one above it.
    for (INode* node : nodes)
        if (host.IsNodeInScene(node)) host.DeleteNode(node);
}

}  // namespace workbench
