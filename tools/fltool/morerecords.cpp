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
    {135, "EXTENDED_MATERIAL_HEADER", false},
    {136, "EXTENDED_MATERIAL_AMBIENT", false},
    {137, "EXTENDED_MATERIAL_DIFFUSE", false},
    {138, "EXTENDED_MATERIAL_SPECULAR", false},
    {139, "EXTENDED_MATERIAL_EMISSIVE", false},
    {140, "EXTENDED_MATERIAL_ALPHA", false},
    {141, "EXTENDED_MATERIAL_LIGHT_MAP", false},
    {142, "EXTENDED_MATERIAL_NORMAL_MAP", false},
    {143, "EXTENDED_MATERIAL_BUMP_MAP", false},
    {145, "EXTENDED_MATERIAL_SHADOW_MAP", false},
    {147, "EXTENDED_MATERIAL_REFLECTION_MAP", false},
    {148, "EXTENSION_GUID", false},
    {149, "EXTENSION_FIELD_BOOLEAN", false},
    {150, "EXTENSION_FIELD_INTEGER", false},
    {151, "EXTENSION_FIELD_FLOAT", false},
    {152, "EXTENSION_FIELD_DOUBLE", false},
    {153, "EXTENSION_FIELD_STRING", false},
    {154, "EXTENSION_FIELD_XML_STRING", false},
};

}  // namespace

const FurtherRecord* furtherRecord(std::uint16_t opcode) {
    const auto* const found = std::ranges::find(kRecords, opcode, &FurtherRecord::opcode);
    return found == std::end(kRecords) ? nullptr : found;
}

}  // namespace fltool
