#include "countingheap.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t allocations = 0;

void* counted(std::size_t size) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

std::size_t heapAllocations() {
    return allocations;
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
