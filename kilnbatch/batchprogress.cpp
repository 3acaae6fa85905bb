#include "batchprogress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kilnbatch {

namespace {

constexpr std::size_t kBarWidth = 24;
constexpr auto kBetween = std::chrono::milliseconds(200);

}  // namespace

std::string clockText(double seconds) {
    const auto all = static_cast<unsigned long long>(std::llround(std::max(0.0, seconds)));
    char text[40];
    if (all < 3600)
        std::snprintf(text, sizeof text, "%llu:%02llu", all / 60, all % 60);
    else
        std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", all / 3600, all / 60 % 60, all % 60);
    return text;
}

BatchProgress::BatchProgress(std::size_t files)
    : files_(files),
      hasTerminal_(::isatty(STDERR_FILENO) != 0),
      outputIsTerminal_(::isatty(STDOUT_FILENO) != 0) {}

BatchProgress::~BatchProgress() {
    clear();
}

void BatchProgress::done(const std::string& line, bool isFailure) {
    ++done_;
    if (isFailure) ++failures_;
    if (isFailure || !(hasTerminal_ && outputIsTerminal_)) {
        clear();
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    }
    refresh();
}

void BatchProgress::refresh() {
    if (hasTerminal_ && (!isShown_ || Clock::now() - drawn_ >= kBetween)) draw();
}

void BatchProgress::clear() {
    if (isShown_) std::fputs("\r\033[K", stderr);
    isShown_ = false;
}

void BatchProgress::draw() {
    drawn_ = Clock::now();
    isShown_ = true;
    const double seconds = std::chrono::duration<double>(drawn_ - begun_).count();
    const double rate = seconds > 0 ? static_cast<double>(done_) / seconds : 0;
    const std::size_t full = files_ > 0 ? kBarWidth * done_ / files_ : kBarWidth;
    const std::string bar = std::string(full, '#') + std::string(kBarWidth - full, '.');
    const std::string left =
        rate > 0 ? clockText(static_cast<double>(files_ - std::min(files_, done_)) / rate) : "?";
    std::fprintf(stderr, "\r[%s] %zu of %zu, %.1f a second, %zu failed, %s left\033[K", bar.c_str(),
                 done_, files_, rate, failures_, left.c_str());
    std::fflush(stderr);
}

}  // namespace kilnbatch
