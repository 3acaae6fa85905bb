// Meshes: faces that share a look and a pool of vertices.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltpolygon.h>
#include <quillon/fltrecordof.h>
#include <quillon/fltsurface.h>

#include <functional>
#include <span>
#include <vector>

/// Mesh: what `FltFace` says of one polygon, for all primitives below it.
class FltMesh : public FltRecordOf<FltMesh, FltPolygonRec, kFltMesh> {};

/// What each vertex of a pool has: bits of its mask, in the order in which the fields stand.
enum FltPoolAttribute : std::uint32_t {
    kFltPoolPosition = 0x80000000,
    kFltPoolColorIndex = 0x40000000,
    kFltPoolPackedColor = 0x20000000,
    kFltPoolNormal = 0x10000000,
    kFltPoolBaseTexture = 0x08000000,  ///< those of layers 1 to 7 are the seven bits below
};

/// A vertex of a pool; the fields that the pool's mask does not name keep their defaults.
struct FltPoolVertex {
    static constexpr int kLayers = 8;

    FltPoint3d position;
    std::uint32_t color = 0;  ///< palette index, or packed: alpha, blue, green, red
    FltPoint3f normal;
    FltTextureCoordinates texture[kLayers];  ///< by layer, the base being 0
};

/// The vertices of a mesh. Those that one record cannot hold follow in continuation records.
class FltLocalVertexPool
    : public FltRecordOf<FltLocalVertexPool, FltAncillaryRec, kFltLocalVertexPool> {
public:
    std::uint32_t vertexCount = 0;  ///< continuations included
    std::uint32_t mask = 0;         ///< of `FltPoolAttribute`
    std::vector<FltPoolVertex> vertices;
};

/// Puts `change(position)` in the place of each position in the body of a pool, whose continuations
/// have been joined to it. False when its vertices have no positions, or there are none.
bool fltChangePositions(std::span<std::uint8_t> poolBody,
                        const std::function<FltPoint3d(const FltPoint3d&)>& change);

enum class FltPrimitiveType : std::int16_t {
    kTriangleStrip = 1,
    kTriangleFan = 2,
    kQuadStrip = 3,
    kPolygon = 4,
};

/// One primitive of a mesh. Indices that one record cannot hold follow in continuation records.
class FltMeshPrimitive : public FltRecordOf<FltMeshPrimitive, FltAncillaryRec, kFltMeshPrimitive> {
public:
    FltPrimitiveType type = FltPrimitiveType::kTriangleStrip;
    std::uint16_t indexSize = 4;         ///< bytes of each index, 1, 2 or 4; any other holds none
    std::uint32_t indexCount = 0;        ///< continuations included
    std::vector<std::uint32_t> indices;  ///< into the vertex pool
};
