#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltheader.h>

namespace {

// The first fields, up to the revision that chooses the layout of the rest.
template <typename Codec>
void layoutStart(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.field("formatRevision", record.formatRevision);
}
constexpr std::uint16_t kStartSize = 12;

template <typename Codec>
void layoutTail1580(Codec& codec, auto& record) {
    codec.field("nextCurveId", record.nextCurveId);
    codec.field("utmZone", record.utmZone);
    codec.reserved(6);
    codec.field("deltaZ", record.deltaZ);
    codec.field("radius", record.radius);
    codec.field("nextMeshId", record.nextMeshId);
    codec.field("nextLightPointSystemId", record.nextLightPointSystemId);
    codec.reserved(4);
    codec.field("earthMajorAxis", record.earthMajorAxis);
    codec.field("earthMinorAxis", record.earthMinorAxis);
}

template <typename Codec>
void layoutTail(Codec& codec, auto& record) {
    if (record.formatRevision >= 1580) {
        layoutTail1580(codec, record);
    } else if (record.formatRevision == 1540) {
        codec.reserved(2);
    } else {
        codec.field("nextCurveId", record.nextCurveId);
        codec.reserved(2);
        if (record.formatRevision <= 1560) return;
        codec.field("deltaZ", record.deltaZ);
        codec.field("radius", record.radius);
        codec.field("nextMeshId", record.nextMeshId);
        codec.reserved(2);
    }
}

template <typename Codec>
void layoutRest(Codec& codec, auto& record) {
    const bool beyond1420 = record.formatRevision > 1420;
    codec.field("editRevision", record.editRevision);
    codec.field("dateTime", record.dateTime);
    codec.field("nextGroupId", record.nextGroupId);
    codec.field("nextLodId", record.nextLodId);
    codec.field("nextObjectId", record.nextObjectId);
    codec.field("nextFaceId", record.nextFaceId);
    codec.field("unitMultiplier", record.unitMultiplier);
    codec.field("vertexCoordinateUnits", record.vertexCoordinateUnits);
    codec.field("textureWhite", record.textureWhite);
    codec.field("flags", record.flags);
    codec.reserved(24);
    codec.field("projectionType", record.projectionType);
    codec.reserved(28);
    codec.field("nextDofId", record.nextDofId);
    codec.field("vertexStorageType", record.vertexStorageType);
    codec.field("databaseOrigin", record.databaseOrigin);
    codec.field("southWestX", record.southWestX);
    codec.field("southWestY", record.southWestY);
    codec.field("deltaX", record.deltaX);
    codec.field("deltaY", record.deltaY);
    codec.field("nextSoundId", record.nextSoundId);
    codec.field("nextPathId", record.nextPathId);
    codec.reserved(8);
    codec.field("nextClipRegionId", record.nextClipRegionId);
    codec.field("nextTextId", record.nextTextId);
    codec.field("nextBspId", record.nextBspId);
    codec.field("nextSwitchId", record.nextSwitchId);
    if (beyond1420) codec.reserved(4);
    codec.field("southWestLatitude", record.southWestLatitude);
    codec.field("southWestLongitude", record.southWestLongitude);
    codec.field("northEastLatitude", record.northEastLatitude);
    codec.field("northEastLongitude", record.northEastLongitude);
    codec.field("originLatitude", record.originLatitude);
    codec.field("originLongitude", record.originLongitude);
    codec.field("lambertUpperLatitude", record.lambertUpperLatitude);
    codec.field("lambertLowerLatitude", record.lambertLowerLatitude);
    codec.field("nextLightSourceId", record.nextLightSourceId);
    if (!beyond1420) return;
    // The counter stands twice, and every field behind it two bytes later than it would otherwise:
    // stored headers are laid out so.
    codec.repeated(record.nextLightSourceId);
    codec.field("nextLightPointId", record.nextLightPointId);
    codec.field("nextRoadId", record.nextRoadId);
    codec.field("nextCatId", record.nextCatId);
    codec.reserved(8);
    codec.field("earthEllipsoidModel", record.earthEllipsoidModel);
    codec.field("nextAdaptiveId", record.nextAdaptiveId);
    layoutTail(codec, record);
}

}  // namespace

void FltHeader::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) {
        layoutStart(codec, *this);
        layoutRest(codec, *this);
    });
}

void FltHeader::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltheader", 235);
    quillon::readBody(token, [this](auto& codec) { layoutStart(codec, *this); });
    quillon::readBody(
        token, [this](auto& codec) { layoutRest(codec, *this); }, kStartSize);
}

void FltHeader::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) {
        layoutStart(codec, *this);
        layoutRest(codec, *this);
    });
}
