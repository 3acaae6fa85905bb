#include "fltlayout.h"

#include <quillon/fltlinestyle.h>

template <>
struct quillon::Layout<FltLineStyle> {
    static void fields(auto& codec, auto& record) {
        codec.field("index", record.index);
        codec.field("pattern", record.pattern);
        codec.field("width", record.width);
    }
};
template class FltRecordOf<FltLineStyle, FltPaletteRec, kFltLineStylePalette>;
