// What the user types into the attribute grid, as the attribute takes it.
#pragma once

#include <fltkilnutil/fltattr.h>

#include <string>
#include <string_view>

namespace tessera {

/// Normalises an entered value: an integer or a real becomes the number at its start, 0 without
/// one, as the attribute would print it; a boolean becomes "0" when it begins with 'f', 'F' or '0',
/// else "1"; texts and choices stay as they are.
std::string normalisedValue(FltAttrType type, std::string_view entered);

/// Whether a value of that type may look different after it has been stored.
bool isNormalised(FltAttrType type) noexcept;

}  // namespace tessera
