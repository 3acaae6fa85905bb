// Emptying the browser's tree and filling it again with much the same.
#pragma once

#include "treemodel.h"

#include <framework/win32.h>

#include <string_view>

namespace tessera {

class CTreeCtrlEx;

/// Keeps the items of a tree through an emptying. The control takes longer to delete many items
/// than to insert them, so while a refill is under way those that are added again where they were
/// stay, and what has not been added is deleted at the end.
class TreeRefill {
public:
    explicit TreeRefill(CTreeCtrlEx& tree) noexcept : tree_(tree) {}

    /// While one lives the tree is expected to be emptied and filled again.
    class Scope {
    public:
        explicit Scope(TreeRefill& refill) noexcept;
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        TreeRefill& refill_;
    };

    /// The tree is to be emptied. True when this begins a refill: the items then wait in the model.
    bool emptied();

    /// Takes an item that waits below `parent` for the one that is to be added; null when the
    /// latter is new.
    TreeItem* takeBack(TreeItem* parent, std::string_view text, NodeHandle node, int image);

    /// So much of what was there is not added again that deleting it would take longer than filling
    /// another control: from then on nothing is added or deleted, and the tree is to get one.
    bool isGivenUp();
    /// The same, without counting what still waits.
    bool isBeingGivenUp() const noexcept { return givenUp_; }
    /// It has got one, or cannot: what is added now is inserted.
    void beginAnew() noexcept;

private:
    bool givesUp(std::size_t deleting);
    TreeItem* matching(TreeItem* parent, NodeHandle node);
    void showAnew(TreeItem& item, std::string_view text, NodeHandle node, int image);
    void deleteFirstWaiting(TreeItem* parent);
    void deleteWaiting();

    CTreeCtrlEx& tree_;
    int scopes_ = 0;
    bool expected_ = false;    ///< the next emptying is that of a refill
    bool recognised_ = false;  ///< the scene is the one that was shown
    int differences_ = 0;      ///< between what was there and what is added
    bool givenUp_ = false;
    std::size_t deleted_ = 0;  ///< of the items that were there
};

}  // namespace tessera
