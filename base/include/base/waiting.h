// What threads wait for each other with.
#pragma once

#include <mutex>

#ifdef _WIN32
#include <windows.h>
#else
#include <condition_variable>
#endif

namespace base {

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

}  // namespace base
