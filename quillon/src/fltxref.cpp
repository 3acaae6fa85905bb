#include "fltlayout.h"

#include <quillon/fltxref.h>

template <>
struct quillon::Layout<FltXRef> {
    static constexpr OpcodeCheck kOpcodeCheck = kAnyOpcode;
    static void fields(auto& codec, auto& record) {
        codec.field("fileName", record.fileName);
        codec.reserved(4);
        codec.field("flags", record.flags);
        codec.reserved(2);
    }
};
template class FltRecordOf<FltXRef, FltPrimaryRec, kFltExternalRef>;
