#include "treenodes.h"

#include <kiln/kiln.h>

#include <unordered_set>

namespace tessera {

namespace {

std::unordered_set<const INode*> goneNodes;
bool allGone = false;
std::unordered_set<const INode*> listedDefinitions;

bool isGone(const INode* node) {
    return allGone || goneNodes.contains(node);
}

INode* handedOut(BrowserItem item) {
    return item ? reinterpret_cast<INode*>(_zufltguinode2hdl(item)) : nullptr;
}

}  // namespace

INode* nodeOf(BrowserItem item) {
    INode* const node = handedOut(item);
    return node && !isGone(node) ? node : nullptr;
}

bool hasLostNode(BrowserItem item) {
    const INode* const node = handedOut(item);
    return node && isGone(node);
}

BrowserItem addItemOf(INode* node, BrowserItem parentItem) {
    goneNodes.erase(node);  // a new node may have the address of a deleted one
    return _zufltguiaddnode(parentItem, node->GetName(), reinterpret_cast<NodeHandle>(node));
}

void noteListed(const INode* definition) {
    listedDefinitions.insert(definition);
}

bool isListed(const INode* node) {
    for (; node && !listedDefinitions.empty(); node = node->GetParentNode())
        if (listedDefinitions.contains(node)) return true;
    return false;
}

void forgetNode(INode* node) noexcept {
    try {
        goneNodes.insert(node);
    } catch (...) {
        allGone = true;  // no memory to remember this one, so none is trusted
    }
}

void forgetAllNodes() noexcept {
    allGone = true;
}

void emptyTree() {
    _zufltguidelnode(nullptr);
    goneNodes.clear();
    allGone = false;
    listedDefinitions.clear();
}

}  // namespace tessera
