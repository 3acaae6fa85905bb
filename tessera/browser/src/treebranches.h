// Opening and closing branches of the browser's tree.
#pragma once

#include "treemodel.h"

#include <framework/win32.h>

#include <unordered_set>
#include <vector>

namespace tessera {

class CTreeCtrlEx;

/// Expands and collapses many branches of a tree at once, with drawing off. A caret that goes out
/// of view moves to the branch above it that is in view, and the parent is told.
class TreeBranches {
public:
    explicit TreeBranches(CTreeCtrlEx& tree) noexcept : tree_(tree) {}

    /// Expands or collapses those of the items that have children, and every item below them that
    /// has. None of the items may lie below another, and they come in the order of the tree.
    void expandAll(const std::vector<TreeItem*>& tops) const;
    void collapseAll(const std::vector<TreeItem*>& tops) const;
    /// Opens the branches so far that `level` levels below each of the items are seen, and closes
    /// what is deeper.
    void expandToLevel(const std::vector<TreeItem*>& tops, int level) const;
    /// Expands everything above the items.
    void reveal(const std::vector<TreeItem*>& items) const;

    /// Which branches are open and what is scrolled into view, by the nodes.
    struct Arrangement {
        std::unordered_set<NodeHandle> open;  ///< what is in a closed branch is not known
        NodeHandle firstShown = 0;
    };
    /// Of `top` and everything below it, or of the whole tree for null.
    Arrangement remember(TreeItem* top) const;
    /// Arranges items that have been put in again.
    void restore(const Arrangement& arrangement, TreeItem* top) const;
    /// The scroll place alone.
    void scrollBack(const Arrangement& arrangement) const;

private:
    void change(const std::vector<TreeItem*>& branches, UINT code) const;
    std::vector<const TreeItem*> topsToHide(std::size_t branchCount) const;

    CTreeCtrlEx& tree_;
};

}  // namespace tessera
