#include "smallheap.h"

#include <bit>
#include <new>

#include "region.h"

namespace kiln {

namespace {

/// Puts `item` at the front of a list.
template <typename T>
void link(T*& first, T& item) noexcept {
    item.previous = nullptr;
    item.next = first;
    if (first) first->previous = &item;
    first = &item;
}

template <typename T>
void unlink(T*& first, T& item) noexcept {
    (item.previous ? item.previous->next : first) = item.next;
    if (item.next) item.next->previous = item.previous;
}

constexpr std::uint32_t kAllPages = 0xFFFFFFFF;

}  // namespace

SmallHeap::Region& SmallHeap::regionOf(const void* place) noexcept {
    static_assert(kPages * kPageSize == kRegionSize);
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    return *reinterpret_cast<Region*>(address & ~(kRegionSize - 1));
}

SmallHeap::Page& SmallHeap::pageOf(const void* block) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    return regionOf(block).pages[(address & (kRegionSize - 1)) / kPageSize];
}

SmallHeap::Page* SmallHeap::openPage(std::size_t index) noexcept {
    Region* const region = withUnused_ ? withUnused_ : takeRegion();
    if (!region) return nullptr;
    const auto number = static_cast<std::size_t>(std::countr_zero(region->unused));
    region->unused &= region->unused - 1;
    if (region->unused == 0) unlink(withUnused_, *region);
    // The first page has the region's own data before its blocks.
    constexpr std::size_t kHead = (sizeof(Region) + 15) & ~std::size_t{15};
    static_assert(kHead + kLargest <= kPageSize);
    auto* const start = reinterpret_cast<std::byte*>(region) + number * kPageSize;
    Page& page = region->pages[number];
    page = Page();
    page.fresh = start + (number == 0 ? kHead : 0);
    page.end = start + kPageSize;
    page.blockSize = static_cast<std::uint32_t>(index * kGrain);
    forbidAccess(page.fresh, static_cast<std::size_t>(page.end - page.fresh));
    open(page);
    return &page;
}

SmallHeap::Region* SmallHeap::takeRegion() noexcept {
    void* const memory = kiln::takeRegion();
    if (!memory) return nullptr;
    auto* const region = new (memory) Region;
    region->unused = kAllPages;
    beginReferences(region, kRegionSize);
    link(withUnused_, *region);
    ++regions_;
    return region;
}

void SmallHeap::open(Page& page) noexcept {
    link(open_[page.blockSize / kGrain], page);
}

void SmallHeap::close(Page& page) noexcept {
    unlink(open_[page.blockSize / kGrain], page);
}

/// Takes back a page without blocks, and its region when that has none either. One such region
/// stays, so that a piece that comes and goes does not take and return a region each time.
void SmallHeap::release(Page& page) noexcept {
    close(page);
    Region& region = regionOf(&page);
    if (region.unused == 0) link(withUnused_, region);
    region.unused |= 1U << (&page - region.pages.data());
    const bool isLastWithRoom = withUnused_ == &region && !region.next;
    if (region.unused != kAllPages || isLastWithRoom) return;
    unlink(withUnused_, region);
    allowAccess(&region, kRegionSize);
    endReferences(&region, kRegionSize);
    giveRegionBack(&region);
    --regions_;
}

}  // namespace kiln
