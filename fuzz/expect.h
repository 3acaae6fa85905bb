// How a fuzz target says that something is wrong.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run, so that the fuzzer keeps the input, unless `holds`.
inline void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}
