// Time and repaints of a piece of work on a window.
#pragma once

#include <framework/win32.h>

#include <functional>
#include <limits>
#include <map>

namespace bench {

struct Cost {
    double milliseconds = std::numeric_limits<double>::infinity();
    int paints = 0;

    /// Keeps the faster of two runs.
    void keepBest(const Cost& other);
};

/// Counts what a window of this process paints.
class PaintCounter {
public:
    explicit PaintCounter(HWND window);
    ~PaintCounter();
    PaintCounter(const PaintCounter&) = delete;
    PaintCounter& operator=(const PaintCounter&) = delete;

    /// Runs the work and all that it leaves to be painted. What was pending before is done first.
    Cost measure(const std::function<void()>& work);

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    // Not the common controls' own way of listening, which makes every message much slower.
    static inline std::map<HWND, PaintCounter*> counters_;
    HWND window_;
    WNDPROC former_;
    int paints_ = 0;
};

}  // namespace bench
