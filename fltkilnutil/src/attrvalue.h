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

/// Whether storing the row changes its field even when the text is what the field prints: true of a
/// row that is declared as a double over a 32-bit float.
bool changesWhenStored(const FltAttrDesc& descriptor) noexcept;

/// Puts the row's value text into the field, by the row's type. Leaves a field alone that still
/// prints that text, unless `changesWhenStored`.
void storeField(const FltAttrBlock& block, const FltAttrDesc& descriptor);

}  // namespace fltkilnutil
