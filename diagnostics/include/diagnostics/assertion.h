// The one exception type for broken invariants.
#pragma once

#include <exception>

namespace diagnostics {

/// A broken invariant: which source found it and where.
///
/// Thrown by value, caught by reference at the module's boundaries, which log it and report plain
/// failure to the host. `file` is kept inside the object, so that an assertion outlives whatever
/// named the source.
struct AviaryAssertion : std::exception {
    /// Copies `sourceFile`, cut at 255 bytes, and stores `sourceLine`.
    AviaryAssertion(const char* sourceFile, int sourceLine) noexcept;

    const char* what() const noexcept override { return file; }

    char file[256];  ///< source name, NUL-terminated
    int line;        ///< source line
};

/// Throws an `AviaryAssertion` naming `sourceFile` and `sourceLine` unless `holds`.
///
/// The names and lines are part of what users send us in their logs, so they are written out at
/// each check instead of following the code around.
inline void check(bool holds, const char* sourceFile, int sourceLine) {
    if (!holds) [[unlikely]]
        throw AviaryAssertion(sourceFile, sourceLine);
}

}  // namespace diagnostics
