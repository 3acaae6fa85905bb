#include "countingheap.h"

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kNever = static_cast<std::size_t>(-1);

std::size_t allocations = 0;
std::size_t failing = kNever;  // the number of the one that fails

void* counted(std::size_t size) noexcept {
    if (allocations++ == failing) return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

std::size_t heapAllocations() {
    return allocations;
}

void failAllocationAfter(std::size_t count) {
    failing = allocations + count;
}

bool endAllocationFailure() {
    const bool failed = allocations > failing;
    failing = kNever;
    return failed;
}

void* operator new(std::size_t size) {
    if (void* block = counted(size)) return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    if (void* block = counted(size)) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return counted(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return counted(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
