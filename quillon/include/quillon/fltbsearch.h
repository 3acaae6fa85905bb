// Binary search over anything that can be indexed.
#pragma once

#include <cstdint>

/// Orders element `index` of `list` against `key`: negative when the element comes before the key,
/// zero when they are equal, positive when it comes after.
using FltBsearchCompare = std::int32_t (*)(const void* list, std::int32_t index, const void* key);

/// Looks `key` up among the `count` ascending elements of `list`.
///
/// Returns 1 and stores the element's index in `*result` when an equal element exists; returns 0
/// and stores the insertion point, 0 to `count`, when none does. `list` may be null when `count` is
/// 0. Throws `AviaryAssertion` for a null `result`, or a null `list` with elements.
std::int32_t fltBsearch(const void* list, std::int32_t count, const void* key,
                        FltBsearchCompare compare, std::uint32_t* result);
