// The opcode vocabulary: which records there are, what they are called, which family they are in.
#pragma once

#include <cstdint>
#include <span>

/// Opcodes of the OpenFlight records.
enum FltOpcode : std::uint16_t {
    kFltEndOfFile = 0,
    kFltHeader = 1,
    kFltGroup = 2,
    kFltObject = 4,
    kFltFace = 5,
    kFltPushLevel = 10,
    kFltPopLevel = 11,
    kFltDof = 14,
    kFltPushSubface = 19,
    kFltPopSubface = 20,
    kFltPushExtension = 21,
    kFltPopExtension = 22,
    kFltComment = 31,
    kFltColorPalette = 32,
    kFltLongId = 33,
    kFltMatrix = 49,
    kFltVector = 50,
    kFltMultiTexture = 52,
    kFltUvList = 53,
    kFltBsp = 55,
    kFltReplicate = 60,
    kFltInstanceRef = 61,
    kFltInstanceDef = 62,
    kFltExternalRef = 63,
    kFltTexture = 64,
    kFltMaterialTable = 66,
    kFltVertexPalette = 67,
    kFltVertexWithColor = 68,
    kFltVertexWithNormal = 69,
    kFltVertexWithTextureAndNormal = 70,
    kFltVertexWithTexture = 71,
    kFltVertexList = 72,
    kFltLod = 73,
    kFltBoundingBox = 74,
    kFltRotateAboutEdge = 76,
    kFltTranslate = 78,
    kFltScale = 79,
    kFltRotateAboutPoint = 80,
    kFltRotateScaleAboutPoint = 81,
    kFltPut = 82,
    kFltTrackplanePalette = 83,
    kFltRoadSegment = 87,
    kFltRoadZone = 88,
    kFltMorphVertexList = 89,
    kFltLinkagePalette = 90,
    kFltSound = 91,
    kFltRoadPath = 92,
    kFltSoundPalette = 93,
    kFltGeneralMatrix = 94,
    kFltText = 95,
    kFltSwitch = 96,
    kFltLineStylePalette = 97,
    kFltClipRegion = 98,
    kFltExtensionAttr = 100,
    kFltLightSource = 101,
    kFltLightSourcePalette = 102,
    kFltBoundingSphere = 105,
    kFltBoundingCylinder = 106,
    kFltBoundingCenter = 108,
    kFltBoundingOrientation = 109,
    kFltLightPoint = 111,
    kFltTextureMappingPalette = 112,
    kFltMaterial = 113,
    kFltColorNamePalette = 114,
    kFltCat = 115,
    kFltCatData = 116,
    kFltPushAttribute = 122,
    kFltPopAttribute = 123,
    kFltAdaptiveAttribute = 125,
    kFltCurveNode = 126,
    kFltRoadConstruction = 127,

    // Published, and not in the vocabulary of `fltOpcodeName`.
    kFltContinuation = 23,
    kFltMesh = 84,
    kFltLocalVertexPool = 85,
    kFltMeshPrimitive = 86,
    kFltBoundingConvexHull = 107,
    kFltBoundingHistogram = 119,
    kFltLightPointAppearance = 128,
    kFltLightPointAnimation = 129,
    kFltIndexedLightPoint = 130,
    kFltLightPointSystem = 131,
    kFltIndexedString = 132,
    kFltShaderPalette = 133,
    kFltExtendedMaterialHeader = 135,
    kFltExtendedMaterialAmbient = 136,
    kFltExtendedMaterialDiffuse = 137,
    kFltExtendedMaterialSpecular = 138,
    kFltExtendedMaterialEmissive = 139,
    kFltExtendedMaterialAlpha = 140,
    kFltExtendedMaterialLightMap = 141,
    kFltExtendedMaterialNormalMap = 142,
    kFltExtendedMaterialBumpMap = 143,
    kFltExtendedMaterialShadowMap = 145,
    kFltExtendedMaterialReflectionMap = 147,
    kFltExtensionGuidPalette = 148,
    kFltExtensionFieldBoolean = 149,
    kFltExtensionFieldInteger = 150,
    kFltExtensionFieldFloat = 151,
    kFltExtensionFieldDouble = 152,
    kFltExtensionFieldString = 153,
    kFltExtensionFieldXmlString = 154,
};

/// The record families. The values are part of the table and stay as they are.
enum class FltOpcodeClass : std::int32_t {
    kControl = 0,
    kPalette = 1,
    kPrimary = 2,
    kAncillary = 3,
};

/// One row of the opcode table.
struct FltOpcodeEntry {
    FltOpcodeClass family;
    std::int16_t opcode;
    const char* name;  ///< constant, NUL-terminated, "FLT_" and upper-case words
};

/// The name of `opcode` in the vocabulary of scenes, "UNDEFINED" for one that is not in it. The
/// text is constant and never freed.
const char* fltOpcodeName(std::uint16_t opcode);

/// Whether `opcode` may be that of a push or a pop. Rules nearly all others out at the cost of two
/// comparisons.
constexpr bool fltMayNest(std::uint16_t opcode) noexcept {
    return (opcode >= kFltPushLevel && opcode <= kFltPopExtension) || opcode == kFltPushAttribute ||
           opcode == kFltPopAttribute;
}

/// The opcode of the pop that closes the level which `opcode` opens; 0 when it is no push.
std::uint16_t fltClosingOpcode(std::uint16_t opcode) noexcept;

/// Whether `opcode` is that of a pop.
bool fltIsPop(std::uint16_t opcode) noexcept;

/// That vocabulary, ascending by opcode. Lives as long as the module. See `fltrecordtype.h` for
/// all that is known of each record.
std::span<const FltOpcodeEntry> fltOpcodeTable();
