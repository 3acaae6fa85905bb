// What the user types into the attribute grid, as a text that the attribute can store.
#pragma once

#include <fltkilnutil/fltattr.h>

#include <string>
#include <string_view>

namespace tessera {

/// Normalises an entered value: an integer or a real becomes the number at its start, 0 without
/// one, as the attribute would print it. Where the choices are no and yes, the words for no and yes
/// in either language are recognised; any other text is no when it begins with 'f', 'F' or '0', and
/// yes otherwise. Texts and other choices stay as they are.
std::string normalisedValue(const FltAttrDesc& row, std::string_view entered);

/// Which of no (0) and yes (1), the choices of that row, has a word that begins with `typed`, in
/// either language and without regard to case; -1 for neither.
int yesNoBegunBy(const FltAttrDesc& row, std::string_view typed);

/// Whether a value of that row may look different after it has been stored.
bool isNormalised(const FltAttrDesc& row) noexcept;

}  // namespace tessera
