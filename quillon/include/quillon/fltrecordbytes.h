// Records put together in memory, byte for byte as they are to stand in a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// What the length of a padded record is a multiple of, in bytes.
inline constexpr std::uint32_t kFltAlignment = 8;

/// The length that a record of `length` bytes has when it is padded.
constexpr std::uint64_t fltPaddedLength(std::uint64_t length) noexcept {
    return (length + kFltAlignment - 1) / kFltAlignment * kFltAlignment;
}

/// Appends a record of `opcode` with a body of `size` zeros to `bytes`, and returns the body to
/// fill in, valid until `bytes` changes. Unlike what a token makes, the record is not padded.
/// Throws `AviaryAssertion` when it would exceed 65,535 bytes.
std::span<std::uint8_t> fltAppendRecord(std::vector<std::uint8_t>& bytes, std::uint16_t opcode,
                                        std::size_t size);

/// What the header of a record states, whether the record is whole or not.
struct FltRecordHead {
    std::uint16_t opcode = 0;
    std::uint16_t length = 0;
};

/// The header at the start of `bytes`, which must have it.
FltRecordHead fltRecordHead(std::span<const std::uint8_t> bytes) noexcept;

/// Makes a record, header included, state the length that it has. Throws `AviaryAssertion` when
/// that is none that a record can have.
void fltStateLength(std::span<std::uint8_t> record);

/// A record as it was read, with what `after` says otherwise than `before`: the record as its class
/// writes it with what was read, and with other values. Reserved bytes and longer tails stay; a
/// record that ends before what differs gets as long as `after`.
std::vector<std::uint8_t> fltPatchedRecord(std::span<const std::uint8_t> read,
                                           std::span<const std::uint8_t> before,
                                           std::span<const std::uint8_t> after);

/// Appends the vertex list of `opcode` (plain, morphing or continued) that names `offsets` to
/// `bytes`: one record, and continuations with what it cannot hold. Pairs stay together.
void fltAppendVertexList(std::vector<std::uint8_t>& bytes, std::uint16_t opcode,
                         std::span<const std::uint32_t> offsets);
