// How bright a surface is under the scene's lights.
#pragma once

#include <render/camera.h>
#include <render/scenemodel.h>

#include <algorithm>
#include <vector>

namespace render {

/// Beside the scene's lights a little light comes from everywhere and from the viewer, so that what
/// they leave in the dark keeps its shape. Without any, one lamp over the viewer's left shoulder
/// does it all.
class Lighting {
public:
    /// Lights that shine at once; a scene with more is lit by those that shine everywhere and those
    /// nearest to what the camera looks at.
    static constexpr std::size_t kMost = 8;

    /// `hour`: by how much the light from everywhere, of the viewer and of lights that shine
    /// everywhere is multiplied; lamps are as bright as ever.
    void beginFrame(std::span<const Light> lights, const Camera& camera, Vec3 hour = {1, 1, 1});
    /// As in `beginFrame`.
    Vec3 hour() const { return hour_; }
    /// Whether it differs from place to place on a flat surface.
    bool isLocal() const { return local_; }
    /// The points asked for next are relative to this one.
    void setOrigin(Vec3d origin);
    /// By how much to multiply the red, green and blue of a place on such a surface. `normal` has
    /// unit length and is on the viewer's side; zero for a surface without one.
    Vec3 at(Vec3 point, Vec3 normal, const Surface& surface) const;
    /// What such a surface throws back like a mirror there: red, green and blue, 1 is full.
    Vec3 glintAt(Vec3 point, Vec3 normal, const Surface& surface) const;

private:
    struct Lamp {
        const Light* light;
        Vec3 strength;
        Vec3 towards;   ///< of a directional light
        Vec3 position;  ///< of the others, relative to the origin
    };

    static constexpr float kAloneAmbient = 0.42f, kAloneViewer = 0.66f;
    static constexpr float kAmbient = 0.36f, kViewer = 0.2f, kScene = 0.56f;
    // What no light reaches shows its own color; a little shade keeps its shape.
    static constexpr float kUnlit = 0.78f;
    // The host's spots have no cone of their own.
    static constexpr float kSpotRimCosine = 0.7660444f;   // 40 degrees
    static constexpr float kSpotCoreCosine = 0.8660254f;  // 30 degrees

    static Vec3 towards(const Lamp& lamp, Vec3 point) {
        return lamp.light->kind == LightKind::kDirectional ? lamp.towards
                                                           : normalised(lamp.position - point);
    }
    static Vec3 shine(const Lamp& lamp, Vec3 point, Vec3 normal);
    static float limited(float brightness);

    std::vector<Lamp> lamps_;
    bool local_ = false;
    Vec3 hour_{1, 1, 1};
    Vec3 viewer_;  ///< towards the lamp over the viewer's shoulder
    const Camera* camera_ = nullptr;
    Vec3 eye_;  ///< relative to the origin
};

// Several lights together come near to white, but do not wash everything out.
inline float Lighting::limited(float brightness) {
    constexpr float kKnee = 0.9f, kHeadroom = 0.25f;
    if (brightness <= kKnee) return brightness;
    const float above = brightness - kKnee;
    return kKnee + above / (1 + above / kHeadroom);
}

inline Vec3 Lighting::shine(const Lamp& lamp, Vec3 point, Vec3 normal) {
    if (lamp.light->kind == LightKind::kDirectional)
        return lamp.strength * std::max(0.f, dot(normal, lamp.towards));
    const Vec3 towards = normalised(lamp.position - point);
    float share = std::max(0.f, dot(normal, towards));
    if (lamp.light->kind == LightKind::kSpot) {
        const float cosine = dot(towards, lamp.towards);
        share *=
            std::clamp((cosine - kSpotRimCosine) / (kSpotCoreCosine - kSpotRimCosine), 0.f, 1.f);
    }
    return lamp.strength * share;
}

inline Vec3 Lighting::at(Vec3 point, Vec3 normal, const Surface& surface) const {
    const float fromViewer = std::max(0.f, dot(normal, viewer_));
    if (!surface.lit) {
        const float all = kUnlit + (1 - kUnlit) * fromViewer;
        return hour_ * all;
    }
    // The light from everywhere stands for what other surfaces throw back, too.
    const Vec3 both = surface.ambient + surface.diffuse;
    const Vec3 everywhere{std::min(both.x, 1.f), std::min(both.y, 1.f), std::min(both.z, 1.f)};
    if (lamps_.empty())
        return product(hour_,
                       everywhere * kAloneAmbient + surface.diffuse * (kAloneViewer * fromViewer));
    Vec3 sum;
    for (const Lamp& lamp : lamps_) sum = sum + shine(lamp, point, normal);
    const auto channel = [&](float Vec3::*c) {
        return limited(everywhere.*c * kAmbient * hour_.*c +
                       surface.diffuse.*c * (kViewer * fromViewer * hour_.*c + kScene * sum.*c));
    };
    return {channel(&Vec3::x), channel(&Vec3::y), channel(&Vec3::z)};
}

}  // namespace render
