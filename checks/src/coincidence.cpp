// Polygons in the same place: the same ones, and those that overlap in one plane.
//
// Both are found through cells: what can meet has a cell in common, and within a cell each polygon
// is held against a bounded number of others, so the time does not grow with the square of their
// number however many are in one place.
#include "gathered.h"

#include "plane.h"

#include <algorithm>
#include <array>
#include <limits>

namespace checks {

namespace {

constexpr std::size_t kMostOthers = 64;

struct CellEntry {
    std::uint64_t cell;
    std::uint32_t polygon;
    friend auto operator<=>(const CellEntry&, const CellEntry&) = default;
};

std::uint64_t mixed(std::uint64_t hash, std::uint64_t value) noexcept {
    hash ^= value + 0x9E3779B97F4A7C15 + (hash << 6) + (hash >> 2);
    hash *= 0xFF51AFD7ED558CCD;
    return hash ^ hash >> 32;
}

std::uint64_t mixed(std::uint64_t hash, double value) noexcept {
    // Beyond the whole numbers of 64 bits all are in one cell, and so is what is no number.
    constexpr double kMost = 9e18;
    const double bounded = value > -kMost ? std::min(value, kMost) : -kMost;
    return mixed(hash, static_cast<std::uint64_t>(static_cast<std::int64_t>(bounded)));
}

/// The entries of the cell at `begin` of sorted ones; moves `begin` behind them.
std::span<const CellEntry> nextCell(const std::vector<CellEntry>& entries, std::size_t& begin) {
    const auto from = entries.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto end = std::find_if(from, entries.end(),
                                  [&](const CellEntry& entry) { return entry.cell != from->cell; });
    begin = static_cast<std::size_t>(end - entries.begin());
    return {from, end};
}

/// Sorts the entries, and calls `meet` with those of each cell that has several.
template <typename Meet>
void forEachCell(std::vector<CellEntry>& entries, Meet&& meet) {
    std::ranges::sort(entries);
    for (std::size_t at = 0; at != entries.size();) {
        const std::span<const CellEntry> cell = nextCell(entries, at);
        if (cell.size() > 1) meet(cell);
    }
}

/// Enters all polygons into cells, and has those of each cell with several meet, a piece of it at a
/// time.
class CellSearch : public Coincidences {
public:
    CellSearch(Gathered& all, double tolerance, std::size_t expected)
        : all_(all), tolerance_(tolerance) {
        entries_.reserve(expected);
    }

    bool step() final {
        if (next_ < all_.polygons.size()) {
            for (std::size_t i = 0; i < kPiece && next_ < all_.polygons.size(); ++i)
                enter(static_cast<std::uint32_t>(next_++));
            if (next_ == all_.polygons.size()) std::ranges::sort(entries_);
            return true;
        }
        for (const std::size_t begin = at_; at_ != entries_.size() && at_ - begin < kPiece;) {
            const std::span<const CellEntry> cell = nextCell(entries_, at_);
            if (cell.size() > 1) meet(cell);
        }
        return at_ != entries_.size();
    }

protected:
    virtual void enter(std::uint32_t polygon) = 0;
    virtual void meet(std::span<const CellEntry> cell) = 0;

    Gathered& all_;
    const double tolerance_;
    std::vector<CellEntry> entries_;

private:
    static constexpr std::size_t kPiece = 256;

    std::size_t next_ = 0;  ///< polygon
    std::size_t at_ = 0;    ///< in the entries
};

std::uint32_t contextOf(const Gathered& all, std::size_t polygon) {
    return all.nodes[all.polygons[polygon].node].context;
}

// ---------------------------------------------------------------- the same polygon

/// Whether the corners are the same ones, whichever comes first and whichever way round.
bool areSame(std::span<const FltPoint3d> a, std::span<const FltPoint3d> b, double tolerance) {
    if (a.size() != b.size()) return false;
    const auto near = [tolerance](const FltPoint3d& p, const FltPoint3d& q) {
        return length(p - q) <= tolerance;
    };
    const std::size_t count = a.size();
    for (std::size_t start = 0; start < count; ++start) {
        if (!near(a[0], b[start])) continue;
        bool forwards = true, backwards = true;
        for (std::size_t i = 1; i < count && (forwards || backwards); ++i) {
            forwards = forwards && near(a[i], b[(start + i) % count]);
            backwards = backwards && near(a[i], b[(start + count - i) % count]);
        }
        if (forwards || backwards) return true;
    }
    return false;
}

/// Enters a polygon into all cells that its middle may fall into when it is a little off.
void enterMiddle(const Gathered& all, std::uint32_t polygon, double tolerance,
                 std::vector<CellEntry>& entries) {
    const std::span<const FltPoint3d> corners = all.cornersOf(polygon);
    FltPoint3d middle;
    for (const FltPoint3d& corner : corners)
        middle = middle + (corner - all.box.lowest) * (1.0 / static_cast<double>(corners.size()));
    const double cell = 32 * tolerance;
    const std::uint64_t start =
        mixed(mixed(0, std::uint64_t{contextOf(all, polygon)}), std::uint64_t{corners.size()});
    std::array<std::uint64_t, 8> cells{start};
    std::size_t count = 1;
    for (const double coordinate : {middle.x, middle.y, middle.z}) {
        const double low = std::floor((coordinate - tolerance) / cell);
        const double high = std::floor((coordinate + tolerance) / cell);
        const std::size_t before = count;
        for (std::size_t i = 0; i < before; ++i) {
            if (high != low) cells[count++] = mixed(cells[i], high);
            cells[i] = mixed(cells[i], low);
        }
    }
    for (std::size_t i = 0; i < count; ++i) entries.push_back({cells[i], polygon});
}

class Duplicates final : public CellSearch {
public:
    Duplicates(Gathered& all, double tolerance)
        : CellSearch(all, tolerance, all.polygons.size() * 3 / 2) {}

private:
    void enter(std::uint32_t polygon) override {
        const std::span<const FltPoint3d> corners = all_.cornersOf(polygon);
        const KeptPolygon& kept = all_.polygons[polygon];
        if (corners.size() >= 3 && !kept.isHidden &&
            (kept.isRegular || std::ranges::all_of(corners, isFinite)))
            enterMiddle(all_, polygon, tolerance_, entries_);
    }

    void meet(std::span<const CellEntry> cell) override {
        different_.clear();
        for (const CellEntry& entry : cell) {
            KeptPolygon& polygon = all_.polygons[entry.polygon];
            if (polygon.isDuplicate) continue;
            const auto same = std::ranges::find_if(different_, [&](std::uint32_t other) {
                return contextOf(all_, other) == contextOf(all_, entry.polygon) &&
                       all_.polygons[other].layer == polygon.layer &&
                       areSame(all_.cornersOf(other), all_.cornersOf(entry.polygon),
                               2 * tolerance_);
            });
            if (same != different_.end()) {
                polygon.isDuplicate = true;
                all_.found(Rule::FACE_DUPLICATE, polygon.node,
                           all_.nameOfNode(all_.polygons[*same].node));
            } else if (different_.size() < kMostOthers) {
                different_.push_back(entry.polygon);
            }
        }
    }

    std::vector<std::uint32_t> different_;
};

// ---------------------------------------------------------------- overlap in one plane

struct Point2 {
    double x, y;
};

/// The extent of a convex polygon along a direction.
struct Extent {
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();
};

/// Polygons in one plane, seen from its front.
class PlaneOverlaps {
public:
    PlaneOverlaps(Gathered& all, double tolerance) : all_(all), tolerance_(tolerance) {}

    void find(std::span<const CellEntry> group) {
        const Plane plane = planeOf(all_.cornersOf(group[0].polygon));
        std::tie(x_, y_) = axesOf(plane.normal);
        normal_ = plane.normal;
        origin_ = plane.middle;
        boxes_.clear();
        double widths = 0;
        for (const CellEntry& entry : group) {
            const Flat flat = boxOf(entry.polygon);
            widths += flat.right - flat.left + flat.top - flat.bottom;
            boxes_.push_back(flat);
        }
        const double cell = widths / (2 * static_cast<double>(group.size())) * 1.5;
        if (!(cell > 0) || !std::isfinite(cell)) return;
        enterCells(cell);
        forEachCell(entries_, [&](std::span<const CellEntry> crowd) { meet(crowd, cell); });
        for (const std::uint32_t large : large_)
            for (std::uint32_t i = 0; i < boxes_.size(); ++i)
                if (i != large) hold(std::min(large, i), std::max(large, i));
    }

private:
    struct Flat {
        std::uint32_t polygon;
        double left, right, bottom, top;
        bool isDone = false;
    };

    Point2 flat(const FltPoint3d& corner) const noexcept {
        const FltPoint3d from = corner - origin_;
        return {dot(x_, from), dot(y_, from)};
    }

    Flat boxOf(std::uint32_t polygon) const {
        Flat box{polygon, Box::kFar, -Box::kFar, Box::kFar, -Box::kFar};
        for (const FltPoint3d& corner : all_.cornersOf(polygon)) {
            const Point2 p = flat(corner);
            box.left = std::min(box.left, p.x);
            box.right = std::max(box.right, p.x);
            box.bottom = std::min(box.bottom, p.y);
            box.top = std::max(box.top, p.y);
        }
        return box;
    }

    void enterCells(double cell) {
        constexpr double kMostCells = 16;
        entries_.clear();
        large_.clear();
        for (std::uint32_t i = 0; i < boxes_.size(); ++i) {
            const Flat& box = boxes_[i];
            const double left = std::floor(box.left / cell), right = std::floor(box.right / cell);
            const double bottom = std::floor(box.bottom / cell), top = std::floor(box.top / cell);
            const double columns = right - left + 1, rows = top - bottom + 1;
            if (!(columns * rows <= kMostCells)) {
                // Those are few, or the cells would be larger.
                if (large_.size() < kMostOthers) large_.push_back(i);
                continue;
            }
            for (int column = 0; column < columns; ++column)
                for (int row = 0; row < rows; ++row)
                    entries_.push_back({cellAt(left + column, bottom + row), i});
        }
    }

    static std::uint64_t cellAt(double column, double row) { return mixed(mixed(0, column), row); }

    void meet(std::span<const CellEntry> crowd, double cell) {
        for (std::size_t i = 1; i < crowd.size(); ++i) {
            const Flat& a = boxes_[crowd[i].polygon];
            for (std::size_t j = i - std::min(i, kMostOthers); j < i; ++j) {
                const Flat& b = boxes_[crowd[j].polygon];
                // Two may meet in several cells; the one with the corner of what they share counts.
                const double left = std::floor(std::max(a.left, b.left) / cell);
                const double bottom = std::floor(std::max(a.bottom, b.bottom) / cell);
                if (cellAt(left, bottom) == crowd[i].cell) hold(crowd[j].polygon, crowd[i].polygon);
            }
        }
    }

    /// Holds one polygon against another, by their places in `boxes_`.
    void hold(std::uint32_t first, std::uint32_t second) {
        const Flat& a = boxes_[first];
        Flat& b = boxes_[second];
        if (b.isDone || std::min(a.right, b.right) - std::max(a.left, b.left) <= tolerance_ ||
            std::min(a.top, b.top) - std::max(a.bottom, b.bottom) <= tolerance_)
            return;
        const KeptPolygon& p = all_.polygons[a.polygon];
        KeptPolygon& q = all_.polygons[b.polygon];
        if (p.layer != q.layer || contextOf(all_, a.polygon) != contextOf(all_, b.polygon)) return;
        const auto outlineA = all_.cornersOf(a.polygon), outlineB = all_.cornersOf(b.polygon);
        const Plane planeA = planeOf(outlineA), planeB = planeOf(outlineB);
        constexpr std::uint8_t kBothSides = 1;
        if (dot(planeA.normal, planeB.normal) < 0 && p.drawType != kBothSides &&
            q.drawType != kBothSides)
            return;
        for (const FltPoint3d& corner : outlineB)
            if (std::abs(dot(planeA.normal, corner - planeA.middle)) > tolerance_) return;
        if (areApart(outlineA, outlineB) || areApart(outlineB, outlineA)) return;
        b.isDone = true;
        // Said once of a polygon, however many groups it is in.
        if (std::exchange(q.isDuplicate, true)) return;
        all_.found(Rule::FACE_OVERLAP, q.node, all_.nameOfNode(p.node));
    }

    /// Whether an edge of `a` has all of `a` on one side and all of `b` on the other.
    bool areApart(std::span<const FltPoint3d> a, std::span<const FltPoint3d> b) const {
        for (std::size_t i = 0; i < a.size(); ++i) {
            const Point2 from = flat(a[i]), to = flat(a[(i + 1) % a.size()]);
            const double size = std::hypot(to.x - from.x, to.y - from.y);
            if (size == 0) continue;
            const Point2 across{(to.y - from.y) / size, (from.x - to.x) / size};
            const Extent ofA = extent(a, across), ofB = extent(b, across);
            if (std::min(ofA.greatest, ofB.greatest) - std::max(ofA.least, ofB.least) <=
                2 * tolerance_)
                return true;
        }
        return false;
    }

    Extent extent(std::span<const FltPoint3d> outline, const Point2& direction) const {
        Extent found;
        for (const FltPoint3d& corner : outline) {
            const Point2 p = flat(corner);
            const double along = p.x * direction.x + p.y * direction.y;
            found.least = std::min(found.least, along);
            found.greatest = std::max(found.greatest, along);
        }
        return found;
    }

    Gathered& all_;
    double tolerance_;
    FltPoint3d x_, y_, normal_, origin_;
    std::vector<Flat> boxes_;
    std::vector<CellEntry> entries_;
    std::vector<std::uint32_t> large_;
};

class Overlaps final : public CellSearch {
public:
    Overlaps(Gathered& all, double tolerance)
        : CellSearch(all, tolerance, 2 * all.polygons.size()), plane_(all, tolerance) {}

private:
    void enter(std::uint32_t number) override {
        constexpr std::size_t kMostCorners = 64;
        const KeptPolygon& polygon = all_.polygons[number];
        const std::span<const FltPoint3d> corners = all_.cornersOf(number);
        if (!polygon.isRegular || polygon.isHidden || polygon.isDuplicate ||
            corners.size() > kMostCorners)
            return;
        const Plane plane = planeOf(corners);
        FltPoint3d normal = plane.normal;
        const double largest =
            std::max({std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)});
        // Which of the two sides is the front does not matter here.
        for (const double part : {normal.z, normal.y, normal.x}) {
            if (std::abs(part) < largest / 2) continue;
            if (part < 0) normal = normal * -1;
            break;
        }
        std::uint64_t group = mixed(0, std::uint64_t{contextOf(all_, number)});
        // The shifts keep common directions off the edges of a step.
        for (const double part : {normal.x, normal.y, normal.z})
            group = mixed(group, std::floor(part * 16 + 0.3819));
        const double step = 8 * tolerance_;
        const double height = dot(normal, plane.middle - all_.box.middle()) / step + 0.3819;
        entries_.push_back({mixed(mixed(group, std::floor(height)), std::uint64_t{1}), number});
        entries_.push_back(
            {mixed(mixed(group, std::floor(height + 0.5)), std::uint64_t{2}), number});
    }

    void meet(std::span<const CellEntry> group) override { plane_.find(group); }

    PlaneOverlaps plane_;
};

}  // namespace

std::unique_ptr<Coincidences> searchDuplicates(Gathered& all) {
    const double tolerance = all.tolerance();
    if (!all.isOn(Rule::FACE_DUPLICATE) || !(tolerance > 0)) return nullptr;
    return std::make_unique<Duplicates>(all, tolerance);
}

std::unique_ptr<Coincidences> searchOverlaps(Gathered& all) {
    const double tolerance = all.tolerance();
    if (!all.isOn(Rule::FACE_OVERLAP) || !(tolerance > 0)) return nullptr;
    return std::make_unique<Overlaps>(all, tolerance);
}

}  // namespace checks
