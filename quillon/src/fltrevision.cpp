#include <quillon/fltopcode.h>
#include <quillon/fltrevision.h>

#include <algorithm>
#include <iterator>

namespace {

// By opcode; of records that belong together the leading one.
constexpr FltNewerRecord kRecords[] = {
    {kFltMultiTexture, 1560},        {kFltMesh, 1570},
    {kFltLightPoint, 1500},          {kFltTextureMappingPalette, 1510},
    {kFltColorNamePalette, 1510},    {kFltCat, 1500},
    {kFltAdaptiveAttribute, 1500},   {kFltCurveNode, 1500},
    {kFltRoadConstruction, 1500},    {kFltLightPointAppearance, 1580},
    {kFltLightPointAnimation, 1580}, {kFltIndexedLightPoint, 1580},
    {kFltLightPointSystem, 1580},    {kFltIndexedString, 1580},
    {kFltShaderPalette, 1600},       {kFltExtendedMaterialHeader, 1600},
};

}  // namespace

const FltNewerRecord* fltNewerRecord(std::uint16_t opcode) noexcept {
    const auto* const found = std::ranges::find(kRecords, opcode, &FltNewerRecord::opcode);
    return found == std::end(kRecords) ? nullptr : found;
}
