// Which values of the current node differ from those of other selected nodes.
#pragma once

#include "hierarchytree.h"

#include <fltkilnutil/fltattr.h>

#include <string>
#include <vector>

namespace tessera {

/// Compares the values of a node with those of the other selected nodes of its kind that can be
/// seen: an edit with Global changes these. Many nodes take many steps, each a short time, so that
/// the user is never kept waiting.
class ValueComparison {
public:
    explicit ValueComparison(HierarchyTree& tree) noexcept : tree_(tree) {}

    /// Begins for a node whose set has just been loaded; null begins for none.
    void begin(NodeHandle node, const FltAttrGroup* set);
    /// The selection is another one than that which was compared, or is being compared.
    bool isStale() const noexcept;
    bool isDone() const noexcept { return next_ >= nodes_.size(); }
    /// Compares some more; true when a value has been found to differ that had not before. The set
    /// holds the node's values again afterwards.
    bool step();
    /// An element for each attribute.
    const std::vector<bool>& differing() const noexcept { return differing_; }

private:
    bool compare(const FltAttrGroup& set);

    HierarchyTree& tree_;
    NodeHandle node_ = 0;
    const FltAttrGroup* set_ = nullptr;
    std::vector<std::string> values_;
    std::vector<bool> differing_;
    std::vector<NodeHandle> nodes_;  ///< to compare with
    std::size_t next_ = 0;
    unsigned marks_ = 0;  ///< of the tree, as compared
    unsigned changes_ = 0;
};

}  // namespace tessera
