// Which nodes a scene has, by address and by handle.
#pragma once

#include <kiln/platform.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kiln {

/// A set of addresses, which need not lead anywhere any more. Open addressing in one array.
class AddressSet {
public:
    /// Adds `address`, which is not null and not in the set.
    void insert(const void* address) {
        if (2 * (used_ + 1) > slots_.size()) rebuild();
        const void** const slot = slotOf(address);
        if (!*slot) ++used_;
        *slot = address;
        ++count_;
    }
    /// Takes `address` out, if it is in the set.
    void erase(const void* address) noexcept {
        if (!contains(address)) return;
        *slotOf(address) = &kGone;
        --count_;
    }
    bool contains(const void* address) const noexcept {
        return address && !slots_.empty() &&
               *const_cast<AddressSet*>(this)->slotOf(address) == address;
    }

private:
    static constexpr char kGone = 0;  // its address stands where one was taken out

    /// Where `address` stands, or the empty slot where it would.
    const void** slotOf(const void* address) noexcept {
        const std::size_t mask = slots_.size() - 1;
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(address));
        std::size_t at = static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15) >> 20) & mask;
        while (slots_[at] && slots_[at] != address) at = (at + 1) & mask;
        return &slots_[at];
    }

    void rebuild() {
        constexpr std::size_t kFewest = 64;
        std::size_t size = kFewest;
        while (size < 4 * (count_ + 1)) size *= 2;
        std::vector<const void*> before(size);
        before.swap(slots_);
        used_ = count_;
        for (const void* const address : before)
            if (address && address != &kGone) *slotOf(address) = address;
    }

    std::vector<const void*> slots_;  // a power of two, or none
    std::size_t count_ = 0;
    std::size_t used_ = 0;  // slots that are not empty
};

class Node;

/// Nodes by handle. Handles only ever grow, so they index a table in pages; a page whose nodes have
/// all gone goes too.
class HandleTable {
public:
    /// `first` is the lowest handle that will be asked for.
    explicit HandleTable(DWORD first) noexcept : first_(first) {}

    void insert(DWORD handle, Node* node) {
        const std::size_t index = handle - first_;
        if (index / kPageSize >= pages_.size()) pages_.resize(index / kPageSize + 1);
        std::unique_ptr<Page>& page = pages_[index / kPageSize];
        if (!page) page = std::make_unique<Page>();
        page->nodes[index % kPageSize] = node;
        ++page->count;
        ++count_;
    }
    /// Takes a handle out, if it is in the table.
    void erase(DWORD handle) noexcept {
        if (!find(handle)) return;
        const std::size_t index = handle - first_;
        std::unique_ptr<Page>& page = pages_[index / kPageSize];
        page->nodes[index % kPageSize] = nullptr;
        --count_;
        if (--page->count == 0) page.reset();
    }
    /// Null for a handle that is not in the table, whatever it is.
    Node* find(DWORD handle) const noexcept {
        if (handle < first_) return nullptr;
        const std::size_t index = handle - first_;
        if (index / kPageSize >= pages_.size() || !pages_[index / kPageSize]) return nullptr;
        return pages_[index / kPageSize]->nodes[index % kPageSize];
    }
    std::size_t size() const noexcept { return count_; }

private:
    static constexpr std::size_t kPageSize = 512;
    struct Page {
        std::array<Node*, kPageSize> nodes{};
        std::size_t count = 0;
    };

    DWORD first_;
    std::vector<std::unique_ptr<Page>> pages_;
    std::size_t count_ = 0;
};

}  // namespace kiln
