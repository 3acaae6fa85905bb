// Simple solids made of outward-facing polygons. Lengths in metres, z up.
#pragma once

#include "fltscene.h"

#include <vector>

namespace samples {

/// A rectangle in the plane of height z, seen from above.
Polygon rectangle(double x0, double y0, double x1, double y1, double z);

/// `base` moved up by `height`.
Polygon raised(Polygon base, double height);

/// A regular polygon around (x, y) at height z, counter-clockwise from above.
Polygon ring(double x, double y, double z, double radius, int corners);

/// The side walls between two outlines of as many corners, each counter-clockwise from above.
std::vector<Polygon> walls(const Polygon& lower, const Polygon& upper);

/// A point on a straight line from `from` to `to`, `step` of `steps` along it.
Point pointBetween(const Point& from, const Point& to, int step, int steps);

}  // namespace samples
