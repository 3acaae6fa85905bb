#include "workers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace kilnbatch {

namespace {

constexpr double kPatience = 5;         // of seconds with tasks that are to stop
constexpr int kLookMilliseconds = 100;  // between two looks at the time and the user
constexpr int kWatchMilliseconds = 10;  // between two looks at the memory of tasks

/// Writes all of it; false when nobody reads.
bool writeAll(int file, const std::string& bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t count = ::write(file, bytes.data() + at, bytes.size() - at);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        at += static_cast<std::size_t>(count);
    }
    return true;
}

/// Does the work and ends the process, without what an orderly end does for the one it is a copy
/// of.
[[noreturn]] void workAndExit(const Workers::Work& work, const Workers::Task& task, int answer) {
    int status = EXIT_FAILURE;
    try {
        if (writeAll(answer, work(task))) status = EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kilnbatch: %s: %s\n", task.name.c_str(), error.what());
    }
    ::_exit(status);
}

/// What the process has in memory, in bytes; 0 when it has gone.
std::uint64_t memoryOf(pid_t process) {
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/statm", static_cast<int>(process));
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return 0;
    char text[128] = {};
    const ssize_t count = ::read(file, text, sizeof text - 1);
    ::close(file);
    unsigned long long all = 0, resident = 0;
    if (count <= 0 || std::sscanf(text, "%llu %llu", &all, &resident) != 2) return 0;
    return resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

double secondsSince(std::chrono::steady_clock::time_point begun) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

}  // namespace

Workers::~Workers() {
    for (Running& running : running_) {
        ::kill(running.process, SIGKILL);
        finish(running);
    }
}

bool Workers::start(const Task& task, const Work& work) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    std::fflush(nullptr);  // or both processes would write what is pending
    const pid_t process = ::fork();
    if (process == 0) {
        ::close(ends[0]);
        for (const Running& other : running_) ::close(other.answer);
        workAndExit(work, task, ends[1]);
    }
    const int error = errno;
    ::close(ends[1]);
    if (process < 0) {
        ::close(ends[0]);
        errno = error;
        return false;
    }
    Running running;
    running.task = task;
    running.process = process;
    running.answer = ends[0];
    running.begun = Clock::now();
    running_.push_back(std::move(running));
    return true;
}

bool Workers::readOn(Running& running) {
    char buffer[1 << 16];
    const ssize_t count = ::read(running.answer, buffer, sizeof buffer);
    if (count < 0) return errno != EINTR && errno != EAGAIN;
    running.ended.answer.append(buffer, static_cast<std::size_t>(count));
    return count == 0;
}

void Workers::finish(Running& running) {
    ::close(running.answer);
    int status = 0;
    rusage used{};
    while (::wait4(running.process, &status, 0, &used) < 0 && errno == EINTR) {
    }
    Ended& ended = running.ended;
    ended.seconds = secondsSince(running.begun);
    ended.peakBytes = static_cast<std::uint64_t>(used.ru_maxrss) * 1024;
    if (ended.how != Ended::How::kAnswered || (WIFEXITED(status) && WEXITSTATUS(status) == 0))
        return;
    ended.how = Ended::How::kCrashed;
    if (WIFSIGNALED(status))
        ended.reason =
            "signal " + std::to_string(WTERMSIG(status)) + ", " + ::strsignal(WTERMSIG(status));
    else
        ended.reason = "exit status " + std::to_string(WEXITSTATUS(status));
}

void Workers::enforceLimits(Running& running) const {
    Ended& ended = running.ended;
    if (ended.how != Ended::How::kAnswered) return;
    if ((limits_.seconds > 0 && secondsSince(running.begun) > limits_.seconds) ||
        (isStopping_ && secondsSince(stopped_) > kPatience))
        ended.how = Ended::How::kTookTime;
    else if (limits_.bytes > 0 && memoryOf(running.process) > limits_.bytes)
        ended.how = Ended::How::kTookMemory;
    if (ended.how != Ended::How::kAnswered) ::kill(running.process, SIGKILL);
}

unsigned Workers::freePlace() const {
    unsigned place = 0;
    const auto isTaken = [&](const Running& running) { return running.task.place == place; };
    while (std::ranges::any_of(running_, isTaken)) ++place;
    return place;
}

void Workers::stop() {
    if (isStopping_) return;
    isStopping_ = true;
    stopped_ = Clock::now();
    for (const Running& running : running_) ::kill(running.process, SIGINT);
}

void Workers::run(const Next& next, const Work& work, const Report& report, const Pause& pause) {
    bool isMore = true;
    std::vector<Running> ended;
    std::vector<pollfd> waiting;
    while (true) {
        if (pause()) stop();
        while (isMore && !isStopping_ && running_.size() < count_) {
            Task task;
            isMore = next(task);
            if (!isMore) break;
            task.place = freePlace();
            if (!start(task, work))
                throw std::system_error(errno, std::generic_category(), "no process can be made");
        }
        // While the next ones work already.
        for (const Running& done : ended) report(done.task, done.ended);
        ended.clear();
        if (running_.empty()) return;
        waiting.clear();
        for (const Running& running : running_) waiting.push_back({running.answer, POLLIN, 0});
        ::poll(waiting.data(), waiting.size(),
               limits_.bytes > 0 ? kWatchMilliseconds : kLookMilliseconds);
        for (std::size_t i = waiting.size(); i-- > 0;) {
            Running& running = running_[i];
            enforceLimits(running);
            if (waiting[i].revents == 0 || !readOn(running)) continue;
            ended.push_back(std::move(running));
            running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(i));
            finish(ended.back());
        }
    }
}

}  // namespace kilnbatch
