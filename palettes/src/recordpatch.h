// Records in which what is known has changed and the rest stays.
#pragma once

#include <quillon/fltrecordrange.h>

#include <cstdint>
#include <vector>

class FltRecord;

namespace palettes {

/// The bytes of `read`, which `before` was read from, with what `after` says otherwise. A record
/// that ends before it gets as long as it needs.
std::vector<std::uint8_t> patched(const FltRecordView& read, const FltRecord& before,
                                  const FltRecord& after, std::uint32_t revision);

}  // namespace palettes
