// Copies of nodes.
#pragma once

class INode;
class Interface;

namespace tessera {

/// Copies `node` with everything below it, as the last child of `parent`, in the world where the
/// node is. A copy has what its original has: transform, object (one of its own where the host has
/// made the class), texture map, wire color, what plug-ins keep in chunks; not their custom
/// attributes. Its name is that of the original with a number that makes it unique. Null when the
/// host refuses; what has been made then is left to the caller's scope to take back. Throws
/// `std::bad_alloc`.
INode* copySubtree(Interface& host, INode& node, INode& parent);

}  // namespace tessera
