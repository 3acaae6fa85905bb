#pragma once

#include <cstdint>

namespace draw {

// Straight (not premultiplied) color, each part from 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};

// From 0xRRGGBB.
constexpr Color rgb(std::uint32_t value, double alpha = 1) {
    return {((value >> 16) & 0xFF) / 255.0, ((value >> 8) & 0xFF) / 255.0, (value & 0xFF) / 255.0,
            alpha};
}

// `share` 0 is `from`, 1 is `to`.
constexpr Color mix(Color from, Color to, double share) {
    const auto part = [share](double a, double b) { return a + (b - a) * share; };
    return {part(from.red, to.red), part(from.green, to.green), part(from.blue, to.blue),
            part(from.alpha, to.alpha)};
}

// One family of colors, so that all pictures look made by one hand: a deep tone for outlines, the
// tone itself, and a light one for surfaces.
struct Tone {
    Color deep;
    Color plain;
    Color light;
};

constexpr Tone kBlue{rgb(0x17487F), rgb(0x2F78C4), rgb(0xA6CEF3)};
constexpr Tone kGreen{rgb(0x1E5E2E), rgb(0x3F9F51), rgb(0xB4E0AE)};
constexpr Tone kAmber{rgb(0x8A5A08), rgb(0xE5A01C), rgb(0xFBDC7E)};
constexpr Tone kRed{rgb(0x8A211B), rgb(0xCF4438), rgb(0xF2B3A9)};
constexpr Tone kPurple{rgb(0x4C2E86), rgb(0x8059BC), rgb(0xD0BCEC)};
constexpr Tone kTeal{rgb(0x0F5A5C), rgb(0x219494), rgb(0x94DAD4)};
constexpr Tone kGrey{rgb(0x474E59), rgb(0x858D99), rgb(0xC3C8D0)};

}  // namespace draw
