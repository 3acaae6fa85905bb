#include "siblingorder.h"

#include "browserfill.h"
#include "treenodes.h"

#include <fltkilnutil/actions.h>
#include <kiln/kiln.h>
#include <tessera/browserclient.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace tessera {

namespace {

struct Sibling {
    INode* node;
    Matrix3 local;  ///< its transform, which stays as it is bit for bit
};

using Siblings = std::vector<Sibling>;

std::unordered_set<INode*> movedNodes(INode* node, int step, const BrowserItem* items) {
    std::unordered_set<INode*> moved{node};
    const bool block = step == 2 || step == -2;
    for (; block && items && *items; ++items)
        if (INode* const other = nodeOf(*items)) moved.insert(other);
    return moved;
}

/// Moves every chosen node one place towards `begin`, so that the chosen ones keep their order.
/// False, and no change, when one of them is at `begin` already.
template <typename Iterator>
bool moveForward(Iterator begin, Iterator end, const std::unordered_set<INode*>& moved) {
    if (moved.contains(begin->node)) return false;
    for (Iterator next = begin + 1; next != end; ++next)
        if (moved.contains(next->node)) std::iter_swap(next - 1, next);
    return true;
}

bool reorder(Siblings& children, const std::unordered_set<INode*>& moved, int step) {
    return step < 0 ? moveForward(children.begin(), children.end(), moved)
                    : moveForward(children.rbegin(), children.rend(), moved);
}

Siblings childrenOf(Interface& host, INode* parent) {
    Siblings children;
    children.reserve(static_cast<std::size_t>(parent->NumberOfChildren()));
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* const child = parent->GetChildNode(i);
        children.push_back({child, child->GetLocalTM(host.GetTime())});
    }
    return children;
}

/// Attaches a child as the last one and sets its local transform again. Keeping the world position,
/// the host computes the local transform by the inverse of the parent's, which changes its last
/// bits, or all of it where there is no inverse.
bool attach(Interface& host, INode* parent, const Sibling& child) {
    if (!parent->AttachChild(child.node, true)) return false;
    if (child.node->GetParentNode() == parent)  // a notification's handler may have moved it
        child.node->SetLocalTM(host.GetTime(), child.local);
    return true;
}

/// Attaches the children in the new order, or refuses and leaves them in the old one.
bool changeOrder(Interface& host, INode* parent, const Siblings& wanted, int step) {
    using fltkilnutil::Action, fltkilnutil::ActionScope;
    ActionScope scope(step < 0 ? Action::kMoveUp : Action::kMoveDown);
    for (const Sibling& child : wanted) child.node->Detach(host.GetTime(), true);
    for (const Sibling& child : wanted)
        if (!attach(host, parent, child)) return false;
    scope.Commit();
    return true;
}

}  // namespace

void moveAmongSiblings(Interface& host, BrowserItem item, BrowserItem parentItem, int step,
                       const BrowserItem* items) {
    INode* const parent = nodeOf(parentItem);
    INode* const node = nodeOf(item);
    if (!parent || !node || node->GetParentNode() != parent) return beep();
    Siblings children = childrenOf(host, parent);
    if (!reorder(children, movedNodes(node, step, items), step) ||
        !changeOrder(host, parent, children, step))
        return beep();

    _zufltguidelchildren(parentItem);
    BrowserFill fill;
    BrowserItem movedItem = nullptr;
    for (const Sibling& child : children) {
        const BrowserItem added = fill.add(parentItem, child.node);
        if (child.node == node) movedItem = added;
    }
    _zufltguiselectnode(movedItem);
}

}  // namespace tessera
