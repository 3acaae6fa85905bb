// What a polygon says by itself, and a subface of its face.
#include "gathered.h"

#include "plane.h"

#include <quillon/fltopcode.h>

#include <algorithm>

namespace checks {

namespace {

struct Point2 {
    double x, y;
};

double turn(const Point2& a, const Point2& b, const Point2& c) noexcept {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

double distance(const Point2& a, const Point2& b) noexcept {
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// Whether two edges without a common corner pass through each other.
bool doCross(const Point2& a, const Point2& b, const Point2& c, const Point2& d) noexcept {
    const auto side = [](const Point2& from, const Point2& to, const Point2& point) {
        return (to.x - from.x) * (point.y - from.y) - (to.y - from.y) * (point.x - from.x);
    };
    return side(a, b, c) * side(a, b, d) < 0 && side(c, d, a) * side(c, d, b) < 0;
}

/// Whether edges of the polygon cross. Takes at most so many tests that even a polygon of very many
/// corners is done at once; beyond that it is taken as one whose edges do not.
bool crossesItself(const std::vector<Point2>& points) {
    std::vector<std::uint32_t> byLeft(points.size());
    for (std::uint32_t i = 0; i < byLeft.size(); ++i) byLeft[i] = i;
    const auto end = [&](std::uint32_t edge) { return points[(edge + 1) % points.size()]; };
    const auto left = [&](std::uint32_t edge) { return std::min(points[edge].x, end(edge).x); };
    std::ranges::sort(byLeft, {}, left);
    std::size_t budget = 64 * points.size() + 100'000;
    for (std::size_t i = 0; i < byLeft.size(); ++i) {
        const std::uint32_t a = byLeft[i];
        const double right = std::max(points[a].x, end(a).x);
        for (std::size_t j = i + 1; j < byLeft.size() && left(byLeft[j]) <= right; ++j) {
            if (budget-- == 0) return false;
            if (doCross(points[a], end(a), points[byLeft[j]], end(byLeft[j]))) return true;
        }
    }
    return false;
}

/// How often the outline turns between going right and going left: twice around a convex polygon.
int turnsBack(const std::vector<Point2>& points) {
    int changes = 0, direction = 0, first = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double step = points[(i + 1) % points.size()].x - points[i].x;
        const int now = step > 0 ? 1 : step < 0 ? -1 : 0;
        if (now == 0) continue;
        if (first == 0) first = now;
        if (direction != 0 && now != direction) ++changes;
        direction = now;
    }
    return changes + (direction != first ? 1 : 0);
}

bool isConvex(const std::vector<Point2>& points, double tolerance) {
    const std::size_t count = points.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Point2& a = points[i];
        const Point2& b = points[(i + 1) % count];
        const Point2& c = points[(i + 2) % count];
        if (turn(a, b, c) < -tolerance * (distance(a, b) + distance(b, c))) return false;
    }
    return turnsBack(points) <= 2;
}

/// The corners without those that are where the one before them is; says how many these were.
std::uint32_t takeApart(std::span<const FltPoint3d> corners, double tolerance,
                        std::vector<FltPoint3d>& apart) {
    apart.clear();
    for (const FltPoint3d& corner : corners)
        if (apart.empty() || length(corner - apart.back()) > tolerance) apart.push_back(corner);
    while (apart.size() > 1 && length(apart.front() - apart.back()) <= tolerance) apart.pop_back();
    return static_cast<std::uint32_t>(corners.size() - apart.size());
}

}  // namespace

void checkPolygon(Gathered& all, std::size_t number) {
    KeptPolygon& polygon = all.polygons[number];
    const std::span<const FltPoint3d> corners = all.cornersOf(number);
    constexpr std::uint8_t kClosedLines = 2, kLines = 3;
    const bool isLines = polygon.drawType == kClosedLines || polygon.drawType == kLines;
    if (corners.size() < (isLines ? 2U : 3U))
        return all.found(Rule::FACE_CORNERS, polygon.node, std::uint64_t{corners.size()});
    if (isLines) return;
    if (!std::ranges::all_of(corners, isFinite)) return;  // which has been said already
    const double tolerance = all.tolerance();
    static thread_local std::vector<FltPoint3d> apart;
    if (const std::uint32_t same = takeApart(corners, tolerance, apart))
        all.found(Rule::VERTEX_DUPLICATE, polygon.node, same);
    const Plane plane = planeOf(apart);
    double longest = 0;
    for (std::size_t i = 0; i < apart.size(); ++i)
        longest = std::max(longest, length(apart[(i + 1) % apart.size()] - apart[i]));
    if (apart.size() < 3 || plane.area <= tolerance * longest) {
        // One that crosses itself may add up to nothing, and has an area all the same.
        return all.found(Rule::FACE_DEGENERATE, polygon.node);
    }
    polygon.isRegular = true;
    if (apart.size() == 3) return;
    double off = 0;
    for (const FltPoint3d& corner : apart)
        off = std::max(off, std::abs(dot(plane.normal, corner - plane.middle)));
    if (off > tolerance) {
        polygon.isRegular = false;
        all.found(Rule::FACE_NONPLANAR, polygon.node, off);
    }
    static thread_local std::vector<Point2> flat;
    flat.clear();
    const auto [x, y] = axesOf(plane.normal);
    for (const FltPoint3d& corner : apart)
        flat.push_back({dot(x, corner - plane.middle), dot(y, corner - plane.middle)});
    if (isConvex(flat, tolerance)) return;
    polygon.isRegular = false;
    all.found(crossesItself(flat) ? Rule::FACE_CROSSING : Rule::FACE_CONCAVE, polygon.node);
}

void checkSubface(Gathered& all, std::size_t number) {
    const KeptPolygon& polygon = all.polygons[number];
    const std::uint32_t parent = all.nodes[polygon.node].parent;
    if (parent == kNone || all.nodes[parent].kind != kFltFace || !polygon.isRegular) return;
    const auto face = std::ranges::lower_bound(all.polygons, parent, {}, &KeptPolygon::node);
    if (face == all.polygons.end() || face->node != parent || !face->isRegular) return;
    const std::span<const FltPoint3d> outline =
        all.cornersOf(static_cast<std::size_t>(face - all.polygons.begin()));
    const Plane plane = planeOf(outline);
    double beyond = 0;
    for (const FltPoint3d& corner : all.cornersOf(number)) {
        beyond = std::max(beyond, std::abs(dot(plane.normal, corner - plane.middle)));
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const FltPoint3d edge = outline[(i + 1) % outline.size()] - outline[i];
            const double size = length(edge);
            if (size == 0) continue;
            const FltPoint3d outwards = cross(edge, plane.normal) * (1 / size);
            beyond = std::max(beyond, dot(outwards, corner - outline[i]));
        }
    }
    if (beyond > all.tolerance()) all.found(Rule::SUBFACE_OUTSIDE, polygon.node, beyond);
}

}  // namespace checks
