#include "files.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <tuple>

namespace {

// A palette of two vertices, the first at 8, the second at 16.
const std::string kPalette = "0043 0008 00000018 0044 0008 00:4 0044 0008 00:4 ";

TEST(CheckTest, FindsNothingInAGoodFile) {
    const Folder folder;
    const Outcome airport = runTool({"check", folder.writeAirport()});
    EXPECT_EQ(airport.code, 0) << airport.out;
    EXPECT_EQ(airport.out, "");
    const std::string lists =
        kHeader + kPalette + "0048 000C 00000008 00000010 " + "0059 000C 00000010 00000008";
    EXPECT_EQ(runTool({"check", folder.write("lists.flt", lists)}).out, "");
    // Records that only the format knows, the first list carried on.
    const std::string further = kHeader + kPalette + "0048 0008 00000008 0017 0008 00000010 " +
                                "0054 0008 00:4 0055 0010 00:12 0017 0004 0056 000C 00:8";
    EXPECT_EQ(runTool({"check", folder.write("further.flt", further)}).out, "");

    const std::string newest = "0001 0148 'db':8 0000067C 00:312 0087 0054 00:80 0094 0008 00:4";
    EXPECT_EQ(runTool({"check", folder.write("newest.flt", newest)}).out, "") << "16.6";

    // A text that fills the longest record there can be, without a terminator.
    Bytes comment = hex(kHeader + "001F FFFF");
    comment.resize(comment.size() + 0xFFFF - 4, 'x');
    EXPECT_EQ(runTool({"check", folder.write("comment.flt", comment)}).code, 0);
}

TEST(CheckTest, NamesEachFindingWithItsOffset) {
    const std::tuple<std::string, const char*> cases[] = {
        {"", "0: an empty file\n"},
        {"0002 0020 00:28", "0: FLT_GROUP: the file does not begin with its header\n"},
        {kHeader + "0001 0148 'db':8 0000062C 00:312",
         "328: FLT_HEADER: a header that is not the first record\n"},
        {"0001 0148 'db':8 00000636 00:312",
         "0: FLT_HEADER: format revision 1590 is none of 1420 to 1580 and 1600 to 1660\n"},
        {"0001 0148 'db':8 0000067D 00:312",
         "0: FLT_HEADER: format revision 1661 is none of 1420 to 1580 and 1600 to 1660\n"},
        {kHeader + "0001 0010 'db':8 00000001",
         "328: FLT_HEADER: a header that is not the first record\n"},
        {kHeader + "000A 0004 000B 0004 FF", "336: 1 stray byte behind the last record\n"},
        {kHeader + "000A 0004 000B 00",
         "332: damaged at byte offset 332: the file ends within a record header\n"},
        {kHeader + "0003 0004", "328: UNDEFINED: unknown opcode 3\n"},
        {kHeader + "0002 0010 00:12",
         "328: FLT_GROUP: the record is 16 bytes long, its fields 32; the missing ones read as "
         "zero\n"},
        {kHeader + "0002 0003",
         "328: damaged at byte offset 328: a record says that it is 3 bytes long\n"},
        {kHeader + "0002 0020",
         "328: damaged at byte offset 328: a record of 32 bytes, of which the file has 4\n"},
        // nesting
        {kHeader + "000B 0004", "328: FLT_POP_LEVEL: without a push\n"},
        {kHeader + "000A 0004", "328: FLT_PUSH_LEVEL: without a pop\n"},
        {kHeader + "000A 0004 0013 0004 000B 0004", "332: FLT_PUSH_SUBFACE: without a pop\n"},
        // vertices
        {kHeader + "0048 0008 00000008",
         "328: FLT_VERTEX_LIST: a vertex list before any vertex palette\n"},
        {kHeader + kPalette + "0048 0010 00000008 0000000C 00000018",
         "352: FLT_VERTEX_LIST: vertex offset 12 and 1 more: no vertex of the palette there\n"},
        {kHeader + kPalette + "0048 0006 0000",
         "352: FLT_VERTEX_LIST: a vertex list whose length is not one of whole entries\n"},
        {kHeader + kPalette + "0048 0008 00000008 0017 0008 0000000C",
         "360: FLT_CONTINUATION: vertex offset 12: no vertex of the palette there\n"},
        {kHeader + "000A 0004 0017 0004 000B 0004",
         "332: FLT_CONTINUATION: continues a record that says nothing\n"},
        {kHeader + "0043 0008 00000018 0044 0008 00:4 0002 0020 00:28",
         "328: the vertex palette says that it is 24 bytes long; it is 16\n"},
        {kHeader + "0044 0008 00:4",
         "328: FLT_VERTEX_W_COLOR: a vertex outside the vertex palette\n"},
        // switches: current mask, number of masks, words per mask
        {kHeader + "0060 0024 00:12 00000002 00000002 00000001 00:8",
         "328: FLT_SWITCH: current mask 2 of 2\n"},
        {kHeader + "0060 001C 00:12 00000000 00000000 00000001",
         "328: FLT_SWITCH: a switch without masks\n"},
        {kHeader + "0060 001C 00:12 00000000 40000000 40000000",
         "328: FLT_SWITCH: counts that no record can hold\n"},
        {kHeader + "0060 001C 00:12 00000000 00000001 00000001",
         "328: FLT_SWITCH: the record is 28 bytes long, its fields 32; the missing ones read as "
         "zero\n"},
    };
    const Folder folder;
    for (const auto& [words, findings] : cases) {
        const Outcome outcome = runTool({"check", folder.write("case.flt", words)});
        EXPECT_EQ(outcome.out, findings);
        EXPECT_EQ(outcome.code, 1) << findings;
        EXPECT_EQ(outcome.error, "");
    }
}

TEST(CheckTest, HoldsMasksAgainstTheSwitchesChildren) {
    const std::string oneMask = "0060 0020 00:12 00000000 00000001 00000001 FFFFFFFF ";
    const std::string group = "0002 0020 00:28 ";
    std::string full = kHeader + oneMask + "000A 0004 ";
    for (int i = 0; i < 32; ++i) full += group;
    const Folder folder;
    // Grandchildren, comments and what follows the level are no children.
    EXPECT_EQ(
        runTool({"check", folder.write("full.flt", full + "000A 0004 " + group + "000B 0004 " +
                                                       "001F 0008 00:4 000B 0004 " + group)})
            .out,
        "");
    const Outcome over =
        runTool({"check", folder.write("over.flt", full + "003D 0008 00000001 000B 0004")});
    EXPECT_EQ(over.out, "328: FLT_SWITCH: a switch of 33 children whose masks have 32 bits\n");
}

// What stands in levels of extensions and attributes belongs to the switch; its children follow.
TEST(CheckTest, FindsTheSwitchesChildrenBehindItsExtensions) {
    const std::string oneMask = "0060 0020 00:12 00000000 00000001 00000001 FFFFFFFF ";
    const std::string group = "0002 0020 00:28 ";
    const Folder folder;
    for (const auto& [push, pop] :
         {std::pair{"0015 0004 ", "0016 0004 "}, {"007A 0004 ", "007B 0004 "}}) {
        std::string file = kHeader + oneMask + push + "000A 0004 " + group + "000B 0004 " + group +
                           pop + "000A 0004 ";
        for (int i = 0; i < 32; ++i) file += group;
        EXPECT_EQ(runTool({"check", folder.write("full.flt", file + "000B 0004")}).out, "") << push;
        EXPECT_EQ(runTool({"check", folder.write("over.flt", file + group + "000B 0004")}).out,
                  "328: FLT_SWITCH: a switch of 33 children whose masks have 32 bits\n");
    }
}

TEST(CheckTest, CannotReadWhatIsNotThere) {
    const Folder folder;
    const Outcome outcome = runTool({"check", folder.file("missing.flt")});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.error, testing::StartsWith("fltool: cannot read "));
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1);
}

TEST(CheckTest, AddsWhatATargetAsksFor) {
    const Folder folder;
    const std::string file = folder.write("empty.flt", kHeader + "0002 0020 'g1':8 00:20");
    const Outcome plain = runTool({"check", file});
    EXPECT_EQ(plain.code, 0) << plain.out;
    const Outcome hints = runTool({"check", "--target", "15.8", file});
    EXPECT_EQ(hints.code, 0) << "hints and warnings are no errors\n" << hints.out;
    EXPECT_NE(hints.out.find("328: hint GROUP_EMPTY g1: it has no children\n"), std::string::npos)
        << hints.out;
    const Outcome errors = runTool({"check", file, "--target", "15.7"});
    EXPECT_EQ(errors.code, 1);
    EXPECT_NE(errors.out.find("0: error HDR_REVISION db: the database has format revision 15.8, "
                              "the target asks for 15.7\n"),
              std::string::npos)
        << errors.out;
    const std::string broken = folder.file("broken.json");
    std::ofstream(folder.path() / "broken.json") << "{\n\"rules\": 1}";
    const Outcome refused = runTool({"check", file, "--target", broken});
    EXPECT_EQ(refused.code, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_NE(refused.error.find("line 2"), std::string::npos) << refused.error;
}

TEST(CheckTest, PrintsOneJsonObject) {
    using Json = nlohmann::json;
    const Folder folder;
    // A level that nobody closes.
    const std::string file =
        folder.write("open.flt", kHeader + "000A 0004 " + "0002 0020 'g1':8 00:20");
    const Outcome plain = runTool({"check", "--json", file});
    EXPECT_EQ(plain.code, 1);
    const Json damage = Json::array({{{"offset", 328}, {"text", "FLT_PUSH_LEVEL: without a pop"}}});
    EXPECT_EQ(Json::parse(plain.out), Json({{"subject", file}, {"damage", damage}}));

    const Outcome whole = runTool({"check", "--json", "--target", "15.7", file});
    EXPECT_EQ(whole.code, 1);
    const Json report = Json::parse(whole.out);
    EXPECT_EQ(report["damage"], damage);
    EXPECT_EQ(report["counts"]["errors"], 1);
    EXPECT_EQ(report["statistics"]["nodes"], 2);
    const auto found = std::ranges::find(report["findings"], "GROUP_EMPTY",
                                         [](const Json& finding) { return finding["code"]; });
    ASSERT_NE(found, report["findings"].end()) << whole.out;
    EXPECT_EQ((*found)["offset"], 332);
    EXPECT_EQ((*found)["node"], "g1");
    EXPECT_EQ((*found)["severity"], "hint");
}

}  // namespace
