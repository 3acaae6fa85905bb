#include "support.h"

#include <quillon/fltfileheader.h>

#include <cstring>
#include <tuple>

namespace {

/// A header without two equal fields.
FltHeader distinctHeader(std::int32_t revision) {
    FltHeader header;
    std::memcpy(header.asciiId, "base\0\0\0", 8);
    header.formatRevision = revision;
    header.editRevision = 7;
    std::memcpy(header.dateTime, "noon\0\0\0\0\0", 10);
    header.unitMultiplier = 2;
    header.vertexCoordinateUnits = 4;
    header.textureWhite = 1;
    header.flags = 0x12345678;
    header.projectionType = 3;
    header.vertexStorageType = 5;
    header.databaseOrigin = 200;
    header.earthEllipsoidModel = 0x22;
    double value = 1;
    for (double* field :
         {&header.southWestX, &header.southWestY, &header.deltaX, &header.deltaY,
          &header.southWestLatitude, &header.southWestLongitude, &header.northEastLatitude,
          &header.northEastLongitude, &header.originLatitude, &header.originLongitude,
          &header.lambertUpperLatitude, &header.lambertLowerLatitude, &header.earthMajorAxis,
          &header.earthMinorAxis, &header.deltaZ, &header.radius})
        *field = value++;
    std::int16_t counter = 0x65;
    for (std::int16_t* field :
         {&header.nextGroupId, &header.nextLodId, &header.nextObjectId, &header.nextFaceId,
          &header.nextDofId, &header.nextSoundId, &header.nextPathId, &header.nextClipRegionId,
          &header.nextTextId, &header.nextBspId, &header.nextSwitchId, &header.nextLightSourceId,
          &header.nextLightPointId, &header.nextRoadId, &header.nextCatId, &header.nextAdaptiveId,
          &header.nextCurveId, &header.nextMeshId, &header.nextLightPointSystemId})
        *field = counter++;
    header.utmZone = 33;
    return header;
}

TEST(HeaderTest, IsLaidOutByItsOwnRevision) {
    const std::string front =
        "00000007 'noon':32 0065 0066 0067 0068 0002 04 01 12345678 00:24 00000003 00:28 0069 0005 "
        "000000C8 3FF0:8 4000:8 4008:8 4010:8 006A 006B 00:8 006C 006D 006E 006F ";
    const std::string middle = "4014:8 4018:8 401C:8 4020:8 4022:8 4024:8 4026:8 4028:8 0070 ";
    // The light source counter stands twice.
    const std::string back = "0070 0071 0072 0073 00:8 00000022 0074 ";
    const std::string curve = "0075 0000 ";
    const std::string mesh = "402E:8 4030:8 0076 0000 ";
    const std::string modern = "0075 0021 00:6 402E:8 4030:8 0076 0077 00:4 402A:8 402C:8 ";

    const auto later = [&](const std::string& tail) {
        return front + "00:4 " + middle + back + tail;
    };
    const std::tuple<int, const char*, std::string> cases[] = {
        {1400, "0001 0100 'base':8 00000578 ", front + middle + "00:6"},
        {1420, "0001 0100 'base':8 0000058C ", front + middle + "00:6"},
        {1421, "0001 0118 'base':8 0000058D ", later(curve)},
        {1510, "0001 0118 'base':8 000005E6 ", later(curve)},
        {1539, "0001 0118 'base':8 00000603 ", later(curve)},
        {1540, "0001 0118 'base':8 00000604 ", later("0000 00:2")},
        {1541, "0001 0118 'base':8 00000605 ", later(curve)},
        {1560, "0001 0118 'base':8 00000618 ", later(curve)},
        {1561, "0001 0130 'base':8 00000619 ", later(curve + mesh + "00:4")},
        {1570, "0001 0130 'base':8 00000622 ", later(curve + mesh + "00:4")},
        {1579, "0001 0130 'base':8 0000062B ", later(curve + mesh + "00:4")},
        {1580, "0001 0148 'base':8 0000062C ", later(modern + "00:2")},
        {1610, "0001 0148 'base':8 0000064A ", later(modern + "00:2")},
    };
    for (const auto& [revision, start, rest] : cases) {
        // The argument would mean another layout each time; a header does not look at it.
        expectLayout(distinctHeader(revision), start + rest, revision == 1420 ? 1580 : 1420);
    }
}

// The published layout has the counter once, and the gap ahead of the latitudes at each revision.
TEST(HeaderTest, IsLaidOutInFilesAsPublished) {
    const std::string front =
        "00000007 'noon':32 0065 0066 0067 0068 0002 04 01 12345678 00:24 00000003 00:28 0069 0005 "
        "000000C8 3FF0:8 4000:8 4008:8 4010:8 006A 006B 00:8 006C 006D 006E 006F 00:4 "
        "4014:8 4018:8 401C:8 4020:8 4022:8 4024:8 4026:8 4028:8 0070 ";
    const std::string back = front + "0071 0072 0073 00:8 00000022 0074 ";
    const std::string older = back + "0075 00:8 402E:8 4030:8 0076 00:2 ";
    const std::string newer =
        back + "0075 0021 00:6 402E:8 4030:8 0076 0077 00:4 402A:8 402C:8 00:4";
    const std::tuple<int, const char*, std::string> cases[] = {
        {1420, "0001 0100 'base':8 0000058C ", front + "00:2"},
        {1510, "0001 0118 'base':8 000005E6 ", back + "0075 00:4"},
        {1540, "0001 0118 'base':8 00000604 ", back + "00:6"},
        {1560, "0001 0118 'base':8 00000618 ", back + "0075 00:4"},
        {1570, "0001 0130 'base':8 00000622 ", older},
        {1580, "0001 0148 'base':8 0000062C ", newer},
        {1610, "0001 0148 'base':8 0000064A ", newer},
    };
    for (const auto& [revision, start, rest] : cases) {
        const FltHeader stored = distinctHeader(revision);
        expectLayout(FltFileHeader(stored), start + rest, revision == 1420 ? 1580 : 1420,
                     fltCreateFileRecord);
        // What a scene keeps of it is the same as what it was made of.
        FltFileHeader file;
        decode(file, hex(start + rest));
        EXPECT_EQ(toHex(encode(static_cast<FltHeader>(file))), toHex(encode(stored))) << revision;
    }
    const Bytes bytes = hex("0001 0148 'base':8 0000062C " + newer);
    const auto at = [&](std::size_t offset) {
        return unsigned{bytes[offset]} << 8 | bytes[offset + 1];
    };
    EXPECT_EQ(at(252), 0x70U);
    EXPECT_EQ(at(254), 0x71U);
    EXPECT_EQ(at(270), 0x22U);
    EXPECT_EQ(at(276), 33U);
    EXPECT_EQ(at(284), 0x402EU);
    EXPECT_EQ(at(302), 0x77U);
    EXPECT_EQ(at(316), 0x402CU);
}

TEST(HeaderTest, HasItsDefaults) {
    expectLayout(FltHeader(),
                 "0001 0148 'db':8 0000062C 00000001 'hereafter':32 0001 0001 0001 0001 0001 00 00 "
                 "80000000 00:24 00000000 00:28 0001 0001 00000064 00:32 0001 0001 00:8 0001 0001 "
                 "0001 0001 00:4 00:48 4046800000000000 4040800000000000 0001 0001 0001 0001 0001 "
                 "00:8 00:4 0001 0001 0000 00:6 00:16 0001 0001 00:4 00:16 00:2");
}

TEST(HeaderTest, TakesTheSecondOfTheTwoLightSourceCounters) {
    Bytes bytes = encode(FltHeader());
    bytes[253] = 5;
    bytes[255] = 9;
    FltHeader header;
    decode(header, bytes);
    EXPECT_EQ(header.nextLightSourceId, 9);
}

TEST(HeaderTest, ReadsZerosFromAShortRecord) {
    Bytes bytes = encode(distinctHeader(1580));
    bytes.resize(190);  // within the south-west latitude, of which two bytes are left
    bytes[2] = 0;
    bytes[3] = 190;
    FltHeader header;
    decode(header, bytes);
    EXPECT_EQ(header.nextSwitchId, 0x6F);
    EXPECT_EQ(header.southWestLatitude, 5);
    EXPECT_EQ(header.southWestLongitude, 0);
    EXPECT_EQ(header.nextMeshId, 0);
    EXPECT_EQ(header.earthMinorAxis, 0);
}

TEST(HeaderTest, RefusesOtherRecords) {
    expectAssertion("fltheader", 235, [] {
        FltHeader header;
        decode(header, hex("0002 0008 00:4"));
    });
}

}  // namespace
