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

    /// How many items the control may go through to delete what is below `top`, and with `itself`
    /// `top` too, or to add one below `parent` (null: top level): it goes through a list of all of
    /// them, in the order in which they were made, to find one.
    double effortOfDeleting(const TreeItem& top, bool itself) const;
    static double effortOfAdding(const TreeItem* parent) noexcept;
    /// That of adding as many items as `top` is and has below it, one of them below `parent` and
    /// the others below that one.
    double effortOfAddingLike(const TreeItem& top, const TreeItem& parent) const;
    /// Whether that takes so long that another control is filled sooner.
    static bool isTooMuch(double effort) noexcept;

    /// The tree is to be emptied. True when this begins a refill: the items then wait in the model.
    bool emptied();

    bool isUnderWay() const noexcept { return underWay_; }

    /// Takes an item that waits below `parent` for the one that is to be added; null when the
    /// latter is new.
    TreeItem* takeBack(TreeItem* parent, std::string_view text, NodeHandle node, int image);

    /// So much differs from what was there that changing it would take longer than filling another
    /// control: from then on nothing is added or deleted, and the tree is to get one.
    bool isGivenUp();
    /// The same, without counting what still waits, if an item is added below `parent`.
    bool isGivenUpAdding(const TreeItem* parent);
    /// It has got one, or cannot: what is added now is inserted.
    void beginAnew() noexcept;

private:
    double effortOfDeleting(std::size_t count) const noexcept;
    bool givesUp(double effort);
    TreeItem* matching(TreeItem* parent, NodeHandle node);
    void showAnew(TreeItem& item, std::string_view text, NodeHandle node, int image);
    void deleteFirstWaiting(TreeItem* parent);
    void deleteWaiting();

    CTreeCtrlEx& tree_;
    int scopes_ = 0;
    bool expected_ = false;    ///< the next emptying is that of a refill
    bool recognised_ = false;  ///< the scene is the one that was shown
    int differences_ = 0;      ///< between what was there and what is added
    bool underWay_ = false;    ///< the tree has been emptied
    bool givenUp_ = false;
    double before_ = 0;  ///< how many items there were
    double effort_ = 0;  ///< for what differs
};

}  // namespace tessera
