#include "siblingorder.h"

#include "browserfill.h"
#include "treenodes.h"

#include <kiln/kiln.h>
#include <tessera/browserclient.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace tessera {

namespace {

using Nodes = std::vector<INode*>;

std::unordered_set<INode*> movedNodes(INode* node, int step, const BrowserItem* items) {
    std::unordered_set<INode*> moved{node};
    const bool block = step == 2 || step == -2;
    for (; block && items && *items; ++items)
        if (INode* const other = nodeOf(*items)) moved.insert(other);
    return moved;
}

/// Moves every chosen node past its neighbour, as far as no other chosen one stands at the front.
/// False, and no change, when the foremost is at the end already.
template <typename Iterator>
bool moveForward(Iterator begin, Iterator end, const std::unordered_set<INode*>& moved) {
    if (moved.contains(*begin)) return false;
    for (Iterator next = begin + 1; next != end; ++next)
        if (moved.contains(*next)) std::iter_swap(next - 1, next);
    return true;
}

bool reorder(Nodes& children, const std::unordered_set<INode*>& moved, int step) {
    return step < 0 ? moveForward(children.begin(), children.end(), moved)
                    : moveForward(children.rbegin(), children.rend(), moved);
}

Nodes childrenOf(INode* parent) {
    Nodes children;
    children.reserve(static_cast<std::size_t>(parent->NumberOfChildren()));
    for (int i = 0; i < parent->NumberOfChildren(); ++i)
        children.push_back(parent->GetChildNode(i));
    return children;
}

void attachInOrder(Interface& host, INode* parent, const Nodes& children) {
    for (INode* const child : children) child->Detach(host.GetTime(), true);
    for (INode* const child : children) parent->AttachChild(child, true);
}

}  // namespace

void moveAmongSiblings(Interface& host, BrowserItem item, BrowserItem parentItem, int step,
                       const BrowserItem* items) {
    INode* const parent = nodeOf(parentItem);
    INode* const node = nodeOf(item);
    if (!parent || !node || node->GetParentNode() != parent) return beep();
    Nodes children = childrenOf(parent);
    if (!reorder(children, movedNodes(node, step, items), step)) return beep();
    attachInOrder(host, parent, children);

    _zufltguidelchildren(parentItem);
    BrowserFill fill(host);
    BrowserItem movedItem = nullptr;
    for (INode* const child : children) {
        const BrowserItem added = fill.add(parentItem, child);
        if (child == node) movedItem = added;
    }
    _zufltguiselectnode(movedItem);
}

}  // namespace tessera
