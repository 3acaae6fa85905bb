// Doubles as 32-bit floats.
#pragma once

#include <cmath>
#include <limits>

/// `value` as a 32-bit float. A finite value beyond the range of floats becomes the largest of its
/// sign, never infinite; infinities and what is no number stay what they are.
inline float fltNarrow(double value) noexcept {
    constexpr float kLargest = std::numeric_limits<float>::max();
    if (std::abs(value) > double{kLargest} && !std::isinf(value)) [[unlikely]]
        return value < 0 ? -kLargest : kLargest;
    return static_cast<float>(value);
}
