// Processes that work for this one.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kilnbatch {

/// What became of one task.
struct Ended {
    enum class How {
        kAnswered,
        kCrashed,     ///< its process ended without an answer: `reason` says how
        kTookTime,    ///< more than the limit
        kTookMemory,  ///< more than the limit
    };
    How how = How::kAnswered;
    std::string answer;
    std::string reason;
    double seconds = 0;
    std::uint64_t peakBytes = 0;  ///< the most memory that its process had
};

/// Limits of one task; 0 for none.
struct TaskLimits {
    double seconds = 0;
    std::uint64_t bytes = 0;
};

/// Does tasks in copies of this process, one for each, some at the same time: whatever a task does
/// to its process, the other tasks and this one go on, and what one task leaves behind no other one
/// sees. This process has a single thread while it does.
class Workers {
public:
    struct Task {
        std::string name;
        unsigned place = 0;  ///< from 0 on; tasks that run at the same time have different ones
    };

    /// The next task; false when there is none.
    using Next = std::function<bool(Task&)>;
    /// Does a task, in the copy; what it returns is the answer.
    using Work = std::function<std::string(const Task&)>;
    /// Hears in this process what became of a task.
    using Report = std::function<void(const Task&, const Ended&)>;
    /// Asked several times a second; true has no task begin any more and sends those that run the
    /// signal SIGINT, and after some seconds an end.
    using Pause = std::function<bool()>;

    /// At most `count` tasks at the same time.
    Workers(unsigned count, TaskLimits limits) : count_(count), limits_(limits) {}
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Does all tasks. Throws `std::system_error` when no process can be made.
    void run(const Next& next, const Work& work, const Report& report, const Pause& pause);

private:
    using Clock = std::chrono::steady_clock;

    struct Running {
        Task task;
        pid_t process = 0;
        int answer = -1;  ///< the pipe's end that is read
        Clock::time_point begun;
        Ended ended;
    };

    bool start(const Task& task, const Work& work);
    /// Reads what the process answers; true when it has ended.
    static bool readOn(Running& running);
    static void finish(Running& running);
    void enforceLimits(Running& running) const;
    unsigned freePlace() const;
    void stop();

    unsigned count_;
    TaskLimits limits_;
    std::vector<Running> running_;
    Clock::time_point stopped_{};
    bool isStopping_ = false;
};

}  // namespace kilnbatch
