// Reads a script into a tree.
#pragma once

#include "ast.h"

#include <string>
#include <string_view>

namespace script {

/// How deep expressions may lie within each other.
inline constexpr std::size_t kMaxNesting = 200;

/// The script as a block. Throws `Error`.
NodePointer parsed(std::string_view text, const std::string& file);

}  // namespace script
