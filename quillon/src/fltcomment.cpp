#include "fltlayout.h"

#include <quillon/fltcomment.h>

template <>
struct quillon::Layout<FltComment> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltcomment", 66};
    static void fields(auto& codec, auto& record) { codec.rest("text", record); }
};
template class FltRecordOf<FltComment, FltAncillaryRec, kFltComment>;
