// Polygons to triangles.
//
// Polygons come from files and may be anything: intricate enough to keep a simple method busy for
// hours, joined to their holes by cuts that are walked twice, crossing themselves.
#pragma once

#include <kiln/geometry.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// A triangle over the corners of a polygon. Edge i leads from corner i to corner (i + 1) mod 3;
/// it is an outline edge when it is an edge of the polygon and not a cut through it.
struct Triangle {
    std::uint32_t corner[3];
    bool outline[3];
};

/// Cuts polygons into triangles. One object serves many polygons without allocating anew.
class KILNAPI Triangulator {
public:
    /// The triangles of the polygon through `corners`, wound as the polygon is; valid until the
    /// next call. Concave polygons are cut along diagonals inside them, polygons that are not quite
    /// flat are projected along their average normal, and ones that cross themselves are covered as
    /// well as triangles can. Repeated corners are passed over. A polygon without area, with fewer
    /// than three corners, or with coordinates that are not finite has no triangles.
    ///
    /// Time is linear for convex polygons. Others take time up to the square of the number of
    /// corners for up to some hundred corners, and grow linearly beyond, where the cut of a very
    /// intricate polygon may overlap itself.
    std::span<const Triangle> cut(std::span<const Point3> corners);

private:
    struct Point {
        double u;
        double v;
    };

    /// A corner still in the ring.
    struct Link {
        std::uint32_t previous;
        std::uint32_t next;
        bool outline;  ///< whether the edge to `next` is an edge of the polygon
    };

    /// What a corner must be like to be cut off, from the ideal to the last resort.
    enum class Demand : std::uint8_t { kNothingInside, kNothingWellInside, kConvex, kAny };

    bool project(std::span<const Point3> corners);
    bool fanOfAll();
    void buildRing(std::span<const Point3> corners);
    bool fan();
    void clipEars();
    void clipNextEar(std::uint32_t& cursor, std::size_t& passed, Demand& demand);
    bool isEar(std::uint32_t corner, Demand demand);
    bool holdsNoCorner(std::uint32_t corner, bool edgesCount);
    void clip(std::uint32_t corner);
    double turn(std::uint32_t a, std::uint32_t b, std::uint32_t c) const noexcept;

    std::vector<Point> points_;
    std::vector<Link> ring_;
    std::vector<Triangle> triangles_;
    std::uint32_t first_ = 0;
    std::size_t left_ = 0;
    std::uint64_t budget_ = 0;  ///< corner tests that may still be made
};
