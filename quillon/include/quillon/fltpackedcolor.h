// Colors.
#pragma once

#include <cstdint>

/// Packed color, in the byte order of the file.
struct FltPackedColor {
    std::uint8_t alpha = 0;
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;

    /// Each component is its argument's low byte, so -1 is the full value.
    static constexpr FltPackedColor fromComponents(int red, int green, int blue,
                                                   int alpha) noexcept {
        return {static_cast<std::uint8_t>(alpha), static_cast<std::uint8_t>(blue),
                static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(red)};
    }

    friend constexpr bool operator==(const FltPackedColor&, const FltPackedColor&) = default;
};

/// A color with components from 0 to 1.
struct FltColor3f {
    float red = 0;
    float green = 0;
    float blue = 0;

    friend constexpr bool operator==(const FltColor3f&, const FltColor3f&) = default;
};
