#include "fltlayout.h"

#include <quillon/fltlightsource.h>

template <>
struct quillon::Layout<FltLightSource> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltlightsource", 61};
    static constexpr DefaultName kName{"ls", &FltHeader::nextLightSourceId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.reserved(4);
        codec.field("paletteIndex", record.paletteIndex);
        codec.reserved(4);
        codec.field("flags", record.flags);
        codec.reserved(4);
        codec.field("positionX", record.positionX);
        codec.field("positionY", record.positionY);
        codec.field("positionZ", record.positionZ);
        codec.field("yaw", record.yaw);
        codec.field("pitch", record.pitch);
    }
};
template class FltRecordOf<FltLightSource, FltNamedRec, kFltLightSource>;
