#include "fieldassign.h"

#include <quillon/flttexture.h>

template <>
struct quillon::Layout<FltTexture> {
    static void fields(auto& codec, auto& record) {
        codec.field("fileName", record.fileName);
        codec.field("index", record.index);
        codec.field("paletteX", record.paletteX);
        codec.field("paletteY", record.paletteY);
    }
};
template class FltRecordOf<FltTexture, FltPaletteRec, kFltTexture>;
template FltFieldSet quillon::assignField(FltTexture&, std::string_view, std::string_view);

template <>
struct quillon::Layout<FltTextureMapping> {
    static void fields(auto& codec, auto& record) {
        codec.field("index", record.index);
        codec.field("name", record.name);
        codec.field("type", record.type);
        codec.field("isWarped", record.isWarped);
        codec.field("matrix", record.matrix);
        codec.rest("parameters", record.parameters);
    }
};
template class FltRecordOf<FltTextureMapping, FltPaletteRec, kFltTextureMappingPalette>;
template FltFieldSet quillon::assignField(FltTextureMapping&, std::string_view, std::string_view);
