#include "fltlayout.h"

#include <quillon/fltfileheader.h>
#include <quillon/fltheader.h>

namespace {

// What the two layouts have in common: everything up to the light source counter.

struct HeaderLayout {
    static constexpr quillon::OpcodeCheck kOpcodeCheck{"fltheader", 235};

    /// The first fields, up to the revision that chooses the layout of the rest.
    static void start(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.field("formatRevision", record.formatRevision);
    }
};

/// What follows them. `hasGap` is for four reserved bytes ahead of the first latitude.
[[gnu::always_inline]] inline void layoutFront(auto& codec, auto& record, bool hasGap) {
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

[[gnu::always_inline]] inline void layoutTail1580(auto& codec, auto& record) {
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

[[gnu::always_inline]] inline void layoutTail(auto& codec, auto& record) {
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

}  // namespace

template <>
struct quillon::Layout<FltHeader> : HeaderLayout {
    static void fields(auto& codec, auto& record) {
        const bool beyond1420 = record.formatRevision > 1420;
        layoutFront(codec, record, beyond1420);
        if (!beyond1420) return;
        // The counter stands twice, and every field behind it two bytes later than it would
        // otherwise: stored headers are laid out so.
        codec.repeated(record.nextLightSourceId);
        codec.field("nextLightPointId", record.nextLightPointId);
        codec.field("nextRoadId", record.nextRoadId);
        codec.field("nextCatId", record.nextCatId);
        codec.reserved(8);
        codec.field("earthEllipsoidModel", record.earthEllipsoidModel);
        codec.field("nextAdaptiveId", record.nextAdaptiveId);
        layoutTail(codec, record);
    }
};
template class FltRecordOf<FltHeader, FltPaletteRec, kFltHeader>;

// One layout, of which every revision has more than the one before. The offsets are from the
// record's start.
template <>
struct quillon::Layout<FltFileHeader> : HeaderLayout {
    static void fields(auto& codec, auto& record) {
        const std::int32_t revision = record.formatRevision;
        layoutFront(codec, record, true);
        if (revision <= 1420) return;
        codec.field("nextLightPointId", record.nextLightPointId);  // 254
        codec.field("nextRoadId", record.nextRoadId);
        codec.field("nextCatId", record.nextCatId);
        codec.reserved(8);
        codec.field("earthEllipsoidModel", record.earthEllipsoidModel);  // 268
        codec.field("nextAdaptiveId", record.nextAdaptiveId);
        if (revision == 1540) return codec.reserved(2);
        codec.field("nextCurveId", record.nextCurveId);
        if (revision <= 1560) return codec.reserved(2);
        const bool is1580 = revision >= 1580;
        if (is1580) codec.field("utmZone", record.utmZone);  // 276
        codec.reserved(is1580 ? 6 : 8);
        codec.field("deltaZ", record.deltaZ);  // 284
        codec.field("radius", record.radius);
        codec.field("nextMeshId", record.nextMeshId);
        if (!is1580) return codec.reserved(2);
        codec.field("nextLightPointSystemId", record.nextLightPointSystemId);
        codec.reserved(4);
        codec.field("earthMajorAxis", record.earthMajorAxis);  // 308
        codec.field("earthMinorAxis", record.earthMinorAxis);
    }
};
template class FltRecordOf<FltFileHeader, FltHeader, kFltHeader>;
