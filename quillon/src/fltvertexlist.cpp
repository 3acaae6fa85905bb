#include "fltlayout.h"

#include <quillon/fltvertexlist.h>

template <>
struct quillon::Layout<FltVertexPalette> {
    static void fields(auto& codec, auto& record) { codec.field("length", record.length); }
};
template class FltRecordOf<FltVertexPalette, FltPaletteRec, kFltVertexPalette>;

template <>
struct quillon::Layout<FltVertexList> {
    static void fields(auto& codec, auto& record) {
        codec.items(record.offsets,
                    [](auto& each, auto& offset) { each.field("offsets", offset); });
    }
};
template class FltRecordOf<FltVertexList, FltPrimaryRec, kFltVertexList>;

template <>
struct quillon::Layout<FltMorphVertexList> {
    static void fields(auto& codec, auto& record) {
        codec.items(record.corners, [](auto& each, auto& corner) {
            each.field("offsets0", corner.offset0);
            each.field("offsets100", corner.offset100);
        });
    }
};
template class FltRecordOf<FltMorphVertexList, FltPrimaryRec, kFltMorphVertexList>;
