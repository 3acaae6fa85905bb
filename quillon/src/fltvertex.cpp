#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexview.h>

namespace {

template <bool withNormal, bool withTexture>
struct Kind {
    static constexpr FltOpcode kOpcode =
        withTexture ? (withNormal ? kFltVertexWithTextureAndNormal : kFltVertexWithTexture)
                    : (withNormal ? kFltVertexWithNormal : kFltVertexWithColor);
};

/// What `action` returns for the kind of the vertex; each kind gets code of its own.
template <typename Action>
auto byKind(const FltVertex& vertex, Action&& action) {
    if (vertex.hasNormal)
        return vertex.hasTexture ? action(Kind<true, true>()) : action(Kind<true, false>());
    return vertex.hasTexture ? action(Kind<false, true>()) : action(Kind<false, false>());
}

template <bool withNormal, bool withTexture>
constexpr void layout(Kind<withNormal, withTexture>, auto& codec, auto& record) {
    codec.field("colorNameIndex", record.colorNameIndex);
    codec.field("flags", record.flags);
    codec.field("position", record.position);
    if constexpr (withNormal) codec.field("normal", record.normal);
    if constexpr (withTexture) codec.field("texture", record.texture);
    codec.field("packedColor", record.packedColor);
    codec.field("colorIndex", record.colorIndex);
}

/// The fields of a vertex, for the compiler: it makes no objects with virtual functions.
struct VertexFields {
    decltype(FltVertex::colorNameIndex) colorNameIndex{};
    decltype(FltVertex::flags) flags{};
    decltype(FltVertex::position) position;
    decltype(FltVertex::normal) normal;
    decltype(FltVertex::texture) texture;
    decltype(FltVertex::packedColor) packedColor;
    decltype(FltVertex::colorIndex) colorIndex{};
};

/// Where the fields of a kind of vertex stand, by the layout above.
template <bool withNormal, bool withTexture>
constexpr FltVertexView::Layout placesOf() {
    constexpr std::size_t kHeaderSize = FltRecordView::kHeaderSize;
    const VertexFields vertex;
    const auto place = [&](const auto& field) {
        quillon::PlaceCodec codec(&field);
        layout(Kind<withNormal, withTexture>(), codec, vertex);
        return FltVertexView::Layout::Place{static_cast<std::uint16_t>(kHeaderSize + codec.begin),
                                            static_cast<std::uint16_t>(kHeaderSize + codec.end)};
    };
    return {place(vertex.flags),   place(vertex.position),    place(vertex.normal),
            place(vertex.texture), place(vertex.packedColor), place(vertex.colorIndex)};
}

}  // namespace

constinit const FltVertexView::Layout FltVertexView::kLayouts[] = {
    placesOf<false, false>(), placesOf<true, false>(), placesOf<true, true>(),
    placesOf<false, true>()};

static_assert(placesOf<true, true>().position.end == FltVertexView::kShortest);

std::uint16_t FltVertex::opcode() const {
    return byKind(*this, [](auto kind) { return kind.kOpcode; });
}

void FltVertex::writeToken(FltToken& token, std::uint32_t) const {
    byKind(*this, [&](auto kind) {
        quillon::writeFields(token, kind.kOpcode, [&](auto& codec) { layout(kind, codec, *this); });
    });
}

void FltVertex::readToken(FltToken& token, std::uint32_t) {
    const std::uint16_t code = token.opcode();
    diagnostics::check(isVertex(code), "fltvertex", 48);
    hasNormal = code == kFltVertexWithNormal || code == kFltVertexWithTextureAndNormal;
    hasTexture = code == kFltVertexWithTexture || code == kFltVertexWithTextureAndNormal;
    byKind(*this, [&](auto kind) {
        quillon::readBody(token, [&](auto& codec) { layout(kind, codec, *this); });
    });
}

void FltVertex::visitFields(FltFieldVisitor& visitor) const {
    byKind(*this, [&](auto kind) {
        quillon::showFields(visitor, [&](auto& codec) { layout(kind, codec, *this); });
    });
}
