// Which nodes the items of the browser's tree still stand for.
//
// The tree keeps its handles, which are addresses of nodes, until it is filled again. Between a
// change of the scene and that filling some of them are addresses of deleted nodes; whoever needs
// the node of an item gets it here.
#pragma once

#include <tessera/browserexports.h>

class INode;

namespace tessera {

/// The node of `item`; null for no item, for an item without a node, and for one whose node has
/// been deleted.
INode* nodeOf(BrowserItem item);

/// Whether `item` had a node that has been deleted.
bool hasLostNode(BrowserItem item);

/// Adds an item for `node` below `parentItem` and returns it; null when the browser adds none.
BrowserItem addItemOf(INode* node, BrowserItem parentItem);

/// An item lists the children of `definition`, whose own item is another one.
void noteListed(const INode* definition);

/// Whether `node` (may be null) or one above it is such a definition: what is below it then has
/// more items than one.
bool isListed(const INode* node);

/// `node` is being deleted; its items have no node from now on.
void forgetNode(INode* node) noexcept;

/// The same for all items, until the tree is emptied.
void forgetAllNodes() noexcept;

/// Empties the tree; items added afterwards have their nodes.
void emptyTree();

}  // namespace tessera
