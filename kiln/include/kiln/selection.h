// What is selected in the host, as a list.
#pragma once

#include <kiln/inode.h>
#include <kiln/interface.h>

#include <cstddef>
#include <vector>

/// The selected nodes in the order of their selection. Throws `std::bad_alloc`.
inline std::vector<INode*> SelectedNodes(Interface& host) {
    std::vector<INode*> nodes;
    nodes.reserve(static_cast<std::size_t>(host.GetSelNodeCount()));
    for (int i = 0; i < host.GetSelNodeCount(); ++i) nodes.push_back(host.GetSelNode(i));
    return nodes;
}
