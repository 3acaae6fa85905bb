#pragma once

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace draw {

// A shape is anything that tells whether a point lies inside it. Units are pixels, y points down,
// and pixel (0, 0) covers the square from (0, 0) to (1, 1).

struct Point {
    double x = 0;
    double y = 0;
};

constexpr Point operator+(Point a, Point b) {
    return {a.x + b.x, a.y + b.y};
}
constexpr Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y};
}
constexpr Point operator*(Point a, double k) {
    return {a.x * k, a.y * k};
}
constexpr double dot(Point a, Point b) {
    return a.x * b.x + a.y * b.y;
}
inline double length(Point a) {
    return std::sqrt(dot(a, a));
}

struct Rect {
    double left, top, right, bottom;
    constexpr bool contains(Point p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    constexpr Rect inset(double by) const { return {left + by, top + by, right - by, bottom - by}; }
};

struct RoundedRect {
    Rect rect;
    double radius;
    bool contains(Point p) const {
        const Rect core = rect.inset(radius);
        const Point nearest{std::clamp(p.x, core.left, core.right),
                            std::clamp(p.y, core.top, core.bottom)};
        return length(p - nearest) <= radius;
    }
};

struct Ellipse {
    Point centre;
    double radiusX, radiusY;
    constexpr bool contains(Point p) const {
        const Point scaled{(p.x - centre.x) / radiusX, (p.y - centre.y) / radiusY};
        return dot(scaled, scaled) <= 1;
    }
};

constexpr Ellipse disc(Point centre, double radius) {
    return {centre, radius, radius};
}

// A line with round ends.
struct Line {
    Point from, to;
    double width;
    bool contains(Point p) const {
        const Point along = to - from;
        const double size = dot(along, along);
        const double share = size > 0 ? std::clamp(dot(p - from, along) / size, 0.0, 1.0) : 0;
        return length(p - (from + along * share)) <= width / 2;
    }
};

struct Polygon {
    std::vector<Point> corners;
    bool contains(Point p) const {
        bool inside = false;
        for (std::size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
            const Point a = corners[i];
            const Point b = corners[j];
            if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) {
                inside = !inside;
            }
        }
        return inside;
    }
};

// The edges of a polygon, drawn as lines.
struct Outline {
    std::vector<Point> corners;
    double width;
    bool contains(Point p) const {
        for (std::size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
            if (Line{corners[j], corners[i], width}.contains(p)) return true;
        }
        return false;
    }
};

// What lies in the first shape and not in the second.
template <typename Outer, typename Inner>
struct Without {
    Outer outer;
    Inner inner;
    bool contains(Point p) const { return outer.contains(p) && !inner.contains(p); }
};
template <typename Outer, typename Inner>
Without(Outer, Inner) -> Without<Outer, Inner>;

// What lies in both shapes.
template <typename First, typename Second>
struct Common {
    First first;
    Second second;
    bool contains(Point p) const { return first.contains(p) && second.contains(p); }
};
template <typename First, typename Second>
Common(First, Second) -> Common<First, Second>;

inline auto ring(Ellipse outer, double width) {
    return Without{outer, Ellipse{outer.centre, outer.radiusX - width, outer.radiusY - width}};
}

inline auto frame(Rect outer, double width) {
    return Without{outer, outer.inset(width)};
}

// An arrowhead at `tip`, pointing along the unit vector `way`.
inline Polygon arrowhead(Point tip, Point way, double size, double halfWidth) {
    const Point base = tip - way * size;
    const Point side{-way.y * halfWidth, way.x * halfWidth};
    return {{tip, base + side, base - side}};
}

}  // namespace draw
