// The append-only diagnostic log and the guards that feed it.
#pragma once

#include <diagnostics/assertion.h>

#include <utility>

namespace diagnostics {

/// Appends printf-style text to the log and gives the number of characters written.
///
/// The log is "\Aviary.log" on the drive named by the environment variable "SystemDrive" (the root
/// of the current drive when it is not set). It is opened for appending and closed again on every
/// call. When it cannot be opened nothing is written and the result is 0.
[[gnu::format(printf, 1, 2)]] int log(const char* format, ...) noexcept;

/// Logs the exception being handled, as every guarded entry point does: an `AviaryAssertion` with
/// its own source and line, anything else with `sourceFile` and `guardLine`.
/// Must be called from within a catch block.
void logCurrentException(const char* sourceFile, int guardLine) noexcept;

/// Runs `body` and gives its result. When it throws, logs one line and gives `failure` instead;
/// nothing leaves this function by exception.
template <typename Body, typename Result>
Result guarded(const char* sourceFile, int guardLine, Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        logCurrentException(sourceFile, guardLine);
        return failure;
    }
}

}  // namespace diagnostics
