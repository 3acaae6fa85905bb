// Threads that share the jobs of a frame.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

namespace render {

#ifdef _WIN32

// The platform's own: the compiler's library makes a condition of several objects there, and under
// Wine a thread was at times not woken.
class Mutex {
public:
    void lock() noexcept { ::AcquireSRWLockExclusive(&lock_); }
    void unlock() noexcept { ::ReleaseSRWLockExclusive(&lock_); }

private:
    friend class Condition;
    SRWLOCK lock_ = SRWLOCK_INIT;
};

class Condition {
public:
    template <typename Predicate>
    void wait(std::unique_lock<Mutex>& lock, Predicate holds) {
        while (!holds())
            ::SleepConditionVariableSRW(&condition_, &lock.mutex()->lock_, INFINITE, 0);
    }
    void notify_all() noexcept { ::WakeAllConditionVariable(&condition_); }

private:
    CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
};

#else

using Mutex = std::mutex;
using Condition = std::condition_variable;

#endif

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
    void takeJobs(std::unique_lock<Mutex>& lock);

    Mutex mutex_;
    Condition begun_;
    Condition ended_;
    const std::function<void(std::size_t)>* job_ = nullptr;
    std::size_t next_ = 0, jobs_ = 0, left_ = 0, wanted_ = 0;
    bool isEnding_ = false;
    std::exception_ptr failure_;
    std::vector<std::jthread> threads_;  // the last: they use the others
};

}  // namespace render
