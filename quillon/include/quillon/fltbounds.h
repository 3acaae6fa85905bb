// Bounding volumes.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltrecordof.h>

#include <vector>

/// Box between two corners.
class FltBoundingBox : public FltRecordOf<FltBoundingBox, FltAncillaryRec, kFltBoundingBox> {
public:
    FltPoint3d lowest;
    FltPoint3d highest;
};

/// Sphere.
class FltBoundingSphere
    : public FltRecordOf<FltBoundingSphere, FltAncillaryRec, kFltBoundingSphere> {
public:
    double radius = 0;
    std::vector<FltPoint3d> center;  ///< one; none in older files
};

/// Upright cylinder.
class FltBoundingCylinder
    : public FltRecordOf<FltBoundingCylinder, FltAncillaryRec, kFltBoundingCylinder> {
public:
    double radius = 0;
    double height = 0;
    std::vector<FltPoint3d> center;  ///< one; none in older files
};

/// Centre of the volume before it.
class FltBoundingCenter
    : public FltRecordOf<FltBoundingCenter, FltAncillaryRec, kFltBoundingCenter> {
public:
    FltPoint3d center;
};

/// How the volume before it is turned, in degrees.
class FltBoundingOrientation
    : public FltRecordOf<FltBoundingOrientation, FltAncillaryRec, kFltBoundingOrientation> {
public:
    double yaw = 0;
    double pitch = 0;
    double roll = 0;
};
