#include "fltlayout.h"

#include <quillon/fltlongid.h>

template <>
struct quillon::Layout<FltLongId> {
    static void fields(auto& codec, auto& record) { codec.rest("name", record.name); }
};
template class FltRecordOf<FltLongId, FltAncillaryRec, kFltLongId>;
