// Big-endian numbers in memory.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// A number of exactly `size` bytes: an integer, an enumeration or a floating-point value.
template <typename T, std::size_t size>
concept FltNumberOf = (std::is_arithmetic_v<T> || std::is_enum_v<T>)&&!std::same_as<T, bool> &&
                      sizeof(T) == size;

/// One of them that is no floating-point value.
template <typename T, std::size_t size>
concept FltIntegerOf = FltNumberOf<T, size> && !std::floating_point<T>;

template <typename T>
concept FltNumber =
    FltNumberOf<T, 1> || FltNumberOf<T, 2> || FltNumberOf<T, 4> || FltNumberOf<T, 8>;

/// The unsigned integer as wide as `T`.
template <FltNumber T>
using FltBitsOf = std::conditional_t<
    sizeof(T) == 1, std::uint8_t,
    std::conditional_t<sizeof(T) == 2, std::uint16_t,
                       std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;

/// The bits between host and big-endian order, which is the same operation both ways.
template <std::unsigned_integral Bits>
constexpr Bits fltSwapToBigEndian(Bits bits) noexcept {
    if constexpr (std::endian::native == std::endian::big || sizeof(Bits) == 1)
        return bits;
    else if constexpr (sizeof(Bits) == 2)
        return __builtin_bswap16(bits);
    else if constexpr (sizeof(Bits) == 4)
        return __builtin_bswap32(bits);
    else
        return __builtin_bswap64(bits);
}

/// Stores `value` at `place`, most significant byte first, bit for bit: no conversion between
/// types, not-a-numbers included.
template <FltNumber T>
void fltStoreBigEndian(void* place, const T& value) noexcept {
    FltBitsOf<T> bits;
    std::memcpy(&bits, &value, sizeof bits);
    bits = fltSwapToBigEndian(bits);
    std::memcpy(place, &bits, sizeof bits);
}

/// Loads `value` from `place`.
template <FltNumber T>
void fltLoadBigEndian(const void* place, T& value) noexcept {
    FltBitsOf<T> bits;
    std::memcpy(&bits, place, sizeof bits);
    bits = fltSwapToBigEndian(bits);
    std::memcpy(&value, &bits, sizeof bits);
}
