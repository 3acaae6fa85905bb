// Dragging an item of the browser's tree onto another.
#pragma once

#include <framework/cimagelist.h>
#include <framework/win32.h>

#include <functional>

namespace tessera {

class CTreeCtrlEx;

/// The drag of one item: its image beside the mouse, the highlighted drop target, and scrolling at
/// the tree's edges. The tree holds the mouse meanwhile.
class TreeDrag {
public:
    explicit TreeDrag(CTreeCtrlEx& tree) noexcept : tree_(tree) {}

    /// The dragged item, null while nothing is dragged.
    HTREEITEM item() const noexcept { return item_; }
    /// The last item that the drag was over, null before the first one.
    HTREEITEM target() const noexcept { return target_; }
    /// Whether the item may be dropped there.
    bool accepted() const noexcept { return accepted_; }

    void begin(HTREEITEM item, POINT at);
    void moveTo(POINT at);
    /// Scrolls when the timer is the drag's; false for any other.
    bool onTimer(UINT_PTR id);
    /// Removes everything that shows the drag. What becomes of it is up to the caller.
    void end();
    /// Ends a drag, if there is one, and releases the mouse.
    void cancel();
    /// Forgets items that have been deleted.
    void forgetDeleted();

private:
    POINT inWindow(POINT client) const noexcept;
    void scroll();
    void setTarget(HTREEITEM item);
    void showCursor() const;

    CTreeCtrlEx& tree_;
    HTREEITEM item_ = nullptr;
    HTREEITEM target_ = nullptr;  ///< highlighted by the control
    std::function<bool(HTREEITEM)> accepts_;
    bool accepted_ = false;
    framework::CImageList image_;
};

}  // namespace tessera
