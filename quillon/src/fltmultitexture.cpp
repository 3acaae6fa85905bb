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

namespace {

constexpr auto kLayOutCoordinates = [](auto& codec, auto& uv) { codec.field("coordinates", uv); };

}  // namespace

template <>
struct quillon::Layout<FltUvList> {
    static void fields(auto& codec, auto& record) {
        codec.field("mask", record.mask);
        codec.items(record.coordinates, kLayOutCoordinates);
    }
};
template class FltRecordOf<FltUvList, FltAncillaryRec, kFltUvList>;

bool FltUvList::fits(std::span<const std::uint8_t> record, std::size_t corners) {
    FltToken token;
    token.attach(record.data(), static_cast<std::int32_t>(record.size()));
    FltUvList list;
    quillon::MeasureCodec mask;
    quillon::Layout<FltUvList>::fields(mask, list);
    if (token.body(mask.size) == nullptr) return true;
    list.readToken(token, 0);
    const std::size_t one =
        corners * static_cast<std::size_t>(std::popcount(list.mask)) *
        quillon::MeasureCodec::sizeOfItem<FltTextureCoordinates>(kLayOutCoordinates);
    token.rewind(static_cast<std::uint16_t>(mask.size));
    return token.remaining() == one || token.remaining() == 2 * one;
}
