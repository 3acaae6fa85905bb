#include "lightpoints.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace render {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;
/// What is larger covers the picture.
constexpr float kLargestRadius = 512;

/// Where in a period a time is, from 0 to below 1.
double phaseOf(double seconds, float period) {
    const double periods = seconds / double{period};
    return periods - std::floor(periods);
}

bool isOn(const LightPointLook& look, double seconds) {
    if (const LightPointStep* const step = stepAt(look, seconds)) return step->isOn;
    if (!(look.period > 0) || !(look.onTime > 0)) return true;
    return phaseOf(seconds - double{look.delay}, look.period) * double{look.period} <
           double{look.onTime};
}

Vec3 rotated(Vec3 v, Vec3 axis, float angle) {
    return v * std::cos(angle) + cross(axis, v) * std::sin(angle) +
           axis * (dot(axis, v) * (1 - std::cos(angle)));
}

/// Within an ellipse of angles about the direction.
bool isWithinLobe(const LightPointLook& look, Vec3 ahead, Vec3 towardsEye) {
    const Vec3 level = cross(Vec3{0, 0, 1}, ahead);
    Vec3 side = length(level) > 1e-4f ? normalised(level) : Vec3{1, 0, 0};
    if (look.roll != 0) side = rotated(side, ahead, look.roll * kPi / 180);
    const Vec3 up = cross(ahead, side);
    const float forward = dot(towardsEye, ahead);
    const auto share = [&](float sideways, float degrees) {
        const float half = (degrees > 0 ? degrees : 180.f) * kPi / 360;
        return std::atan2(sideways, forward) / half;
    };
    const float across = share(dot(towardsEye, side), look.across);
    const float along = share(dot(towardsEye, up), look.along);
    return across * across + along * along <= 1;
}

}  // namespace

const LightPointStep* stepAt(const LightPointLook& look, double seconds) {
    if (!(look.period > 0) || look.stepCount == 0) return nullptr;
    double left = phaseOf(seconds - double{look.delay}, look.period) * double{look.period};
    const LightPointStep* step = look.steps;
    for (const LightPointStep* const last = step + look.stepCount - 1; step != last; ++step) {
        if (left < double{step->seconds}) break;
        left -= double{step->seconds};
    }
    return step;
}

LightSide sideSeen(const LightPointLook& look, Vec3 normal, Vec3 towardsEye, double seconds) {
    if (!isOn(look, seconds)) return LightSide::kNone;
    if (look.shines == LightPointLook::Shines::kEverywhere || normal == Vec3{})
        return LightSide::kFront;
    const Vec3 axis =
        normalised(Vec3{static_cast<float>(look.axis.x), static_cast<float>(look.axis.y),
                        static_cast<float>(look.axis.z)});
    if (look.turns() && isFinite(axis))
        normal = rotated(normal, axis, static_cast<float>(phaseOf(seconds, look.turn)) * 2 * kPi);
    if (isWithinLobe(look, normal, towardsEye)) return LightSide::kFront;
    if (look.shines == LightPointLook::Shines::kAheadAndBack &&
        isWithinLobe(look, normal * -1.f, towardsEye))
        return LightSide::kBack;
    return LightSide::kNone;
}

float radiusOf(const LightPointLook& look, float pixelsPerUnit, float usual) {
    float radius = look.size > 0 ? look.size * pixelsPerUnit / 2 : usual;
    if (look.mostPixels > 0) radius = std::min(radius, look.mostPixels / 2);
    // In this order what is no number is small.
    return std::min(std::max(look.leastPixels / 2, radius), kLargestRadius);
}

}  // namespace render
