// Records as bytes: new ones, and those in which what is known has changed and the rest stays.
#pragma once

#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltrecordrange.h>

#include <cstdint>
#include <vector>

class FltRecord;

namespace palettes {

/// The bytes of `read`, which `before` was read from, with what `after` says otherwise. A record
/// that ends before it gets as long as it needs.
std::vector<std::uint8_t> patched(const FltRecordView& read, const FltRecord& before,
                                  const FltRecord& after, std::uint32_t revision);

/// A record as it stands in a file.
std::vector<std::uint8_t> recordBytes(const FltRecord& record, std::uint32_t revision);

/// Puts a record, or several of a kind, among those that are kept: behind the last of its kind and
/// what belongs to that; the first of its kind in front of the vertices and the hierarchy.
void insertRecord(fltkilnutil::SourceRecordsEdit& edit, fltkilnutil::FileBytes record);

}  // namespace palettes
