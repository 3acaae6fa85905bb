// Work that is measured in a process of its own, so that its peak memory is that of the work.
#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

namespace bench {

/// Ends the program, as a process of its own does, with a sentence on the standard error.
[[noreturn]] void fail(const char* what);

struct Measure {
    double seconds = 0;
    double peak = 0;     // bytes, of the whole process since it began
    double present = 0;  // bytes that the process has now
};

/// Processor time: waiting for others on a busy machine does not count.
class Clock {
public:
    Clock();
    Measure measured() const;

private:
    double start_;
};

/// The fastest runs of what takes turns, in milliseconds.
struct Fastest {
    double milliseconds = 1e9;

    template <typename Work>
    void run(Work&& work) {
        const Clock clock;
        work();
        milliseconds = std::min(milliseconds, 1000 * clock.measured().seconds);
    }
};

using Measures = std::array<Measure, 3>;  // the way in and the way out, or what a run says

/// Runs `work` in a process of its own.
Measures inOwnProcess(const std::function<Measures()>& work);

/// Has the system hold enough memory ready for a run, in large pages and in small ones. A virtual
/// machine may have given unused memory back to its host, and to get it again takes longer than all
/// that is measured here.
void warmMemory();

/// The fastest run, by way: others were held up by something else on the machine.
Measures fastest(const std::vector<Measures>& runs);

}  // namespace bench
