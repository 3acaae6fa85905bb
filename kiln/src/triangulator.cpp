#include <kiln/triangulator.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::uint64_t kTestsPerCorner = 512;

bool isFinite(const Point3& corner) {
    return std::isfinite(corner.x) && std::isfinite(corner.y) && std::isfinite(corner.z);
}

/// The normal of a polygon, as long as twice its area.
Point3 normalOf(std::span<const Point3> corners) {
    Point3 normal;
    const Point3& origin = corners.front();
    for (std::size_t i = 2; i < corners.size(); ++i) {
        normal = normal + CrossProd(corners[i - 1] - origin, corners[i] - origin);
    }
    return normal;
}

/// The normal of the first corner that makes a turn; zero when all corners are on one line.
Point3 normalOfFirstTurn(std::span<const Point3> corners) {
    for (std::size_t i = 0; i + 2 < corners.size(); ++i) {
        const Point3 normal = normalOf(corners.subspan(i, 3));
        if (normal != Point3()) return normal;
    }
    return {};
}

}  // namespace

std::span<const Triangle> Triangulator::cut(std::span<const Point3> corners) {
    triangles_.clear();
    const bool usable = corners.size() >= 3 && std::ranges::all_of(corners, isFinite);
    if (!usable || !project(corners)) return {};
    if (fanOfAll()) return triangles_;
    buildRing(corners);
    if (left_ >= 3 && !fan()) clipEars();
    return triangles_;
}

/// Looks at the polygon along the axis on which it shows the most area, from the side from which it
/// winds counter-clockwise. False when there is no such side.
bool Triangulator::project(std::span<const Point3> corners) {
    Point3 normal = normalOf(corners);
    // A polygon that crosses itself can cancel its own area out.
    if (normal == Point3()) normal = normalOfFirstTurn(corners);
    const double ax = std::abs(normal.x), ay = std::abs(normal.y), az = std::abs(normal.z);
    const double most = std::max({ax, ay, az});
    if (!(most > 0)) return false;
    points_.resize(corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point3& c = corners[i];
        if (most == az) {
            points_[i] = normal.z > 0 ? Point{c.x, c.y} : Point{c.y, c.x};
        } else if (most == ax) {
            points_[i] = normal.x > 0 ? Point{c.y, c.z} : Point{c.z, c.y};
        } else {
            points_[i] = normal.y > 0 ? Point{c.z, c.x} : Point{c.x, c.z};
        }
    }
    return true;
}

void Triangulator::buildRing(std::span<const Point3> corners) {
    const auto count = static_cast<std::uint32_t>(corners.size());
    ring_.resize(count);
    left_ = 0;
    std::uint32_t last = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (left_ != 0 && corners[i] == corners[last]) continue;
        if (left_ != 0) ring_[last].next = i;
        ring_[i] = {last, 0, true};
        if (left_ == 0) first_ = i;
        last = i;
        ++left_;
    }
    while (left_ > 1 && corners[last] == corners[first_]) {
        last = ring_[last].previous;
        --left_;
    }
    ring_[last].next = first_;
    ring_[first_].previous = last;
}

/// Twice the area of the triangle a, b, c; positive when it turns left.
double Triangulator::turn(std::uint32_t a, std::uint32_t b, std::uint32_t c) const noexcept {
    const Point &p = points_[a], &q = points_[b], &r = points_[c];
    return (q.u - p.u) * (r.v - p.v) - (q.v - p.v) * (r.u - p.u);
}

/// Does what `fan` does when no corner is repeated, without a ring: most polygons are convex. A
/// corner that repeats the one before it makes no turn.
bool Triangulator::fanOfAll() {
    const auto count = static_cast<std::uint32_t>(points_.size());
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t previous = i == 0 ? count - 1 : i - 1;
        const std::uint32_t next = i == count - 1 ? 0 : i + 1;
        if (!(turn(previous, i, next) > 0)) return false;
        if (i > 1 && next != 0 && !(turn(0, i, next) > 0)) return false;
    }
    triangles_.resize(count - 2);
    for (std::uint32_t i = 1; i + 1 < count; ++i) {
        triangles_[i - 1] = {{0, i, i + 1}, {i == 1, true, i + 2 == count}};
    }
    return true;
}

/// Cuts a polygon that is convex at every corner and seen from its first one. The second condition
/// rules out polygons that wind round more than once.
bool Triangulator::fan() {
    std::uint32_t corner = first_;
    do {
        const Link& link = ring_[corner];
        if (!(turn(link.previous, corner, link.next) > 0)) return false;
        const bool touchesFirst = corner == first_ || link.next == first_;
        if (!touchesFirst && !(turn(first_, corner, link.next) > 0)) return false;
        corner = link.next;
    } while (corner != first_);

    triangles_.reserve(left_ - 2);
    const std::uint32_t last = ring_[first_].previous;
    for (corner = ring_[first_].next; corner != last; corner = ring_[corner].next) {
        const std::uint32_t next = ring_[corner].next;
        triangles_.push_back(
            {{first_, corner, next}, {ring_[first_].next == corner, true, next == last}});
    }
    return true;
}

/// Cuts off one ear after another: a convex corner whose triangle holds no other corner. Where a
/// polygon that crosses itself has none, the demands are lowered until it has.
void Triangulator::clipEars() {
    budget_ = kTestsPerCorner * left_;
    triangles_.reserve(left_ - 2);
    std::uint32_t cursor = first_;
    std::size_t passed = 0;
    Demand demand = Demand::kNothingInside;
    while (left_ > 3) clipNextEar(cursor, passed, demand);
    clip(cursor);
}

void Triangulator::clipNextEar(std::uint32_t& cursor, std::size_t& passed, Demand& demand) {
    if (budget_ == 0) demand = Demand::kAny;
    const std::uint32_t next = ring_[cursor].next;
    if (isEar(cursor, demand)) {
        clip(cursor);
        // Going on one corner further keeps the triangles from all meeting in one corner.
        cursor = ring_[next].next;
        passed = 0;
        demand = Demand::kNothingInside;
        return;
    }
    cursor = next;
    if (++passed >= left_) {
        passed = 0;
        demand = static_cast<Demand>(static_cast<std::uint8_t>(demand) + 1);
    }
}

bool Triangulator::isEar(std::uint32_t corner, Demand demand) {
    if (demand == Demand::kAny) return true;
    --budget_;
    const Link& link = ring_[corner];
    if (!(turn(link.previous, corner, link.next) > 0)) return false;
    if (demand == Demand::kConvex) return true;
    return holdsNoCorner(corner, demand == Demand::kNothingInside);
}

/// Whether no other corner lies in the triangle of `corner` and its neighbours; with `edgesCount`,
/// on its edges neither. Corners at the very place of one of the three do not count: a hole is
/// joined to its outline by a cut that is walked twice.
bool Triangulator::holdsNoCorner(std::uint32_t corner, bool edgesCount) {
    const std::uint32_t a = ring_[corner].previous, b = corner, c = ring_[corner].next;
    const Point pa = points_[a], pb = points_[b], pc = points_[c];
    const auto [minU, maxU] = std::minmax({pa.u, pb.u, pc.u});
    const auto [minV, maxV] = std::minmax({pa.v, pb.v, pc.v});
    const auto samePlace = [](const Point& p, const Point& q) { return p.u == q.u && p.v == q.v; };
    for (std::uint32_t i = ring_[c].next; i != a; i = ring_[i].next) {
        if (budget_ > 0) --budget_;
        const Point& p = points_[i];
        if (p.u < minU || p.u > maxU || p.v < minV || p.v > maxV) continue;
        const double least = std::min({turn(a, b, i), turn(b, c, i), turn(c, a, i)});
        const bool inside = edgesCount ? least >= 0 : least > 0;
        if (inside && !samePlace(p, pa) && !samePlace(p, pb) && !samePlace(p, pc)) return false;
    }
    return true;
}

void Triangulator::clip(std::uint32_t corner) {
    const Link link = ring_[corner];
    Link& previous = ring_[link.previous];
    if (turn(link.previous, corner, link.next) != 0) {
        const bool closing = left_ == 3 && ring_[link.next].outline;
        triangles_.push_back(
            {{link.previous, corner, link.next}, {previous.outline, link.outline, closing}});
    }
    previous.next = link.next;
    previous.outline = false;
    ring_[link.next].previous = link.previous;
    if (first_ == corner) first_ = link.next;
    --left_;
}
