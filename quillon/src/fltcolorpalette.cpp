#include "fltlayout.h"

#include <quillon/fltcolorpalette.h>

template <>
struct quillon::Layout<FltColorPalette> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(128);
        codec.items(
            record.colors, [](auto& each, auto& color) { each.field("colors", color); },
            FltColorPalette::kEntries);
        codec.rest("nameTable", record.nameTable);
    }
};
template class FltRecordOf<FltColorPalette, FltPaletteRec, kFltColorPalette>;
