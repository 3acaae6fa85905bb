// Transforms: one matrix that says where a node is, and the steps that it was made of.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltrecordof.h>

/// A matrix of 32-bit floats. Its rows are for points as row vectors, so the last one is the
/// translation.
class FltMatrixRec : public FltAncillaryRec {
public:
    float rows[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

/// Where a node is: the product of the steps that follow.
class FltMatrix : public FltRecordOf<FltMatrix, FltMatrixRec, kFltMatrix> {};

/// A step that is any matrix.
class FltGeneralMatrix : public FltRecordOf<FltGeneralMatrix, FltMatrixRec, kFltGeneralMatrix> {};

/// A turn about the line from `from` to `to`.
class FltRotateAboutEdge
    : public FltRecordOf<FltRotateAboutEdge, FltAncillaryRec, kFltRotateAboutEdge> {
public:
    FltPoint3d from;
    FltPoint3d to;
    float angle = 0;  ///< degrees
};

/// A shift by `delta`.
class FltTranslate : public FltRecordOf<FltTranslate, FltAncillaryRec, kFltTranslate> {
public:
    FltPoint3d from;  ///< where it was measured from; the shift does not depend on it
    FltPoint3d delta;
};

/// A scaling about `center`.
class FltScale : public FltRecordOf<FltScale, FltAncillaryRec, kFltScale> {
public:
    FltPoint3d center;
    FltPoint3f factors{1, 1, 1};
};

/// A turn about the direction `axis` through `center`.
class FltRotateAboutPoint
    : public FltRecordOf<FltRotateAboutPoint, FltAncillaryRec, kFltRotateAboutPoint> {
public:
    FltPoint3d center;
    FltPoint3f axis{1, 0, 0};
    float angle = 0;  ///< degrees
};

/// A scaling about `center`, altogether and along the line to `reference`, then a turn of that line
/// towards `target`.
class FltRotateScaleToPoint
    : public FltRecordOf<FltRotateScaleToPoint, FltAncillaryRec, kFltRotateScaleAboutPoint> {
public:
    FltPoint3d center;
    FltPoint3d reference;
    FltPoint3d target;
    float overallScale = 1;
    float scaleAlongLine = 1;
    float angle = 0;  ///< degrees
};

/// The move that brings three points onto three others: an origin, a point to align and a point
/// to track.
class FltPut : public FltRecordOf<FltPut, FltAncillaryRec, kFltPut> {
public:
    FltPoint3d fromOrigin;
    FltPoint3d fromAlign;
    FltPoint3d fromTrack;
    FltPoint3d toOrigin;
    FltPoint3d toAlign;
    FltPoint3d toTrack;
};
