#include "fltlayout.h"

#include <quillon/fltfilebeads.h>

template <>
struct quillon::Layout<FltLod> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltlod", 61};
    static constexpr DefaultName kName{"l", &FltHeader::nextLodId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.reserved(4);
        codec.field("switchInDistance", record.switchInDistance);
        codec.field("switchOutDistance", record.switchOutDistance);
        codec.field("specialEffect1", record.specialEffect1);
        codec.field("specialEffect2", record.specialEffect2);
        codec.field("flags", record.flags);
        codec.field("centerX", record.centerX);
        codec.field("centerY", record.centerY);
        codec.field("centerZ", record.centerZ);
        codec.field("transitionRange", record.transitionRange);
    }
};
template class FltRecordOf<FltLod, FltNamedRec, kFltLod>;

template <>
struct quillon::Layout<FltFileLod> {
    static void fields(auto& codec, auto& record) {
        Layout<FltLod>::fields(codec, record);
        codec.field("significantSize", record.significantSize);
    }
};
template class FltRecordOf<FltFileLod, FltLod, kFltLod>;
