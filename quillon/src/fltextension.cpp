#include "fltlayout.h"

#include <quillon/fltextension.h>

template <>
struct quillon::Layout<FltExtension> {
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.field("siteId", record.siteId);
        codec.reserved(1);
        codec.field("revision", record.revision);
        codec.field("recordCode", record.recordCode);
        codec.rest("data", record.data);
    }
};
template class FltRecordOf<FltExtension, FltAncillaryRec, kFltExtensionAttr>;
