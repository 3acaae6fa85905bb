#include "../support/temporaryfolder.h"
#include "support.h"

#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltcomment.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlod.h>
#include <quillon/fltobject.h>
#include <quillon/fltstream.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>

#include <iterator>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <utility>

namespace {

/// A stream over a temporary file, whose bytes can be looked at.
class StreamTest : public testing::Test {
protected:
    StreamTest() : file_(std::tmpfile()) {}
    ~StreamTest() override {
        static_cast<void>(stream_.close());
        std::fclose(file_);
    }

    Bytes written() {
        std::fflush(file_);
        std::rewind(file_);
        Bytes bytes;
        for (int c = 0; (c = std::fgetc(file_)) != EOF;)
            bytes.push_back(static_cast<std::uint8_t>(c));
        return bytes;
    }

    std::FILE* file_;
    FltStream stream_;
};

TEST_F(StreamTest, WritesForeignRecordsAsTheyAre) {
    stream_.attach(file_, 1580);
    const Bytes records[] = {hex("000A 0004"), hex("03E7 0007 010203")};
    for (const Bytes& record : records) stream_.writeVerbatim(record);
    EXPECT_EQ(stream_.nesting().level, 1);
    for (const char* wrong : {"", "0002", "0002 0006 00", "0002 0004 00"})
        expectAssertion("fltstream", 424, [&] { stream_.writeVerbatim(hex(wrong)); });
    stream_.writeControl(kFltPopLevel);
    EXPECT_EQ(stream_.nesting().level, 0);
    EXPECT_EQ(toHex(written()), toHex(hex("000A 0004 03E7 0007 010203 000B 0004")));
}

TEST_F(StreamTest, WritesSeveralForeignRecordsOrNone) {
    stream_.attach(file_, 1580);
    stream_.writeRecords({});
    stream_.writeRecords(hex("000A 0004 0013 0004 03E7 0007 010203"));
    EXPECT_EQ(stream_.nesting(), (FltNesting{1, 1, 0, 0}));
    for (const char* wrong : {"00", "000A 0004 0002", "000A 0004 0002 0006 00"})
        expectAssertion("fltstream", 424, [&] { stream_.writeRecords(hex(wrong)); });
    EXPECT_EQ(stream_.nesting().level, 1) << "of what is refused nothing counts";
    EXPECT_EQ(toHex(written()), toHex(hex("000A 0004 0013 0004 03E7 0007 010203")));
}

TEST_F(StreamTest, CountsTheNestingOfEveryKind) {
    stream_.attach(file_, 1580);
    const std::pair<std::uint16_t, FltNesting> steps[] = {
        {10, {1, 0, 0, 0}},      {19, {1, 1, 0, 0}},  {21, {1, 1, 1, 0}},   {122, {1, 1, 1, 1}},
        {2, {1, 1, 1, 1}},       {123, {1, 1, 1, 0}}, {22, {1, 1, 0, 0}},   {20, {1, 0, 0, 0}},
        {11, {0, 0, 0, 0}},      {11, {-1, 0, 0, 0}}, {20, {-1, -1, 0, 0}}, {22, {-1, -1, -1, 0}},
        {123, {-1, -1, -1, -1}},
    };
    for (const auto& [opcode, nesting] : steps) {
        stream_.writeControl(opcode);
        EXPECT_EQ(stream_.nesting(), nesting) << "after " << opcode;
    }
    EXPECT_EQ(written().size(), std::size(steps) * 4) << "one record each, not padded";
}

TEST_F(StreamTest, NamesRecordsThatHaveNoName) {
    FltHeader& header = stream_.header();
    stream_.attach(file_, 1580);
    FltGroup group;
    FltObject object;
    FltFace face;
    FltDof dof;
    FltBsp bsp;
    FltLod lod;
    FltSwitch switchRecord;
    FltClipRegion clip;
    FltLightSource source;
    FltLightPoint point;
    const std::tuple<FltRecord*, std::int16_t*, const char*> cases[] = {
        {&group, &header.nextGroupId, "g40"},
        {&object, &header.nextObjectId, "o41"},
        {&face, &header.nextFaceId, "f42"},
        {&dof, &header.nextDofId, "d43"},
        {&bsp, &header.nextBspId, "b44"},
        {&lod, &header.nextLodId, "l45"},
        {&switchRecord, &header.nextSwitchId, "f46"},  // a face's pattern, its own counter
        {&clip, &header.nextClipRegionId, "c47"},
        {&source, &header.nextLightSourceId, "ls48"},
        {&point, &header.nextLightPointId, "lp49"},
    };
    std::int16_t number = 40;
    for (const auto& row : cases) *std::get<1>(row) = number++;
    for (const auto& [record, counter, name] : cases) {
        const std::int16_t before = *counter;
        record->write(stream_);
        EXPECT_EQ(fltText({record->id(), 8}), name);
        EXPECT_EQ(*counter, before + 1) << name;
        record->write(stream_);
        EXPECT_EQ(fltText({record->id(), 8}), name) << "a name is kept";
        EXPECT_EQ(*counter, before + 1) << name << " is named already";
    }
    FltXRef reference;
    reference.write(stream_);
    EXPECT_EQ(reference.fileName[0], 0) << "references are never named";

    header.nextLightPointId = 32767;
    point.asciiId[0] = 0;
    point.write(stream_);
    point.asciiId[0] = 0;
    point.write(stream_);
    EXPECT_EQ(fltText(point.asciiId), "lp-32768") << "the counters have 16 bits";
}

TEST_F(StreamTest, WritesRecordsAtItsRevision) {
    stream_.attach(file_, 1420);
    FltFace face;
    fltSetText(face.asciiId, "f");
    face.primaryColorIndex = 5;
    face.alternateColorIndex = 0xFFFFFFFF;
    face.write(stream_);
    const Bytes bytes = written();
    EXPECT_EQ(bytes.size(), 64U);
    EXPECT_EQ(toHex({bytes.begin() + 20, bytes.begin() + 24}), toHex(hex("0005 FFFF")));
    stream_.token().attach(bytes.data(), 64);
    FltFace read;
    read.read(stream_);
    EXPECT_EQ(read.primaryColorIndex, 5U);
    EXPECT_EQ(read.alternateColorIndex, 0xFFFFFFFF);
}

/// Writes the pending items as the text of a comment.
struct CommentWriter final : FltPendingWriter {
    explicit CommentWriter(FltStream& stream) : stream_(stream) {}

    void writePending(FltToken& token, std::uint32_t revision) override {
        if (fails) throw std::runtime_error("no");
        std::string text;
        for (std::int32_t i = 0; i < stream_.pendingItems().count(); ++i)
            text += std::to_string(*stream_.pendingItems().at(i));
        FltComment(text.c_str()).writeToken(token, revision);
        stream_.flushPending();  // at work already: does nothing
    }

    FltStream& stream_;
    bool fails = false;
};

TEST_F(StreamTest, WritesPendingItemsOnceBeforeTheNextRecord) {
    CommentWriter writer(stream_);
    stream_.attach(file_, 1580);
    expectAssertion("fltstream", 431, [&] { stream_.addPending(1); });
    stream_.setPendingWriter(&writer);
    stream_.writeControl(10);
    stream_.addPending(1);
    stream_.addPending(2);
    writer.fails = true;
    EXPECT_THROW(stream_.writeControl(11), std::runtime_error);
    writer.fails = false;
    stream_.writeControl(11);
    EXPECT_EQ(stream_.pendingItems().count(), 0);
    stream_.writeControl(0);
    stream_.addPending(3);
    EXPECT_TRUE(stream_.close());
    EXPECT_EQ(toHex(written()),
              toHex(hex("000A 0004 001F 0008 '12' 0000 000B 0004 0000 0004 001F 0008 '3' 00:3")));
}

TEST_F(StreamTest, WritesNowhereWithoutAFileOpenForWriting) {
    FltGroup group;
    expectAssertion("fltstream", 417, [&] { group.write(stream_); });
    EXPECT_TRUE(stream_.close()) << "closing nothing is no failure";
    stream_.attach(file_, 1580, FltStreamMode::kRead);
    expectAssertion("fltstream", 418, [&] { group.write(stream_); });
    expectAssertion("fltstream", 85, [&] { stream_.attach(file_, 1580); });
}

TEST_F(StreamTest, BeginsAnewWhenItIsUsedAgain) {
    CommentWriter writer(stream_);
    stream_.setPendingWriter(&writer);
    stream_.attach(file_, 1420, FltStreamMode::kRead);
    stream_.addPending(1);  // a stream for reading writes it nowhere
    EXPECT_TRUE(stream_.close());
    stream_.attach(file_, 1420);
    EXPECT_EQ(stream_.pendingItems().count(), 0);
    stream_.writeControl(10);
    FltGroup().write(stream_);
    EXPECT_TRUE(stream_.close());

    stream_.attach(file_, 1580);
    EXPECT_EQ(stream_.nesting(), FltNesting());
    EXPECT_EQ(stream_.revision(), 1580U);
    FltGroup group;
    group.write(stream_);
    EXPECT_EQ(fltText(group.asciiId), "g1");
}

class StreamFileTest : public testing::Test {
protected:
    const TemporaryFolder folder_;
    const std::string name_ = folder_.file(u8"\u8DD1\u9053.flt");
};

TEST_F(StreamFileTest, PutsTheFinalCountersIntoTheHeader) {
    FltHeader header;
    header.formatRevision = 1540;
    header.nextGroupId = 7;
    FltStream stream;
    ASSERT_TRUE(stream.open(name_, header));
    for (int i = 0; i < 3; ++i) FltGroup().write(stream);
    stream.header().formatRevision = 1580;  // comes too late
    EXPECT_TRUE(stream.close());
    EXPECT_FALSE(stream.isOpen());

    const FltFileBytes file = FltFileBytes::load(name_);
    EXPECT_EQ(file.bytes().size(), 280U + 3 * 32);
    FltFileReader reader(file.bytes());
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.header().nextGroupId, 10);
    EXPECT_EQ(reader.revision(), 1540U);
    FltGroup group;
    for (const char* name : {"g7", "g8", "g9"}) {
        ASSERT_TRUE(reader.next());
        group.readFromFile(&reader.token());
        EXPECT_EQ(fltText(group.asciiId), name);
    }
    EXPECT_FALSE(reader.next());
}

TEST_F(StreamFileTest, BeginsWithAHeaderAsPublished) {
    FltHeader header;
    header.radius = 1;
    FltStream stream;
    ASSERT_TRUE(stream.open(name_, header));
    FltLightPoint().write(stream);
    ASSERT_TRUE(stream.close());
    const FltFileBytes file = FltFileBytes::load(name_);
    ASSERT_GE(file.bytes().size(), 328U);
    EXPECT_EQ(file.bytes()[255], 2) << "the light point counter, which has moved on";
    EXPECT_EQ(file.bytes()[292], 0x3F);
    FltFileReader reader(file.bytes());
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.header().radius, 1);
    EXPECT_EQ(reader.header().nextLightPointId, 2);
}

TEST_F(StreamFileTest, DoesNotWriteALongerHeaderOverWhatFollows) {
    struct : FltHeaderForm {
        std::span<const std::uint8_t> layOutHeader(const FltHeader& header) override {
            header.writeToken(token, header.revision());
            for (int i = 0; i < calls; ++i) token.writeInt64(std::uint64_t{1});
            ++calls;
            token.finish();
            return {token.data(), token.length()};
        }
        FltToken token;
        int calls = 0;
    } growing;
    FltStream stream;
    ASSERT_TRUE(stream.open(name_, {}, &growing));
    FltGroup().write(stream);
    EXPECT_FALSE(stream.close());
    const FltFileBytes file = FltFileBytes::load(name_);
    FltFileReader reader(file.bytes());
    ASSERT_TRUE(reader.next());
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.opcode(), FltGroup::kOpcode);
}

TEST_F(StreamFileTest, DoesNotOpenASecondFileWhileOneIsOpen) {
    FltStream stream;
    ASSERT_TRUE(stream.open(name_));
    const std::string other = folder_.file(u8"other.flt");
    expectAssertion("fltstream", 72, [&] { static_cast<void>(stream.open(other)); });
    EXPECT_THROW(FltFileBytes::load(other), std::system_error) << "nothing was made or emptied";
    EXPECT_TRUE(stream.close());
    EXPECT_EQ(FltFileBytes::load(name_).bytes().size(), 328U);
}

TEST_F(StreamFileTest, SaysWhenAFileCannotBeMade) {
    FltStream stream;
    EXPECT_FALSE(stream.open(name_ + "/missing/x.flt"));
    EXPECT_FALSE(stream.isOpen());
    try {
        FltFileBytes::load(name_);
        ADD_FAILURE() << "read a file that does not exist";
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string(error.what()).find(name_), std::string::npos) << error.what();
    }
}

#ifdef __linux__
TEST(StreamDiskTest, ReportsAFullDiskWhenItIsClosed) {
    FltStream stream;
    ASSERT_TRUE(stream.open("/dev/full"));
    FltGroup().write(stream);
    EXPECT_FALSE(stream.close());
    EXPECT_TRUE(stream.open("/dev/null")) << "a closed stream can be opened again";
    EXPECT_TRUE(stream.close());
}
#endif

}  // namespace
