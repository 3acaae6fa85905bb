#include "treeselection.h"

#include "ctreectrlex.h"

#include <unordered_set>
#include <utility>

namespace tessera {

std::size_t TreeSelection::count() const noexcept {
    return tree_.Model().selectedCount();
}

bool TreeSelection::contains(HTREEITEM item) const {
    const TreeItem* found = tree_.Find(item);
    return found && found->selected;
}

void TreeSelection::set(TreeItem& item, bool selected) {
    if (item.selected == selected) return;
    tree_.Model().setSelected(item, selected);
    tree_.InvalidateUnlessPaused();
}

void TreeSelection::moveCaret(HTREEITEM item) {
    const auto changing = tree_.Changing();
    tree_.Select(item);
}

void TreeSelection::caretMoved() {
    const HTREEITEM now = tree_.Caret();
    if (now == caret_) return;
    TreeModel& model = tree_.Model();
    if (TreeItem* old = model.find(std::exchange(caret_, now))) model.setSelected(*old, false);
    if (TreeItem* item = model.find(now)) model.setSelected(*item, true);
}

void TreeSelection::forgetDeleted() {
    if (!tree_.Find(anchor_)) anchor_ = nullptr;
    if (!tree_.Find(caret_)) caret_ = nullptr;
}

// ---------------------------------------------------------------- visible items

// Visits the visible items in order, leaving out branches without any of the wanted ones, until
// `visit` returns false.
template <typename Visit>
void TreeSelection::walkVisible(const std::vector<TreeItem*>& wanted, Visit visit) const {
    if (wanted.empty()) return;
    const std::vector<TreeItem*> above = TreeModel::ancestorsBottomUp(wanted);
    const std::unordered_set<const TreeItem*> branches(above.begin(), above.end());
    for (TreeItem* at = tree_.Model().first(); at;) {
        if (!visit(*at)) return;
        at = branches.contains(at) && tree_.IsExpanded(*at) ? TreeModel::following(*at)
                                                            : TreeModel::skipping(*at);
    }
}

std::vector<TreeItem*> TreeSelection::visibleItems() const {
    std::vector<TreeItem*> items;
    for (TreeItem* at = tree_.Model().first(); at;
         at = tree_.IsExpanded(*at) ? TreeModel::following(*at) : TreeModel::skipping(*at))
        items.push_back(at);
    return items;
}

std::vector<TreeItem*> TreeSelection::visible() const {
    const TreeModel& model = tree_.Model();
    // Where much is selected, looking at everything is quicker than looking for it.
    if (model.selectedCount() > model.size() / 4) {
        std::vector<TreeItem*> items = visibleItems();
        std::erase_if(items, [](const TreeItem* item) { return !item->selected; });
        return items;
    }
    std::vector<TreeItem*> found;
    walkVisible(model.selected(), [&](TreeItem& item) {
        if (item.selected) found.push_back(&item);
        return true;
    });
    return found;
}

TreeItem* TreeSelection::first() const {
    TreeItem* found = nullptr;
    walkVisible(tree_.Model().selected(), [&](TreeItem& item) {
        if (item.selected) found = &item;
        return !found;
    });
    return found;
}

TreeItem* TreeSelection::next(HTREEITEM from, bool forward) const {
    TreeItem* const start = tree_.Find(from);
    if (!start) return nullptr;
    std::vector<TreeItem*> wanted = tree_.Model().selected();
    wanted.push_back(start);
    TreeItem* before = nullptr;
    TreeItem* after = nullptr;
    bool passed = false;
    walkVisible(wanted, [&](TreeItem& item) {
        if (&item == start)
            passed = true;
        else if (item.selected)
            (passed ? after : before) = &item;
        return !after && (forward || !passed);
    });
    if (!passed) return nullptr;
    return forward ? after : before;
}

// ---------------------------------------------------------------- changes

void TreeSelection::add(HTREEITEM item, bool keep) {
    const HTREEITEM former = tree_.Caret();
    if (former == item) {
        if (!keep) moveCaret(nullptr);
        return;
    }
    moveCaret(item);
    anchor_ = item;
    if (TreeItem* old = tree_.Find(former)) set(*old, true);
}

void TreeSelection::clear(bool keepCaret) {
    if (!keepCaret) moveCaret(nullptr);
    for (TreeItem* item : tree_.Model().selected()) set(*item, false);
}

void TreeSelection::spread(HTREEITEM item) {
    TreeItem* const top = tree_.Find(item);
    if (!top) return;
    for (TreeItem* at = TreeModel::following(*top, top); at; at = TreeModel::following(*at, top))
        set(*at, top->selected);
}

void TreeSelection::click(HTREEITEM item, bool shift, bool control) {
    const HTREEITEM old = tree_.Caret();
    if (shift)
        selectRange(item);
    else if (control)
        toggle(item);
    else
        selectOnly(item);
    notify(old, item);
}

// Selects the visible items from the anchor to `item`, and those only.
void TreeSelection::selectRange(HTREEITEM item) {
    if (!anchor_) anchor_ = tree_.Caret();
    moveCaret(item);
    const std::vector<TreeItem*> all = visibleItems();
    const auto position = [&all](HTREEITEM wanted, std::size_t otherwise) {
        for (std::size_t i = 0; i < all.size(); ++i)
            if (all[i]->handle == wanted) return i;
        return otherwise;
    };
    std::size_t to = position(item, 0);
    // With the anchor in a branch that has been collapsed, the range is the item alone.
    std::size_t from = position(anchor_, to);
    if (from > to) std::swap(from, to);
    for (std::size_t i = 0; i < all.size(); ++i) set(*all[i], i >= from && i <= to);
}

void TreeSelection::toggle(HTREEITEM item) {
    TreeItem* const old = tree_.Find(tree_.Caret());
    const bool oldSelected = old && old->selected;
    const bool wasSelected = contains(item);
    moveCaret(item);
    if (old) set(*old, oldSelected);
    if (TreeItem* clicked = tree_.Find(item)) set(*clicked, !wasSelected);
    if (!anchor_) anchor_ = item;
}

void TreeSelection::selectOnly(HTREEITEM item) {
    clear(false);
    moveCaret(item);
    if (TreeItem* clicked = tree_.Find(item)) set(*clicked, true);
    anchor_ = item;
}

void TreeSelection::extendTo(HTREEITEM next) {
    const HTREEITEM former = tree_.Caret();
    if (!former || !next) return;
    const bool wasSelected = contains(next);
    moveCaret(next);
    if (TreeItem* old = tree_.Find(former); old && !wasSelected) set(*old, true);
    notify(former, next);
}

void TreeSelection::notify(HTREEITEM old, HTREEITEM now) const {
    NMTREEVIEWW notification{};
    notification.hdr = {tree_.Handle(), static_cast<UINT_PTR>(tree_.Id()),
                        static_cast<UINT>(TVN_SELCHANGEDA)};
    notification.action = TVC_BYMOUSE;
    const auto fill = [this](TVITEMW& item, HTREEITEM handle) {
        item.mask = TVIF_HANDLE | TVIF_STATE | TVIF_PARAM;
        item.hItem = handle;
        item.stateMask = TVIS_SELECTED;
        item.state = contains(handle) ? TVIS_SELECTED : 0U;
        item.lParam = static_cast<LPARAM>(tree_.Node(handle));
    };
    fill(notification.itemOld, old);
    fill(notification.itemNew, now);
    ::SendMessageW(tree_.Parent(), WM_NOTIFY, notification.hdr.idFrom,
                   reinterpret_cast<LPARAM>(&notification));
}

}  // namespace tessera
