// Vector algebra for the viewport. World space is right-handed with z up.
#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>

namespace render {

/// A color as the screen's pixel buffer holds it: 0x00RRGGBB.
using Color = std::uint32_t;

template <typename T>
struct BasicVec3 {
    T x = 0, y = 0, z = 0;

    friend BasicVec3 operator+(BasicVec3 a, BasicVec3 b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend BasicVec3 operator-(BasicVec3 a, BasicVec3 b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend BasicVec3 operator*(BasicVec3 a, T s) { return {a.x * s, a.y * s, a.z * s}; }

    bool operator==(const BasicVec3&) const = default;

    /// Coordinate by coordinate, as light and colors are multiplied.
    friend BasicVec3 product(BasicVec3 a, BasicVec3 b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
    friend T dot(BasicVec3 a, BasicVec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
    friend BasicVec3 cross(BasicVec3 a, BasicVec3 b) {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
    friend T length(BasicVec3 a) { return std::sqrt(dot(a, a)); }
    /// The unit vector along `a`, or a zero vector when `a` has no direction.
    friend BasicVec3 normalised(BasicVec3 a) {
        const T size = length(a);
        return size > 0 ? a * (1 / size) : BasicVec3{};
    }
    /// True when every coordinate is a number that can be drawn.
    friend bool isFinite(BasicVec3 a) {
        return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
    }

    operator BasicVec3<double>() const requires std::same_as<T, float> { return {x, y, z}; }
};

/// Directions, and places near an origin that is understood.
using Vec3 = BasicVec3<float>;
/// Places in the world. A scene may stand on the earth's surface with its origin at the earth's
/// centre: in 32 bits its points would be half a unit apart.
using Vec3d = BasicVec3<double>;

inline Vec3 toFloat(Vec3d a) {
    return {static_cast<float>(a.x), static_cast<float>(a.y), static_cast<float>(a.z)};
}

/// Red, green and blue, 0 to 255.
inline Vec3 vec3Of(Color color) {
    return {static_cast<float>(color >> 16 & 0xFF), static_cast<float>(color >> 8 & 0xFF),
            static_cast<float>(color & 0xFF)};
}

/// An axis-aligned box; empty until a point is added.
struct Box {
    static constexpr double kMost = std::numeric_limits<double>::max();
    Vec3d min{kMost, kMost, kMost};
    Vec3d max{-kMost, -kMost, -kMost};

    bool operator==(const Box&) const = default;
    bool empty() const { return min.x > max.x; }

    void add(Vec3d p) {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }

    void include(const Box& other) {
        if (other.empty()) return;
        add(other.min);
        add(other.max);
    }

    bool contains(const Box& other) const {
        return min.x <= other.min.x && min.y <= other.min.y && min.z <= other.min.z &&
               max.x >= other.max.x && max.y >= other.max.y && max.z >= other.max.z;
    }
    /// Whether a point, or another box, that lies within may be what it ends with somewhere.
    bool isAtRim(Vec3d p) const {
        return p.x <= min.x || p.y <= min.y || p.z <= min.z || p.x >= max.x || p.y >= max.y ||
               p.z >= max.z;
    }
    bool isAtRim(const Box& other) const { return isAtRim(other.min) || isAtRim(other.max); }

    Vec3d centre() const { return min * 0.5 + max * 0.5; }

    /// Corner number 0 to 7: bits 0, 1 and 2 choose the maximum of x, y and z.
    Vec3d corner(unsigned index) const {
        return {index & 1 ? max.x : min.x, index & 2 ? max.y : min.y, index & 4 ? max.z : min.z};
    }
};

}  // namespace render
