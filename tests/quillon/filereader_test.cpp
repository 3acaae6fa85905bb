#include "support.h"

#include <quillon/fltface.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltgroup.h>

#include <tuple>

namespace {

TEST(FileReaderTest, WalksRecordsWithTheirNesting) {
    const Bytes bytes =
        hex("0002 0004 000A 0004 0002 0006 1234 0013 0004 0005 0004 0014 0004 0015 0004 0064 0004 "
            "0016 0004 007A 0004 03E7 0005 FF 007B 0004 000B 0004 0002 0004");
    const std::tuple<std::size_t, int, int, int> expected[] = {
        // offset, opcode, length, level
        {0, 2, 4, 0},    {4, 10, 4, 0},   {8, 2, 6, 1},    {14, 19, 4, 1}, {18, 5, 4, 2},
        {22, 20, 4, 1},  {26, 21, 4, 1},  {30, 100, 4, 2}, {34, 22, 4, 1}, {38, 122, 4, 1},
        {42, 999, 5, 2}, {47, 123, 4, 1}, {51, 11, 4, 0},  {55, 2, 4, 0},
    };
    FltFileReader reader(bytes);
    for (const auto& [offset, opcode, length, level] : expected) {
        ASSERT_TRUE(reader.next());
        EXPECT_EQ(reader.offset(), offset);
        EXPECT_EQ(reader.opcode(), opcode) << offset;
        EXPECT_EQ(reader.length(), length) << offset;
        EXPECT_EQ(reader.level(), level) << offset;
        EXPECT_EQ(reader.token().data(), bytes.data() + offset) << "not a copy";
        EXPECT_EQ(reader.token().position(), 4) << offset;
    }
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.hasHeader());
}

TEST(FileReaderTest, ReadsRecordsAtTheRevisionOfTheFile) {
    const Bytes bytes =
        hex("0001 0018 'db':8 0000058C 00:8 "    // a header cut short, 1420
            "0005 0040 00:16 0007 0009 00:40");  // and a face of that time
    FltFileReader reader(bytes);
    EXPECT_EQ(reader.revision(), 1580U) << "until the file says otherwise";
    ASSERT_TRUE(reader.next());
    EXPECT_TRUE(reader.hasHeader());
    EXPECT_EQ(reader.revision(), 1420U);
    EXPECT_EQ(reader.length(), 24);
    EXPECT_EQ(reader.token().length(), 24) << "as the file has it";
    ASSERT_TRUE(reader.next());
    FltFace face;
    face.readFromFile(&reader.token());
    EXPECT_EQ(face.primaryColorIndex, 7U);

    face.primaryColorIndex = 1;
    face.readFromFile(nullptr);
    FltFileToken loose;
    face.readFromFile(&loose);
    EXPECT_EQ(face.primaryColorIndex, 1U) << "a token without a file reads nothing";
}

TEST(FileReaderTest, TakesANegativeRevisionForAnOldOne) {
    const Bytes bytes = hex("0001 0010 'db':8 FFFFFFFF");
    FltFileReader reader(bytes);
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.revision(), 0U);
}

TEST(FileReaderTest, LeavesOutStrayBytesBehindAFileThatIsComplete) {
    for (const char* const words : {"000A 0004 000B 0004 FF", "000A 0004 000B 0004 000200"}) {
        const Bytes bytes = hex(words);
        FltFileReader reader(bytes);
        ASSERT_TRUE(reader.next() && reader.next());
        EXPECT_EQ(reader.strayBytes(), 0U) << "not at the end yet";
        EXPECT_FALSE(reader.next());
        EXPECT_EQ(reader.strayBytes(), bytes.size() - 8) << words;
        EXPECT_FALSE(reader.next());
    }
}

TEST(FileReaderTest, GoesByTheFirstHeader) {
    const Bytes bytes = hex("0001 0010 'db':8 0000058C 0001 0010 'db':8 0000062C");
    FltFileReader reader(bytes);
    ASSERT_TRUE(reader.next() && reader.next());
    EXPECT_EQ(reader.revision(), 1420U);
}

TEST(FileReaderTest, NamesTheOffsetOfWhatIsDamaged) {
    const std::tuple<const char*, std::size_t, const char*> cases[] = {
        {"0002 0008 00:4 0002 0003", 8,
         "damaged at byte offset 8: a record says that it is 3 bytes long"},
        {"0002 0000", 0, "damaged at byte offset 0: a record says that it is 0 bytes long"},
        {"0002 0006 0000 0002 0006 00", 6,
         "damaged at byte offset 6: a record of 6 bytes, of which the file has 5"},
        {"000A 0004 0002 00", 4, "damaged at byte offset 4: the file ends within a record header"},
        {"000B 0004 00", 4, "damaged at byte offset 4: the file ends within a record header"},
        {"FF", 0, "damaged at byte offset 0: the file ends within a record header"},
    };
    for (const auto& [words, offset, message] : cases) {
        const Bytes bytes = hex(words);
        FltFileReader reader(bytes);
        for (int attempt = 0; attempt < 2; ++attempt) {
            try {
                while (reader.next()) {
                }
                ADD_FAILURE() << words;
            } catch (const FltFileError& error) {
                EXPECT_EQ(error.offset(), offset) << words;
                EXPECT_STREQ(error.what(), message);
            }
        }
    }
}

}  // namespace
