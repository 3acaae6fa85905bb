// The platform's tree view.
#pragma once

#include <framework/cimagelist.h>
#include <framework/cwnd.h>

namespace framework {

/// A tree view. Items are the platform's handles; null means none. Functions fail as those of
/// `CWnd` do.
class CTreeCtrl : public CWnd {
public:
    bool Create(DWORD style, const RECT& area, HWND parent, UINT id);

    /// Inserts an item below `parent` (null or TVI_ROOT: top level), after `after`.
    HTREEITEM Insert(std::string_view text, HTREEITEM parent = TVI_ROOT, HTREEITEM after = TVI_LAST,
                     LPARAM data = 0, int image = 0, int selectedImage = 0);
    bool DeleteItem(HTREEITEM item) const;
    bool DeleteAll() const;
    int Count() const;

    std::string ItemText(HTREEITEM item) const;
    using CWnd::ItemText;
    void SetItemText(HTREEITEM item, std::string_view text) const;
    using CWnd::SetItemText;
    LPARAM ItemData(HTREEITEM item) const;
    /// False and no change for an item that does not exist.
    bool ItemImages(HTREEITEM item, int& image, int& selectedImage) const;
    /// The TVIS_ bits of `mask`.
    UINT ItemState(HTREEITEM item, UINT mask) const;
    void SetItemState(HTREEITEM item, UINT state, UINT mask) const;

    /// The item in the platform's relation TVGN_... to another.
    HTREEITEM Next(HTREEITEM item, UINT relation) const;
    HTREEITEM Root() const { return Next(nullptr, TVGN_ROOT); }
    HTREEITEM Caret() const { return Next(nullptr, TVGN_CARET); }
    HTREEITEM FirstVisible() const { return Next(nullptr, TVGN_FIRSTVISIBLE); }
    HTREEITEM Child(HTREEITEM item) const { return Next(item, TVGN_CHILD); }
    HTREEITEM NextSibling(HTREEITEM item) const { return Next(item, TVGN_NEXT); }
    HTREEITEM PreviousSibling(HTREEITEM item) const { return Next(item, TVGN_PREVIOUS); }
    HTREEITEM NextVisible(HTREEITEM item) const { return Next(item, TVGN_NEXTVISIBLE); }
    HTREEITEM PreviousVisible(HTREEITEM item) const { return Next(item, TVGN_PREVIOUSVISIBLE); }
    /// Whether the control draws a button beside the item, as for one with children.
    bool ShowsButton(HTREEITEM item) const;
    /// Sets that: 1, 0, or I_CHILDRENAUTO to follow the children that there are.
    void SetChildren(HTREEITEM item, int children) const;

    /// Makes an item the caret; with null the tree has none.
    bool Select(HTREEITEM item) const;
    bool SelectDropTarget(HTREEITEM item) const;
    /// `code` is TVE_EXPAND, TVE_COLLAPSE or TVE_TOGGLE.
    bool Expand(HTREEITEM item, UINT code) const;
    bool EnsureVisible(HTREEITEM item) const;
    /// The item under a point in client coordinates; `flags` gets the TVHT_ codes.
    HTREEITEM HitTest(POINT at, UINT* flags = nullptr) const;
    /// False when the item is not visible. `textOnly`: the label alone, else the whole line.
    bool ItemRect(HTREEITEM item, RECT& area, bool textOnly) const;
    /// Whether the item's line lies in the window from its upper to its lower edge.
    bool IsInView(HTREEITEM item) const;

    /// The edit control that has opened, or null.
    HWND EditLabel(HTREEITEM item) const;
    void EndEditLabel(bool cancel) const;

    /// The list is not owned; the result is the former one. `kind` is TVSIL_NORMAL or TVSIL_STATE.
    HIMAGELIST SetImageList(HIMAGELIST list, int kind = TVSIL_NORMAL) const;
    /// An image list of its own with one picture of the item (its icon and text, a little below and
    /// beside the corner), for a drag. The platform's own is empty in versions that make the
    /// picture narrower than the list. Without an image for an item that is not visible.
    CImageList CreateDragImage(HTREEITEM item) const;
    void SetBackground(COLORREF color) const;
    COLORREF Background() const;

protected:
    /// What `Insert` ends in: sends TVM_INSERTITEMW.
    virtual HTREEITEM InsertItem(const TVINSERTSTRUCTW& insertion);
};

}  // namespace framework
