#include <quillon/fltbsearch.h>
#include <quillon/fltlistof.h>
#include <quillon/fltopcode.h>

#include <cstdlib>

namespace {

// Rows are sorted and searched as blocks of this size.
static_assert(sizeof(FltOpcodeEntry) == 16);

constexpr auto kControl = FltOpcodeClass::control;
constexpr auto kPalette = FltOpcodeClass::palette;
constexpr auto kPrimary = FltOpcodeClass::primary;
constexpr auto kAncillary = FltOpcodeClass::ancillary;

// The header counts as a palette record, and 71 stands before 70; sorting puts the latter right.
constexpr FltOpcodeEntry kDeclared[] = {
    {kControl, kFltEndOfFile, "FLT_END_OF_FILE"},
    {kPalette, kFltHeader, "FLT_HEADER"},
    {kPrimary, kFltGroup, "FLT_GROUP"},
    {kPrimary, kFltObject, "FLT_OBJECT"},
    {kPrimary, kFltFace, "FLT_FACE"},
    {kControl, kFltPushLevel, "FLT_PUSH_LEVEL"},
    {kControl, kFltPopLevel, "FLT_POP_LEVEL"},
    {kPrimary, kFltDof, "FLT_DOF"},
    {kControl, kFltPushSubface, "FLT_PUSH_SUBFACE"},
    {kControl, kFltPopSubface, "FLT_POP_SUBFACE"},
    {kControl, kFltPushExtension, "FLT_PUSH_EXTENSION"},
    {kControl, kFltPopExtension, "FLT_POP_EXTENSION"},
    {kAncillary, kFltComment, "FLT_COMMENT"},
    {kPalette, kFltColorPalette, "FLT_COLOR_PALETTE"},
    {kAncillary, kFltLongId, "FLT_LONG_ID"},
    {kAncillary, kFltMatrix, "FLT_MATRIX"},
    {kAncillary, kFltVector, "FLT_VECTOR"},
    {kAncillary, kFltMultiTexture, "FLT_MULTI_TEXTURE"},
    {kAncillary, kFltUvList, "FLT_UV_LIST"},
    {kPrimary, kFltBsp, "FLT_BSP"},
    {kAncillary, kFltReplicate, "FLT_REPLICATE"},
    {kControl, kFltInstanceRef, "FLT_INSTANCE_REF"},
    {kControl, kFltInstanceDef, "FLT_INSTANCE_DEF"},
    {kPrimary, kFltExternalRef, "FLT_EXTERNAL_REF"},
    {kPalette, kFltTexture, "FLT_TEXTURE"},
    {kPalette, kFltMaterialTable, "FLT_MATERIAL_TABLE"},
    {kPalette, kFltVertexPalette, "FLT_VERTEX_PALETTE"},
    {kPalette, kFltVertexWithColor, "FLT_VERTEX_W_COLOR"},
    {kPalette, kFltVertexWithNormal, "FLT_VERTEX_W_NORMAL"},
    {kPalette, kFltVertexWithTexture, "FLT_VERTEX_W_TEXTURE"},
    {kPalette, kFltVertexWithTextureAndNormal, "FLT_VERTEX_W_TEXTURE_AND_NORMAL"},
    {kPrimary, kFltVertexList, "FLT_VERTEX_LIST"},
    {kPrimary, kFltLod, "FLT_LOD"},
    {kAncillary, kFltBoundingBox, "FLT_BOUNDING_BOX"},
    {kAncillary, kFltRotateAboutEdge, "FLT_ROTATE_ABOUT_EDGE"},
    {kAncillary, kFltTranslate, "FLT_TRANSLATE"},
    {kAncillary, kFltScale, "FLT_SCALE"},
    {kAncillary, kFltRotateAboutPoint, "FLT_ROTATE_ABOUT_POINT"},
    {kAncillary, kFltRotateScaleAboutPoint, "FLT_ROTATE_SCALE_ABOUT_POINT"},
    {kAncillary, kFltPut, "FLT_PUT"},
    {kPalette, kFltTrackplanePalette, "FLT_TRACKPLANE_PALETTE"},
    {kPrimary, kFltRoadSegment, "FLT_ROAD_SEGMENT"},
    {kAncillary, kFltRoadZone, "FLT_ROAD_ZONE"},
    {kPrimary, kFltMorphVertexList, "FLT_MORPH_VERTEX_LIST"},
    {kPalette, kFltLinkagePalette, "FLT_LINKAGE_PALETTE"},
    {kPrimary, kFltSound, "FLT_SOUND"},
    {kPrimary, kFltRoadPath, "FLT_ROAD_PATH"},
    {kPalette, kFltSoundPalette, "FLT_SOUND_PALETTE"},
    {kAncillary, kFltGeneralMatrix, "FLT_GENERAL_MATRIX"},
    {kPrimary, kFltText, "FLT_TEXT"},
    {kPrimary, kFltSwitch, "FLT_SWITCH"},
    {kPalette, kFltLineStylePalette, "FLT_LINE_STYLE_PALETTE"},
    {kPrimary, kFltClipRegion, "FLT_CLIP_REGION"},
    {kAncillary, kFltExtensionAttr, "FLT_EXTENSION_ATTR"},
    {kPrimary, kFltLightSource, "FLT_LIGHT_SRC"},
    {kPalette, kFltLightSourcePalette, "FLT_LIGHT_SRC_PALETTE"},
    {kAncillary, kFltBoundingSphere, "FLT_BOUNDING_SPHERE"},
    {kAncillary, kFltBoundingCylinder, "FLT_BOUNDING_CYLINDER"},
    {kAncillary, kFltBoundingCenter, "FLT_BOUNDING_CENTER"},
    {kAncillary, kFltBoundingOrientation, "FLT_BOUNDING_ORIENTATION"},
    {kPrimary, kFltLightPoint, "FLT_LIGHT_POINT"},
    {kPalette, kFltTextureMappingPalette, "FLT_TEXTURE_MAPPING_PALETTE"},
    {kPalette, kFltMaterial, "FLT_MATERIAL"},
    {kPalette, kFltColorNamePalette, "FLT_COLORNAME_PALETTE"},
    {kPrimary, kFltCat, "FLT_CAT"},
    {kAncillary, kFltCatData, "FLT_CAT_DATA"},
    {kControl, kFltPushAttribute, "FLT_PUSH_ATTRIBUTE"},
    {kControl, kFltPopAttribute, "FLT_POP_ATTRIBUTE"},
    {kAncillary, kFltAdaptiveAttribute, "FLT_ADAPTIVE_ATTRIBUTE"},
    {kPrimary, kFltCurveNode, "FLT_CURVE_NODE"},
    {kPrimary, kFltRoadConstruction, "FLT_ROAD_CONSTRUCTION"},
    {kControl, 0, nullptr},
};

using OpcodeList = FltListOf<FltOpcodeEntry>;

int compareEntries(const void* left, const void* right) {
    return static_cast<const FltOpcodeEntry*>(left)->opcode -
           static_cast<const FltOpcodeEntry*>(right)->opcode;
}

std::int32_t compareWithKey(const void* list, std::int32_t index, const void* key) {
    return static_cast<const OpcodeList*>(list)->at(index)->opcode -
           *static_cast<const std::uint16_t*>(key);
}

OpcodeList sortedOpcodes() {
    OpcodeList list;
    for (const FltOpcodeEntry* row = kDeclared; row->name != nullptr; ++row) list.append(*row);
    if (list.count() > 1)
        std::qsort(list.data(), static_cast<std::size_t>(list.count()), sizeof(FltOpcodeEntry),
                   compareEntries);
    return list;
}

const OpcodeList& opcodes() {
    static const OpcodeList list = sortedOpcodes();
    return list;
}

// Fills the list while the module starts, whichever initialiser comes first.
[[maybe_unused]] const OpcodeList& startUp = opcodes();

}  // namespace

const char* fltOpcodeName(std::uint16_t opcode) {
    const OpcodeList& list = opcodes();
    std::uint32_t index = 0;
    if (!fltBsearch(&list, list.count(), &opcode, compareWithKey, &index)) return "UNDEFINED";
    const FltOpcodeEntry* entry = list.at(static_cast<std::int32_t>(index));
    return entry ? entry->name : "UNDEFINED";
}

std::uint16_t fltClosingOpcode(std::uint16_t opcode) noexcept {
    switch (opcode) {
        case kFltPushLevel:
            return kFltPopLevel;
        case kFltPushSubface:
            return kFltPopSubface;
        case kFltPushExtension:
            return kFltPopExtension;
        case kFltPushAttribute:
            return kFltPopAttribute;
        default:
            return 0;
    }
}

bool fltIsPop(std::uint16_t opcode) noexcept {
    return opcode == kFltPopLevel || opcode == kFltPopSubface || opcode == kFltPopExtension ||
           opcode == kFltPopAttribute;
}

std::span<const FltOpcodeEntry> fltOpcodeTable() {
    const OpcodeList& list = opcodes();
    return {list.data(), static_cast<std::size_t>(list.count())};
}
