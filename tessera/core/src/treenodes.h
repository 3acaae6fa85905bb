// Which nodes the items of the browser's tree still stand for.
//
// The tree keeps its handles, which are addresses of nodes, until it is filled again. Between a
// change of the scene and that filling some of them lead nowhere; everything that takes a node
// from an item asks here.
#pragma once

#include <tessera/browserexports.h>

class INode;

namespace tessera {

/// The node of `item`; null for no item, for an item without a node, and for one whose node has
/// gone.
INode* nodeOf(BrowserItem item);

/// Whether `item` had a node that has gone.
bool hasLostNode(BrowserItem item);

/// Adds an item for `node` below `parentItem` and gives it; null when the browser takes none.
BrowserItem addItemOf(INode* node, BrowserItem parentItem);

/// An item lists the children of `definition`, whose own item is another one.
void noteListed(const INode* definition);

/// Whether `node` (may be null) or one above it is such a definition: what is below it then has
/// more items than one.
bool isListed(const INode* node);

/// `node` goes; its items stand for nothing from now on.
void forgetNode(INode* node) noexcept;

/// So do all items, until the tree is emptied.
void forgetAllNodes() noexcept;

/// Empties the tree; what is added afterwards is known again.
void emptyTree();

}  // namespace tessera
