#include <render/lighting.h>

namespace render {

void Lighting::beginFrame(std::span<const Light> lights, const Camera& camera, Vec3 hour) {
    hour_ = hour;
    viewer_ = normalised(camera.up() * 0.45f - camera.right() * 0.3f - camera.forward());
    camera_ = &camera;
    lamps_.clear();
    local_ = false;
    for (const Light& light : lights) {
        const bool isSun = light.kind == LightKind::kDirectional;
        lamps_.push_back({&light,
                          isSun ? product(light.strength, hour) : light.strength,
                          light.direction * -1.f,
                          {}});
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

Vec3 Lighting::glintAt(Vec3 point, Vec3 normal, const Surface& surface) const {
    const Vec3 eye = camera_->isParallel() ? camera_->forward() * -1.f : normalised(eye_ - point);
    Vec3 sum;
    for (const Lamp& lamp : lamps_) {
        const float cosine = dot(normal, normalised(towards(lamp, point) + eye));
        if (cosine > 0)
            sum = sum + shine(lamp, point, normal) * std::pow(cosine, surface.shininess);
    }
    return product(sum, surface.specular);
}

}  // namespace render
