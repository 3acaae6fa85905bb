#include "fltlayout.h"

#include <quillon/fltlightpointpalettes.h>

template <>
struct quillon::Layout<FltLightPointAppearance> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("name", record.name);
        codec.field("index", record.index);
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
        codec.field("fogIntensity", record.fogIntensity);
        codec.field("sizeDifferenceThreshold", record.sizeDifferenceThreshold);
        codec.field("directionalType", record.directionalType);
        codec.field("horizontalLobeAngle", record.horizontalLobeAngle);
        codec.field("verticalLobeAngle", record.verticalLobeAngle);
        codec.field("lobeRollAngle", record.lobeRollAngle);
        codec.field("directionalFalloffExponent", record.directionalFalloffExponent);
        codec.field("directionalAmbientIntensity", record.directionalAmbientIntensity);
        codec.field("significance", record.significance);
        codec.field("flags", record.flags);
        codec.field("visibilityRange", record.visibilityRange);
        codec.field("fadeRangeRatio", record.fadeRangeRatio);
        codec.field("fadeInDuration", record.fadeInDuration);
        codec.field("fadeOutDuration", record.fadeOutDuration);
        codec.field("lodRangeRatio", record.lodRangeRatio);
        codec.field("lodScale", record.lodScale);
        codec.field("textureIndex", record.textureIndex);
        codec.reserved(2);
    }
};
template class FltRecordOf<FltLightPointAppearance, FltPaletteRec, kFltLightPointAppearance>;

template <>
struct quillon::Layout<FltLightPointAnimation> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("name", record.name);
        codec.field("index", record.index);
        codec.field("period", record.period);
        codec.field("phaseDelay", record.phaseDelay);
        codec.field("enabledPeriod", record.enabledPeriod);
        codec.field("axis", record.axis);
        codec.field("flags", record.flags);
        codec.field("type", record.type);
        codec.field("morseTiming", record.morseTiming);
        codec.field("wordRate", record.wordRate);
        codec.field("characterRate", record.characterRate);
        codec.field("morseText", record.morseText);
        codec.field("stepCount", record.stepCount);
        codec.items(
            record.steps,
            [](auto& each, auto& step) {
                each.field("stepStates", step.state);
                each.field("stepDurations", step.duration);
                each.field("stepColors", step.color);
            },
            record.stepCount);
    }
};
template class FltRecordOf<FltLightPointAnimation, FltPaletteRec, kFltLightPointAnimation>;
