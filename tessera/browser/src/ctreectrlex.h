// The tree of the browser: a tree view with several selected items and drag and drop.
#pragma once

#include "retiredtree.h"
#include "treebranches.h"
#include "treedrag.h"
#include "treemodel.h"
#include "treerefill.h"
#include "treeselection.h"

#include <base/scopedvalue.h>
#include <framework/ctreectrl.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tessera {

/// A tree view in which any number of items can be selected.
///
/// Its items are copied in a model, which everything that adds, deletes or marks items passes. The
/// control's own selected state is that of its caret: marking an item there costs it a pass over
/// all that is expanded. So the marks of all others live in the model alone; whoever asks the
/// control for an item's state gets the model's answer, and `Draw` paints it.
///
/// The parent gets TVN_SELCHANGED once a click or a key has changed the selection, and calls
/// `TreeSelection::caretMoved` first thing when it gets one.
class CTreeCtrlEx : public framework::CTreeCtrl {
public:
    /// Called when a drag ends: the dragged item and the last item that it was over (null: none).
    std::function<void(HTREEITEM dragged, HTREEITEM target)> onDrop;
    /// Called when a drag begins. The result is asked while it lasts: whether the item may be
    /// dropped on `target`.
    std::function<std::function<bool(HTREEITEM target)>(HTREEITEM dragged)> onDrag;

    TreeModel& Model() noexcept { return model_; }
    TreeSelection& Selection() noexcept { return selection_; }
    TreeBranches Branches() noexcept { return TreeBranches(*this); }
    TreeRefill& Refill() noexcept { return refill_; }

    /// The model's item, null for one that is not in the tree.
    TreeItem* Find(HTREEITEM item) { return model_.find(item); }
    /// The node handle of an item, 0 for one that is not in the tree.
    NodeHandle Node(HTREEITEM item);
    bool IsExpanded(const TreeItem& item) const;

    /// Adds an item as the last child of `parent` (null: top level). A negative image leaves the
    /// control's default. Null when the control refuses.
    HTREEITEM Add(HTREEITEM parent, std::string_view text, NodeHandle node, int image);

    /// Deletes everything below an item; a caret there moves to the item.
    void DeleteChildren(HTREEITEM item);

    /// Puts another control of the same kind in the place of this one, empty and with the same id,
    /// looks and state. Between the two it calls `prepare`, for whoever else knows the window: both
    /// exist then, and the id is that of the new one. The old one is hidden, and goes once its
    /// items have been deleted, a few at a time. False, and nothing has changed, when the platform
    /// refuses.
    bool ChangeControl(const std::function<void(HWND former, HWND made)>& prepare);

    /// Lets the control be destroyed without its items, whose memory it then never frees: it takes
    /// time that grows with the square of their number in some versions. For the process's end.
    void LeaveItems() noexcept { leavesItems_ = true; }

    /// Scrolls the item to the top.
    void ScrollTo(HTREEITEM item) const;

    /// The answer to the parent's NM_CUSTOMDRAW: colors the selected items.
    LRESULT Draw(NMTVCUSTOMDRAW& draw);

    /// Whether to draw the items that are not `TreeItem::found` like what is disabled.
    void DimOthers(bool on);

    /// Switches drawing off, and on again with one repaint; pairs may nest.
    void PauseRedraw();
    void ResumeRedraw();
    void InvalidateUnlessPaused() const;

    /// Whether the button itself was down when its last press came, and not a message alone.
    bool WasRightPressed() const noexcept { return rightButtonHeld_; }

    bool IsDragging() const noexcept { return drag_.item() != nullptr; }
    /// Ends a drag without a drop.
    void CancelDrag() { drag_.cancel(); }

    /// Another number after branches may have been opened or closed by a message.
    unsigned BranchChanges() const noexcept { return branchChanges_; }

    /// True while this object moves the caret, when the control's own notifications of it tell
    /// of half-done changes.
    bool IsChanging() const noexcept { return changing_; }

    // For the parts of the tree.

    /// While the result lives, `IsChanging`.
    [[nodiscard]] base::ScopedValue<bool> Changing() noexcept { return {changing_, true}; }
    /// Sends a message to the platform's control, past the model.
    LRESULT SendToControl(UINT message, WPARAM wParam, const void* pointer);
    /// Deletes everything below an item in the control alone.
    void DeleteAllBelow(HTREEITEM item);
    /// Forgets items that have been deleted.
    void ForgetDeleted();

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    HTREEITEM InsertItem(const TVINSERTSTRUCTW& insertion) override;
    void OnPaint() override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    void OnRButtonDown(UINT keys, POINT at) override;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnSetFocus(HWND former) override;
    void OnKillFocus(HWND next) override;
    void OnEnable(bool enabled) override;
    void OnTimer(UINT_PTR id) override;
    void OnCaptureChanged(HWND gaining) override;
    void OnCancelMode() override;

private:
    /// The left button is down on an item.
    struct Press {
        HTREEITEM item = nullptr;
        POINT at{};
        bool pending = false;  ///< the selection changes when the button comes up
    };

    void DeleteNextRetired();
    HTREEITEM InsertThrough(UINT message, const TVINSERTSTRUCTW& insertion);
    LRESULT DeleteThrough(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT SetThrough(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT GetThrough(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT GetStateThrough(UINT message, WPARAM wParam, LPARAM lParam);
    UINT WithMark(UINT state, HTREEITEM item);
    LRESULT DrawDropTarget(NMTVCUSTOMDRAW& draw) const;

    void MoveCaretByKey();
    void NotifyKeyDown(UINT key);
    bool WantsDrag(POINT at) const noexcept;

    TreeModel model_;
    TreeSelection selection_{*this};
    TreeRefill refill_{*this};
    TreeDrag drag_{*this};
    Press press_;
    bool changing_ = false;
    bool dimming_ = false;
    bool rightButtonHeld_ = false;
    bool leavesItems_ = false;
    unsigned branchChanges_ = 0;
    int paused_ = 0;
    std::optional<framework::DrawingPause> drawingPause_;
    std::vector<std::unique_ptr<RetiredTree>> retired_;
};

/// Keeps a tree from drawing while it lives; the outermost one then repaints it once.
class RedrawPause {
public:
    explicit RedrawPause(CTreeCtrlEx& tree) : tree_(tree) { tree_.PauseRedraw(); }
    ~RedrawPause() { tree_.ResumeRedraw(); }
    RedrawPause(const RedrawPause&) = delete;
    RedrawPause& operator=(const RedrawPause&) = delete;

private:
    CTreeCtrlEx& tree_;
};

}  // namespace tessera
