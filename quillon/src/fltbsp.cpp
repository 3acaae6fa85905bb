#include "fltlayout.h"

#include <quillon/fltbsp.h>
#include <quillon/fltgeometry.h>

template <>
struct quillon::Layout<FltBsp> {
    static constexpr OpcodeCheck kOpcodeCheck = kAnyOpcode;
    static constexpr DefaultName kName{"b", &FltHeader::nextBspId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.reserved(4);
        codec.field("planeA", record.planeA);
        codec.field("planeB", record.planeB);
        codec.field("planeC", record.planeC);
        codec.field("planeD", record.planeD);
    }
};
template class FltRecordOf<FltBsp, FltNamedRec, kFltBsp>;

FltBsp::FltBsp() {
    const FltPlane plane = fltPlaneFromPoints({0, 0, 0}, {0, 1, 0}, {1, 0, 0});
    planeA = plane.a;
    planeB = plane.b;
    planeC = plane.c;
    planeD = plane.d;
}
