#include "fltlayout.h"

#include <quillon/fltfilebeads.h>

template <>
struct quillon::Layout<FltGroup> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltgroup", 61};
    static constexpr DefaultName kName{"g", &FltHeader::nextGroupId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.field("relativePriority", record.relativePriority);
        codec.reserved(2);
        codec.field("flags", record.flags);
        codec.field("specialEffect1", record.specialEffect1);
        codec.field("specialEffect2", record.specialEffect2);
        codec.field("significance", record.significance);
        codec.field("layerCode", record.layerCode);
        codec.reserved(5);
    }
};
template class FltRecordOf<FltGroup, FltNamedRec, kFltGroup>;

template <>
struct quillon::Layout<FltFileGroup> {
    static void fields(auto& codec, auto& record) {
        Layout<FltGroup>::fields(codec, record);
        codec.field("loopCount", record.loopCount);
        codec.field("loopDuration", record.loopDuration);
        codec.field("lastFrameDuration", record.lastFrameDuration);
    }
};
template class FltRecordOf<FltFileGroup, FltGroup, kFltGroup>;
