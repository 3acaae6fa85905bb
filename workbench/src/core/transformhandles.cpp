#include <workbench/transformhandles.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>

using render::Camera, render::ScreenPoint, render::Vec3d;

namespace workbench {
namespace {

constexpr HandlePart kAxes[] = {HandlePart::kX, HandlePart::kY, HandlePart::kZ};
constexpr double kDegree = std::numbers::pi / 180;

Vec3d vec(const Point3& p) {
    return {p.x, p.y, p.z};
}

Point3 point(const Vec3d& v) {
    return {v.x, v.y, v.z};
}

int axisOf(HandlePart part) {
    return static_cast<int>(part) - static_cast<int>(HandlePart::kX);
}

float distanceBetween(ScreenPoint a, ScreenPoint b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

float distanceTo(ScreenPoint p, ScreenPoint a, ScreenPoint b) {
    const float dx = b.x - a.x, dy = b.y - a.y, size = dx * dx + dy * dy;
    const float along =
        size > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / size, 0.f, 1.f) : 0;
    return distanceBetween(p, {a.x + along * dx, a.y + along * dy});
}

bool isWithin(ScreenPoint p, const std::vector<ScreenPoint>& outline) {
    bool within = false;
    for (std::size_t i = 0, before = outline.size() - 1; i < outline.size(); before = i++) {
        const ScreenPoint &a = outline[before], &b = outline[i];
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x))
            within = !within;
    }
    return within;
}

/// How far along an axis the place is that lies nearest to what a pixel shows.
std::optional<double> alongAxis(const Camera& camera, Vec3d place, Vec3d axis, ScreenPoint pixel) {
    constexpr double kParallel = 1e-5, kFarthest = 1e4;  // times the way from the eye
    const render::Ray ray = camera.rayAt(pixel.x, pixel.y);
    const Vec3d way = place - ray.start;
    const double across = dot(axis, ray.way), room = 1 - across * across;
    if (room < kParallel) return std::nullopt;
    const double along = (across * dot(ray.way, way) - dot(axis, way)) / room;
    return std::abs(along) < kFarthest * length(place - camera.eye()) ? std::optional(along)
                                                                      : std::nullopt;
}

std::string shown(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value + 0.0);
    return text;
}

std::string named(HandlePart part, const std::string& amount) {
    static constexpr const char* kNames[] = {"X  ", "Y  ", "Z  "};
    return part == HandlePart::kAll ? amount : kNames[axisOf(part)] + amount;
}

double onStep(double value, double step) {
    return step > 0 ? std::round(value / step) * step : value;
}

/// What `change` does about the origin, about `place`.
Matrix3 about(const Point3& place, const Matrix3& change) {
    return TransMatrix(-place) * change * TransMatrix(place);
}

}  // namespace

// ---------------------------------------------------------------- what is seen

/// Collects the lines of handles.
class TransformHandles::Drawing {
public:
    Drawing(const TransformHandles& handles, const Camera& camera)
        : handles_(handles), camera_(camera), place_(vec(handles.place())) {
        const auto middle = camera.project(place_);
        if (!middle) return;
        middle_ = *middle;
        unit_ = handles.pixels_ / double{camera.pixelsPerUnitAt(place_)};
        isSeen_ = std::isfinite(unit_) && std::isfinite(middle_.x) && std::isfinite(middle_.y);
    }

    std::vector<HandleLine> take() && {
        if (!isSeen_) return {};
        if (handles_.mode_ == HandleMode::kRotate)
            addRings();
        else
            addArms();
        return std::move(lines_);
    }

private:
    Vec3d axis(int number) const { return vec(handles_.frame_.GetRow(number)); }
    std::optional<ScreenPoint> at(Vec3d offset) const {
        return camera_.project(place_ + offset * unit_);
    }

    void addArms() {
        constexpr float kShortest = 0.2f, kSquare = 0.08f;
        constexpr double kBegin = 0.2;
        const bool moves = handles_.mode_ == HandleMode::kMove;
        for (const HandlePart part : kAxes) {
            const Vec3d way = axis(axisOf(part));
            const auto begin = at(way * kBegin), end = at(way);
            if (!begin || !end || distanceBetween(middle_, *end) < kShortest * handles_.pixels_)
                continue;
            lines_.push_back({part, false, {*begin, *end}});
            if (moves)
                addTip(part, *end);
            else
                addSquare(part, *end, kSquare * handles_.pixels_);
        }
        addSquare(HandlePart::kAll, middle_, kSquare * handles_.pixels_);
    }

    void addTip(HandlePart part, ScreenPoint end) {
        const float size = distanceBetween(middle_, end), half = 0.1f * handles_.pixels_ / size;
        const float dx = (end.x - middle_.x) * half, dy = (end.y - middle_.y) * half;
        lines_.push_back({part,
                          true,
                          {{end.x + dx, end.y + dy},
                           {end.x - dx - dy * 0.7f, end.y - dy + dx * 0.7f},
                           {end.x - dx + dy * 0.7f, end.y - dy - dx * 0.7f}}});
    }

    void addSquare(HandlePart part, ScreenPoint at, float half) {
        lines_.push_back({part,
                          true,
                          {{at.x - half, at.y - half},
                           {at.x + half, at.y - half},
                           {at.x + half, at.y + half},
                           {at.x - half, at.y + half}}});
    }

    void addRings() {
        for (const HandlePart part : kAxes) {
            const int number = axisOf(part);
            addRing(part, axis((number + 1) % 3), axis((number + 2) % 3), 1);
        }
        addRing(HandlePart::kAll, Vec3d(camera_.right()), Vec3d(camera_.up()), 1.2);
    }

    // The half that a sphere within the ring does not hide.
    void addRing(HandlePart part, Vec3d first, Vec3d second, double radius) {
        constexpr int kPoints = 64;
        constexpr double kHidden = 0.1;
        const Vec3d away =
            normalised(camera_.isParallel() ? Vec3d(camera_.forward()) : place_ - camera_.eye());
        std::vector<ScreenPoint> points;
        const auto end = [&] {
            if (points.size() > 1) lines_.push_back({part, false, points});
            points.clear();
        };
        for (int i = 0; i <= kPoints; ++i) {
            const double angle = 2 * std::numbers::pi * i / kPoints;
            const Vec3d offset = first * std::cos(angle) + second * std::sin(angle);
            const auto where = at(offset * radius);
            if (where && dot(offset, away) < kHidden)
                points.push_back(*where);
            else
                end();
        }
        end();
    }

    const TransformHandles& handles_;
    const Camera& camera_;
    const Vec3d place_;
    ScreenPoint middle_;
    double unit_ = 0;  // an arm's length in the world
    bool isSeen_ = false;
    std::vector<HandleLine> lines_;
};

std::vector<HandleLine> TransformHandles::lines(const Camera& camera) const {
    if (mode_ == HandleMode::kNone) return {};
    return Drawing(*this, camera).take();
}

HandlePart TransformHandles::partAt(const Camera& camera, float x, float y, float reach) const {
    HandlePart nearest = HandlePart::kNone;
    float least = reach;
    for (const HandleLine& line : lines(camera)) {
        if (line.isFilled && isWithin({x, y}, line.points)) return line.part;
        const std::size_t count = line.points.size();
        for (std::size_t i = line.isFilled ? 0 : 1; i < count; ++i) {
            const ScreenPoint& before = line.points[(i + count - 1) % count];
            const float away = distanceTo({x, y}, before, line.points[i]);
            if (away > least) continue;
            least = away;
            nearest = line.part;
        }
    }
    return nearest;
}

TransformHandles TransformHandles::moved(const HandleChange& change) const {
    TransformHandles there = *this;
    there.frame_.SetTrans(change.matrix.PointTransform(place()));
    return there;
}

// ---------------------------------------------------------------- what a drag does

HandleChange TransformHandles::dragged(const Camera& camera, HandlePart part, ScreenPoint from,
                                       ScreenPoint to, const HandleGrid& grid) const {
    switch (mode_) {
        case HandleMode::kMove:
            return moveBy(camera, part, from, to, grid);
        case HandleMode::kRotate:
            return turnBy(camera, part, from, to, grid);
        case HandleMode::kScale:
            return scaleBy(camera, part, from, to, grid);
        case HandleMode::kNone:
            break;
    }
    return {};
}

// Only along what the drag moves is the grid meant.
HandleChange TransformHandles::moveBy(const Camera& camera, HandlePart part, ScreenPoint from,
                                      ScreenPoint to, const HandleGrid& grid) const {
    Point3 by;
    if (part == HandlePart::kAll) {
        const double unit = 1 / double{camera.pixelsPerUnitAt(vec(place()))};
        by = point(Vec3d(camera.right()) * ((to.x - from.x) * unit) -
                   Vec3d(camera.up()) * ((to.y - from.y) * unit));
    } else {
        const Vec3d axis = vec(frame_.GetRow(axisOf(part)));
        const auto begun = alongAxis(camera, vec(place()), axis, from);
        const auto now = alongAxis(camera, vec(place()), axis, to);
        if (!begun || !now) return {};
        by = point(axis * (*now - *begun));
    }
    const double least = 1e-9 * Length(by);
    double Point3::*const coordinates[] = {&Point3::x, &Point3::y, &Point3::z};
    for (double Point3::*const c : coordinates) {
        if (std::abs(by.*c) <= least) by.*c = 0;
        if (by.*c != 0 && grid.step > 0)
            by.*c = onStep(grid.start.*c + by.*c, grid.step) - grid.start.*c;
    }
    const std::string amount = part == HandlePart::kAll
                                   ? shown(by.x) + ", " + shown(by.y) + ", " + shown(by.z)
                                   : shown(by.*coordinates[axisOf(part)]);
    return {TransMatrix(by), named(part, amount)};
}

// As far as the mouse goes along the ring where it took hold of it.
HandleChange TransformHandles::turnBy(const Camera& camera, HandlePart part, ScreenPoint from,
                                      ScreenPoint to, const HandleGrid& grid) const {
    constexpr double kStep = 5, kEdgeOn = 0.05;  // degrees; a slope
    const bool aboutSight = part == HandlePart::kAll;
    const Point3 axis =
        aboutSight ? point(Vec3d(camera.forward()) * -1.) : frame_.GetRow(axisOf(part));
    const auto middle = camera.project(vec(place()));
    if (!middle) return {};
    // Where the pixel lies on the ring, as seen from its middle, and which way it goes from there.
    const Vec3d right = camera.right(), up = camera.up(), sight = camera.forward();
    const Vec3d outwards = right * double{from.x - middle->x} - up * double{from.y - middle->y};
    const double slope = dot(vec(axis), sight);
    const Vec3d onRing = std::abs(slope) > kEdgeOn
                             ? outwards - sight * (dot(outwards, vec(axis)) / slope)
                             : sight * -1.;
    const Vec3d ahead = cross(vec(axis), onRing);
    const double along[2] = {dot(ahead, right), -dot(ahead, up)};
    const double size = std::hypot(along[0], along[1]);
    if (!(size > 0)) return {};
    const double pixels = ((to.x - from.x) * along[0] + (to.y - from.y) * along[1]) / size;
    const double radius = aboutSight ? 1.2 * double{pixels_} : double{pixels_};
    const double degrees = onStep(pixels / radius / kDegree, grid.step > 0 ? kStep : 0);
    return {about(place(), RotAngleAxisMatrix(axis, degrees * kDegree)),
            named(part, shown(degrees) + "°")};
}

// An arm's length more is twice as large; towards the middle it never comes to nothing.
HandleChange TransformHandles::scaleBy(const Camera& camera, HandlePart part, ScreenPoint from,
                                       ScreenPoint to, const HandleGrid& grid) const {
    constexpr double kLeast = 0.01, kStep = 0.1;
    double way[2] = {1, -1};  // to the right and upwards is larger
    if (part != HandlePart::kAll) {
        const auto middle = camera.project(vec(place()));
        const Vec3d arm = vec(frame_.GetRow(axisOf(part))) *
                          (pixels_ / double{camera.pixelsPerUnitAt(vec(place()))});
        const auto end = camera.project(vec(place()) + arm);
        if (!middle || !end) return {};
        way[0] = end->x - middle->x;
        way[1] = end->y - middle->y;
    }
    const double size = std::hypot(way[0], way[1]);
    if (!(size > 0)) return {};
    const double reach = part == HandlePart::kAll ? double{pixels_} : size;
    const double pixels = ((to.x - from.x) * way[0] + (to.y - from.y) * way[1]) / size;
    const double step = grid.step > 0 ? kStep : 0;
    const double factor = std::max(onStep(1 + pixels / reach, step), step > 0 ? step : kLeast);
    Point3 factors{factor, factor, factor};
    if (part != HandlePart::kAll)
        factors = {part == HandlePart::kX ? factor : 1, part == HandlePart::kY ? factor : 1,
                   part == HandlePart::kZ ? factor : 1};
    Matrix3 turned = frame_;
    turned.SetTrans({});
    return {about(place(), Inverse(turned) * ScaleMatrix(factors) * turned),
            named(part, shown(100 * factor) + " %")};
}

}  // namespace workbench
