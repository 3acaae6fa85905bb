// Light sources as lights of the host.
#pragma once

#include <fltkilnutil/kilnlight.h>
#include <kiln/kiln.h>
#include <quillon/fltlightsource.h>

namespace interchange {

/// A light of the palette entry's type, color and state. The caller owns it, without a reference.
Object* makeLight(const FltLightSourcePalette& palette);

/// Where a light source stands, and how it is turned. Yaw and pitch lead from the light's target to
/// the light: yaw counter-clockwise about z from the x axis, pitch up from the ground, so that the
/// default light comes down from the sky.
Matrix3 placeOf(const FltLightSource& source);

/// Whether the two stand in the same place and are turned alike.
bool hasSamePlace(const FltLightSource& a, const FltLightSource& b);

/// Gives `source` the position and direction that `place` has. False, and nothing changes, when
/// those two cannot say it: `place` is mirrored, scaled or rolled.
bool moveTo(FltLightSource& source, const Matrix3& place);

/// The palette entry for a light of the scene that has none.
FltLightSourcePalette paletteFor(const GenLight& light);

/// The options that keep the palette entry on the node.
KilnLight optionsOf(const FltLightSourcePalette& palette);

}  // namespace interchange
