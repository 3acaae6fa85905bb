#include <workbench/lighting.h>

namespace workbench {
namespace {

constexpr float kAloneAmbient = 0.42f, kAloneViewer = 0.66f;
constexpr float kAmbient = 0.36f, kViewer = 0.2f, kScene = 0.56f;
// The host's spots have no cone of their own.
constexpr float kSpotRimCosine = 0.7660444f, kSpotCoreCosine = 0.8660254f;  // 40 and 30 degrees

// Several lights together come near to white, but do not wash everything out.
float limited(float brightness) {
    constexpr float kKnee = 0.9f, kHeadroom = 0.25f;
    if (brightness <= kKnee) return brightness;
    const float above = brightness - kKnee;
    return kKnee + above / (1 + above / kHeadroom);
}

}  // namespace

void Lighting::beginFrame(std::span<const Light> lights, const Camera& camera) {
    viewer_ = normalised(camera.up() * 0.45f - camera.right() * 0.3f - camera.forward());
    lamps_.clear();
    local_ = false;
    for (const Light& light : lights) {
        lamps_.push_back({&light, light.direction * -1.f, {}});
        local_ = local_ || light.kind != LightKind::kDirectional;
    }
    if (lamps_.size() <= kMost) return;
    const auto distance = [&](const Lamp& lamp) {
        if (lamp.light->kind == LightKind::kDirectional) return 0.;
        return length(lamp.light->position - camera.target());
    };
    std::nth_element(lamps_.begin(), lamps_.begin() + kMost, lamps_.end(),
                     [&](const Lamp& a, const Lamp& b) { return distance(a) < distance(b); });
    lamps_.resize(kMost);
}

void Lighting::setOrigin(Vec3d origin) {
    for (Lamp& lamp : lamps_) lamp.position = toFloat(lamp.light->position - origin);
}

Vec3 Lighting::shine(const Lamp& lamp, Vec3 point, Vec3 normal) {
    if (lamp.light->kind == LightKind::kDirectional)
        return lamp.light->strength * std::max(0.f, dot(normal, lamp.towards));
    const Vec3 towards = normalised(lamp.position - point);
    float share = std::max(0.f, dot(normal, towards));
    if (lamp.light->kind == LightKind::kSpot) {
        const float cosine = dot(towards, lamp.towards);
        share *=
            std::clamp((cosine - kSpotRimCosine) / (kSpotCoreCosine - kSpotRimCosine), 0.f, 1.f);
    }
    return lamp.light->strength * share;
}

Vec3 Lighting::at(Vec3 point, Vec3 normal) const {
    const float fromViewer = std::max(0.f, dot(normal, viewer_));
    if (lamps_.empty()) {
        const float all = kAloneAmbient + kAloneViewer * fromViewer;
        return {all, all, all};
    }
    Vec3 sum;
    for (const Lamp& lamp : lamps_) sum = sum + shine(lamp, point, normal);
    const float base = kAmbient + kViewer * fromViewer;
    return {limited(base + kScene * sum.x), limited(base + kScene * sum.y),
            limited(base + kScene * sum.z)};
}

}  // namespace workbench
