#include "progress.h"

#include <cstdio>
#include <limits>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace fltool {

namespace {

constexpr std::size_t kLargeFile = 50'000'000;
constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

bool isTerminal(std::FILE* file) {
#ifdef _WIN32
    return _isatty(_fileno(file)) != 0;
#else
    return isatty(fileno(file)) != 0;
#endif
}

}  // namespace

Progress::Progress(std::size_t size, bool quietOnTerminal) : size_(size), next_(kNever) {
    if (size > kLargeFile && isTerminal(stderr) && !(quietOnTerminal && isTerminal(stdout)))
        next_ = 0;
}

Progress::~Progress() {
    if (shown_) std::fputs("\r                    \r", stderr);
}

void Progress::show(std::size_t offset) {
    const std::size_t step = size_ / 100;
    std::fprintf(stderr, "\rfltool: %3zu %%", offset / step);
    std::fflush(stderr);
    shown_ = true;
    next_ = offset + step;
}

}  // namespace fltool
