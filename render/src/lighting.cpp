#include <render/lighting.h>

namespace render {
namespace {

constexpr float kAloneAmbient = 0.42f, kAloneViewer = 0.66f;
constexpr float kAmbient = 0.36f, kViewer = 0.2f, kScene = 0.56f;
// What no light reaches shows its own color; a little shade keeps its shape.
constexpr float kUnlit = 0.78f;
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
    camera_ = &camera;
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
    eye_ = toFloat(camera_->eye() - origin);
}

Vec3 Lighting::towards(const Lamp& lamp, Vec3 point) {
    return lamp.light->kind == LightKind::kDirectional ? lamp.towards
                                                       : normalised(lamp.position - point);
}

Vec3 Lighting::glintAt(Vec3 point, Vec3 normal, const Surface& surface) const {
    const Vec3 eye = camera_->isParallel() ? camera_->forward() * -1.f : normalised(eye_ - point);
    Vec3 sum;
    for (const Lamp& lamp : lamps_) {
        const float cosine = dot(normal, normalised(towards(lamp, point) + eye));
        if (cosine > 0)
            sum = sum + shine(lamp, point, normal) * std::pow(cosine, surface.shininess);
    }
    return {sum.x * surface.specular.x, sum.y * surface.specular.y, sum.z * surface.specular.z};
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

Vec3 Lighting::at(Vec3 point, Vec3 normal, const Surface& surface) const {
    const float fromViewer = std::max(0.f, dot(normal, viewer_));
    if (!surface.lit) {
        const float all = kUnlit + (1 - kUnlit) * fromViewer;
        return {all, all, all};
    }
    // The light from everywhere stands for what other surfaces throw back, too.
    const Vec3 both = surface.ambient + surface.diffuse;
    const Vec3 everywhere{std::min(both.x, 1.f), std::min(both.y, 1.f), std::min(both.z, 1.f)};
    if (lamps_.empty())
        return everywhere * kAloneAmbient + surface.diffuse * (kAloneViewer * fromViewer);
    Vec3 sum;
    for (const Lamp& lamp : lamps_) sum = sum + shine(lamp, point, normal);
    const auto channel = [&](float Vec3::*c) {
        return limited(everywhere.*c * kAmbient +
                       surface.diffuse.*c * (kViewer * fromViewer + kScene * sum.*c));
    };
    return {channel(&Vec3::x), channel(&Vec3::y), channel(&Vec3::z)};
}

}  // namespace render
