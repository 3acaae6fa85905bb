// How much of the heap a piece of work takes, for programs that link heapmeter.cpp.
#pragma once

#include <cstddef>

/// Measures from its making on. One at a time; the program has one thread.
class HeapMeter {
public:
    HeapMeter();
    /// The most bytes that were taken with `new` at one time, beyond those at the beginning.
    std::size_t peak() const;

private:
    std::size_t before_;
};
