#include <quillon/fltbounds.h>
#include <quillon/fltbsearch.h>
#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltcomment.h>
#include <quillon/fltdof.h>
#include <quillon/fltextension.h>
#include <quillon/fltface.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltlistof.h>
#include <quillon/fltlod.h>
#include <quillon/fltlongid.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmesh.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltobject.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltreplicate.h>
#include <quillon/fltswitch.h>
#include <quillon/flttexture.h>
#include <quillon/flttransform.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

namespace {

// Rows are sorted and searched as blocks of this size.
static_assert(sizeof(FltOpcodeEntry) == 16);

constexpr auto kControl = FltOpcodeClass::control;
constexpr auto kPalette = FltOpcodeClass::palette;
constexpr auto kPrimary = FltOpcodeClass::primary;
constexpr auto kAncillary = FltOpcodeClass::ancillary;
constexpr auto kFile = FltRecordPlace::file;
constexpr auto kNode = FltRecordPlace::node;
constexpr auto kPart = FltRecordPlace::part;
constexpr auto kLevel = FltRecordPlace::level;

template <typename Record>
std::unique_ptr<FltRecord> make() {
    return std::make_unique<Record>();
}

template <bool withNormal, bool withTexture>
std::unique_ptr<FltRecord> makeVertex() {
    return std::make_unique<FltVertex>(withNormal, withTexture);
}

// The header counts as a palette record, and 71 stands before 70; sorting puts the latter right.
constexpr FltRecordType kTypes[] = {
    {kFltEndOfFile, "FLT_END_OF_FILE", kControl, kFile, 0, nullptr, true},
    {kFltHeader, "FLT_HEADER", kPalette, kFile, 0, make<FltFileHeader>, true},
    {kFltGroup, "FLT_GROUP", kPrimary, kNode, 0, make<FltGroup>, true},
    {kFltObject, "FLT_OBJECT", kPrimary, kNode, 0, make<FltObject>, true},
    {kFltFace, "FLT_FACE", kPrimary, kNode, 0, make<FltFace>, true},
    {kFltPushLevel, "FLT_PUSH_LEVEL", kControl, kLevel, kFltPopLevel, nullptr, true},
    {kFltPopLevel, "FLT_POP_LEVEL", kControl, kLevel, 0, nullptr, true},
    {kFltDof, "FLT_DOF", kPrimary, kNode, 0, make<FltDof>, true},
    {kFltPushSubface, "FLT_PUSH_SUBFACE", kControl, kLevel, kFltPopSubface, nullptr, true},
    {kFltPopSubface, "FLT_POP_SUBFACE", kControl, kLevel, 0, nullptr, true},
    {kFltPushExtension, "FLT_PUSH_EXTENSION", kControl, kLevel, kFltPopExtension, nullptr, true},
    {kFltPopExtension, "FLT_POP_EXTENSION", kControl, kLevel, 0, nullptr, true},
    {kFltComment, "FLT_COMMENT", kAncillary, kPart, 0, make<FltComment>, true},
    {kFltColorPalette, "FLT_COLOR_PALETTE", kPalette, kFile, 0, make<FltColorPalette>, true},
    {kFltLongId, "FLT_LONG_ID", kAncillary, kPart, 0, make<FltLongId>, true},
    {kFltMatrix, "FLT_MATRIX", kAncillary, kPart, 0, make<FltMatrix>, true},
    {kFltVector, "FLT_VECTOR", kAncillary, kPart, 0, nullptr, true},
    {kFltMultiTexture, "FLT_MULTI_TEXTURE", kAncillary, kPart, 0, make<FltMultiTexture>, true},
    {kFltUvList, "FLT_UV_LIST", kAncillary, kPart, 0, make<FltUvList>, true},
    {kFltBsp, "FLT_BSP", kPrimary, kNode, 0, make<FltBsp>, true},
    {kFltReplicate, "FLT_REPLICATE", kAncillary, kPart, 0, make<FltReplicate>, true},
    {kFltInstanceRef, "FLT_INSTANCE_REF", kControl, kNode, 0, make<FltInstanceRef>, true},
    {kFltInstanceDef, "FLT_INSTANCE_DEF", kControl, kNode, 0, make<FltInstanceDef>, true},
    {kFltExternalRef, "FLT_EXTERNAL_REF", kPrimary, kNode, 0, make<FltXRef>, true},
    {kFltTexture, "FLT_TEXTURE", kPalette, kFile, 0, make<FltTexture>, true},
    {kFltMaterialTable, "FLT_MATERIAL_TABLE", kPalette, kFile, 0, make<FltMaterialTable>, true},
    {kFltVertexPalette, "FLT_VERTEX_PALETTE", kPalette, kFile, 0, make<FltVertexPalette>, true},
    {kFltVertexWithColor, "FLT_VERTEX_W_COLOR", kPalette, kFile, 0, makeVertex<false, false>, true},
    {kFltVertexWithNormal, "FLT_VERTEX_W_NORMAL", kPalette, kFile, 0, makeVertex<true, false>,
     true},
    {kFltVertexWithTexture, "FLT_VERTEX_W_TEXTURE", kPalette, kFile, 0, makeVertex<false, true>,
     true},
    {kFltVertexWithTextureAndNormal, "FLT_VERTEX_W_TEXTURE_AND_NORMAL", kPalette, kFile, 0,
     makeVertex<true, true>, true},
    {kFltVertexList, "FLT_VERTEX_LIST", kPrimary, kPart, 0, make<FltVertexList>, true},
    {kFltLod, "FLT_LOD", kPrimary, kNode, 0, make<FltLod>, true},
    {kFltBoundingBox, "FLT_BOUNDING_BOX", kAncillary, kPart, 0, make<FltBoundingBox>, true},
    {kFltRotateAboutEdge, "FLT_ROTATE_ABOUT_EDGE", kAncillary, kPart, 0, make<FltRotateAboutEdge>,
     true},
    {kFltTranslate, "FLT_TRANSLATE", kAncillary, kPart, 0, make<FltTranslate>, true},
    {kFltScale, "FLT_SCALE", kAncillary, kPart, 0, make<FltScale>, true},
    {kFltRotateAboutPoint, "FLT_ROTATE_ABOUT_POINT", kAncillary, kPart, 0,
     make<FltRotateAboutPoint>, true},
    {kFltRotateScaleAboutPoint, "FLT_ROTATE_SCALE_ABOUT_POINT", kAncillary, kPart, 0,
     make<FltRotateScaleToPoint>, true},
    {kFltPut, "FLT_PUT", kAncillary, kPart, 0, make<FltPut>, true},
    {kFltTrackplanePalette, "FLT_TRACKPLANE_PALETTE", kPalette, kFile, 0, nullptr, true},
    {kFltRoadSegment, "FLT_ROAD_SEGMENT", kPrimary, kNode, 0, nullptr, true},
    {kFltRoadZone, "FLT_ROAD_ZONE", kAncillary, kPart, 0, nullptr, true},
    {kFltMorphVertexList, "FLT_MORPH_VERTEX_LIST", kPrimary, kPart, 0, make<FltMorphVertexList>,
     true},
    {kFltLinkagePalette, "FLT_LINKAGE_PALETTE", kPalette, kFile, 0, nullptr, true},
    {kFltSound, "FLT_SOUND", kPrimary, kNode, 0, nullptr, true},
    {kFltRoadPath, "FLT_ROAD_PATH", kPrimary, kNode, 0, nullptr, true},
    {kFltSoundPalette, "FLT_SOUND_PALETTE", kPalette, kFile, 0, nullptr, true},
    {kFltGeneralMatrix, "FLT_GENERAL_MATRIX", kAncillary, kPart, 0, make<FltGeneralMatrix>, true},
    {kFltText, "FLT_TEXT", kPrimary, kNode, 0, nullptr, true},
    {kFltSwitch, "FLT_SWITCH", kPrimary, kNode, 0, make<FltSwitch>, true},
    {kFltLineStylePalette, "FLT_LINE_STYLE_PALETTE", kPalette, kFile, 0, nullptr, true},
    {kFltClipRegion, "FLT_CLIP_REGION", kPrimary, kNode, 0, make<FltClipRegion>, true},
    {kFltExtensionAttr, "FLT_EXTENSION_ATTR", kAncillary, kPart, 0, make<FltExtension>, true},
    {kFltLightSource, "FLT_LIGHT_SRC", kPrimary, kNode, 0, make<FltLightSource>, true},
    {kFltLightSourcePalette, "FLT_LIGHT_SRC_PALETTE", kPalette, kFile, 0,
     make<FltLightSourcePalette>, true},
    {kFltBoundingSphere, "FLT_BOUNDING_SPHERE", kAncillary, kPart, 0, make<FltBoundingSphere>,
     true},
    {kFltBoundingCylinder, "FLT_BOUNDING_CYLINDER", kAncillary, kPart, 0, make<FltBoundingCylinder>,
     true},
    {kFltBoundingCenter, "FLT_BOUNDING_CENTER", kAncillary, kPart, 0, make<FltBoundingCenter>,
     true},
    {kFltBoundingOrientation, "FLT_BOUNDING_ORIENTATION", kAncillary, kPart, 0,
     make<FltBoundingOrientation>, true},
    {kFltLightPoint, "FLT_LIGHT_POINT", kPrimary, kNode, 0, make<FltLightPoint>, true},
    {kFltTextureMappingPalette, "FLT_TEXTURE_MAPPING_PALETTE", kPalette, kFile, 0,
     make<FltTextureMapping>, true},
    {kFltMaterial, "FLT_MATERIAL", kPalette, kFile, 0, make<FltMaterial>, true},
    {kFltColorNamePalette, "FLT_COLORNAME_PALETTE", kPalette, kFile, 0, nullptr, true},
    {kFltCat, "FLT_CAT", kPrimary, kNode, 0, nullptr, true},
    {kFltCatData, "FLT_CAT_DATA", kAncillary, kPart, 0, nullptr, true},
    {kFltPushAttribute, "FLT_PUSH_ATTRIBUTE", kControl, kLevel, kFltPopAttribute, nullptr, true},
    {kFltPopAttribute, "FLT_POP_ATTRIBUTE", kControl, kLevel, 0, nullptr, true},
    {kFltAdaptiveAttribute, "FLT_ADAPTIVE_ATTRIBUTE", kAncillary, kPart, 0, nullptr, true},
    {kFltCurveNode, "FLT_CURVE_NODE", kPrimary, kNode, 0, nullptr, true},
    {kFltRoadConstruction, "FLT_ROAD_CONSTRUCTION", kPrimary, kNode, 0, nullptr, true},

    // Published, and not in the vocabulary of scenes.
    {kFltContinuation, "FLT_CONTINUATION", kControl, kPart, 0, nullptr, false},
    {kFltMesh, "FLT_MESH", kPrimary, kNode, 0, make<FltMesh>, false},
    {kFltLocalVertexPool, "FLT_LOCAL_VERTEX_POOL", kAncillary, kPart, 0, make<FltLocalVertexPool>,
     false},
    {kFltMeshPrimitive, "FLT_MESH_PRIMITIVE", kAncillary, kPart, 0, make<FltMeshPrimitive>, false},
    {kFltBoundingConvexHull, "FLT_BOUNDING_CONVEX_HULL", kAncillary, kPart, 0, nullptr, false},
    {kFltBoundingHistogram, "FLT_BOUNDING_HISTOGRAM", kAncillary, kPart, 0, nullptr, false},
    {kFltLightPointAppearance, "FLT_LIGHT_POINT_APPEARANCE_PALETTE", kPalette, kFile, 0,
     make<FltLightPointAppearance>, false},
    {kFltLightPointAnimation, "FLT_LIGHT_POINT_ANIMATION_PALETTE", kPalette, kFile, 0,
     make<FltLightPointAnimation>, false},
    {kFltIndexedLightPoint, "FLT_INDEXED_LIGHT_POINT", kPrimary, kNode, 0,
     make<FltIndexedLightPoint>, false},
    {kFltLightPointSystem, "FLT_LIGHT_POINT_SYSTEM", kPrimary, kNode, 0, make<FltLightPointSystem>,
     false},
    {kFltIndexedString, "FLT_INDEXED_STRING", kAncillary, kPart, 0, nullptr, false},
    {kFltShaderPalette, "FLT_SHADER_PALETTE", kPalette, kFile, 0, nullptr, false},
    {kFltExtendedMaterialHeader, "FLT_EXTENDED_MATERIAL_HEADER", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialAmbient, "FLT_EXTENDED_MATERIAL_AMBIENT", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialDiffuse, "FLT_EXTENDED_MATERIAL_DIFFUSE", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialSpecular, "FLT_EXTENDED_MATERIAL_SPECULAR", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialEmissive, "FLT_EXTENDED_MATERIAL_EMISSIVE", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialAlpha, "FLT_EXTENDED_MATERIAL_ALPHA", kPalette, kFile, 0, nullptr, false},
    {kFltExtendedMaterialLightMap, "FLT_EXTENDED_MATERIAL_LIGHT_MAP", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialNormalMap, "FLT_EXTENDED_MATERIAL_NORMAL_MAP", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialBumpMap, "FLT_EXTENDED_MATERIAL_BUMP_MAP", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialShadowMap, "FLT_EXTENDED_MATERIAL_SHADOW_MAP", kPalette, kFile, 0, nullptr,
     false},
    {kFltExtendedMaterialReflectionMap, "FLT_EXTENDED_MATERIAL_REFLECTION_MAP", kPalette, kFile, 0,
     nullptr, false},
    {kFltExtensionGuidPalette, "FLT_EXTENSION_GUID_PALETTE", kPalette, kFile, 0, nullptr, false},
    {kFltExtensionFieldBoolean, "FLT_EXTENSION_FIELD_BOOLEAN", kAncillary, kPart, 0, nullptr,
     false},
    {kFltExtensionFieldInteger, "FLT_EXTENSION_FIELD_INTEGER", kAncillary, kPart, 0, nullptr,
     false},
    {kFltExtensionFieldFloat, "FLT_EXTENSION_FIELD_FLOAT", kAncillary, kPart, 0, nullptr, false},
    {kFltExtensionFieldDouble, "FLT_EXTENSION_FIELD_DOUBLE", kAncillary, kPart, 0, nullptr, false},
    {kFltExtensionFieldString, "FLT_EXTENSION_FIELD_STRING", kAncillary, kPart, 0, nullptr, false},
    {kFltExtensionFieldXmlString, "FLT_EXTENSION_FIELD_XML_STRING", kAncillary, kPart, 0, nullptr,
     false},
};

constexpr const char* kUndefined = "UNDEFINED";

/// The rows by opcode.
constexpr std::array<const FltRecordType*, 256> kTypeOf = [] {
    std::array<const FltRecordType*, 256> types{};
    for (const FltRecordType& type : kTypes) types[type.opcode] = &type;
    return types;
}();

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
    for (const FltRecordType& type : kTypes)
        if (type.isNamedInScenes)
            list.append({type.family, static_cast<std::int16_t>(type.opcode), type.name});
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
    if (!fltBsearch(&list, list.count(), &opcode, compareWithKey, &index)) return kUndefined;
    const FltOpcodeEntry* entry = list.at(static_cast<std::int32_t>(index));
    return entry ? entry->name : kUndefined;
}

const FltRecordType* fltRecordType(std::uint16_t opcode) noexcept {
    return opcode < kTypeOf.size() ? kTypeOf[opcode] : nullptr;
}

const char* fltRecordName(std::uint16_t opcode) noexcept {
    const FltRecordType* const type = fltRecordType(opcode);
    return type != nullptr ? type->name : kUndefined;
}

std::span<const std::uint8_t> fltIdOf(const FltRecordView& record) noexcept {
    switch (record.opcode()) {
        case kFltExternalRef:
        case kFltInstanceRef:
        case kFltInstanceDef:
            return {};
        default:
            return record.body().first(std::min(record.body().size(), sizeof FltHeader::asciiId));
    }
}

std::span<const FltRecordType> fltRecordTypes() noexcept {
    return kTypes;
}

std::uint16_t fltClosingOpcode(std::uint16_t opcode) noexcept {
    const FltRecordType* const type = fltRecordType(opcode);
    return type != nullptr ? type->closer : std::uint16_t{0};
}

bool fltIsPop(std::uint16_t opcode) noexcept {
    const FltRecordType* const type = fltRecordType(opcode);
    return type != nullptr && type->place == kLevel && type->closer == 0;
}

std::span<const FltOpcodeEntry> fltOpcodeTable() {
    const OpcodeList& list = opcodes();
    return {list.data(), static_cast<std::size_t>(list.count())};
}
