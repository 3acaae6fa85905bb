// Records of the published format that the record library has neither a class nor a name for.
#pragma once

#include <cstdint>

namespace fltool {

struct FurtherRecord {
    std::uint16_t opcode;
    const char* name;
    bool isNode;  ///< whether it is a child of what encloses it
};

/// What carries on the record before it, which had no more room.
inline constexpr std::uint16_t kContinuation = 23;

/// The record of that opcode; null for one that the record library names, or nobody.
const FurtherRecord* furtherRecord(std::uint16_t opcode);

}  // namespace fltool
