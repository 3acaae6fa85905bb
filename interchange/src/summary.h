// What was read or written, in words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace interchange {

/// How many nodes there are of each kind, by opcode.
using KindCounts = std::map<std::uint16_t, std::size_t>;

/// "3 nodes (1 group, 1 face, 1 header)".
std::string textOf(const KindCounts& counts);

/// "1 face", "2 faces".
std::string counted(std::size_t count, std::string_view one, std::string_view many);

}  // namespace interchange
