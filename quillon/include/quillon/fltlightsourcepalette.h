// The light source palette record.
#pragma once

#include <quillon/fltrecordof.h>

/// Entry of the light source palette. Angles are in degrees, color components from 0 to 1.
class FltLightSourcePalette
    : public FltRecordOf<FltLightSourcePalette, FltPaletteRec, kFltLightSourcePalette> {
public:
    std::int32_t paletteIndex = -1;
    char name[20] = {};  ///< NUL-padded; a full field has no terminator
    float ambientRed = 0;
    float ambientGreen = 0;
    float ambientBlue = 0;
    float ambientAlpha = 0;
    float diffuseRed = 1;
    float diffuseGreen = 1;
    float diffuseBlue = 1;
    float diffuseAlpha = 0;
    float specularRed = 1;
    float specularGreen = 1;
    float specularBlue = 1;
    float specularAlpha = 0;
    std::int32_t lightType = 0;  ///< 0 infinite, 1 local, 2 spot
    float spotExponentialDropoff = 0;
    float spotCutoffAngle = 90.0F;
    float yaw = 135.0F;
    float pitch = 45.0F;
    float constantAttenuation = 1.0F;
    float linearAttenuation = 0;
    float quadraticAttenuation = 0;
    std::int32_t activeDuringModeling = 1;
};
