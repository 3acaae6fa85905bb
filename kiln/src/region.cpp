#include "region.h"

#include <cstdint>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace kiln {

namespace {

std::uintptr_t roundedUp(void* address) noexcept {
    return (reinterpret_cast<std::uintptr_t>(address) + kRegionSize - 1) & ~(kRegionSize - 1);
}

}  // namespace

#ifdef _WIN32

void* takeRegion() noexcept {
    // There is no way to ask for the alignment: look for a place, then take it, unless another
    // thread was quicker.
    for (int attempt = 0; attempt < 8; ++attempt) {
        void* const room = VirtualAlloc(nullptr, 2 * kRegionSize, MEM_RESERVE, PAGE_NOACCESS);
        if (!room) return nullptr;
        VirtualFree(room, 0, MEM_RELEASE);
        void* const region = VirtualAlloc(reinterpret_cast<void*>(roundedUp(room)), kRegionSize,
                                          MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
        if (region) return region;
    }
    return nullptr;
}

void giveRegionBack(void* region) noexcept {
    VirtualFree(region, 0, MEM_RELEASE);
}

#else

void* takeRegion() noexcept {
    const auto map = [](std::size_t size) {
        void* const room =
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return room == MAP_FAILED ? nullptr : static_cast<std::byte*>(room);
    };
    // The place next to the region before fits, so this is the usual case.
    std::byte* room = map(kRegionSize);
    if (room && roundedUp(room) != reinterpret_cast<std::uintptr_t>(room)) {
        munmap(room, kRegionSize);
        room = map(2 * kRegionSize);
        if (!room) return nullptr;
        const std::size_t before = roundedUp(room) - reinterpret_cast<std::uintptr_t>(room);
        if (before > 0) munmap(room, before);
        room += before;
        munmap(room + kRegionSize, kRegionSize - before);
    }
#ifdef MADV_HUGEPAGE
    if (room) madvise(room, kRegionSize, MADV_HUGEPAGE);
#endif
    return room;
}

void giveRegionBack(void* region) noexcept {
    munmap(region, kRegionSize);
}

#endif

}  // namespace kiln
