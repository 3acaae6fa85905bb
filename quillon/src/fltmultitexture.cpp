#include "fltlayout.h"

#include <quillon/fltmultitexture.h>

#include <bit>

template <>
struct quillon::Layout<FltMultiTexture> {
    static void fields(auto& codec, auto& record) {
        codec.field("mask", record.mask);
        codec.items(
            record.layers,
            [](auto& each, auto& layer) {
                each.field("textureIndices", layer.textureIndex);
                each.field("effects", layer.effect);
                each.field("mappingIndices", layer.mappingIndex);
                each.field("data", layer.data);
            },
            static_cast<std::size_t>(std::popcount(record.mask)));
    }
};
template class FltRecordOf<FltMultiTexture, FltAncillaryRec, kFltMultiTexture>;

template <>
struct quillon::Layout<FltUvList> {
    static void fields(auto& codec, auto& record) {
        codec.field("mask", record.mask);
        codec.items(record.coordinates,
                    [](auto& each, auto& uv) { each.field("coordinates", uv); });
    }
};
template class FltRecordOf<FltUvList, FltAncillaryRec, kFltUvList>;
