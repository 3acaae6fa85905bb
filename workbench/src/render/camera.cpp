#include <workbench/camera.h>

namespace workbench {
namespace {

constexpr float kRadiansPerPixel = 0.008f;
constexpr float kZoomPerStep = 0.85f;
constexpr float kMinDistance = 1e-3f;
constexpr float kMaxDistance = 1e9f;
constexpr float kFrameMargin = 1.08f;

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

void Camera::pan(float dx, float dy) {
    const float unit = unitsPerPixel();
    target_ = target_ - right_ * (dx * unit) + up_ * (dy * unit);
    update();
}

void Camera::zoom(float steps, float x, float y) {
    const float before = unitsPerPixel();
    distance_ = std::clamp(distance_ * std::pow(kZoomPerStep, steps), kMinDistance, kMaxDistance);
    const float gained = before - unitsPerPixel();
    target_ = target_ + right_ * ((x - centreX_) * gained) - up_ * ((y - centreY_) * gained);
    update();
}

void Camera::frame(const Box& box) {
    update();
    if (box.empty()) {
        target_ = {};
        distance_ = 100;
        update();
        return;
    }
    // The box is moved to its centre and the distance chosen at which every corner is inside.
    target_ = box.centre();
    float needed = kMinDistance;
    for (unsigned i = 0; i < 8; ++i) {
        const Vec3 d = box.corner(i) - target_;
        const float depth = isParallel() ? 0 : -dot(d, forward_);
        const float across = std::abs(dot(d, right_)) / sideSlope_;
        const float along = std::abs(dot(d, up_)) / heightSlope_;
        needed = std::max(needed, std::max(across, along) + depth);
    }
    if (needed <= kMinDistance) needed = 10;  // a single point: some room around it
    distance_ = std::clamp(needed * kFrameMargin, kMinDistance, kMaxDistance);
    update();
}

float Camera::unitsPerPixel() const {
    return 2 * kHalfFieldTangent * distance_ / static_cast<float>(height_);
}

float Camera::pixelsPerUnitAt(Vec3 world) const {
    if (isParallel()) return scale_;
    return scale_ / std::max(toView(world).z, nearDistance());
}

std::optional<ScreenPoint> Camera::project(Vec3 world) const {
    const Vec3 view = toView(world);
    if (view.z < nearDistance()) return std::nullopt;
    return toScreen(view);
}

bool Camera::isOutside(Vec3 centre, float radius) const {
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
    eye_ = target_ - forward_ * distance_;

    centreX_ = static_cast<float>(width_) * 0.5f;
    centreY_ = static_cast<float>(height_) * 0.5f;
    const float perspective = centreY_ / kHalfFieldTangent;
    scale_ = isParallel() ? perspective / distance_ : perspective;
    sideSlope_ = centreX_ / perspective;
    heightSlope_ = centreY_ / perspective;
}

}  // namespace workbench
