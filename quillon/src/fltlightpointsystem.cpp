#include "fltlayout.h"

#include <quillon/fltlightpointsystem.h>

template <>
struct quillon::Layout<FltIndexedLightPoint> {
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.field("appearanceIndex", record.appearanceIndex);
        codec.field("animationIndex", record.animationIndex);
        codec.field("drawOrder", record.drawOrder);
        codec.reserved(4);
    }
};
template class FltRecordOf<FltIndexedLightPoint, FltNamedRec, kFltIndexedLightPoint>;

template <>
struct quillon::Layout<FltLightPointSystem> {
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.field("intensity", record.intensity);
        codec.field("animationState", record.animationState);
        codec.field("flags", record.flags);
    }
};
template class FltRecordOf<FltLightPointSystem, FltNamedRec, kFltLightPointSystem>;
