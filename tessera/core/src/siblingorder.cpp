#include "siblingorder.h"

#include "browserfill.h"
#include "treenodes.h"

#include <diagnostics/log.h>
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

bool attachInOrder(INode* parent, const Nodes& children) {
    return std::all_of(children.begin(), children.end(),
                       [=](INode* child) { return parent->AttachChild(child, true); });
}

/// Puts the children back, each whatever becomes of the others.
void restoreOrder(INode* parent, const Nodes& children) noexcept {
    for (INode* const child : children) {
        try {
            parent->AttachChild(child, true);
        } catch (...) {
            diagnostics::noteCurrentException();
        }
    }
}

/// Gives the parent its children in the new order. When the host refuses one, or fails half way,
/// they are put back in the old one.
bool changeOrder(Interface& host, INode* parent, const Nodes& old, const Nodes& wanted) {
    try {
        for (INode* const child : wanted) child->Detach(host.GetTime(), true);
        if (attachInOrder(parent, wanted)) return true;
    } catch (...) {
        restoreOrder(parent, old);
        throw;
    }
    restoreOrder(parent, old);
    return false;
}

}  // namespace

void moveAmongSiblings(Interface& host, BrowserItem item, BrowserItem parentItem, int step,
                       const BrowserItem* items) {
    INode* const parent = nodeOf(parentItem);
    INode* const node = nodeOf(item);
    if (!parent || !node || node->GetParentNode() != parent) return beep();
    const Nodes old = childrenOf(parent);
    Nodes children = old;
    if (!reorder(children, movedNodes(node, step, items), step) ||
        !changeOrder(host, parent, old, children))
        return beep();

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
