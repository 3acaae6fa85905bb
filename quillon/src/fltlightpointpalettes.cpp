#include "fieldassign.h"
#include "lightpointlayout.h"

#include <quillon/fltlightpointpalettes.h>

template <>
struct quillon::Layout<FltLightPointAppearance> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("name", record.name);
        codec.field("index", record.index);
        layoutLook(codec, record);
        codec.field("fogIntensity", record.fogIntensity);
        layoutLobe(codec, record);
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
template class FltRecordOf<FltLightPointAppearance, FltLightPointLook<FltPaletteRec>,
                           kFltLightPointAppearance>;
template FltFieldSet quillon::assignField(FltLightPointAppearance&, std::string_view,
                                          std::string_view);

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
template FltFieldSet quillon::assignField(FltLightPointAnimation&, std::string_view,
                                          std::string_view);
