// Points and planes.
#pragma once

/// A point in database units.
struct FltPoint3d {
    double x = 0;
    double y = 0;
    double z = 0;

    friend constexpr bool operator==(const FltPoint3d&, const FltPoint3d&) = default;
};

/// A direction or a point of few digits.
struct FltPoint3f {
    float x = 0;
    float y = 0;
    float z = 0;

    friend constexpr bool operator==(const FltPoint3f&, const FltPoint3f&) = default;
};

/// Where a vertex lies on a picture, whose sides are 1 long.
struct FltTextureCoordinates {
    float u = 0;
    float v = 0;

    friend constexpr bool operator==(const FltTextureCoordinates&,
                                     const FltTextureCoordinates&) = default;
};

/// The plane a x + b y + c z + d = 0.
struct FltPlane {
    double a = 0;
    double b = 0;
    double c = 0;
    double d = 0;
};

/// The plane through three points, divided by the length of the four-vector (a, b, c, d). That is
/// the library's normal form: a plane away from the origin has a normal shorter than 1. Points on
/// one line have no plane; all four coefficients are then not-a-number.
FltPlane fltPlaneFromPoints(const FltPoint3d& p1, const FltPoint3d& p2,
                            const FltPoint3d& p3) noexcept;
