// Numbers as users type and read them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// The finite number that a text is, with spaces around it or a plus before it; nothing for any
/// other text.
std::optional<double> numberOf(std::string_view text);

/// A number in so many digits, without any that say nothing.
std::string shortNumber(double value, int digits = 7);

}  // namespace workbench
