// The plane of a polygon.
#pragma once

#include "gathered.h"

#include <utility>

namespace checks {

struct Plane {
    FltPoint3d normal;  ///< of length 1, or (0, 0, 0) for a polygon without area
    FltPoint3d middle;  ///< of the corners
    double area = 0;
};

/// The plane that fits the polygon through `corners`, and its area.
inline Plane planeOf(std::span<const FltPoint3d> corners) noexcept {
    Plane plane;
    if (corners.empty()) return plane;
    // Relative to a corner, so that nothing is lost far from the origin.
    const FltPoint3d& first = corners[0];
    FltPoint3d sum, area;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        sum = sum + (corners[i] - first);
        if (i > 1) area = area + cross(corners[i - 1] - first, corners[i] - first);
    }
    plane.middle = first + sum * (1.0 / static_cast<double>(corners.size()));
    const double size = length(area);
    plane.area = size / 2;
    if (size > 0) plane.normal = area * (1 / size);
    return plane;
}

/// Two axes of length 1 that span the plane with that normal, counter-clockwise seen from its
/// front.
inline std::pair<FltPoint3d, FltPoint3d> axesOf(const FltPoint3d& normal) noexcept {
    const FltPoint3d other = std::abs(normal.z) < 0.9 ? FltPoint3d{0, 0, 1} : FltPoint3d{1, 0, 0};
    FltPoint3d x = cross(other, normal);
    x = x * (1 / length(x));
    return {x, cross(normal, x)};
}

}  // namespace checks
