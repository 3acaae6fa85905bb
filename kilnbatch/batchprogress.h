// What a user sees of a batch while it runs.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace kilnbatch {

/// Lines on the standard output, one for each file, and beneath them, while the error output is a
/// terminal, a bar on it with rate, failures and the time that is left.
class BatchProgress {
public:
    explicit BatchProgress(std::size_t files);
    ~BatchProgress();
    BatchProgress(const BatchProgress&) = delete;
    BatchProgress& operator=(const BatchProgress&) = delete;

    /// A file has been done. `line`, if any, is shown where lines of that kind are: on a terminal
    /// only those of failures.
    void done(const std::string& line, bool isFailure);
    /// Draws the bar anew, several times a second at most.
    void refresh();

private:
    using Clock = std::chrono::steady_clock;
    void clear();
    void draw();

    std::size_t files_;
    std::size_t done_ = 0;
    std::size_t failures_ = 0;
    Clock::time_point begun_ = Clock::now();
    Clock::time_point drawn_{};
    bool hasTerminal_;
    bool outputIsTerminal_;
    bool isShown_ = false;
};

/// "2:05", or "1:02:05".
std::string clockText(double seconds);

}  // namespace kilnbatch
