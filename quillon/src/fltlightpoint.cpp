#include "lightpointlayout.h"

#include <quillon/fltlightpoint.h>

template <>
struct quillon::Layout<FltLightPoint> {
    static constexpr OpcodeCheck kOpcodeCheck = kAnyOpcode;
    static constexpr DefaultName kName{"lp", &FltHeader::nextLightPointId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        layoutLook(codec, record);
        codec.word("reserved", record.reserved);
        layoutLobe(codec, record);
        codec.field("animationPeriod", record.animationPeriod);
        codec.field("animationPhaseDelay", record.animationPhaseDelay);
        codec.field("animationEnabledPeriod", record.animationEnabledPeriod);
        codec.field("significance", record.significance);
        codec.field("calligraphicDrawOrder", record.calligraphicDrawOrder);
        codec.field("flags", record.flags);

        codec.narrowed("axisX", record.axisX);
        codec.narrowed("axisY", record.axisY);
        codec.narrowed("axisZ", record.axisZ);
    }
};
template class FltRecordOf<FltLightPoint, FltLightPointLook<FltNamedRec>, kFltLightPoint>;
