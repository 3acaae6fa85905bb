#include "workers.h"

#include <system_error>
#include <utility>

namespace render {

Workers::~Workers() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    begun_.notify_all();
}

void Workers::run(std::size_t threads, std::size_t jobs,
                  const std::function<void(std::size_t)>& job) {
    try {
        while (threads_.size() + 1 < threads && threads_.size() + 1 < jobs)
            threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // The system has no more threads.
    }
    std::unique_lock lock(mutex_);
    job_ = &job;
    next_ = 0;
    jobs_ = left_ = jobs;
    wanted_ = threads > 1 ? threads - 1 : 0;
    failure_ = nullptr;
    if (wanted_ > 0) begun_.notify_all();
    takeJobs(lock);
    ended_.wait(lock, [&] { return left_ == 0; });
    job_ = nullptr;
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void Workers::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        begun_.wait(lock, [&] { return isEnding_ || (wanted_ > 0 && next_ < jobs_); });
        if (isEnding_) return;
        --wanted_;
        takeJobs(lock);
    }
}

void Workers::takeJobs(std::unique_lock<base::Mutex>& lock) {
    while (next_ < jobs_) {
        const std::size_t mine = next_++;
        lock.unlock();
        std::exception_ptr failure;
        try {
            (*job_)(mine);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        if (failure && !failure_) failure_ = failure;
        if (--left_ == 0) ended_.notify_all();
    }
}

}  // namespace render
