// The header record of a database.
#pragma once

#include <quillon/fltrecordof.h>

// Made in fltheader.cpp, and nowhere else.
class FltHeader;
extern template class FltRecordOf<FltHeader, FltPaletteRec, kFltHeader>;

/// Database header. Unlike every other record it is laid out by its own format revision, not by the
/// one that `writeToken` and `readToken` are given; read from bytes, by the revision in those
/// bytes. This is the layout of what scenes keep; files have that of `FltFileHeader`. Latitudes and
/// longitudes are in degrees.
class FltHeader : public FltRecordOf<FltHeader, FltPaletteRec, kFltHeader> {
public:
    char* id() override { return asciiId; }

    /// The format revision as every record operation takes it; 0 for a negative one.
    std::uint32_t revision() const noexcept {
        return formatRevision < 0 ? 0 : static_cast<std::uint32_t>(formatRevision);
    }

    char asciiId[8] = {'d', 'b'};
    std::int32_t formatRevision = 1580;  ///< OpenFlight revision x 100; chooses the layout
    std::int32_t editRevision = 1;
    char dateTime[32] = {'h', 'e', 'r', 'e', 'a', 'f', 't', 'e', 'r'};  ///< of the last revision
    std::int16_t unitMultiplier = 1;
    std::uint8_t vertexCoordinateUnits = 0;
    std::uint8_t textureWhite = 0;
    std::uint32_t flags = 0x80000000;
    std::int32_t projectionType = 0;
    std::int16_t vertexStorageType = 1;
    std::int32_t databaseOrigin = 100;
    std::int32_t earthEllipsoidModel = 0;
    double southWestX = 0;
    double southWestY = 0;
    double deltaX = 0;
    double deltaY = 0;
    double southWestLatitude = 0;
    double southWestLongitude = 0;
    double northEastLatitude = 0;
    double northEastLongitude = 0;
    double originLatitude = 0;
    double originLongitude = 0;
    double lambertUpperLatitude = 45.0;
    double lambertLowerLatitude = 33.0;

    // The numbers that records without a name get next.
    std::int16_t nextGroupId = 1;
    std::int16_t nextLodId = 1;
    std::int16_t nextObjectId = 1;
    std::int16_t nextFaceId = 1;
    std::int16_t nextDofId = 1;
    std::int16_t nextSoundId = 1;
    std::int16_t nextPathId = 1;
    std::int16_t nextClipRegionId = 1;
    std::int16_t nextTextId = 1;
    std::int16_t nextBspId = 1;
    std::int16_t nextSwitchId = 1;
    std::int16_t nextLightSourceId = 1;
    std::int16_t nextLightPointId = 1;
    std::int16_t nextRoadId = 1;
    std::int16_t nextCatId = 1;
    std::int16_t nextAdaptiveId = 1;
    std::int16_t nextCurveId = 1;
    std::int16_t nextMeshId = 1;
    std::int16_t nextLightPointSystemId = 1;

    std::int16_t utmZone = 0;
    double earthMajorAxis = 0;
    double earthMinorAxis = 0;
    double deltaZ = 0;
    double radius = 0;
};
