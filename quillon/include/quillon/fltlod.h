// The level-of-detail record.
#pragma once

#include <quillon/fltrecordof.h>

/// Level of detail, shown from the switch-out to the switch-in distance (database units); named
/// "l%d" on output.
class FltLod : public FltRecordOf<FltLod, FltNamedRec, kFltLod> {
public:
    /// In `flags`: distances are measured to the centre that the record names.
    static constexpr std::uint32_t kFrozenCenter = 0x20000000;

    double switchInDistance = 100000.0;
    double switchOutDistance = 0;
    std::int16_t specialEffect1 = 0;
    std::int16_t specialEffect2 = 0;
    std::int32_t flags = 0;
    double centerX = 0;
    double centerY = 0;
    double centerZ = 0;
    double transitionRange = 0;
};
