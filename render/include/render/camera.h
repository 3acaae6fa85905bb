// The viewport's camera: where it looks from, and what becomes of a world point on the screen.
#pragma once

#include <render/geometry.h>

#include <limits>
#include <optional>
#include <utility>

namespace render {

enum class View { kPerspective, kTop, kFront, kLeft, kRight, kBack, kBottom };

/// A point on the screen. `x` and `y` are pixels from the upper left corner, pixel centres at .5.
/// `depth` grows towards the viewer and is linear across the screen in either projection.
struct ScreenPoint {
    float x = 0, y = 0, depth = 0;
};

/// What a pixel shows lies on a line: from `start` along `way`, which is of unit length.
struct Ray {
    Vec3d start, way;
};

/// How a camera stands, whatever the size of the picture. `yaw` and `pitch`, in radians, are those
/// of the perspective view, which another view keeps for later.
struct CameraStand {
    View view = View::kPerspective;
    Vec3d target{};
    double distance = 0;
    float yaw = 0, pitch = 0;
};

/// How near the points of a flat surface are, over the screen. Found from the surface itself and
/// not from corners on the screen, it is exact however far outside of the picture those are:
/// surfaces in one plane have the same depths, and those a little apart keep their order far away.
struct DepthPlane {
    double start = 0, perX = 0, perY = 0;  ///< start + x * perX + y * perY
    /// Of what is drawn.
    float least = -std::numeric_limits<float>::infinity();
    float most = std::numeric_limits<float>::infinity();

    /// Within what is drawn; an edge-on surface has any depth in there.
    float at(float x, float y) const {
        const auto depth = static_cast<float>(start + double{x} * perX + double{y} * perY);
        return std::max(least, std::min(most, depth));
    }
    /// For triangles of which all corners are known.
    void enclose(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c) {
        least = std::min({a.depth, b.depth, c.depth});
        most = std::max({a.depth, b.depth, c.depth});
    }
};

/// A camera that circles a target. The perspective view turns freely; the others are parallel
/// projections, and turning one of them makes it a perspective view again.
class Camera {
public:
    /// Radians; pitch is kept within this of the horizon so that "up" always exists.
    static constexpr float kMaxPitch = 1.55334f;

    /// Tells the camera how large the picture is, in pixels. Sizes below 1 count as 1.
    void setPictureSize(int width, int height);

    /// Looks from one of the usual sides, keeping target and distance. The perspective view goes
    /// back to where it was turned last.
    void setView(View view);
    View view() const { return view_; }

    /// Turns around the target by a mouse movement in pixels.
    void orbit(float dx, float dy);
    /// Shifts target and eye so that what is at the target's depth follows the mouse, in pixels.
    void pan(float dx, float dy);
    /// Moves nearer by `steps` wheel notches (negative: away), keeping the point under the pixel
    /// (`x`, `y`) at the target's depth where it is.
    void zoom(float steps, float x, float y);
    /// Makes `box` fill the picture, from the current direction. An empty box shows the origin.
    void frame(const Box& box);

    /// Looks from `eye` at `target`, in perspective and upright. False, and nothing changes, where
    /// there is no direction, or where one of them is not finite.
    bool lookFrom(Vec3d eye, Vec3d target);

    CameraStand stand() const { return {view_, target_, distance_, yaw_, pitch_}; }
    /// False, and nothing changes, where a number is not finite or the distance not of the
    /// camera's.
    bool setStand(const CameraStand& stand);

    Vec3d eye() const { return eye_; }
    Vec3d target() const { return target_; }
    double distance() const { return distance_; }
    Vec3 right() const { return right_; }
    Vec3 up() const { return up_; }
    Vec3 forward() const { return forward_; }
    bool isParallel() const { return view_ != View::kPerspective; }
    /// Nothing nearer to the eye than this is drawn, in world units along the view direction.
    float nearDistance() const {
        return isParallel() ? kParallelNear : static_cast<float>(distance_ * kNearShare);
    }
    /// The bounds beyond which nothing is drawn: the near one, and one on each side some widths of
    /// the picture beside it, within which places on the screen are exact.
    static constexpr int kBounds = 5;
    /// How far within a bound a point in view space is; less than 0 beyond it.
    double roomWithin(int bound, Vec3d view) const {
        if (bound == 0) return view.z - double{nearDistance()};
        const bool isAcross = bound <= 2;
        const double slope = kBeside * double{isAcross ? sideSlope_ : heightSlope_};
        const double reach = slope * (isParallel() ? distance_ : view.z);
        const double out = isAcross ? view.x : view.y;
        return reach - (bound % 2 == 0 ? out : -out);
    }
    /// Whether all points within `radius` of `centre`, in view space, are within the bounds.
    bool isWithinBounds(Vec3 centre, float radius) const;
    /// World units that one pixel covers at the target.
    float unitsPerPixel() const;

    /// Pixels that one world unit covers at a world point in front of the eye.
    float pixelsPerUnitAt(Vec3d world) const { return pixelsPerUnitInView(toView(world)); }
    /// The same at a point in view space.
    float pixelsPerUnitInView(Vec3 view) const {
        return isParallel() ? scale_ : scale_ / std::max(view.z, nearDistance());
    }
    /// The depths of the plane with this normal at this distance from the eye, along the normal.
    DepthPlane depthPlane(Vec3 normal, double distance) const {
        const double right = double{dot(normal, right_)} * perScale_;
        const double up = double{dot(normal, up_)} * perScale_;
        const double ahead = dot(normal, forward_);
        DepthPlane plane;
        const double divisor = 1 / (isParallel() ? ahead : distance);
        plane.perX = right * divisor;
        plane.perY = -up * divisor;
        plane.start = (isParallel() ? -distance : ahead) * divisor - double{centreX_} * plane.perX -
                      double{centreY_} * plane.perY;
        return plane;
    }
    /// How far in front of the eye what has this depth on the screen is, along the view direction.
    float distanceOf(float depth) const { return isParallel() ? -depth : 1 / depth; }
    /// Moves the target along the view direction to this distance from the eye. The picture stays;
    /// orbit, pan and zoom then go by what is there.
    void focusAt(float distance);

    /// What the pixel at (`x`, `y`) shows.
    Ray rayAt(float x, float y) const;
    /// A world point seen from the eye: x to the right, y up, z away from the viewer.
    Vec3 toView(Vec3d world) const { return toView(toFloat(world - eye_)); }
    /// The same for a point, or an offset, relative to the eye.
    Vec3 toView(Vec3 fromEye) const {
        return {dot(fromEye, right_), dot(fromEye, up_), dot(fromEye, forward_)};
    }
    /// The place on the screen of a point in view space, which must not be nearer than
    /// `nearDistance()`.
    ScreenPoint toScreen(Vec3 view) const {
        if (isParallel()) return {centreX_ + view.x * scale_, centreY_ - view.y * scale_, -view.z};
        const float inverse = 1 / view.z;
        return {centreX_ + view.x * scale_ * inverse, centreY_ - view.y * scale_ * inverse,
                inverse};
    }
    /// Cuts a line in view space off where it leaves the picture, a few pixels outside; false when
    /// nothing of it is left. What is far outside has no exact place on the screen.
    bool clipToPicture(Vec3& a, Vec3& b) const;
    /// The place on the screen of a world point, or nothing when it is behind the viewer.
    std::optional<ScreenPoint> project(Vec3d world) const;
    /// The rows of the picture, as numbers from the top, that points within `radius` of `centre`,
    /// in view space, can fall between; all of them when some are beside the eye.
    std::pair<float, float> rowsOf(Vec3 centre, float radius) const {
        return reachOf(-centre.y, centre.z, radius, centreY_);
    }
    /// The columns, likewise.
    std::pair<float, float> columnsOf(Vec3 centre, float radius) const {
        return reachOf(centre.x, centre.z, radius, centreX_);
    }
    /// True when no point within `radius` of `centre`, in view space, can be in the picture.
    bool isOutside(Vec3 centre, float radius) const {
        if (isParallel())
            return std::abs(centre.x) > centreX_ / scale_ + radius ||
                   std::abs(centre.y) > centreY_ / scale_ + radius;
        // The distance from a side plane of the picture's pyramid, by its slope.
        return centre.z + radius < nearDistance() ||
               (std::abs(centre.x) - centre.z * sideSlope_) * sideCosine_ > radius ||
               (std::abs(centre.y) - centre.z * heightSlope_) * heightCosine_ > radius;
    }

private:
    static constexpr float kParallelNear = -1e30f;
    /// Of the distance of the target, which may be on the horizon while something stands before the
    /// eye. Depths, being reciprocal, are as fine for all that.
    static constexpr double kNearShare = 1e-7;
    static constexpr double kBeside = 8;                     // times the picture
    static constexpr float kHalfFieldTangent = 0.41421356f;  // 45 degrees from top to bottom

    std::pair<float, float> reachOf(float out, float ahead, float radius, float middle) const;
    void update();
    void shiftTarget(double right, double up);
    double distanceToFit(const Box& box) const;
    void centreOn(const Box& box);

    View view_ = View::kPerspective;
    Vec3d target_{};
    double distance_ = 100;
    float yaw_ = -0.9f, pitch_ = 0.55f;
    int width_ = 1, height_ = 1;

    // Derived by update().
    Vec3d eye_{};
    Vec3 right_{1, 0, 0}, up_{0, 0, 1}, forward_{0, 1, 0};
    float centreX_ = 0.5f, centreY_ = 0.5f, scale_ = 1;
    double perScale_ = 1;                    // one over scale
    float sideSlope_ = 1, heightSlope_ = 1;  // half picture size over scale
    float sideCosine_ = 1, heightCosine_ = 1;
    double sideLean_ = 1, heightLean_ = 1;  // how bounds beside the picture lean
};

}  // namespace render
