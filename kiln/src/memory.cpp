#include <kiln/host/diagnostics.h>
#include <kiln/memory.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <thread>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include "counted.h"
#include "sanitizer.h"
#include "smallheap.h"

namespace kiln {

namespace {

constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

constinit SmallHeap smallHeap;
// The address sanitizer sees more of blocks that are the system's.
bool usesSmallHeap = !kHasAddressSanitizer;
std::size_t liveBlocks = 0;
std::atomic_flag busy;  // the heap and the count; for so short that waiting by turning is best
std::atomic<std::size_t> allowedAllocations{kUnlimited};

/// Whether this is certainly the only thread of the process.
bool isAlone() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

class HeapLock {
public:
    HeapLock() noexcept : needed_(!isAlone()) {
        while (needed_ && busy.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    }
    ~HeapLock() {
        if (needed_) busy.clear(std::memory_order_release);
    }
    HeapLock(const HeapLock&) = delete;
    HeapLock& operator=(const HeapLock&) = delete;

private:
    const bool needed_;
};

bool isSmall(std::size_t size) noexcept {
    return usesSmallHeap && size <= SmallHeap::kLargest;
}

bool takeAllowance() noexcept {
    std::size_t left = allowedAllocations.load(std::memory_order_relaxed);
    while (left != kUnlimited) {
        if (left == 0) return false;
        if (allowedAllocations.compare_exchange_weak(left, left - 1)) break;
    }
    return true;
}

void* allocate(std::size_t size, bool counted) noexcept {
    const bool small = isSmall(size);
    void* block = small ? nullptr : std::malloc(size);
    if (!small && !counted) return block;
    const HeapLock lock;
    if (small) block = smallHeap.allocate(size);
    if (counted && block) ++liveBlocks;
    return block;
}

void deallocate(void* block, std::size_t size, bool counted) noexcept {
    const bool small = isSmall(size);
    if (!small) std::free(block);
    if (!small && !counted) return;
    const HeapLock lock;
    if (small) smallHeap.free(block);
    if (counted) --liveBlocks;
}

}  // namespace

void* allocateCounted(std::size_t size) noexcept {
    return takeAllowance() ? allocate(size, true) : nullptr;
}

void deallocateCounted(void* block, std::size_t size) noexcept {
    deallocate(block, size, true);
}

}  // namespace kiln

namespace {

// Stands before every block, so that a block of another allocator, or one freed already, is noticed
// at the call that is wrong instead of in a heap that falls apart later.
struct alignas(std::max_align_t) BlockHeader {
    std::uint64_t mark;
    std::uint64_t size;  // of the block and this together
};

constexpr std::uint64_t kLive = 0x6B696C6E2D6C6976;
constexpr std::uint64_t kFreed = 0x6B696C6E2D646561;

BlockHeader* headerOf(void* block) noexcept {
    BlockHeader* const header = static_cast<BlockHeader*>(block) - 1;
    if (header->mark != kLive) {
        std::fputs("kiln: a block was given back that the host allocator does not have\n", stderr);
        std::abort();
    }
    return header;
}

/// The size of a block with its header, in steps that keep the header aligned; 0 when there is no
/// such size. A block of no bytes has a step too: a pointer to the end of the memory would belong
/// to what lies behind it, and the sanitizer would take the memory for leaked.
std::size_t wholeSize(std::size_t size) noexcept {
    constexpr std::size_t kStep = sizeof(BlockHeader);
    if (size > kiln::kUnlimited - 2 * kStep) return 0;
    return (std::max(size, std::size_t{1}) + kStep - 1) / kStep * kStep + kStep;
}

}  // namespace

void* KILN_malloc(std::size_t size) noexcept {
    const std::size_t whole = wholeSize(size);
    if (whole == 0) return nullptr;
    void* const memory = kiln::allocateCounted(whole);
    if (!memory) return nullptr;
    return new (memory) BlockHeader{kLive, whole} + 1;
}

void* KILN_realloc(void* block, std::size_t size) noexcept {
    if (!block) return KILN_malloc(size);
    const std::size_t before = headerOf(block)->size - sizeof(BlockHeader);
    void* const moved = KILN_malloc(size);
    if (!moved) return nullptr;
    std::memcpy(moved, block, std::min(before, size));
    KILN_free(block);
    return moved;
}

void KILN_free(void* block) noexcept {
    if (!block) return;
    BlockHeader* const header = headerOf(block);
    header->mark = kFreed;
    kiln::deallocateCounted(header, header->size);
}

void* KILN_newPiece(std::size_t size) {
    void* const piece = kiln::allocate(size, false);
    if (!piece) throw std::bad_alloc();
    return piece;
}

void KILN_deletePiece(void* piece, std::size_t size) noexcept {
    if (piece) kiln::deallocate(piece, size, false);
}

char* KILN_strdup(const char* text) noexcept {
    if (!text) text = "";
    const std::size_t size = std::strlen(text) + 1;
    auto* const copy = static_cast<char*>(KILN_malloc(size));
    if (copy) std::memcpy(copy, text, size);
    return copy;
}

namespace kiln {

void useSmallHeap(bool use) noexcept {
    usesSmallHeap = use;
}

std::size_t allocatedBlocks() noexcept {
    const HeapLock lock;
    return liveBlocks;
}

AllocationLimit::AllocationLimit(std::size_t count) noexcept {
    allowedAllocations = count;
}
AllocationLimit::~AllocationLimit() {
    allowedAllocations = kUnlimited;
}

}  // namespace kiln
