#include "measure.h"

#include <input.h>

#include <commctrl.h>

#include <chrono>

namespace bench {

void Cost::keepBest(const Cost& other) {
    if (other.milliseconds < milliseconds) *this = other;
}

PaintCounter::PaintCounter(HWND window)
    : window_(window), former_(reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC))) {
    counters_[window] = this;
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure));
}

PaintCounter::~PaintCounter() {
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(former_));
    counters_.erase(window_);
}

Cost PaintCounter::measure(const std::function<void()>& work) {
    using Clock = std::chrono::steady_clock;
    testinput::pump();
    paints_ = 0;
    const Clock::time_point start = Clock::now();
    work();
    testinput::pump();
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    return {elapsed.count(), paints_};
}

LRESULT CALLBACK PaintCounter::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    PaintCounter& counter = *counters_.at(window);
    if (message == WM_PAINT) ++counter.paints_;
    return CallWindowProcW(counter.former_, window, message, wParam, lParam);
}

}  // namespace bench
