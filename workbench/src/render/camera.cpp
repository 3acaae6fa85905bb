#include <workbench/camera.h>

namespace workbench {
namespace {

constexpr float kRadiansPerPixel = 0.008f;
constexpr float kZoomPerStep = 0.85f;
constexpr double kMinDistance = 1e-3;
constexpr double kMaxDistance = 1e9;
constexpr double kFrameMargin = 1.06;

struct Direction {
    float yaw, pitch;
};

// The yaw and pitch of the parallel views; yaw is the compass direction of the eye.
Direction directionOf(View view) {
    constexpr float kQuarter = 1.57079633f;
    switch (view) {
        case View::kTop:
            return {-kQuarter, kQuarter};
        case View::kLeft:
            return {2 * kQuarter, 0};
        default:
            return {-kQuarter, 0};
    }
}

}  // namespace

void Camera::setPictureSize(int width, int height) {
    width_ = std::max(width, 1);
    height_ = std::max(height, 1);
    update();
}

void Camera::setView(View view) {
    view_ = view;
    update();
}

void Camera::orbit(float dx, float dy) {
    if (isParallel()) {
        const Direction from = directionOf(view_);
        yaw_ = from.yaw;
        pitch_ = from.pitch;
        view_ = View::kPerspective;
    }
    yaw_ = std::remainder(yaw_ - dx * kRadiansPerPixel, 6.28318531f);
    pitch_ = std::clamp(pitch_ + dy * kRadiansPerPixel, -kMaxPitch, kMaxPitch);
    update();
}

void Camera::shiftTarget(double right, double up) {
    target_ = target_ + Vec3d(right_) * right + Vec3d(up_) * up;
    update();
}

void Camera::pan(float dx, float dy) {
    const double unit = unitsPerPixel();
    shiftTarget(-dx * unit, dy * unit);
}

void Camera::zoom(float steps, float x, float y) {
    const double before = unitsPerPixel();
    distance_ =
        std::clamp(distance_ * std::pow(double{kZoomPerStep}, steps), kMinDistance, kMaxDistance);
    const double gained = before - unitsPerPixel();
    shiftTarget((x - centreX_) * gained, (centreY_ - y) * gained);
}

void Camera::focusAt(float distance) {
    // In a parallel view the distance is the scale.
    if (isParallel() || !(distance > kMinDistance && distance < kMaxDistance)) return;
    target_ = eye_ + Vec3d(forward_) * distance;
    distance_ = distance;
    update();
}

void Camera::frame(const Box& box) {
    target_ = {};
    distance_ = 100;
    update();
    if (box.empty()) return;
    // What perspective makes of a box is not in the middle when its centre is: a few steps put it
    // there.
    target_ = box.centre();
    for (int step = 0; step < 4; ++step) {
        distance_ = distanceToFit(box);
        update();
        if (step < 3) centreOn(box);
    }
}

// The distance from the target at which every corner is in the picture.
double Camera::distanceToFit(const Box& box) const {
    double needed = kMinDistance;
    for (unsigned i = 0; i < 8; ++i) {
        const Vec3d d = box.corner(i) - target_;
        const double depth = isParallel() ? 0 : -dot(d, Vec3d(forward_));
        const double across = std::abs(dot(d, Vec3d(right_))) / sideSlope_;
        const double along = std::abs(dot(d, Vec3d(up_))) / heightSlope_;
        needed = std::max(needed, std::max(across, along) + depth);
    }
    if (needed <= kMinDistance) needed = 10;  // a single point: some room around it
    return std::clamp(needed * kFrameMargin, kMinDistance, kMaxDistance);
}

void Camera::centreOn(const Box& box) {
    Box seen;  // x and y, in units at the target's depth
    for (unsigned i = 0; i < 8; ++i) {
        const Vec3 view = toView(box.corner(i));
        const double shrink = isParallel() ? 1 : distance_ / std::max(view.z, nearDistance());
        seen.add({view.x * shrink, view.y * shrink, 0});
    }
    shiftTarget(seen.centre().x, seen.centre().y);
}

float Camera::unitsPerPixel() const {
    return static_cast<float>(2 * kHalfFieldTangent * distance_ / height_);
}

float Camera::pixelsPerUnitAt(Vec3d world) const {
    if (isParallel()) return scale_;
    return scale_ / std::max(toView(world).z, nearDistance());
}

std::optional<ScreenPoint> Camera::project(Vec3d world) const {
    const Vec3 view = toView(world);
    if (view.z < nearDistance()) return std::nullopt;
    return toScreen(view);
}

bool Camera::isOutside(Vec3d centre, float radius) const {
    const Vec3 v = toView(centre);
    if (isParallel()) {
        const float halfWidth = centreX_ / scale_, halfHeight = centreY_ / scale_;
        return std::abs(v.x) > halfWidth + radius || std::abs(v.y) > halfHeight + radius;
    }
    if (v.z + radius < nearDistance()) return true;
    // The distance from a side plane of the picture's pyramid, by its slope.
    const float side = (std::abs(v.x) - v.z * sideSlope_) / std::sqrt(1 + sideSlope_ * sideSlope_);
    const float height =
        (std::abs(v.y) - v.z * heightSlope_) / std::sqrt(1 + heightSlope_ * heightSlope_);
    return side > radius || height > radius;
}

void Camera::update() {
    const Direction direction = isParallel() ? directionOf(view_) : Direction{yaw_, pitch_};
    const float cosPitch = std::cos(direction.pitch), sinPitch = std::sin(direction.pitch);
    const float cosYaw = std::cos(direction.yaw), sinYaw = std::sin(direction.yaw);
    forward_ = {-cosPitch * cosYaw, -cosPitch * sinYaw, -sinPitch};
    right_ = {-sinYaw, cosYaw, 0};
    up_ = cross(right_, forward_);
    eye_ = target_ - Vec3d(forward_) * distance_;

    centreX_ = static_cast<float>(width_) * 0.5f;
    centreY_ = static_cast<float>(height_) * 0.5f;
    const float perspective = centreY_ / kHalfFieldTangent;
    scale_ = isParallel() ? static_cast<float>(perspective / distance_) : perspective;
    sideSlope_ = centreX_ / perspective;
    heightSlope_ = centreY_ / perspective;
}

}  // namespace workbench
