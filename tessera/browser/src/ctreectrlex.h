// The tree of the browser: a tree view with several selected items and drag and drop.
#pragma once

#include "treemodel.h"

#include <framework/ctreectrl.h>

#include <functional>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

/// A tree view in which any number of items can be selected.
///
/// An item is selected when its selected state bit is set; the caret is the control's own single
/// selection, and need not be selected itself. Wherever "visible" is said, an item is visible when
/// everything above it is expanded, whether or not it is scrolled into view.
///
/// The parent gets TVN_SELCHANGED once a click or a key has changed the selection, and calls
/// `CaretChanged` first thing when it gets one.
class CTreeCtrlEx : public CTreeCtrl {
public:
    using Item = tessera::TreeItem;

    /// Called when a drag ends: the dragged item and the last item that it was over (null: none).
    std::function<void(HTREEITEM dragged, HTREEITEM target)> onDrop;

    tessera::TreeModel& Model() noexcept { return model_; }
    /// The model's item, null for one that is not in the tree.
    Item* Find(HTREEITEM item) { return model_.find(item); }
    /// The node handle of an item, 0 for one that is not in the tree.
    tessera::NodeHandle Node(HTREEITEM item);

    /// Adds an item as the last child of `parent` (null: top level). A negative image leaves the
    /// control's default. Null when the control refuses.
    HTREEITEM Add(HTREEITEM parent, std::string_view text, tessera::NodeHandle node, int image);

    /// Deletes everything below an item; a caret there moves to the item.
    void DeleteChildren(HTREEITEM item);

    std::size_t SelectedCount() const noexcept { return model_.selectedCount(); }
    bool IsSelected(HTREEITEM item);
    void SetSelected(Item& item, bool selected);
    std::vector<Item*> VisibleItems();
    /// The selected items that are visible, in their order.
    std::vector<Item*> VisibleSelection();
    /// The first of them, or null.
    Item* FirstSelected();
    /// The selected visible item after (or before) `item`, or null.
    Item* NextSelected(HTREEITEM item, bool forward);
    /// Makes an item the caret and the anchor of ranges; the former caret item stays selected. An
    /// item that is the caret already loses that, unless `keep`.
    void SelectAlso(HTREEITEM item, bool keep);
    /// Unselects every item. Without `keepCaret` the tree has no caret afterwards.
    void ClearSelection(bool keepCaret);
    /// Gives every item below `item` its selected mark.
    void SpreadMark(HTREEITEM item);

    /// Expands or collapses those of the items that have children, and every item below them that
    /// has. None of the items may lie below another, and they come in the order of the tree. A
    /// caret that goes out of view moves to the branch above it that is in view, and the parent
    /// hears of it.
    void ExpandAll(const std::vector<Item*>& tops);
    void CollapseAll(const std::vector<Item*>& tops);
    /// Expands everything above the items.
    void Reveal(const std::vector<Item*>& items);

    /// Which branches are open and what is scrolled into view, by the nodes.
    struct Arrangement {
        std::unordered_set<tessera::NodeHandle> open;  ///< what is in a closed branch is not known
        tessera::NodeHandle firstShown = 0;
    };
    /// Of `top` and everything below it, or of the whole tree for null.
    Arrangement Remember(Item* top);
    /// Arranges items that have been put in again.
    void Restore(const Arrangement& arrangement, Item* top);

    /// While it lives the tree is expected to be emptied and filled again, with much the same. The
    /// control takes longer to delete many items than to be given them, so those that are added
    /// again where they were stay; what has not been added is deleted at the end.
    class Refill {
    public:
        explicit Refill(CTreeCtrlEx& tree);
        ~Refill();
        Refill(const Refill&) = delete;
        Refill& operator=(const Refill&) = delete;

    private:
        CTreeCtrlEx& tree_;
    };

    /// The answer to the parent's NM_CUSTOMDRAW: colours the selected items.
    LRESULT Draw(NMTVCUSTOMDRAW& draw);

    /// Brings the marks up to date after the control has moved its caret by itself.
    void CaretChanged();
    /// True while this object moves the caret, when the control's own notifications of it tell
    /// of half-done changes.
    bool IsChanging() const noexcept { return changing_ > 0; }

    /// Switches drawing off, and on again with one repaint; pairs may nest.
    void PauseRedraw();
    void ResumeRedraw();

    bool IsDragging() const noexcept { return dragged_ != nullptr; }
    /// Ends a drag without a drop.
    void CancelDrag();

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    HTREEITEM InsertItem(const TVINSERTSTRUCTW& insertion) override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    void OnRButtonDown(UINT keys, POINT at) override;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnSetFocus(HWND former) override;
    void OnKillFocus(HWND next) override;
    void OnTimer(UINT_PTR id) override;
    void OnCaptureChanged(HWND gaining) override;
    void OnCancelMode() override;

private:
    template <typename Visit>
    void WalkVisible(const std::vector<Item*>& wanted, Visit visit);
    bool IsExpanded(const Item& item) const;
    static std::vector<Item*> BranchesBottomUp(const std::vector<Item*>& tops);
    void ChangeBranches(const std::vector<Item*>& branches, UINT code);
    void DeleteAllBelow(HTREEITEM item);

    void KeepWaiting();
    Item* TakeBack(Item* parent, std::string_view text, tessera::NodeHandle node, int image);
    void ShowAnew(Item& item, std::string_view text, tessera::NodeHandle node, int image);
    void DropFirstWaiting(Item* parent);
    void DropWaiting();

    void ForgetDeleted();

    HTREEITEM InsertThrough(UINT message, const TVINSERTSTRUCTW& insertion);
    LRESULT DeleteThrough(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT SetThrough(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT GetThrough(UINT message, WPARAM wParam, LPARAM lParam);
    UINT WithMark(UINT state, HTREEITEM item);

    void MoveCaret(HTREEITEM item);
    void ClickSelect(HTREEITEM item, bool shift, bool control);
    void SelectRange(HTREEITEM item);
    void ToggleSelected(HTREEITEM item);
    void SelectOnly(HTREEITEM item);
    void NotifySelectionChanged(HTREEITEM old, HTREEITEM now);
    void NotifyKeyDown(UINT key);
    void MoveCaretByKey();
    void ExtendByKey(UINT key);

    bool WantsDrag(POINT at) const noexcept;
    void BeginDrag(HTREEITEM item, POINT at);
    void DragTo(POINT at);
    void ScrollWhileDragging();
    void EndDragging();
    POINT InWindow(POINT client) const noexcept;

    tessera::TreeModel model_;
    HTREEITEM caret_ = nullptr;  ///< as last seen, to know whose mark the control took away
    int changing_ = 0;
    int paused_ = 0;
    std::optional<DrawingPause> drawingPause_;

    int refills_ = 0;
    bool mayWait_ = false;     ///< the next emptying is that of a refill
    bool recognised_ = false;  ///< the scene is the one that was shown
    int differences_ = 0;      ///< between what was there and what is added

    bool pressPending_ = false;
    POINT pressPoint_{};
    HTREEITEM pressed_ = nullptr;
    HTREEITEM anchor_ = nullptr;

    HTREEITEM dragged_ = nullptr;
    HTREEITEM dropTarget_ = nullptr;  ///< highlighted by the control
    CImageList dragImage_;
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
