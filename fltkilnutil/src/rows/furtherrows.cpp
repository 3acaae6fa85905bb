// Fields that no row of the attribute table names, for scripts and queries.
#include "attrrow.h"

#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltfilebeads.h>
#include <quillon/fltheader.h>
#include <quillon/fltinstance.h>
#include <quillon/fltmesh.h>

namespace fltkilnutil {

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

constexpr std::uint16_t kNoCaption = 0;

template <auto... path>
consteval AttrRow row(const char* key, Width width, std::uint32_t mask = 0) {
    const Type type = mask != 0                 ? Type::Boolean
                      : width == Width::Text    ? Type::Text
                      : width == Width::Float32 ? Type::Float
                      : width == Width::Float64 ? Type::Double
                                                : Type::Integer;
    return {kNoCaption, key, record<path...>, type, width, "", mask};
}

// How faces and meshes look.
constexpr AttrRow kLookRows[] = {
    row<&FltPolygonRec::primaryColorIndex>("FltColor", Width::Int32),
    row<&FltPolygonRec::alternateColorIndex>("FltAltColor", Width::Int32),
    row<&FltPolygonRec::flags>("FltNoColor", Width::Bool32, kFltSurfaceNoColor),
    row<&FltPolygonRec::flags>("FltNoAltColor", Width::Bool32, kFltSurfaceNoAlternateColor),
    row<&FltPolygonRec::flags>("FltPackedColors", Width::Bool32, kFltSurfacePackedColors),
    row<&FltPolygonRec::colorNameIndex>("FltColorName", Width::Int16),
    row<&FltPolygonRec::alternateColorNameIndex>("FltAltColorName", Width::Int16),
    row<&FltPolygonRec::textureIndex>("FltTexture", Width::Int16),
    row<&FltPolygonRec::detailTextureIndex>("FltDetailTexture", Width::Int16),
    row<&FltPolygonRec::textureMappingIndex>("FltTextureMapping", Width::Int16),
    row<&FltPolygonRec::textureWhite>("FltTextureWhite", Width::Uint8),
    row<&FltPolygonRec::materialIndex>("FltMaterial", Width::Int16),
    row<&FltPolygonRec::transparency>("FltTransparency", Width::Uint16),
    row<&FltPolygonRec::billboard>("FltTemplate", Width::Uint8),
    row<&FltPolygonRec::relativePriority>("FltRelativePriority", Width::Int16),
    row<&FltPolygonRec::lineStyleIndex>("FltLineStyle", Width::Uint8),
    row<&FltPolygonRec::lodGenerationControl>("FltLodControl", Width::Uint8),
};

// Packed colors, which scenes do not keep in their records.
constexpr AttrRow kPackedColorRows[] = {
    row<&FltPolygonRec::packedPrimaryColor, &FltPackedColor::red>("FltColorRed", Width::Uint8),
    row<&FltPolygonRec::packedPrimaryColor, &FltPackedColor::green>("FltColorGreen", Width::Uint8),
    row<&FltPolygonRec::packedPrimaryColor, &FltPackedColor::blue>("FltColorBlue", Width::Uint8),
    row<&FltPolygonRec::packedPrimaryColor, &FltPackedColor::alpha>("FltColorAlpha", Width::Uint8),
    row<&FltPolygonRec::packedAlternateColor, &FltPackedColor::red>("FltAltColorRed", Width::Uint8),
    row<&FltPolygonRec::packedAlternateColor, &FltPackedColor::green>("FltAltColorGreen",
                                                                      Width::Uint8),
    row<&FltPolygonRec::packedAlternateColor, &FltPackedColor::blue>("FltAltColorBlue",
                                                                     Width::Uint8),
    row<&FltPolygonRec::packedAlternateColor, &FltPackedColor::alpha>("FltAltColorAlpha",
                                                                      Width::Uint8),
};

constexpr AttrRow kGroupRows[] = {
    row<&FltFileGroup::loopCount>("FltGrpLoopCount", Width::Int32),
    row<&FltFileGroup::loopDuration>("FltGrpLoopDuration", Width::Float32),
    row<&FltFileGroup::lastFrameDuration>("FltGrpLastFrame", Width::Float32),
};

constexpr AttrRow kLodRows[] = {
    row<&FltFileLod::significantSize>("FltLodSize", Width::Float64),
};

constexpr AttrRow kInstanceRows[] = {
    row<&FltInstance::instanceNumber>("FltInstanceNumber", Width::Int16),
};

// The local frame.
constexpr AttrRow kDofRows[] = {
    row<&FltDof::origin, &FltPoint3d::x>("FltDofOriginX", Width::Float64),
    row<&FltDof::origin, &FltPoint3d::y>("FltDofOriginY", Width::Float64),
    row<&FltDof::origin, &FltPoint3d::z>("FltDofOriginZ", Width::Float64),
    row<&FltDof::pointOnXAxis, &FltPoint3d::x>("FltDofXAxisX", Width::Float64),
    row<&FltDof::pointOnXAxis, &FltPoint3d::y>("FltDofXAxisY", Width::Float64),
    row<&FltDof::pointOnXAxis, &FltPoint3d::z>("FltDofXAxisZ", Width::Float64),
    row<&FltDof::pointInXyPlane, &FltPoint3d::x>("FltDofXyPlaneX", Width::Float64),
    row<&FltDof::pointInXyPlane, &FltPoint3d::y>("FltDofXyPlaneY", Width::Float64),
    row<&FltDof::pointInXyPlane, &FltPoint3d::z>("FltDofXyPlaneZ", Width::Float64),
};

constexpr AttrRow kHeaderRows[] = {
    row<&FltHeader::editRevision>("FltEditRevision", Width::Int32),
    row<&FltHeader::dateTime>("FltDate", Width::Text),
    row<&FltHeader::unitMultiplier>("FltUnitMultiplier", Width::Int16),
    row<&FltHeader::vertexStorageType>("FltVertexStorage", Width::Int16),
    row<&FltHeader::databaseOrigin>("FltDatabaseOrigin", Width::Int32),
    row<&FltHeader::southWestX>("FltSouthWestX", Width::Float64),
    row<&FltHeader::southWestY>("FltSouthWestY", Width::Float64),
    row<&FltHeader::deltaX>("FltDeltaX", Width::Float64),
    row<&FltHeader::deltaY>("FltDeltaY", Width::Float64),
    row<&FltHeader::deltaZ>("FltDeltaZ", Width::Float64),
    row<&FltHeader::southWestLatitude>("FltSouthWestLat", Width::Float64),
    row<&FltHeader::southWestLongitude>("FltSouthWestLon", Width::Float64),
    row<&FltHeader::northEastLatitude>("FltNorthEastLat", Width::Float64),
    row<&FltHeader::northEastLongitude>("FltNorthEastLon", Width::Float64),
    row<&FltHeader::utmZone>("FltUtmZone", Width::Int16),
    row<&FltHeader::earthMajorAxis>("FltEarthMajorAxis", Width::Float64),
    row<&FltHeader::earthMinorAxis>("FltEarthMinorAxis", Width::Float64),
    row<&FltHeader::radius>("FltRadius", Width::Float64),
};

// Of a mesh scenes keep the file's record only.
constinit const FurtherRows kFurtherRows[] = {
    {groupRow<FltFace>(kNoCaption, kLookRows)},
    {groupRow<FltFace>(kNoCaption, kPackedColorRows), nullptr, true},
    {groupRow<FltMesh>(kNoCaption, kLookRows), &kFaceGroup, true},
    {groupRow<FltMesh>(kNoCaption, kPackedColorRows), nullptr, true},
    {groupRow<FltFileGroup>(kNoCaption, kGroupRows), nullptr, true},
    {groupRow<FltFileLod>(kNoCaption, kLodRows), nullptr, true},
    {groupRow<FltInstanceRef>(kNoCaption, kInstanceRows)},
    {groupRow<FltInstanceDef>(kNoCaption, kInstanceRows)},
    {groupRow<FltDof>(kNoCaption, kDofRows)},
    {groupRow<FltHeader>(kNoCaption, kHeaderRows)},
};

}  // namespace

std::span<const FurtherRows> furtherRows() noexcept {
    return kFurtherRows;
}

}  // namespace fltkilnutil
