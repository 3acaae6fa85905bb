#include "remotetree.h"

#include <base/utf16.h>

namespace {

constexpr int kLongestLabel = 256;

// What a message about an item points to, as it lies in the other process.
struct Exchange {
    TVITEMW item;
    wchar_t text[kLongestLabel];
};

}  // namespace

RemoteTree::RemoteTree(HWND tree, HANDLE process)
    : tree_(tree),
      process_(process),
      memory_(::VirtualAllocEx(process, nullptr, sizeof(Exchange), MEM_COMMIT, PAGE_READWRITE)) {}

RemoteTree::~RemoteTree() {
    ::VirtualFreeEx(process_, memory_, 0, MEM_RELEASE);
}

LRESULT RemoteTree::send(UINT message, WPARAM wParam, const void* argument) const {
    return ::SendMessageW(tree_, message, wParam, reinterpret_cast<LPARAM>(argument));
}

HTREEITEM RemoteTree::next(HTREEITEM item, UINT relation) const {
    return reinterpret_cast<HTREEITEM>(send(TVM_GETNEXTITEM, relation, item));
}

HTREEITEM RemoteTree::following(HTREEITEM item) const {
    if (const HTREEITEM child = next(item, TVGN_CHILD)) return child;
    for (; item; item = next(item, TVGN_PARENT))
        if (const HTREEITEM sibling = next(item, TVGN_NEXT)) return sibling;
    return nullptr;
}

std::string RemoteTree::label(HTREEITEM item) const {
    auto* const there = static_cast<Exchange*>(memory_);
    Exchange exchange{};
    exchange.item.mask = TVIF_TEXT;
    exchange.item.hItem = item;
    exchange.item.pszText = there->text;
    exchange.item.cchTextMax = kLongestLabel;
    ::WriteProcessMemory(process_, there, &exchange, sizeof exchange, nullptr);
    if (!send(TVM_GETITEMW, 0, &there->item)) return {};
    ::ReadProcessMemory(process_, there, &exchange, sizeof exchange, nullptr);
    exchange.text[kLongestLabel - 1] = 0;
    return base::toUtf8(exchange.text);
}

HTREEITEM RemoteTree::find(const std::string& wanted) const {
    HTREEITEM item = next(nullptr, TVGN_ROOT);
    while (item && label(item) != wanted) item = following(item);
    return item;
}

bool RemoteTree::hasState(HTREEITEM item, UINT state) const {
    const LPARAM mask = static_cast<LPARAM>(state);
    return item && (::SendMessageW(tree_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), mask) &
                    mask) != 0;
}

bool RemoteTree::isSelected(const std::string& wanted) const {
    return hasState(find(wanted), TVIS_SELECTED);
}

bool RemoteTree::isExpanded(const std::string& wanted) const {
    return hasState(find(wanted), TVIS_EXPANDED);
}

std::string RemoteTree::selected() const {
    std::string labels;
    for (HTREEITEM item = next(nullptr, TVGN_ROOT); item; item = following(item)) {
        if (!hasState(item, TVIS_SELECTED)) continue;
        if (!labels.empty()) labels += ' ';
        labels += label(item);
    }
    return labels;
}

bool RemoteTree::isBelow(const std::string& wanted, const std::string& parent) const {
    const HTREEITEM item = find(wanted);
    return item && next(item, TVGN_PARENT) == find(parent);
}

RECT RemoteTree::labelArea(const std::string& wanted) const {
    // The message takes the item in the place of the answer.
    const HTREEITEM item = find(wanted);
    RECT area{};
    ::WriteProcessMemory(process_, memory_, &item, sizeof(HTREEITEM), nullptr);
    if (!item || !send(TVM_GETITEMRECT, TRUE, memory_)) return {};
    ::ReadProcessMemory(process_, memory_, &area, sizeof area, nullptr);
    return area;
}

POINT RemoteTree::onScreen(POINT at) const {
    ::ClientToScreen(tree_, &at);
    return at;
}

POINT RemoteTree::middle(const std::string& wanted) const {
    const RECT area = labelArea(wanted);
    return onScreen({(area.left + area.right) / 2, (area.top + area.bottom) / 2});
}

POINT RemoteTree::icon(const std::string& wanted) const {
    constexpr int kHalfAnIcon = 8;
    const RECT area = labelArea(wanted);
    return onScreen({area.left - kHalfAnIcon, (area.top + area.bottom) / 2});
}
