// Doubles as 32-bit floats.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

/// `value` as a 32-bit float. A finite value beyond the range of floats becomes the largest of its
/// sign, never infinite; infinities and what is no number stay what they are.
inline float fltNarrow(double value) noexcept {
    constexpr double kLargest = std::numeric_limits<float>::max();
    if (std::isfinite(value)) value = std::clamp(value, -kLargest, kLargest);
    return static_cast<float>(value);
}
