// A walk over a node and all nodes below it.
#pragma once

#include <kiln/inode.h>

#include <type_traits>
#include <vector>

/// How a walk goes on after a node.
enum class WalkStep {
    kOn,        ///< with the node's children
    kPastThis,  ///< with the node after its subtree
    kEnd,       ///< not at all
};

/// Calls `visit(INode&)` for `top` (null: for nothing) and all nodes below it, parents before
/// children, siblings in order. `visit` says with a `WalkStep` how to go on; one without a result
/// visits all. False when it ended the walk.
///
/// The tree may be of any depth. Its shape must stay as it is meanwhile, below the node that is
/// visited excepted; what else nodes have may change.
template <typename Visit>
bool ForEachInSubtree(INode* top, Visit&& visit) {
    struct Level {
        INode* node;
        int next;  // child
    };
    std::vector<Level> way;
    const auto enter = [&](INode* node) {
        if constexpr (std::is_void_v<std::invoke_result_t<Visit&, INode&>>) {
            visit(*node);
        } else {
            const WalkStep how = visit(*node);
            if (how == WalkStep::kEnd) return false;
            if (how == WalkStep::kPastThis) return true;
        }
        if (node->NumberOfChildren() > 0) way.push_back({node, 0});
        return true;
    };
    if (top && !enter(top)) return false;
    while (!way.empty()) {
        Level& level = way.back();
        INode* const child = level.node->GetChildNode(level.next++);
        if (!child)
            way.pop_back();
        else if (!enter(child))
            return false;
    }
    return true;
}
