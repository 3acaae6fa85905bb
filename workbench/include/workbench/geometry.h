// The little vector algebra that the viewport needs. World space is right-handed with z up.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace workbench {

/// A colour as the screen's pixel buffer holds it: 0x00RRGGBB.
using Colour = std::uint32_t;

struct Vec3 {
    float x = 0, y = 0, z = 0;

    friend Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec3 operator*(Vec3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
};

inline float dot(Vec3 a, Vec3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec3 cross(Vec3 a, Vec3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline float length(Vec3 a) {
    return std::sqrt(dot(a, a));
}

/// The unit vector along `a`, or a zero vector when `a` has no direction.
inline Vec3 normalised(Vec3 a) {
    const float size = length(a);
    return size > 0 ? a * (1 / size) : Vec3{};
}

/// True when every coordinate is a number that can be drawn.
inline bool isFinite(Vec3 a) {
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

/// An axis-aligned box; empty until a point is added.
struct Box {
    Vec3 min{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
             std::numeric_limits<float>::max()};
    Vec3 max{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest(),
             std::numeric_limits<float>::lowest()};

    bool empty() const { return min.x > max.x; }

    void add(Vec3 p) {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }

    void include(const Box& other) {
        if (other.empty()) return;
        add(other.min);
        add(other.max);
    }

    Vec3 centre() const { return (min + max) * 0.5f; }

    /// Corner number 0 to 7: bits 0, 1 and 2 choose the maximum of x, y and z.
    Vec3 corner(unsigned index) const {
        return {index & 1 ? max.x : min.x, index & 2 ? max.y : min.y, index & 4 ? max.z : min.z};
    }
};

}  // namespace workbench
