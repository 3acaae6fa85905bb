#include "fltlayout.h"

#include <quillon/fltclipregion.h>

template <>
struct quillon::Layout<FltClipRegion> {
    static constexpr OpcodeCheck kOpcodeCheck = kAnyOpcode;
    static constexpr DefaultName kName{"c", &FltHeader::nextClipRegionId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.reserved(6);
        codec.field("edgeClip0", record.edgeClip0);
        codec.field("edgeClip1", record.edgeClip1);
        codec.field("edgeClip2", record.edgeClip2);
        codec.field("edgeClip3", record.edgeClip3);
        codec.field("edgeClip4", record.edgeClip4);
        codec.reserved(1);
        codec.field("corner0X", record.corner0X);
        codec.field("corner0Y", record.corner0Y);
        codec.field("corner0Z", record.corner0Z);
        codec.field("corner1X", record.corner1X);
        codec.field("corner1Y", record.corner1Y);
        codec.field("corner1Z", record.corner1Z);
        codec.field("corner2X", record.corner2X);
        codec.field("corner2Y", record.corner2Y);
        codec.field("corner2Z", record.corner2Z);
        codec.field("corner3X", record.corner3X);
        codec.field("corner3Y", record.corner3Y);
        codec.field("corner3Z", record.corner3Z);
        // The file holds the planes transposed: coefficient by coefficient.
        codec.field("plane0A", record.plane0A);
        codec.field("plane1A", record.plane1A);
        codec.field("plane2A", record.plane2A);
        codec.field("plane3A", record.plane3A);
        codec.field("plane4A", record.plane4A);
        codec.field("plane0B", record.plane0B);
        codec.field("plane1B", record.plane1B);
        codec.field("plane2B", record.plane2B);
        codec.field("plane3B", record.plane3B);
        codec.field("plane4B", record.plane4B);
        codec.field("plane0C", record.plane0C);
        codec.field("plane1C", record.plane1C);
        codec.field("plane2C", record.plane2C);
        codec.field("plane3C", record.plane3C);
        codec.field("plane4C", record.plane4C);
        codec.field("plane0D", record.plane0D);
        codec.field("plane1D", record.plane1D);
        codec.field("plane2D", record.plane2D);
        codec.field("plane3D", record.plane3D);
        codec.field("plane4D", record.plane4D);
    }
};
template class FltRecordOf<FltClipRegion, FltNamedRec, kFltClipRegion>;
