// The binary separating plane record.
#pragma once

#include <quillon/fltrecordof.h>

/// Binary separating plane; named "b%d" on output.
class FltBsp : public FltRecordOf<FltBsp, FltNamedRec, kFltBsp> {
public:
    /// The plane of (0, 0, 0), (0, 1, 0) and (1, 0, 0), which is 0, 0, -1, 0.
    FltBsp();

    // Plane equation.
    double planeA;
    double planeB;
    double planeC;
    double planeD;
};
