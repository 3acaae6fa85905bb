#include "files.h"

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

/// The records of a file without their places, which a conversion may change, and without the
/// revision.
json contentsOf(const std::string& file) {
    json contents = json::array();
    for (json record : json::parse(runTool({"dump", "--json", file}).out)) {
        record.erase("offset");
        record.erase("length");
        if (record["opcode"] == 1) record["fields"].erase("formatRevision");
        contents.push_back(record);
    }
    return contents;
}

TEST(ConvertTest, KeepsWhatItNeedNotChange) {
    const Folder folder;
    const std::string airport = folder.writeAirport();
    const Outcome outcome = runTool({"convert", airport, folder.file("same.flt")});
    EXPECT_EQ(outcome.code, 0) << outcome.error;
    EXPECT_THAT(outcome.out,
                testing::AllOf(testing::HasSubstr(" records written at revision 1580, "),
                               testing::HasSubstr(" copied ")));
    EXPECT_EQ(folder.read("same.flt"), folder.read("airport.flt"));

    ASSERT_EQ(runTool({"convert", airport, folder.file("1510.flt"), "--revision", "1510"}).code, 0);
    json expected = contentsOf(airport);
    json actual = contentsOf(folder.file("1510.flt"));
    // The older header has no room for these.
    for (const char* field : {"deltaZ", "radius", "earthMajorAxis", "earthMinorAxis", "utmZone",
                              "nextMeshId", "nextLightPointSystemId"}) {
        expected[0]["fields"].erase(field);
        actual[0]["fields"].erase(field);
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(runTool({"check", folder.file("1510.flt")}).out, "");
}

TEST(ConvertTest, WritesEachRecordAtTheNewRevision) {
    const Folder folder;
    const std::string source =
        kHeader +
        "0002 0024 00:28 0A0B0C0D "  // a nameless group, longer than its fields
        "0005 0050 'f':8 00:8 0001 0002 00:40 0003 0000 00000007 00000009 00:4 "
        "03E7 0006 0102 "  // unknown, of a length that padding would change
        "0060 001C 00:12 00000000 40000000 40000000 "  // a switch that cannot be decoded
        "001F 000C 'hi':8";
    ASSERT_EQ(runTool({"convert", folder.write("in.flt", source), folder.file("out.flt"),
                       "--revision", "1420"})
                  .code,
              0);
    const Bytes out = folder.read("out.flt");
    ASSERT_GT(out.size(), 256U);
    EXPECT_EQ(toHex(Bytes(out.begin(), out.begin() + 16)), toHex(hex("0001 0100 'db':8 0000058C")));
    EXPECT_EQ(toHex(Bytes(out.begin() + 256, out.end())),
              toHex(hex("0002 0024 00:28 0A0B0C0D "
                        "0005 0040 'f':8 00:8 0007 0009 00:40 "
                        "03E7 0006 0102 "
                        "0060 001C 00:12 00000000 40000000 40000000 "
                        "001F 000C 'hi':8")));
}

TEST(ConvertTest, KeepsWhatStandsBehindTheHeader) {
    const Folder folder;
    const std::string longer =
        folder.write("in.flt", "0001 0190 'db':8 0000062C 00:383 AB 000A 0004 000B 0004");
    ASSERT_EQ(runTool({"convert", longer, folder.file("out.flt")}).code, 0);
    EXPECT_EQ(toHex(folder.read("out.flt")), toHex(folder.read("in.flt")));
    ASSERT_EQ(runTool({"convert", longer, folder.file("older.flt"), "--revision", "1420"}).code, 0);
    EXPECT_EQ(folder.read("older.flt").size(), 264U) << "an older header has other fields there";
}

TEST(ConvertTest, ChangesNothingInAHeaderButItsRevision) {
    const Folder folder;
    Bytes header = hex("0001 0144 'db':8 0000062C");
    while (header.size() < 324)
        header.push_back(static_cast<std::uint8_t>(header.size() % 250 + 1));
    const auto converted = [&](Bytes bytes, const char* revision) {
        bytes[2] = static_cast<std::uint8_t>(bytes.size() >> 8);
        bytes[3] = static_cast<std::uint8_t>(bytes.size());
        // Another header further on says nothing about this file.
        const Bytes other = hex("0001 0010 'db':8 0000058C 0005 0050 'f':8 00:68");
        bytes.insert(bytes.end(), other.begin(), other.end());
        const Outcome outcome = runTool({"convert", folder.write("in.flt", bytes),
                                         folder.file("out.flt"), "--revision", revision});
        EXPECT_EQ(outcome.code, 0) << outcome.error;
        Bytes out = folder.read("out.flt");
        EXPECT_EQ(out.size() - (out[2] * 256U + out[3]), other.size());
        out.resize(out[2] * 256U + out[3]);
        return out;
    };
    // As published, shorter and longer; with every reserved byte.
    for (const std::size_t length : {std::size_t{324}, std::size_t{200}, std::size_t{351}}) {
        Bytes given = header;
        given.resize(length, 9);
        Bytes expected = given;
        expected[2] = static_cast<std::uint8_t>(length >> 8);
        expected[3] = static_cast<std::uint8_t>(length);
        EXPECT_EQ(toHex(converted(given, "1580")), toHex(expected));
        expected[15] = 0x7C;
        expected[14] = 0x06;
        EXPECT_EQ(toHex(converted(given, "1660")), toHex(expected));
    }
    const Bytes older = converted(header, "1570");
    ASSERT_EQ(older.size(), 304U);
    EXPECT_EQ(toHex({older.begin() + 16, older.begin() + 276}),
              toHex({header.begin() + 16, header.begin() + 276}));
    EXPECT_EQ(toHex({older.begin() + 284, older.begin() + 302}),
              toHex({header.begin() + 284, header.begin() + 302}));
}

TEST(ConvertTest, KeepsPackedColorsWithTheirFlag) {
    const Folder folder;
    const std::string start = "0005 0050 'f':8 00:32 10000000 00:8 FF332211 FF665544 ";
    const std::string file = folder.write("in.flt", kHeader + start + "FFFF 0000 00:12");
    ASSERT_EQ(runTool({"convert", file, folder.file("same.flt")}).code, 0);
    EXPECT_EQ(toHex(folder.read("same.flt")), toHex(folder.read("in.flt")));
    ASSERT_EQ(runTool({"convert", file, folder.file("old.flt"), "--revision", "1420"}).code, 0);
    const Bytes old = folder.read("old.flt");
    ASSERT_EQ(old.size(), 256U + 64);
    EXPECT_EQ(toHex({old.begin() + 256 + 44, old.end()}),
              toHex(hex("10000000 00:8 FF332211 FF665544")));
}

TEST(ConvertTest, SaysWhatItLeavesOut) {
    const Folder folder;
    const std::string file = folder.write("in.flt", kHeader + "000A 0004 000B 0004 FFFF");
    const char* const line = "fltool: left out 2 stray bytes behind the last record\n";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"convert", file, folder.file("out.flt")},
          {"stats", file},
          {"dump", file}}) {
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.code, 0) << arguments[0];
        EXPECT_EQ(outcome.error, line) << arguments[0];
    }
    EXPECT_EQ(folder.read("out.flt").size(), 336U);
}

TEST(ConvertTest, MayReplaceItsInput) {
    const Folder folder;
    const std::string file = folder.write("in.flt", kHeader + "000A 0004 000B 0004");
    ASSERT_EQ(runTool({"convert", file, file, "--revision", "1540"}).code, 0);
    EXPECT_EQ(folder.read("in.flt").size(), 288U);
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST(ConvertTest, LeavesNothingHalfDone) {
    const Folder folder;
    const std::string good = folder.write("good.flt", kHeader);
    const std::string damaged = folder.write("damaged.flt", kHeader + "0002 0020 00:28 0002 0020");
    const std::string headless = folder.write("headless.flt", "0002 0020 00:28");
    const std::string output = folder.write("out.flt", "0102");
    std::filesystem::create_directories(folder.path() / "folder");
    const std::vector<std::string> refused[] = {
        {"convert", damaged, output},
        {"convert", headless, output},
        {"convert", folder.file("missing.flt"), output},
        {"convert", good, folder.file("folder")},
        {"convert", good, folder.file("nowhere/out.flt")},
        {"convert", good, output, "--revision", "1419"},
        {"convert", good, output, "--revision", "1581"},
        {"convert", good, output, "--revision", "1599"},
        {"convert", good, output, "--revision", "1661"},
    };
    for (const auto& arguments : refused) {
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.code, 2) << arguments[1];
        EXPECT_THAT(outcome.error, IsOneErrorLine());
        EXPECT_EQ(toHex(folder.read("out.flt")), "01 02") << arguments[1];
        EXPECT_EQ(folder.fileCount(), 5U) << arguments[1];
    }
}

}  // namespace
