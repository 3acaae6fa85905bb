#include "morerecords.h"

#include <algorithm>
#include <iterator>

namespace fltool {

namespace {

constexpr FurtherRecord kRecords[] = {
    {kContinuation, "CONTINUATION", false},
    {84, "MESH", true},
    {85, "LOCAL_VERTEX_POOL", false},
    {86, "MESH_PRIMITIVE", false},
    {128, "LIGHT_POINT_APPEARANCE_PALETTE", false},
    {129, "LIGHT_POINT_ANIMATION_PALETTE", false},
    {130, "INDEXED_LIGHT_POINT", true},
    {131, "LIGHT_POINT_SYSTEM", true},
    {132, "INDEXED_STRING", false},
    {133, "SHADER_PALETTE", false},
};

}  // namespace

const FurtherRecord* furtherRecord(std::uint16_t opcode) {
    const auto* const found = std::ranges::find(kRecords, opcode, &FurtherRecord::opcode);
    return found == std::end(kRecords) ? nullptr : found;
}

}  // namespace fltool
