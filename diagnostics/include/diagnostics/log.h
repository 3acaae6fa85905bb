// The append-only diagnostic log and the guards that feed it.
#pragma once

#include <diagnostics/assertion.h>

#include <exception>
#include <utility>

namespace diagnostics {

/// Appends printf-style text to the log and returns the number of characters written.
///
/// The log is "\Aviary.log" on the drive named by the environment variable "SystemDrive" (the root
/// of the current drive when it is not set). It is opened for appending and closed again on every
/// call. When it cannot be opened nothing is written and the result is 0.
[[gnu::format(printf, 1, 2)]] int log(const char* format, ...) noexcept;

/// Logs the exception being handled, as every guarded entry point does: an `AviaryAssertion` with
/// its own source and line, anything else with `sourceFile` and `guardLine`.
/// Must be called from within a catch block.
void logCurrentException(const char* sourceFile, int guardLine) noexcept;

/// Tells the guarded entry point that is running of the exception being handled. Whoever turns an
/// exception into a plain failure, as the readers of node data do, says so here: the entry point
/// goes on, and yet its log names what was met. Outside of guarded entry points nothing happens.
/// Must be called from within a catch block.
void noteCurrentException() noexcept;

/// What became of one run of a guarded entry point: remembers the first failure that was noted
/// while it ran. Guards nest, as entry points call each other; they live on the user-interface
/// thread alone.
class Guard {
public:
    /// `logsItself`: writes what it was told of by itself, whatever it runs inside of.
    explicit Guard(bool logsItself = false) noexcept
        : outer_(std::exchange(innermost_, this)), logsItself_(logsItself) {}
    ~Guard() { innermost_ = outer_; }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    /// Whether a failure was noted. It makes one line of the log, and unless this guard logs by
    /// itself that line is the outermost entry point's: what the host called is what failed.
    bool reportNoted(const char* sourceFile, int guardLine) noexcept;

private:
    friend void noteCurrentException() noexcept;

    static inline Guard* innermost_ = nullptr;

    Guard* outer_;
    bool logsItself_;
    std::exception_ptr noted_;
};

/// Runs `body` and returns its result. When it throws, or when a failure below it was noted, logs
/// one line and returns `failure` instead; nothing leaves this function by exception. `logsItself`
/// is for a step within an entry point that has a line of its own.
template <typename Body, typename Result>
Result guarded(const char* sourceFile, int guardLine, Result failure, Body&& body,
               bool logsItself = false) noexcept {
    Guard guard(logsItself);
    try {
        const Result result = std::forward<Body>(body)();
        return guard.reportNoted(sourceFile, guardLine) ? failure : result;
    } catch (...) {
        logCurrentException(sourceFile, guardLine);
        return failure;
    }
}

}  // namespace diagnostics
