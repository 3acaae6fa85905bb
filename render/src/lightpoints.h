// What is seen of a light point.
#pragma once

#include <render/scenemodel.h>

namespace render {

enum class LightSide { kNone, kFront, kBack };

/// What it shows at this time in seconds, where it goes through steps; null where it does not.
const LightPointStep* stepAt(const LightPointLook& look, double seconds);

/// Which of its lights meets the eye, at this time in seconds. `normal` is the point's direction
/// and `towardsEye` that to the eye, of unit length; a zero normal is none.
LightSide sideSeen(const LightPointLook& look, Vec3 normal, Vec3 towardsEye, double seconds);

/// The radius of its disc in pixels, where `usual` is that of one without a size of its own and
/// `pixelsPerUnit` what a unit is where it stands.
float radiusOf(const LightPointLook& look, float pixelsPerUnit, float usual);

}  // namespace render
