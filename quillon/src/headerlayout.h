// What the two layouts of a header have in common: everything up to the light source counter.
#pragma once

#include "fltcodec.h"

namespace quillon {

/// The first fields, up to the revision that chooses the layout of the rest.
template <typename Codec>
void layoutHeaderStart(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.field("formatRevision", record.formatRevision);
}
constexpr std::uint16_t kHeaderStartSize = 12;

/// What follows them. `hasGap` is for four reserved bytes ahead of the first latitude.
template <typename Codec>
void layoutHeaderFront(Codec& codec, auto& record, bool hasGap) {
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
    if (hasGap) codec.reserved(4);
    codec.field("southWestLatitude", record.southWestLatitude);
    codec.field("southWestLongitude", record.southWestLongitude);
    codec.field("northEastLatitude", record.northEastLatitude);
    codec.field("northEastLongitude", record.northEastLongitude);
    codec.field("originLatitude", record.originLatitude);
    codec.field("originLongitude", record.originLongitude);
    codec.field("lambertUpperLatitude", record.lambertUpperLatitude);
    codec.field("lambertLowerLatitude", record.lambertLowerLatitude);
    codec.field("nextLightSourceId", record.nextLightSourceId);
}

}  // namespace quillon
