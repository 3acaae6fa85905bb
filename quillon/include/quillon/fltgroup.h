// The group record.
#pragma once

#include <quillon/fltrecordof.h>

/// Group; named "g%d" on output.
class FltGroup : public FltRecordOf<FltGroup, FltNamedRec, kFltGroup> {
public:
    /// In `flags`: the bounding volume stays as it is.
    static constexpr std::uint32_t kFrozenVolume = 0x08000000;

    std::int16_t relativePriority = 0;
    std::int32_t flags = 0;
    std::int16_t specialEffect1 = 0;
    std::int16_t specialEffect2 = 0;
    std::int16_t significance = 0;
    std::int8_t layerCode = 0;
};
