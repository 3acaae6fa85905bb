#include "fltlayout.h"

#include <quillon/fltindexedstring.h>

template <>
struct quillon::Layout<FltIndexedString> {
    static void fields(auto& codec, auto& record) {
        codec.field("index", record.index);
        codec.rest("text", record.text);
    }
};
template class FltRecordOf<FltIndexedString, FltAncillaryRec, kFltIndexedString>;
