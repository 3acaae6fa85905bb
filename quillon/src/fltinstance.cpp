#include "fltlayout.h"

#include <quillon/fltinstance.h>

namespace {

struct InstanceLayout {
    static constexpr quillon::OpcodeCheck kOpcodeCheck{"fltinstance", 44};
    static void fields(auto& codec, auto& record) {
        codec.reserved(2);
        codec.field("instanceNumber", record.instanceNumber);
    }
};

}  // namespace

template <>
struct quillon::Layout<FltInstanceRef> : InstanceLayout {};
template class FltRecordOf<FltInstanceRef, FltInstance, kFltInstanceRef>;

template <>
struct quillon::Layout<FltInstanceDef> : InstanceLayout {};
template class FltRecordOf<FltInstanceDef, FltInstance, kFltInstanceDef>;
