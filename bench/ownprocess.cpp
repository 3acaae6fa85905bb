#include "ownprocess.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

double now() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double presentBytes() {
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    long pages = 0, resident = 0;
    const bool isRead = file != nullptr && std::fscanf(file, "%ld %ld", &pages, &resident) == 2;
    if (file != nullptr) std::fclose(file);
    if (!isRead) fail("the memory of the process is not known");
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace

void fail(const char* what) {
    std::fprintf(stderr, "bench: %s\n", what);
    std::_Exit(1);
}

Clock::Clock() : start_(now()) {}

Measure Clock::measured() const {
    const double seconds = now() - start_;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return {seconds, static_cast<double>(usage.ru_maxrss) * 1024, presentBytes()};
}

Measures inOwnProcess(const std::function<Measures()>& work) {
    int ends[2];
    if (pipe(ends) != 0) fail("no pipe");
    const pid_t child = fork();
    if (child < 0) fail("no process");
    if (child == 0) {
        const Measures measures = work();
        const bool sent = write(ends[1], &measures, sizeof measures) == sizeof measures;
        std::_Exit(sent ? 0 : 1);
    }
    close(ends[1]);
    Measures measures;
    const bool received = read(ends[0], &measures, sizeof measures) == sizeof measures;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!received || status != 0) fail("a run failed");
    return measures;
}

void warmMemory() {
    inOwnProcess([] {
        constexpr std::size_t kEnough = std::size_t{600} << 20, kPage = 4096;
        for (const int advice : {MADV_NOHUGEPAGE, MADV_HUGEPAGE}) {
            void* const memory =
                mmap(nullptr, kEnough, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (memory == MAP_FAILED) fail("no memory");
            madvise(memory, kEnough, advice);
            for (std::size_t i = 0; i < kEnough; i += kPage) static_cast<char*>(memory)[i] = 1;
        }
        return Measures();
    });
}

Measures fastest(const std::vector<Measures>& runs) {
    Measures result;
    for (std::size_t way = 0; way < result.size(); ++way) {
        result[way] = std::ranges::min(
            runs, {}, [way](const Measures& run) { return run[way].seconds; })[way];
    }
    return result;
}

}  // namespace bench
