// How bright a surface is under the scene's lights.
#pragma once

#include <render/camera.h>
#include <render/scenemodel.h>

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

    void beginFrame(std::span<const Light> lights, const Camera& camera);
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
        Vec3 towards;   ///< of a directional light
        Vec3 position;  ///< of the others, relative to the origin
    };

    static Vec3 towards(const Lamp& lamp, Vec3 point);
    static Vec3 shine(const Lamp& lamp, Vec3 point, Vec3 normal);

    std::vector<Lamp> lamps_;
    bool local_ = false;
    Vec3 viewer_;  ///< towards the lamp over the viewer's shoulder
    const Camera* camera_ = nullptr;
    Vec3 eye_;  ///< relative to the origin
};

}  // namespace render
