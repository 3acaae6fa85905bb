// The revisions of the format, as everywhere the OpenFlight revision x 100.
#pragma once

#include <algorithm>
#include <cstdint>

inline constexpr std::uint32_t kFltOldestRevision = 1420;
inline constexpr std::uint32_t kFltNewest15Revision = 1580;
inline constexpr std::uint32_t kFltOldest16Revision = 1600;
inline constexpr std::uint32_t kFltNewestRevision = 1660;

/// Those of the files that can be read.
inline constexpr std::uint32_t kFltOldestReadable = 1400;
inline constexpr std::uint32_t kFltNewestReadable = 1999;

/// Whether files of that revision can be read.
constexpr bool fltIsReadable(std::uint32_t revision) noexcept {
    return revision >= kFltOldestReadable && revision <= kFltNewestReadable;
}

/// Whether files of that revision can be written: 14.2 to 15.8, and 16.0 to 16.6.
constexpr bool fltIsWritable(std::uint32_t revision) noexcept {
    return revision >= kFltOldestRevision && revision <= kFltNewestRevision &&
           (revision <= kFltNewest15Revision || revision >= kFltOldest16Revision);
}

/// The revision nearest to that one, downwards in the gap, of which files can be written.
constexpr std::uint32_t fltNearestWritable(std::uint32_t revision) noexcept {
    if (revision > kFltNewest15Revision && revision < kFltOldest16Revision) {
        return kFltNewest15Revision;
    }
    return std::clamp(revision, kFltOldestRevision, kFltNewestRevision);
}

/// A kind of record that the format got later than its first revision here.
struct FltNewerRecord {
    std::uint16_t opcode;
    std::uint16_t revision;  ///< the first one that knows it
};

/// The kind of record that `opcode` names; null for those that every revision knows, and for those
/// that nobody knows.
const FltNewerRecord* fltNewerRecord(std::uint16_t opcode) noexcept;
