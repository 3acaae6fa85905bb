#include <kiln/host/diagnostics.h>
#include <kiln/memory.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// Stands before every block, so that a block of another allocator, or one freed already, is noticed
// at the call that is wrong instead of in a heap that falls apart later.
struct alignas(std::max_align_t) BlockHeader {
    std::uint64_t mark;
};

constexpr std::uint64_t kLive = 0x6B696C6E2D6C6976;
constexpr std::uint64_t kFreed = 0x6B696C6E2D646561;
constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

std::atomic<std::size_t> liveBlocks{0};
std::atomic<std::size_t> allowedAllocations{kUnlimited};

bool takeAllowance() noexcept {
    std::size_t left = allowedAllocations.load();
    while (left != kUnlimited) {
        if (left == 0) return false;
        if (allowedAllocations.compare_exchange_weak(left, left - 1)) break;
    }
    return true;
}

BlockHeader* headerOf(void* block) noexcept {
    BlockHeader* const header = static_cast<BlockHeader*>(block) - 1;
    if (header->mark != kLive) {
        std::fputs("kiln: a block was given back that the host allocator does not have\n", stderr);
        std::abort();
    }
    return header;
}

bool tooLarge(std::size_t size) noexcept {
    return size > kUnlimited - sizeof(BlockHeader);
}

}  // namespace

void* KILN_malloc(std::size_t size) noexcept {
    if (tooLarge(size) || !takeAllowance()) return nullptr;
    auto* const header = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
    if (!header) return nullptr;
    header->mark = kLive;
    ++liveBlocks;
    return header + 1;
}

void* KILN_realloc(void* block, std::size_t size) noexcept {
    if (!block) return KILN_malloc(size);
    BlockHeader* const header = headerOf(block);
    if (tooLarge(size) || !takeAllowance()) return nullptr;
    auto* const moved = static_cast<BlockHeader*>(std::realloc(header, sizeof(BlockHeader) + size));
    return moved ? moved + 1 : nullptr;
}

void KILN_free(void* block) noexcept {
    if (!block) return;
    BlockHeader* const header = headerOf(block);
    header->mark = kFreed;
    --liveBlocks;
    std::free(header);
}

char* KILN_strdup(const char* text) noexcept {
    if (!text) text = "";
    const std::size_t size = std::strlen(text) + 1;
    auto* const copy = static_cast<char*>(KILN_malloc(size));
    if (copy) std::memcpy(copy, text, size);
    return copy;
}

namespace kiln {

std::size_t allocatedBlocks() noexcept {
    return liveBlocks;
}

AllocationLimit::AllocationLimit(std::size_t count) noexcept {
    allowedAllocations = count;
}
AllocationLimit::~AllocationLimit() {
    allowedAllocations = kUnlimited;
}

}  // namespace kiln
