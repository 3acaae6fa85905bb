// What was read or written, in words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace interchange {

/// How many nodes there are of each kind, by opcode.
using KindCounts = std::map<std::uint16_t, std::size_t>;

/// "3 nodes (1 group, 1 face, 1 header)", in the host's language.
std::string textOf(const KindCounts& counts);

}  // namespace interchange
