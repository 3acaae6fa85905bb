// Which items of the browser's tree are selected.
#pragma once

#include "treemodel.h"

#include <framework/win32.h>

#include <vector>

namespace tessera {

class CTreeCtrlEx;

/// The selection of a tree: any number of items, marked in the model, beside the caret, which is
/// the control's own single selection and need not be selected itself. An item is visible when
/// everything above it is expanded, whether or not it is scrolled into view.
class TreeSelection {
public:
    explicit TreeSelection(CTreeCtrlEx& tree) noexcept : tree_(tree) {}

    std::size_t count() const noexcept;
    bool contains(HTREEITEM item) const;
    void set(TreeItem& item, bool selected);

    /// The selected items that are visible, in their order.
    std::vector<TreeItem*> visible() const;
    /// The first of them, or null.
    TreeItem* first() const;
    /// The selected visible item after (or before) `item`, or null.
    TreeItem* next(HTREEITEM item, bool forward) const;

    /// Makes an item the caret and the anchor of ranges; the former caret item stays selected. An
    /// item that is the caret already loses that, unless `keep`.
    void add(HTREEITEM item, bool keep);
    /// Unselects every item. Without `keepCaret` the tree has no caret afterwards.
    void clear(bool keepCaret);
    /// Selects everything below `item`, or unselects it, as the item is.
    void spread(HTREEITEM item);

    /// Selects an item alone, and makes it the caret and the anchor. The parent is not told.
    void selectOnly(HTREEITEM item);

    /// A click on an item, and a step with Shift from the caret to `next`. Both tell the parent.
    void click(HTREEITEM item, bool shift, bool control);
    void extendTo(HTREEITEM next);
    /// Tells the parent by TVN_SELCHANGED that the selection has changed.
    void notify(HTREEITEM old, HTREEITEM now) const;

    /// Moves the caret without a notification to the parent.
    void moveCaret(HTREEITEM item);
    /// Brings the marks up to date after the control has moved its caret by itself: it marks the
    /// new caret item and unmarks the old one.
    void caretMoved();
    /// Forgets items that have been deleted.
    void forgetDeleted();

private:
    std::vector<TreeItem*> visibleItems() const;
    template <typename Visit>
    void walkVisible(const std::vector<TreeItem*>& wanted, Visit visit) const;
    void selectRange(HTREEITEM item);
    void toggle(HTREEITEM item);

    CTreeCtrlEx& tree_;
    HTREEITEM caret_ = nullptr;  ///< as last seen, to know whose mark the control removed
    HTREEITEM anchor_ = nullptr;
};

}  // namespace tessera
