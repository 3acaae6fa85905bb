// One row's value: from its field to text and back.
#pragma once

#include <fltkilnutil/attrtext.h>
#include <fltkilnutil/fltattr.h>

#include <optional>
#include <string_view>

namespace fltkilnutil {

/// Room for a number's text.
using NumberText = char[kFltNumberTextSize];

/// What the field prints, by the row's width: in `room`, in the field itself or in the row's
/// enumeration. Empty for an enumeration value that matches no entry.
std::string_view printField(const FltAttrBlock& block, const FltAttrDesc& descriptor,
                            NumberText& room);

/// Puts the row's value text into the field, by the row's type. Leaves a field alone that still
/// prints that text, except that of a row which is declared as a double over a 32-bit float.
void storeField(const FltAttrBlock& block, const FltAttrDesc& descriptor);

}  // namespace fltkilnutil
