// Memory for the many small pieces that a scene is made of.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "sanitizer.h"

namespace kiln {

/// Allocates blocks of up to `kLargest` bytes, with no word of overhead each.
///
/// Memory comes from the system in regions, which are divided into pages. All blocks of a page have
/// one size, a multiple of 8; where a block lies says which page it belongs to. What is made one
/// after the other lies one after the other, so that a scene is read in the order in which it was
/// built. An empty page serves any size again, and an empty region goes back to the system.
/// Not for several threads at a time. The address sanitizer reports who touches what is not
/// allocated.
class SmallHeap {
public:
    static constexpr std::size_t kLargest = 1024;

    constexpr SmallHeap() = default;
    SmallHeap(const SmallHeap&) = delete;
    SmallHeap& operator=(const SmallHeap&) = delete;

    /// A block of `size` bytes, which is 1 to `kLargest`: aligned to 16 when the size is a multiple
    /// of 16, to 8 otherwise, and not cleared. Null without memory.
    void* allocate(std::size_t size) noexcept {
        const std::size_t index = (size + kGrain - 1) / kGrain;
        Page* const page = open_[index] ? open_[index] : openPage(index);
        if (!page) return nullptr;
        void* block = page->freed;
        if (block) {
            allowAccess(block, sizeof(Freed));
            page->freed = static_cast<Freed*>(block)->next;
            forbidAccess(block, sizeof(Freed));
        } else {
            block = page->fresh;
            page->fresh += page->blockSize;
        }
        allowAccess(block, size);
        ++page->used;
        if (page->isFull()) close(*page);
        return block;
    }

    /// Frees a block of this heap.
    void free(void* block) noexcept {
        Page& page = pageOf(block);
        const bool wasFull = page.isFull();
        allowAccess(block, sizeof(Freed));
        page.freed = new (block) Freed{page.freed};
        forbidAccess(block, page.blockSize);
        --page.used;
        if (wasFull) open(page);
        if (page.used == 0) release(page);
    }

    /// Regions that this heap has from the system. It keeps an empty one for the next need.
    std::size_t regions() const noexcept { return regions_; }

private:
    static constexpr std::size_t kGrain = 8;
    static constexpr std::size_t kPageSize = std::size_t{1} << 16;
    static constexpr std::size_t kPages = 32;  // of a region

    struct Freed {
        Freed* next;
    };

    struct Page {
        Freed* freed = nullptr;
        std::byte* fresh = nullptr;  ///< what was never allocated
        std::byte* end = nullptr;
        Page* previous = nullptr;  ///< of those with room for blocks of the same size
        Page* next = nullptr;
        std::uint32_t blockSize = 0;
        std::uint32_t used = 0;

        bool isFull() const noexcept {
            return !freed && static_cast<std::size_t>(end - fresh) < blockSize;
        }
    };

    /// Stands at the start of its region.
    struct Region {
        Region* previous = nullptr;  ///< of those with unused pages
        Region* next = nullptr;
        std::uint32_t unused = 0;  ///< a bit for each page
        std::array<Page, kPages> pages;
    };

    static Region& regionOf(const void* place) noexcept;
    static Page& pageOf(const void* block) noexcept;
    Page* openPage(std::size_t index) noexcept;
    Region* takeRegion() noexcept;
    void open(Page& page) noexcept;
    void close(Page& page) noexcept;
    void release(Page& page) noexcept;

    std::array<Page*, kLargest / kGrain + 1> open_{};  // by size: pages with room
    Region* withUnused_ = nullptr;
    std::size_t regions_ = 0;
};

}  // namespace kiln
