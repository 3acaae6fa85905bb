// The clip region record.
#pragma once

#include <quillon/fltrecordof.h>

/// Clip region; named "c%d" on output.
class FltClipRegion : public FltRecordOf<FltClipRegion, FltNamedRec, kFltClipRegion> {
public:
    static constexpr double kUnsetCoordinate = -1e8;

    std::int8_t edgeClip0 = 0;  ///< bottom
    std::int8_t edgeClip1 = 0;  ///< right
    std::int8_t edgeClip2 = 0;  ///< top
    std::int8_t edgeClip3 = 0;  ///< left
    std::int8_t edgeClip4 = 0;  ///< back

    // The region's corners; -1e8 marks a coordinate that was never set.
    double corner0X = kUnsetCoordinate;
    double corner0Y = kUnsetCoordinate;
    double corner0Z = kUnsetCoordinate;
    double corner1X = kUnsetCoordinate;
    double corner1Y = kUnsetCoordinate;
    double corner1Z = kUnsetCoordinate;
    double corner2X = kUnsetCoordinate;
    double corner2Y = kUnsetCoordinate;
    double corner2Z = kUnsetCoordinate;
    double corner3X = kUnsetCoordinate;
    double corner3Y = kUnsetCoordinate;
    double corner3Z = kUnsetCoordinate;

    // The clip planes a x + b y + c z + d = 0.
    double plane0A = 0;
    double plane0B = 0;
    double plane0C = 0;
    double plane0D = 0;
    double plane1A = 0;
    double plane1B = 0;
    double plane1C = 0;
    double plane1D = 0;
    double plane2A = 0;
    double plane2B = 0;
    double plane2C = 0;
    double plane2D = 0;
    double plane3A = 0;
    double plane3B = 0;
    double plane3C = 0;
    double plane3D = 0;
    double plane4A = 0;
    double plane4B = 0;
    double plane4C = 0;
    double plane4D = 0;
};
