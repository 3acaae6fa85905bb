#include <quillon/fltgeometry.h>

#include <cmath>

FltPlane fltPlaneFromPoints(const FltPoint3d& p1, const FltPoint3d& p2,
                            const FltPoint3d& p3) noexcept {
    const double a = (p1.z - p2.z) * p3.y + (p3.z - p1.z) * p2.y + (p2.z - p3.z) * p1.y;
    const double b = (p3.x - p1.x) * p2.z + (p1.x - p2.x) * p3.z + (p2.x - p3.x) * p1.z;
    const double c = (p2.y - p3.y) * p1.x + (p3.y - p1.y) * p2.x + (p1.y - p2.y) * p3.x;
    // Subtracted from zero, so that a plane through the origin has 0 here and not -0.
    const double d = 0 - (p1.x * (p2.y * p3.z - p3.y * p2.z) + p2.x * (p3.y * p1.z - p1.y * p3.z) +
                          p3.x * (p1.y * p2.z - p2.y * p1.z));
    // The four-vector's length, d included.
    const double length = std::sqrt(a * a + b * b + c * c + d * d);
    return {a / length, b / length, c / length, d / length};
}
