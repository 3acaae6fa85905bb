#include "treemodel.h"

#include <algorithm>
#include <utility>

namespace tessera {

TreeItem& TreeModel::insert(BrowserItem handle, TreeItem* parent, TreeItem* after, bool first,
                            NodeHandle node) {
    const std::size_t before = items_.size();
    TreeItem& item = items_[handle];
    item.madeBehind = before;
    item.handle = handle;
    item.node = node;
    link(item, parent, after || first ? after : orTop(parent)->lastChild);
    return item;
}

void TreeModel::link(TreeItem& item, TreeItem* parent, TreeItem* previous) {
    TreeItem& above = *orTop(parent);
    item.generation = generation_;
    item.parent = parent;
    item.previous = previous;
    item.next = previous ? previous->next : above.firstChild;
    (item.previous ? item.previous->next : above.firstChild) = &item;
    (item.next ? item.next->previous : above.lastChild) = &item;
    ++size_;
    ++changes_;
}

void TreeModel::remove(TreeItem& item) {
    ++changes_;
    TreeItem& above = *orTop(item.parent);
    (item.previous ? item.previous->next : above.firstChild) = item.next;
    (item.next ? item.next->previous : above.lastChild) = item.previous;
    for (TreeItem* gone : bottomUp(item)) {
        while (gone->firstWaiting) dropWaiting(gone);
        if (selected_.erase(gone)) ++marks_;
        items_.erase(gone->handle);
        --size_;
    }
}

void TreeModel::clear() {
    ++changes_;
    ++marks_;
    selected_.clear();
    items_.clear();
    size_ = 0;
    top_ = TreeItem();
}

void TreeModel::keepWaiting() {
    ++changes_;
    ++marks_;
    TreeItem* const first = top_.firstChild;
    selected_.clear();
    size_ = 0;
    ++generation_;
    top_ = TreeItem();
    top_.firstWaiting = first;
}

TreeItem& TreeModel::putBack(TreeItem* parent) {
    TreeItem& item = *firstWaiting(parent);
    firstWaiting(parent) = item.next;
    item.firstWaiting = std::exchange(item.firstChild, nullptr);
    item.lastChild = nullptr;
    item.selected = false;
    link(item, parent, orTop(parent)->lastChild);
    return item;
}

void TreeModel::dropWaiting(TreeItem* parent) noexcept {
    TreeItem& top = *firstWaiting(parent);
    firstWaiting(parent) = top.next;
    for (TreeItem* at = &top; at;) {
        if (TreeItem* const child = at->firstChild) {
            at->firstChild = child->next;
            at = child;
        } else {
            const TreeItem* const gone = std::exchange(at, at == &top ? nullptr : at->parent);
            items_.erase(gone->handle);
        }
    }
}

std::vector<BrowserItem> TreeModel::release() {
    std::vector<BrowserItem> handles;
    handles.reserve(items_.size());
    std::vector<const TreeItem*> open{&top_};
    while (!open.empty()) {
        const TreeItem* const item = open.back();
        open.pop_back();
        if (item != &top_) handles.push_back(item->handle);
        for (const TreeItem* const first : {item->firstWaiting, item->firstChild})
            for (const TreeItem* at = first; at; at = at->next) open.push_back(at);
    }
    std::ranges::reverse(handles);
    clear();
    return handles;
}

TreeItem* TreeModel::find(BrowserItem handle) {
    const auto found = items_.find(handle);
    return found == items_.end() || found->second.generation != generation_ ? nullptr
                                                                            : &found->second;
}

void TreeModel::setSelected(TreeItem& item, bool selected) {
    if (item.selected != selected) ++marks_;
    item.selected = selected;
    if (selected)
        selected_.insert(&item);
    else
        selected_.erase(&item);
}

TreeItem* TreeModel::following(const TreeItem& item, const TreeItem* below) {
    return item.firstChild ? item.firstChild : skipping(item, below);
}

TreeItem* TreeModel::skipping(const TreeItem& item, const TreeItem* below) {
    for (const TreeItem* at = &item; at && at != below; at = at->parent)
        if (at->next) return at->next;
    return nullptr;
}

std::size_t TreeModel::sizeOf(const TreeItem& item) {
    std::size_t count = 0;
    for (const TreeItem* at = &item; at; at = following(*at, &item)) ++count;
    return count;
}

std::vector<TreeItem*> TreeModel::bottomUp(TreeItem& item) {
    std::vector<TreeItem*> items;
    for (TreeItem* at = &item; at; at = following(*at, &item)) items.push_back(at);
    std::reverse(items.begin(), items.end());
    return items;
}

bool TreeModel::isWithin(const TreeItem& item, const TreeItem& ancestor) {
    const TreeItem* at = &item;
    while (at && at != &ancestor) at = at->parent;
    return at != nullptr;
}

std::vector<TreeItem*> TreeModel::ancestorsBottomUp(const std::vector<TreeItem*>& items) {
    std::unordered_set<const TreeItem*> seen;
    std::vector<TreeItem*> ancestors;
    const TreeItem* latest = nullptr;
    for (const TreeItem* item : items) {
        // Siblings often follow each other.
        if (item->parent == latest) continue;
        latest = item->parent;
        const auto start = static_cast<std::ptrdiff_t>(ancestors.size());
        for (TreeItem* at = item->parent; at && seen.insert(at).second; at = at->parent)
            ancestors.push_back(at);
        // Each path is found bottom-up and ends below one found earlier; reversed, it is top-down.
        std::reverse(ancestors.begin() + start, ancestors.end());
    }
    std::reverse(ancestors.begin(), ancestors.end());
    return ancestors;
}

}  // namespace tessera
