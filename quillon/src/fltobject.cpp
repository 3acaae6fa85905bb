#include "fltlayout.h"

#include <quillon/fltobject.h>

template <>
struct quillon::Layout<FltObject> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltobject", 63};
    static constexpr DefaultName kName{"o", &FltHeader::nextObjectId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.field("flags", record.flags);
        codec.field("relativePriority", record.relativePriority);
        codec.field("transparency", record.transparency);
        codec.field("specialEffect1", record.specialEffect1);
        codec.field("specialEffect2", record.specialEffect2);
        codec.field("significance", record.significance);
        codec.reserved(2);
    }
};
template class FltRecordOf<FltObject, FltNamedRec, kFltObject>;
