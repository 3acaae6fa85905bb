// The vertex palette and the lists that name its vertices.
#pragma once

#include <quillon/fltrecordof.h>

#include <vector>

/// Start of the vertex palette; the vertices follow as records of their own.
class FltVertexPalette : public FltRecordOf<FltVertexPalette, FltPaletteRec, kFltVertexPalette> {
public:
    /// Bytes of this record and of all its vertices.
    std::uint32_t length = 8;
};

/// The vertices of a face or a light point, in order. A list that one record cannot hold goes on in
/// continuation records.
class FltVertexList : public FltRecordOf<FltVertexList, FltPrimaryRec, kFltVertexList> {
public:
    /// Bytes from the start of the vertex palette's own record to that of each vertex.
    std::vector<std::uint32_t> offsets;
};

/// A corner of a face that morphs with the distance.
struct FltMorphCorner {
    std::uint32_t offset0 = 0;    ///< vertex at 0 % of the transition, by its palette offset
    std::uint32_t offset100 = 0;  ///< vertex at 100 %
};

/// The vertices of a face that morphs with the distance.
class FltMorphVertexList
    : public FltRecordOf<FltMorphVertexList, FltPrimaryRec, kFltMorphVertexList> {
public:
    std::vector<FltMorphCorner> corners;
};
