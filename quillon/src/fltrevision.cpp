#include <quillon/fltopcode.h>
#include <quillon/fltrevision.h>

#include <algorithm>
#include <iterator>

namespace {

// By opcode; of records that belong together the leading one.
constexpr FltNewerRecord kRecords[] = {
    {kFltMultiTexture, 1560, "multitexture", "multitextures"},
    {kFltMesh, 1570, "mesh", "meshes"},
    {kFltLightPoint, 1500, "light point", "light points"},
    {kFltTextureMappingPalette, 1510, "texture mapping", "texture mappings"},
    {kFltColorNamePalette, 1510, "color name palette", "color name palettes"},
    {kFltCat, 1500, "adaptive terrain", "adaptive terrains"},
    {kFltAdaptiveAttribute, 1500, "adaptive attribute", "adaptive attributes"},
    {kFltCurveNode, 1500, "curve", "curves"},
    {kFltRoadConstruction, 1500, "road construction", "road constructions"},
    {kFltLightPointAppearance, 1580, "light point appearance", "light point appearances"},
    {kFltLightPointAnimation, 1580, "light point animation", "light point animations"},
    {kFltIndexedLightPoint, 1580, "indexed light point", "indexed light points"},
    {kFltLightPointSystem, 1580, "light point system", "light point systems"},
    {kFltIndexedString, 1580, "indexed string", "indexed strings"},
    {kFltShaderPalette, 1600, "shader", "shaders"},
    {kFltExtendedMaterialHeader, 1600, "extended material", "extended materials"},
};

}  // namespace

const FltNewerRecord* fltNewerRecord(std::uint16_t opcode) noexcept {
    const auto* const found = std::ranges::find(kRecords, opcode, &FltNewerRecord::opcode);
    return found == std::end(kRecords) ? nullptr : found;
}
