// The light source record.
#pragma once

#include <quillon/fltrecordof.h>

/// Light source; named "ls%d" on output. Angles are in degrees.
class FltLightSource : public FltRecordOf<FltLightSource, FltNamedRec, kFltLightSource> {
public:
    static constexpr std::uint32_t kEnabled = 0x80000000;  ///< in `flags`

    std::int32_t paletteIndex = -1;
    std::int32_t flags = 0;
    double positionX = 0;
    double positionY = 0;
    double positionZ = 0;
    float yaw = 135.0F;
    float pitch = 45.0F;
};
