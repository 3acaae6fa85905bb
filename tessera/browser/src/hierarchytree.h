// The tree of the form: the scene's nodes with the icons of their kinds.
#pragma once

#include "ctreectrlex.h"

#include <framework/cwaitcursor.h>

#include <functional>
#include <optional>

namespace tessera {

/// The tree control with what the form knows of its items beyond their marks.
class HierarchyTree : public CTreeCtrlEx {
public:
    /// Posted to the form, to end the filling that `clear` has begun.
    static constexpr UINT kFillingEnds = WM_APP + 1;

    /// Connects the control of the form, with the icons and the one item that the form adds itself.
    void initialise(framework::CWnd& form);

    /// Adds a node as the last child of `parent` (null: top level), with the icon of its kind. Null
    /// when the parent is not in the tree.
    HTREEITEM addNode(HTREEITEM parent, const char* text, NodeHandle node);
    /// 0 while the tree is being cleared.
    NodeHandle nodeOf(HTREEITEM item);

    /// Deletes every item. A filling begins.
    void clear(const framework::CWnd& form);
    bool isClearing() const noexcept { return clearing_; }
    /// Shows what has been added since the tree was cleared.
    void endFilling();
    /// Called at the end of a filling that would take another control: the tree is to get one, if
    /// it can, and to be filled anew.
    std::function<void()> onGivenUp;

    /// While the result lives, the form changes the selection itself, and takes no notice of what
    /// the control tells of it.
    [[nodiscard]] base::ScopedValue<bool> bulkOperation() noexcept { return {bulk_, true}; }
    bool isBulkOperation() const noexcept { return bulk_; }

    /// Whether commands may act on the items: not from a change of the scene to the next refresh.
    bool isUsable() const noexcept { return usable_; }
    void setUsable(bool usable) noexcept { usable_ = usable; }

private:
    /// Lives from when the tree was emptied until it is shown or an item of it selected, or else
    /// until messages are handled again: meanwhile the client fills it, most often with much the
    /// same.
    struct Filling {
        explicit Filling(CTreeCtrlEx& tree) : pause(tree), refill(tree.Refill()) {}
        framework::CWaitCursor wait;
        RedrawPause pause;
        TreeRefill::Scope refill;
    };

    framework::CImageList images_;
    std::optional<Filling> filling_;
    bool clearing_ = false;
    bool bulk_ = false;
    bool usable_ = true;
};

}  // namespace tessera
