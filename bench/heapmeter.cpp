#include "heapmeter.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t taken = 0;
std::size_t mostTaken = 0;

}  // namespace

HeapMeter::HeapMeter() : before_(taken) {
    mostTaken = taken;
}

std::size_t HeapMeter::peak() const {
    return mostTaken - before_;
}

void* operator new(std::size_t size) {
    void* const block = std::malloc(std::max<std::size_t>(size, 1));
    if (!block) throw std::bad_alloc();
    taken += malloc_usable_size(block);
    mostTaken = std::max(mostTaken, taken);
    return block;
}

void operator delete(void* block) noexcept {
    if (block) taken -= malloc_usable_size(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
