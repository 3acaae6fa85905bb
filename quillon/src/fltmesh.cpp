#include "polygonlayout.h"

#include <quillon/fltmesh.h>

template <>
struct quillon::Layout<FltMesh> {
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.reserved(4);
        layoutDrawing(codec, record);
        layoutColorNames(codec, record);
        layoutSurface(codec, record);
        codec.field("packedPrimaryColor", record.packedPrimaryColor);
        codec.field("packedAlternateColor", record.packedAlternateColor);
        layoutColorIndices(codec, record);
    }
};
template class FltRecordOf<FltMesh, FltPolygonRec, kFltMesh>;

template <>
struct quillon::Layout<FltLocalVertexPool> {
    static void fields(auto& codec, auto& record) {
        codec.field("vertexCount", record.vertexCount);
        codec.field("mask", record.mask);
        codec.items(
            record.vertices,
            [&](auto& each, auto& vertex) {
                const std::uint32_t mask = record.mask;
                if ((mask & kFltPoolPosition) != 0) each.field("positions", vertex.position);
                if ((mask & (kFltPoolColorIndex | kFltPoolPackedColor)) != 0)
                    each.field("colors", vertex.color);
                if ((mask & kFltPoolNormal) != 0) each.field("normals", vertex.normal);
                std::uint32_t layer = kFltPoolBaseTexture;
                for (auto& texture : vertex.texture) {
                    if ((mask & layer) != 0) each.field("textures", texture);
                    layer >>= 1;
                }
            },
            record.vertexCount);
    }
};
template class FltRecordOf<FltLocalVertexPool, FltAncillaryRec, kFltLocalVertexPool>;

template <>
struct quillon::Layout<FltMeshPrimitive> {
    static void fields(auto& codec, auto& record) {
        codec.field("type", record.type);
        codec.field("indexSize", record.indexSize);
        codec.field("indexCount", record.indexCount);
        codec.items(
            record.indices,
            [&](auto& each, auto& index) {
                if (record.indexSize == 1) each.template stored<std::uint8_t>("indices", index);
                if (record.indexSize == 2) each.template stored<std::uint16_t>("indices", index);
                if (record.indexSize == 4) each.field("indices", index);
            },
            record.indexCount);
    }
};
template class FltRecordOf<FltMeshPrimitive, FltAncillaryRec, kFltMeshPrimitive>;
