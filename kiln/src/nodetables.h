// Which nodes a scene has, by address and by handle.
#pragma once

#include <kiln/platform.h>

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace kiln {

/// A set of addresses that are multiples of 16, which need not lead anywhere any more. It has a bit
/// for each place in the stretches of memory where some of them are: things of one kind lie close
/// together.
class AddressSet {
public:
    /// Adds `address`, which is not null and not in the set.
    void insert(const void* address) {
        const std::uintptr_t number = numberOf(address);
        if (!recent_ || recentNumber_ != number) recent_ = &stretches_[number];
        recentNumber_ = number;
        recent_->members.set(placeOf(address));
        ++recent_->count;
    }
    /// Takes `address` out, if it is in the set.
    void erase(const void* address) noexcept {
        if (!contains(address)) return;
        const auto stretch = stretches_.find(numberOf(address));
        stretch->second.members.reset(placeOf(address));
        if (--stretch->second.count > 0) return;
        if (recent_ == &stretch->second) recent_ = nullptr;
        stretches_.erase(stretch);
    }
    bool contains(const void* address) const noexcept {
        if (bitsOf(address) % kGrain != 0) return false;
        const auto stretch = stretches_.find(numberOf(address));
        return stretch != stretches_.end() && stretch->second.members.test(placeOf(address));
    }

private:
    static constexpr std::size_t kGrain = 16;
    static constexpr std::size_t kStretch = std::size_t{1} << 16;

    struct Stretch {
        std::bitset<kStretch / kGrain> members;
        std::size_t count = 0;
    };

    static std::uintptr_t bitsOf(const void* address) noexcept {
        return reinterpret_cast<std::uintptr_t>(address);
    }
    static std::uintptr_t numberOf(const void* address) noexcept {
        return bitsOf(address) / kStretch;
    }
    static std::size_t placeOf(const void* address) noexcept {
        return bitsOf(address) % kStretch / kGrain;
    }

    std::unordered_map<std::uintptr_t, Stretch> stretches_;
    Stretch* recent_ = nullptr;  // where the address added last is
    std::uintptr_t recentNumber_ = 0;
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
