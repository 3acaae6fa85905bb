#include "files.h"

#include <quillon/fltopcode.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

// A header, a group within a level, a record that nobody knows, a light source.
const std::string kSmall = kHeader +
                           "000A 0004 "
                           "0002 0020 'g7':8 0005 0000 80000000 0001 FFFF 0000 07 00:5 "
                           "03E7 0006 0102 "
                           "000B 0004 "
                           "0065 0040 'a\"\xFF':8 00:12 00000000 00:4 3FB999999999999A 7FF0:8 "
                           "00:8 3DCCCCCD 7FC00000";

json dumpOf(const std::string& file) {
    const Outcome outcome = runTool({"dump", "--json", file});
    EXPECT_EQ(outcome.code, 0) << outcome.error;
    return json::parse(outcome.out);
}

TEST(DumpTest, GivesEveryRecordAsJson) {
    const Folder folder;
    const json records = dumpOf(folder.write("small.flt", kSmall));
    ASSERT_EQ(records.size(), 6U);
    EXPECT_EQ(records[0]["fields"]["formatRevision"], 1580);
    // The light point counter of a header as published, and what follows it.
    const json header = dumpOf(
        folder.write("header.flt",
                     "0001 0144 'db':8 0000062C 00:238 0007 00:12 00000003 00:20 3FF0:8 00:8 "
                     "4000:8 4008:8"))[0]["fields"];
    EXPECT_EQ(header["nextLightPointId"], 7);
    EXPECT_EQ(header["earthEllipsoidModel"], 3);
    EXPECT_EQ(header["radius"], 1);
    EXPECT_EQ(header["earthMajorAxis"], 2);
    EXPECT_EQ(header["earthMinorAxis"], 3);
    EXPECT_EQ(records[2], json::parse(R"({"offset": 332, "level": 1, "opcode": 2,
        "name": "FLT_GROUP", "length": 32, "fields": {"id": "g7", "relativePriority": 5,
        "flags": -2147483648, "specialEffect1": 1, "specialEffect2": -1, "significance": 0,
        "layerCode": 7}})"));
    EXPECT_EQ(records[3], json::parse(R"({"offset": 364, "level": 1, "opcode": 999,
        "name": "UNDEFINED", "length": 6})"));
    // Numbers as short as their width allows; what JSON cannot hold is text.
    const json& light = records[5]["fields"];
    EXPECT_EQ(light["id"], "a\"\xEF\xBF\xBD");
    EXPECT_EQ(light["positionX"], 0.1);
    EXPECT_EQ(light["positionY"], "Infinity");
    EXPECT_EQ(light["yaw"], 0.1);
    EXPECT_EQ(light["pitch"], "NaN");
}

TEST(DumpTest, ShowsWhatFilesHoldBesideNodes) {
    const Folder folder;
    const json records = dumpOf(folder.write(
        "vertices.flt", kHeader + "0043 0008 00000040 "
                                  "0045 0038 FFFF 2000 3FF0:8 4000:8 4008:8 3F800000 00:8 FFFFFFFF "
                                  "00000085 00:4 "
                                  "0048 000C 00000008 00000008 0017 0008 00000008 "
                                  "0031 0004"));
    ASSERT_EQ(records.size(), 6U);
    EXPECT_EQ(records[1]["fields"], json::parse(R"({"length": 64})"));
    EXPECT_EQ(records[2]["fields"], json::parse(R"({"colorNameIndex": -1, "flags": 8192,
        "position": [1.0, 2.0, 3.0], "normal": [1.0, 0.0, 0.0],
        "packedColor": [255, 255, 255, 255], "colorIndex": 133})"));
    EXPECT_EQ(records[3]["fields"], json::parse(R"({"offsets": [8, 8]})"));
    EXPECT_EQ(records[4]["name"], "FLT_CONTINUATION");
    EXPECT_FALSE(records[4].contains("fields")) << "what it continues says how to read it";
    EXPECT_EQ(records[5]["fields"]["rows"], json(std::vector<double>(16, 0))) << "a short matrix";
}

TEST(DumpTest, GivesChosenRecordsAsText) {
    const Folder folder;
    const std::string file = folder.write("small.flt", kSmall);
    EXPECT_EQ(runTool({"dump", "--opcode", "2", "--opcode", "11", file}).out,
              "    offset level opcode name                             length\n"
              "       332     1      2 FLT_GROUP                            32\n"
              "                        id = \"g7\"\n"
              "                        relativePriority = 5\n"
              "                        flags = -2147483648\n"
              "                        specialEffect1 = 1\n"
              "                        specialEffect2 = -1\n"
              "                        significance = 0\n"
              "                        layerCode = 7\n"
              "       370     0     11 FLT_POP_LEVEL                         4\n");
    EXPECT_EQ(runTool({"dump", file, "--json", "--opcode", "3"}).out, "[\n]\n");
}

TEST(DumpTest, ShowsADamagedFileUpToTheDamage) {
    const Folder folder;
    const std::string file = folder.write(
        "damaged.flt", kHeader + "0060 001C 00:12 00000000 40000000 40000000 0002 0020");
    const Outcome outcome = runTool({"dump", "--json", file});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.error,
              "fltool: damaged at byte offset 356: a record of 32 bytes, of which "
              "the file has 4\n");
    const json records = json::parse(outcome.out);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_TRUE(records[1].contains("error")) << "a switch with impossible counts";
    EXPECT_FALSE(records[1].contains("fields"));
}

TEST(DumpTest, KnowsEveryClassOfTheAirport) {
    const Folder folder;
    std::set<int> opcodes;
    for (const json& record : dumpOf(folder.writeAirport()))
        if (record.contains("fields")) {
            EXPECT_FALSE(record["fields"].empty()) << record;
            opcodes.insert(record["opcode"].get<int>());
        }
    EXPECT_THAT(opcodes,
                testing::IsSupersetOf({kFltHeader, kFltGroup, kFltObject, kFltFace, kFltDof,
                                       kFltComment, kFltLod, kFltSwitch, kFltLightSourcePalette}));
}

TEST(StatsTest, CountsRecordsBytesAndDepth) {
    const Folder folder;
    const Outcome outcome = runTool({"stats", folder.write("small.flt", kSmall)});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.out, testing::StartsWith("format revision 1580\n"));
    const std::string second = folder.write("two.flt", kSmall + "0001 0010 'db':8 0000058C");
    EXPECT_THAT(runTool({"stats", second}).out, testing::StartsWith("format revision 1580\n"))
        << "the first header counts";
    EXPECT_THAT(outcome.out, testing::HasSubstr(
                                 "     2 FLT_GROUP                                 1           32 "
                                 "      32       32      1\n"));
    EXPECT_THAT(outcome.out, testing::HasSubstr(
                                 "       all                                       6          438 "
                                 "       4      328      1\n"));
}

}  // namespace
