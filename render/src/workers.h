// Threads that share the jobs of a frame.
#pragma once

#include <base/waiting.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace render {

/// Threads are started when they are first needed, and wait in between.
class Workers {
public:
    Workers() = default;
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Calls `job` with each number below `jobs`, by as many threads as `threads` says, the
    /// caller's among them, and returns when all are done. Where threads cannot be started fewer do
    /// it. What a job throws ends no other job, and is thrown here.
    void run(std::size_t threads, std::size_t jobs, const std::function<void(std::size_t)>& job);

private:
    void work();
    void takeJobs(std::unique_lock<base::Mutex>& lock);

    base::Mutex mutex_;
    base::Condition begun_;
    base::Condition ended_;
    const std::function<void(std::size_t)>* job_ = nullptr;
    std::size_t next_ = 0, jobs_ = 0, left_ = 0, wanted_ = 0;
    bool isEnding_ = false;
    std::exception_ptr failure_;
    std::vector<std::jthread> threads_;  // the last: they use the others
};

}  // namespace render
