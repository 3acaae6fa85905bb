// The object record.
#pragma once

#include <quillon/fltrecordof.h>

/// Object; named "o%d" on output.
class FltObject : public FltRecordOf<FltObject, FltNamedRec, kFltObject> {
public:
    // Bits of `flags`.
    static constexpr std::uint32_t kNotByDay = 0x80000000;
    static constexpr std::uint32_t kNotAtDusk = 0x40000000;
    static constexpr std::uint32_t kNotAtNight = 0x20000000;
    static constexpr std::uint32_t kFlatShaded = 0x08000000;
    static constexpr std::uint32_t kShadow = 0x04000000;

    std::int32_t flags = 0;
    std::int16_t relativePriority = 0;
    std::int16_t specialEffect1 = 0;
    std::int16_t specialEffect2 = 0;
    std::int16_t transparency = 0;
    std::int16_t significance = 0;
};
