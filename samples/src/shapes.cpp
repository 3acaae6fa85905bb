#include "shapes.h"

#include <cmath>
#include <numbers>

namespace samples {

Polygon rectangle(double x0, double y0, double x1, double y1, double z) {
    return {{x0, y0, z}, {x1, y0, z}, {x1, y1, z}, {x0, y1, z}};
}

Polygon raised(Polygon base, double height) {
    for (Point& point : base) point.z += height;
    return base;
}

Polygon ring(double x, double y, double z, double radius, int corners) {
    Polygon polygon;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        polygon.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle), z});
    }
    return polygon;
}

std::vector<Polygon> walls(const Polygon& lower, const Polygon& upper) {
    std::vector<Polygon> result;
    for (std::size_t i = 0; i < lower.size(); ++i) {
        const std::size_t next = (i + 1) % lower.size();
        result.push_back({lower[i], lower[next], upper[next], upper[i]});
    }
    return result;
}

Point pointBetween(const Point& from, const Point& to, int step, int steps) {
    const double t = static_cast<double>(step) / steps;
    return {from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t,
            from.z + (to.z - from.z) * t};
}

}  // namespace samples
