// The units of a database's coordinates.
#pragma once

#include <cstdint>

/// A value of the header's vertex coordinate units.
struct FltUnits {
    std::uint8_t value;
    const char* name;
    double metres;  ///< in one of them
};

inline constexpr FltUnits kFltUnits[] = {{0, "metres", 1},
                                         {1, "kilometres", 1000},
                                         {4, "feet", 0.3048},
                                         {5, "inches", 0.0254},
                                         {8, "nautical miles", 1852}};

/// The units of that value; null for one that is none.
constexpr const FltUnits* fltUnits(std::uint8_t value) noexcept {
    for (const FltUnits& units : kFltUnits)
        if (units.value == value) return &units;
    return nullptr;
}
