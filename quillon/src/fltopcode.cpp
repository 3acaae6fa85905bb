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
#include <quillon/fltindexedstring.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltlinestyle.h>
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

using enum FltOpcodeClass;
using enum FltRecordPlace;
using enum FltVocabulary;
constexpr FltLevelChange kStays;

constexpr FltLevelChange opens(FltLevelKind kind) {
    return {kind, 1};
}
constexpr FltLevelChange closes(FltLevelKind kind) {
    return {kind, -1};
}

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
    {kFltEndOfFile, "FLT_END_OF_FILE", kControl, kFile, kStays, nullptr, kScenes},
    {kFltHeader, "FLT_HEADER", kPalette, kFile, kStays, make<FltFileHeader>, kStored},
    {kFltGroup, "FLT_GROUP", kPrimary, kNode, kStays, make<FltGroup>, kStored},
    {kFltObject, "FLT_OBJECT", kPrimary, kNode, kStays, make<FltObject>, kStored},
    {kFltFace, "FLT_FACE", kPrimary, kNode, kStays, make<FltFace>, kStored},
    {kFltPushLevel, "FLT_PUSH_LEVEL", kControl, kLevel, opens(FltLevelKind::kLevel), nullptr,
     kScenes},
    {kFltPopLevel, "FLT_POP_LEVEL", kControl, kLevel, closes(FltLevelKind::kLevel), nullptr,
     kScenes},
    {kFltDof, "FLT_DOF", kPrimary, kNode, kStays, make<FltDof>, kStored},
    {kFltPushSubface, "FLT_PUSH_SUBFACE", kControl, kLevel, opens(FltLevelKind::kSubface), nullptr,
     kScenes},
    {kFltPopSubface, "FLT_POP_SUBFACE", kControl, kLevel, closes(FltLevelKind::kSubface), nullptr,
     kScenes},
    {kFltPushExtension, "FLT_PUSH_EXTENSION", kControl, kLevel, opens(FltLevelKind::kExtension),
     nullptr, kScenes},
    {kFltPopExtension, "FLT_POP_EXTENSION", kControl, kLevel, closes(FltLevelKind::kExtension),
     nullptr, kScenes},
    {kFltComment, "FLT_COMMENT", kAncillary, kPart, kStays, make<FltComment>, kStored},
    {kFltColorPalette, "FLT_COLOR_PALETTE", kPalette, kFile, kStays, make<FltColorPalette>,
     kScenes},
    {kFltLongId, "FLT_LONG_ID", kAncillary, kPart, kStays, make<FltLongId>, kScenes},
    {kFltMatrix, "FLT_MATRIX", kAncillary, kPart, kStays, make<FltMatrix>, kScenes},
    {kFltVector, "FLT_VECTOR", kAncillary, kPart, kStays, nullptr, kScenes},
    {kFltMultiTexture, "FLT_MULTI_TEXTURE", kAncillary, kPart, kStays, make<FltMultiTexture>,
     kScenes},
    {kFltUvList, "FLT_UV_LIST", kAncillary, kPart, kStays, make<FltUvList>, kScenes},
    {kFltBsp, "FLT_BSP", kPrimary, kNode, kStays, make<FltBsp>, kStored},
    {kFltReplicate, "FLT_REPLICATE", kAncillary, kPart, kStays, make<FltReplicate>, kScenes},
    {kFltInstanceRef, "FLT_INSTANCE_REF", kControl, kNode, kStays, make<FltInstanceRef>, kStored},
    {kFltInstanceDef, "FLT_INSTANCE_DEF", kControl, kNode, kStays, make<FltInstanceDef>, kStored},
    {kFltExternalRef, "FLT_EXTERNAL_REF", kPrimary, kNode, kStays, make<FltXRef>, kStored},
    {kFltTexture, "FLT_TEXTURE", kPalette, kFile, kStays, make<FltTexture>, kScenes},
    {kFltMaterialTable, "FLT_MATERIAL_TABLE", kPalette, kFile, kStays, make<FltMaterialTable>,
     kScenes},
    {kFltVertexPalette, "FLT_VERTEX_PALETTE", kPalette, kFile, kStays, make<FltVertexPalette>,
     kScenes},
    {kFltVertexWithColor, "FLT_VERTEX_W_COLOR", kPalette, kFile, kStays, makeVertex<false, false>,
     kScenes},
    {kFltVertexWithNormal, "FLT_VERTEX_W_NORMAL", kPalette, kFile, kStays, makeVertex<true, false>,
     kScenes},
    {kFltVertexWithTexture, "FLT_VERTEX_W_TEXTURE", kPalette, kFile, kStays,
     makeVertex<false, true>, kScenes},
    {kFltVertexWithTextureAndNormal, "FLT_VERTEX_W_TEXTURE_AND_NORMAL", kPalette, kFile, kStays,
     makeVertex<true, true>, kScenes},
    {kFltVertexList, "FLT_VERTEX_LIST", kPrimary, kPart, kStays, make<FltVertexList>, kScenes},
    {kFltLod, "FLT_LOD", kPrimary, kNode, kStays, make<FltLod>, kStored},
    {kFltBoundingBox, "FLT_BOUNDING_BOX", kAncillary, kPart, kStays, make<FltBoundingBox>, kScenes},
    {kFltRotateAboutEdge, "FLT_ROTATE_ABOUT_EDGE", kAncillary, kPart, kStays,
     make<FltRotateAboutEdge>, kScenes},
    {kFltTranslate, "FLT_TRANSLATE", kAncillary, kPart, kStays, make<FltTranslate>, kScenes},
    {kFltScale, "FLT_SCALE", kAncillary, kPart, kStays, make<FltScale>, kScenes},
    {kFltRotateAboutPoint, "FLT_ROTATE_ABOUT_POINT", kAncillary, kPart, kStays,
     make<FltRotateAboutPoint>, kScenes},
    {kFltRotateScaleAboutPoint, "FLT_ROTATE_SCALE_ABOUT_POINT", kAncillary, kPart, kStays,
     make<FltRotateScaleToPoint>, kScenes},
    {kFltPut, "FLT_PUT", kAncillary, kPart, kStays, make<FltPut>, kScenes},
    {kFltTrackplanePalette, "FLT_TRACKPLANE_PALETTE", kPalette, kFile, kStays, nullptr, kScenes},
    {kFltRoadSegment, "FLT_ROAD_SEGMENT", kPrimary, kNode, kStays, nullptr, kScenes},
    {kFltRoadZone, "FLT_ROAD_ZONE", kAncillary, kPart, kStays, nullptr, kScenes},
    {kFltMorphVertexList, "FLT_MORPH_VERTEX_LIST", kPrimary, kPart, kStays,
     make<FltMorphVertexList>, kScenes},
    {kFltLinkagePalette, "FLT_LINKAGE_PALETTE", kPalette, kFile, kStays, nullptr, kScenes},
    {kFltSound, "FLT_SOUND", kPrimary, kNode, kStays, nullptr, kScenes},
    {kFltRoadPath, "FLT_ROAD_PATH", kPrimary, kNode, kStays, nullptr, kScenes},
    {kFltSoundPalette, "FLT_SOUND_PALETTE", kPalette, kFile, kStays, nullptr, kScenes},
    {kFltGeneralMatrix, "FLT_GENERAL_MATRIX", kAncillary, kPart, kStays, make<FltGeneralMatrix>,
     kScenes},
    {kFltText, "FLT_TEXT", kPrimary, kNode, kStays, nullptr, kScenes},
    {kFltSwitch, "FLT_SWITCH", kPrimary, kNode, kStays, make<FltSwitch>, kStored},
    {kFltLineStylePalette, "FLT_LINE_STYLE_PALETTE", kPalette, kFile, kStays, make<FltLineStyle>,
     kScenes},
    {kFltClipRegion, "FLT_CLIP_REGION", kPrimary, kNode, kStays, make<FltClipRegion>, kStored},
    {kFltExtensionAttr, "FLT_EXTENSION_ATTR", kAncillary, kPart, kStays, make<FltExtension>,
     kScenes},
    {kFltLightSource, "FLT_LIGHT_SRC", kPrimary, kNode, kStays, make<FltLightSource>, kStored},
    {kFltLightSourcePalette, "FLT_LIGHT_SRC_PALETTE", kPalette, kFile, kStays,
     make<FltLightSourcePalette>, kStored},
    {kFltBoundingSphere, "FLT_BOUNDING_SPHERE", kAncillary, kPart, kStays, make<FltBoundingSphere>,
     kScenes},
    {kFltBoundingCylinder, "FLT_BOUNDING_CYLINDER", kAncillary, kPart, kStays,
     make<FltBoundingCylinder>, kScenes},
    {kFltBoundingCenter, "FLT_BOUNDING_CENTER", kAncillary, kPart, kStays, make<FltBoundingCenter>,
     kScenes},
    {kFltBoundingOrientation, "FLT_BOUNDING_ORIENTATION", kAncillary, kPart, kStays,
     make<FltBoundingOrientation>, kScenes},
    {kFltLightPoint, "FLT_LIGHT_POINT", kPrimary, kNode, kStays, make<FltLightPoint>, kStored},
    {kFltTextureMappingPalette, "FLT_TEXTURE_MAPPING_PALETTE", kPalette, kFile, kStays,
     make<FltTextureMapping>, kScenes},
    {kFltMaterial, "FLT_MATERIAL", kPalette, kFile, kStays, make<FltMaterial>, kScenes},
    {kFltColorNamePalette, "FLT_COLORNAME_PALETTE", kPalette, kFile, kStays, nullptr, kScenes},
    {kFltCat, "FLT_CAT", kPrimary, kNode, kStays, nullptr, kScenes},
    {kFltCatData, "FLT_CAT_DATA", kAncillary, kPart, kStays, nullptr, kScenes},
    {kFltPushAttribute, "FLT_PUSH_ATTRIBUTE", kControl, kLevel, opens(FltLevelKind::kAttribute),
     nullptr, kScenes},
    {kFltPopAttribute, "FLT_POP_ATTRIBUTE", kControl, kLevel, closes(FltLevelKind::kAttribute),
     nullptr, kScenes},
    {kFltAdaptiveAttribute, "FLT_ADAPTIVE_ATTRIBUTE", kAncillary, kPart, kStays, nullptr, kScenes},
    {kFltCurveNode, "FLT_CURVE_NODE", kPrimary, kNode, kStays, nullptr, kScenes},
    {kFltRoadConstruction, "FLT_ROAD_CONSTRUCTION", kPrimary, kNode, kStays, nullptr, kScenes},

    // Published, and not in the vocabulary of scenes.
    {kFltContinuation, "FLT_CONTINUATION", kControl, kPart, kStays, nullptr, kPublished},
    {kFltMesh, "FLT_MESH", kPrimary, kNode, kStays, make<FltMesh>, kPublished},
    {kFltLocalVertexPool, "FLT_LOCAL_VERTEX_POOL", kAncillary, kPart, kStays,
     make<FltLocalVertexPool>, kPublished},
    {kFltMeshPrimitive, "FLT_MESH_PRIMITIVE", kAncillary, kPart, kStays, make<FltMeshPrimitive>,
     kPublished},
    {kFltBoundingConvexHull, "FLT_BOUNDING_CONVEX_HULL", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltBoundingHistogram, "FLT_BOUNDING_HISTOGRAM", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltLightPointAppearance, "FLT_LIGHT_POINT_APPEARANCE_PALETTE", kPalette, kFile, kStays,
     make<FltLightPointAppearance>, kPublished},
    {kFltLightPointAnimation, "FLT_LIGHT_POINT_ANIMATION_PALETTE", kPalette, kFile, kStays,
     make<FltLightPointAnimation>, kPublished},
    {kFltIndexedLightPoint, "FLT_INDEXED_LIGHT_POINT", kPrimary, kNode, kStays,
     make<FltIndexedLightPoint>, kPublished},
    {kFltLightPointSystem, "FLT_LIGHT_POINT_SYSTEM", kPrimary, kNode, kStays,
     make<FltLightPointSystem>, kPublished},
    {kFltIndexedString, "FLT_INDEXED_STRING", kAncillary, kPart, kStays, make<FltIndexedString>,
     kPublished},
    {kFltShaderPalette, "FLT_SHADER_PALETTE", kPalette, kFile, kStays, nullptr, kPublished},
    {kFltExtendedMaterialHeader, "FLT_EXTENDED_MATERIAL_HEADER", kPalette, kFile, kStays, nullptr,
     kPublished},
    {kFltExtendedMaterialAmbient, "FLT_EXTENDED_MATERIAL_AMBIENT", kPalette, kFile, kStays, nullptr,
     kPublished},
    {kFltExtendedMaterialDiffuse, "FLT_EXTENDED_MATERIAL_DIFFUSE", kPalette, kFile, kStays, nullptr,
     kPublished},
    {kFltExtendedMaterialSpecular, "FLT_EXTENDED_MATERIAL_SPECULAR", kPalette, kFile, kStays,
     nullptr, kPublished},
    {kFltExtendedMaterialEmissive, "FLT_EXTENDED_MATERIAL_EMISSIVE", kPalette, kFile, kStays,
     nullptr, kPublished},
    {kFltExtendedMaterialAlpha, "FLT_EXTENDED_MATERIAL_ALPHA", kPalette, kFile, kStays, nullptr,
     kPublished},
    {kFltExtendedMaterialLightMap, "FLT_EXTENDED_MATERIAL_LIGHT_MAP", kPalette, kFile, kStays,
     nullptr, kPublished},
    {kFltExtendedMaterialNormalMap, "FLT_EXTENDED_MATERIAL_NORMAL_MAP", kPalette, kFile, kStays,
     nullptr, kPublished},
    {kFltExtendedMaterialBumpMap, "FLT_EXTENDED_MATERIAL_BUMP_MAP", kPalette, kFile, kStays,
     nullptr, kPublished},
    {kFltExtendedMaterialShadowMap, "FLT_EXTENDED_MATERIAL_SHADOW_MAP", kPalette, kFile, kStays,
     nullptr, kPublished},
    {kFltExtendedMaterialReflectionMap, "FLT_EXTENDED_MATERIAL_REFLECTION_MAP", kPalette, kFile,
     kStays, nullptr, kPublished},
    {kFltExtensionGuidPalette, "FLT_EXTENSION_GUID_PALETTE", kPalette, kFile, kStays, nullptr,
     kPublished},
    {kFltExtensionFieldBoolean, "FLT_EXTENSION_FIELD_BOOLEAN", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltExtensionFieldInteger, "FLT_EXTENSION_FIELD_INTEGER", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltExtensionFieldFloat, "FLT_EXTENSION_FIELD_FLOAT", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltExtensionFieldDouble, "FLT_EXTENSION_FIELD_DOUBLE", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltExtensionFieldString, "FLT_EXTENSION_FIELD_STRING", kAncillary, kPart, kStays, nullptr,
     kPublished},
    {kFltExtensionFieldXmlString, "FLT_EXTENSION_FIELD_XML_STRING", kAncillary, kPart, kStays,
     nullptr, kPublished},
};

constexpr const char* kUndefined = "UNDEFINED";

/// The rows by opcode.
constexpr std::array<const FltRecordType*, 256> kTypeOf = [] {
    std::array<const FltRecordType*, 256> types{};
    for (const FltRecordType& type : kTypes) types[type.opcode] = &type;
    return types;
}();

/// The pops, by the levels that they close.
constexpr std::array<std::uint16_t, 5> kPopOf = [] {
    std::array<std::uint16_t, 5> pops{};
    for (const FltRecordType& type : kTypes)
        if (type.level.by < 0) pops[static_cast<std::size_t>(type.level.kind)] = type.opcode;
    return pops;
}();

static_assert(std::ranges::all_of(kTypes, [](const FltRecordType& type) {
    const bool nests = type.place == kLevel;
    return nests == (type.level.by != 0) && (!nests || fltMayNest(type.opcode));
}));

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
        if (type.isNamedInScenes())
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
    const auto [kind, by] = fltLevelChange(opcode);
    return by > 0 ? kPopOf[static_cast<std::size_t>(kind)] : std::uint16_t{0};
}

bool fltIsPop(std::uint16_t opcode) noexcept {
    return fltLevelChange(opcode).by < 0;
}

std::span<const FltOpcodeEntry> fltOpcodeTable() {
    const OpcodeList& list = opcodes();
    return {list.data(), static_cast<std::size_t>(list.count())};
}
