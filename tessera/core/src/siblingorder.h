// Moves nodes among their siblings.
#pragma once

#include <tessera/browserexports.h>

class INode;
class Interface;

namespace tessera {

/// Moves the node of `item` one place later (+1) or earlier (-1) among the children of the node of
/// `parentItem`, or, for +2 and -2, moves it together with the nodes of `items`, a list of items
/// ended by null (or null itself for none), as a block that keeps its order. At the end of the
/// range, or without a parent, it beeps and changes nothing.
///
/// The host keeps no child order that could be set, so every child is detached and attached again
/// in the new order, keeping its world position, and gets the local transform that it had, bit for
/// bit; the tree follows.
void moveAmongSiblings(Interface& host, BrowserItem item, BrowserItem parentItem, int step,
                       const BrowserItem* items);

}  // namespace tessera
