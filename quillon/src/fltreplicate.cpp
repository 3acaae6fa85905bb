#include "fltlayout.h"

#include <quillon/fltreplicate.h>

template <>
struct quillon::Layout<FltReplicate> {
    static void fields(auto& codec, auto& record) {
        codec.field("copies", record.copies);
        codec.reserved(2);
    }
};
template class FltRecordOf<FltReplicate, FltAncillaryRec, kFltReplicate>;
