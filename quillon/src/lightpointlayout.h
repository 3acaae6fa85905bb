// What light points and their appearance palette have in common.
#pragma once

#include "fltlayout.h"

namespace quillon {

[[gnu::always_inline]] inline void layoutLook(auto& codec, auto& record) {
    codec.field("surfaceMaterialCode", record.surfaceMaterialCode);
    codec.field("featureId", record.featureId);
    codec.field("backColor", record.backColor);
    codec.field("displayMode", record.displayMode);
    codec.field("intensity", record.intensity);
    codec.field("backIntensity", record.backIntensity);
    codec.field("minDefocus", record.minDefocus);
    codec.field("maxDefocus", record.maxDefocus);
    codec.field("fadingMode", record.fadingMode);
    codec.field("fogPunchMode", record.fogPunchMode);
    codec.field("directionalMode", record.directionalMode);
    codec.field("rangeMode", record.rangeMode);
    codec.field("minPixelSize", record.minPixelSize);
    codec.field("maxPixelSize", record.maxPixelSize);
    codec.field("actualPixelSize", record.actualPixelSize);
    codec.field("transparentFalloffPixelSize", record.transparentFalloffPixelSize);
    codec.field("transparentFalloffExponent", record.transparentFalloffExponent);
    codec.field("transparentFalloffScalar", record.transparentFalloffScalar);
    codec.field("transparentFalloffClamp", record.transparentFalloffClamp);
    codec.field("fogScalar", record.fogScalar);
}

/// What follows it, one word on: when and where the light is seen.
[[gnu::always_inline]] inline void layoutLobe(auto& codec, auto& record) {
    codec.field("sizeDifferenceThreshold", record.sizeDifferenceThreshold);
    codec.field("directionalType", record.directionalType);
    codec.field("horizontalLobeAngle", record.horizontalLobeAngle);
    codec.field("verticalLobeAngle", record.verticalLobeAngle);
    codec.field("lobeRollAngle", record.lobeRollAngle);
    codec.field("directionalFalloffExponent", record.directionalFalloffExponent);
    codec.field("directionalAmbientIntensity", record.directionalAmbientIntensity);
}

}  // namespace quillon
