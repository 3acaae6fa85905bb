#include <render/camera.h>

namespace render {
namespace {

constexpr float kRadiansPerPixel = 0.008f;
constexpr float kZoomPerStep = 0.85f;
// From a millimetre in kilometres to a thousand kilometres in millimetres, and some room.
constexpr double kMinDistance = 1e-7;
constexpr double kMaxDistance = 1e11;
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
        case View::kRight:
            return {0, 0};
        case View::kBack:
            return {kQuarter, 0};
        case View::kBottom:
            return {-kQuarter, -kQuarter};
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

bool Camera::lookFrom(Vec3d eye, Vec3d target) {
    const Vec3d back = eye - target;
    const double distance = length(back);
    if (!(distance >= kMinDistance && distance <= kMaxDistance)) return false;
    view_ = View::kPerspective;
    target_ = target;
    distance_ = distance;
    // Straight from above the compass direction stays.
    if (back.x != 0 || back.y != 0) yaw_ = static_cast<float>(std::atan2(back.y, back.x));
    pitch_ = std::clamp(static_cast<float>(std::asin(back.z / distance)), -kMaxPitch, kMaxPitch);
    update();
    return true;
}

bool Camera::setStand(const CameraStand& stand) {
    const bool isOf = stand.distance >= kMinDistance && stand.distance <= kMaxDistance;
    if (!isOf || !isFinite(stand.target) || !std::isfinite(stand.yaw) ||
        !std::isfinite(stand.pitch))
        return false;
    view_ = stand.view;
    target_ = stand.target;
    distance_ = stand.distance;
    yaw_ = stand.yaw;
    pitch_ = std::clamp(stand.pitch, -kMaxPitch, kMaxPitch);
    update();
    return true;
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
    // A single point: some room around it.
    if (length(box.max - box.min) <= kMinDistance) needed = 10;
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

Ray Camera::rayAt(float x, float y) const {
    const double unit = unitsPerPixel();
    const Vec3d through = target_ + Vec3d(right_) * (double{x - centreX_} * unit) +
                          Vec3d(up_) * (double{centreY_ - y} * unit);
    if (isParallel()) return {through, Vec3d(forward_)};
    return {eye_, normalised(through - eye_)};
}

bool Camera::clipToPicture(Vec3& a, Vec3& b) const {
    constexpr float kMargin = 4;  // pixels
    const float margin = kMargin / scale_;
    float enter = 0, leave = 1;
    // Points within a boundary have a room of at least 0.
    const auto clip = [&](float roomA, float roomB) {
        if (roomA < 0 && roomB < 0) return false;
        if (roomA < 0) enter = std::max(enter, roomA / (roomA - roomB));
        if (roomB < 0) leave = std::min(leave, roomA / (roomA - roomB));
        return enter <= leave;
    };
    const auto reach = [&](Vec3 p, float slope) {
        return isParallel() ? slope * (centreY_ / heightSlope_) / scale_ + margin
                            : p.z * (slope + margin);
    };
    if (!clip(a.z - nearDistance(), b.z - nearDistance()) ||
        !clip(reach(a, sideSlope_) - a.x, reach(b, sideSlope_) - b.x) ||
        !clip(reach(a, sideSlope_) + a.x, reach(b, sideSlope_) + b.x) ||
        !clip(reach(a, heightSlope_) - a.y, reach(b, heightSlope_) - b.y) ||
        !clip(reach(a, heightSlope_) + a.y, reach(b, heightSlope_) + b.y))
        return false;
    const Vec3 start = a, along = b - a;
    a = start + along * enter;
    if (leave < 1) b = start + along * leave;
    return a.z >= nearDistance() && b.z >= nearDistance();
}

std::optional<ScreenPoint> Camera::project(Vec3d world) const {
    const Vec3 view = toView(world);
    if (view.z < nearDistance()) return std::nullopt;
    return toScreen(view);
}

// The pixels across or down, of which `middle` is in the middle of the picture.
std::pair<float, float> Camera::reachOf(float out, float ahead, float radius, float middle) const {
    if (isParallel()) return {middle + (out - radius) * scale_, middle + (out + radius) * scale_};
    const float square = ahead * ahead - radius * radius;
    if (!(ahead > radius && ahead - radius > nearDistance() && square > 0)) return {0, 2 * middle};
    // The slopes of the two planes through the eye that touch the sphere.
    const float reach = radius * std::sqrt(out * out + square), perSquare = scale_ / square;
    return {middle + (out * ahead - reach) * perSquare, middle + (out * ahead + reach) * perSquare};
}

bool Camera::isWithinBounds(Vec3 centre, float radius) const {
    const bool isParallelView = isParallel();
    for (int bound = 0; bound < kBounds; ++bound) {
        // The bounds beside the picture are not square to where they are measured.
        const double lean = bound == 0 || isParallelView ? 1 : bound <= 2 ? sideLean_ : heightLean_;
        if (roomWithin(bound, centre) < lean * double{radius}) return false;
    }
    return true;
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
    sideCosine_ = 1 / std::sqrt(1 + sideSlope_ * sideSlope_);
    heightCosine_ = 1 / std::sqrt(1 + heightSlope_ * heightSlope_);
    perScale_ = 1 / double{scale_};
    sideLean_ = std::hypot(1, kBeside * double{sideSlope_});
    heightLean_ = std::hypot(1, kBeside * double{heightSlope_});
}

}  // namespace render
