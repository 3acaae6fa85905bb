// Beads of the hierarchy with the fields that only files have.
//
// Scenes keep the beads as `FltGroup` and `FltLod` lay them out. Records of files go on behind
// that, from revision 15.8 on.
#pragma once

#include <quillon/fltgroup.h>
#include <quillon/fltlod.h>

// Made in fltgroup.cpp and fltlod.cpp, and nowhere else.
class FltFileGroup;
class FltFileLod;
extern template class FltRecordOf<FltGroup, FltNamedRec, kFltGroup>;
extern template class FltRecordOf<FltLod, FltNamedRec, kFltLod>;
extern template class FltRecordOf<FltFileGroup, FltGroup, kFltGroup>;
extern template class FltRecordOf<FltFileLod, FltLod, kFltLod>;

/// A group as it stands in files.
class FltFileGroup final : public FltRecordOf<FltFileGroup, FltGroup, kFltGroup> {
public:
    std::int32_t loopCount = 0;   ///< of its animation; 0 for ever
    float loopDuration = 0;       ///< of all its frames, seconds
    float lastFrameDuration = 0;  ///< seconds
};

/// A level of detail as it stands in files.
class FltFileLod final : public FltRecordOf<FltFileLod, FltLod, kFltLod> {
public:
    double significantSize = 0;  ///< database units
};
