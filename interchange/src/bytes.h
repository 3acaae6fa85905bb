// Big-endian numbers into bytes.
#pragma once

#include <quillon/fltbyteorder.h>

#include <cstdint>

namespace interchange {

inline void put16(std::uint8_t* place, std::uint16_t value) noexcept {
    fltStoreBigEndian(place, value);
}
inline void put32(std::uint8_t* place, std::uint32_t value) noexcept {
    fltStoreBigEndian(place, value);
}
// These would write another number than the one they are given.
void put16(std::uint8_t* place, std::floating_point auto value) = delete;
void put32(std::uint8_t* place, std::floating_point auto value) = delete;
inline void putFloat32(std::uint8_t* place, float value) noexcept {
    fltStoreBigEndian(place, value);
}
inline void putFloat64(std::uint8_t* place, double value) noexcept {
    fltStoreBigEndian(place, value);
}

}  // namespace interchange
