#include "polygonlayout.h"

#include <quillon/fltbyteorder.h>
#include <quillon/fltmesh.h>
#include <quillon/fltrecordrange.h>
#include <quillon/flttoken.h>

#include <utility>

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

bool fltChangePositions(std::span<std::uint8_t> poolBody,
                        const std::function<FltPoint3d(const FltPoint3d&)>& change) {
    FltLocalVertexPool pool;
    pool.readBody(poolBody);
    if ((pool.mask & kFltPoolPosition) == 0 || pool.vertices.empty()) return false;
    const auto lengthWith = [&](std::size_t count) {
        pool.vertices.resize(count);
        FltToken token;
        pool.writeToken(token, 0);
        return std::size_t{token.length()};
    };
    const std::vector<FltPoolVertex> vertices = std::exchange(pool.vertices, {});
    const std::size_t head = lengthWith(0), stride = lengthWith(1) - head;
    std::uint8_t* place = poolBody.data() + head - FltRecordView::kHeaderSize;
    for (const FltPoolVertex& vertex : vertices) {
        const FltPoint3d position = change(vertex.position);  // the first of its fields
        fltStoreBigEndian(place, position.x);
        fltStoreBigEndian(place + sizeof(double), position.y);
        fltStoreBigEndian(place + 2 * sizeof(double), position.z);
        place += stride;
    }
    return true;
}

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
