#include "support.h"

#include <quillon/fltlevelwalk.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltvertexlist.h>

#include <algorithm>

namespace {

TEST(RecordRangeTest, EndsWhereNoWholeRecordFollows) {
    const Bytes records = hex("000A 0004 0048 0006 0102 000B 0004");
    const std::pair<const char*, std::size_t> tails[] = {
        {"", 3}, {"00", 3}, {"0002 00", 3}, {"0002 0003", 3}, {"0002 0006 00", 3}, {"0002 0004", 4},
    };
    for (const auto& [tail, count] : tails) {
        Bytes bytes = records;
        const Bytes more = hex(tail);
        bytes.insert(bytes.end(), more.begin(), more.end());
        std::vector<std::size_t> offsets;
        for (const FltRecordView record : FltRecordRange(bytes)) offsets.push_back(record.offset());
        std::vector<std::size_t> expected{0, 4, 10, 14};
        expected.resize(count);
        EXPECT_EQ(offsets, expected) << tail;
    }
    const FltRecordView list = FltRecordView::at(records, 4);
    EXPECT_EQ(list.opcode(), kFltVertexList);
    EXPECT_EQ(list.length(), 6);
    EXPECT_EQ(Bytes(list.body().begin(), list.body().end()), hex("0102"));
    EXPECT_TRUE(FltRecordView::at(records, 99).empty());
}

TEST(RecordBytesTest, AppendsRecordsWithoutPadding) {
    Bytes bytes = hex("FF");
    const auto body = fltAppendRecord(bytes, 300, 3);
    body[1] = 7;
    fltAppendRecord(bytes, kFltPushLevel, 0);
    EXPECT_EQ(toHex(bytes), toHex(hex("FF 012C 0007 000700 000A 0004")));
    EXPECT_EQ(fltAppendRecord(bytes, 300, 65531).size(), 65531U);
    expectAssertion("fltrecordbytes", 20, [&] { fltAppendRecord(bytes, 300, 65532); });

    Bytes longer = hex("0002 0004 0000");
    fltStateLength(longer);
    EXPECT_EQ(toHex(longer), toHex(hex("0002 0006 0000")));
    for (const std::size_t size : {3U, 65536U}) {
        longer.resize(size);
        expectAssertion("fltrecordbytes", 29, [&] { fltStateLength(longer); });
    }
}

TEST(RecordBytesTest, ContinuesVertexListsAndKeepsPairsTogether) {
    Bytes bytes;
    fltAppendVertexList(bytes, kFltMorphVertexList, std::vector<std::uint32_t>{8, 48});
    fltAppendVertexList(bytes, kFltVertexList, {});
    EXPECT_EQ(toHex(bytes), toHex(hex("0059 000C 00000008 00000030 0048 0004")));
    for (const std::size_t count : {16382U, 16383U, 40000U}) {
        bytes.clear();
        const std::vector<std::uint32_t> offsets(count, 8);
        fltAppendVertexList(bytes, kFltMorphVertexList, offsets);
        std::size_t left = count;
        std::uint16_t opcode = kFltMorphVertexList;
        for (const FltRecordView record : FltRecordRange(bytes)) {
            const FltVertexOffsets list(record.body());
            EXPECT_EQ(record.opcode(), opcode);
            EXPECT_EQ(list.size(), std::min<std::size_t>(left, 16382));
            left -= list.size();
            opcode = kFltContinuation;
        }
        EXPECT_EQ(left, 0U);
    }
}

TEST(LevelWalkTest, MatchesPopsWithPushesAndKnowsOpaqueLevels) {
    using Walk = FltLevelWalk<int>;
    using enum Walk::Step;
    const struct {
        std::uint16_t opcode;
        Walk::Step step;
        std::size_t depth;
        bool opaque;
    } steps[] = {
        {2, kNone, 0, false},       {10, kOpened, 1, false}, {19, kOpened, 2, false},
        {11, kUnmatched, 2, false}, {20, kClosed, 1, false}, {21, kOpened, 2, true},
        {10, kOpened, 3, true},     {2, kNone, 3, true},     {11, kClosed, 2, true},
        {22, kClosed, 1, false},    {122, kOpened, 2, true}, {22, kUnmatched, 2, true},
        {123, kClosed, 1, false},   {11, kClosed, 0, false}, {11, kUnmatched, 0, false},
    };
    Walk walk;
    int place = 0;
    for (const auto& [opcode, step, depth, opaque] : steps) {
        EXPECT_EQ(walk.meet(opcode, place), step) << place;
        EXPECT_EQ(walk.depth(), depth) << place;
        EXPECT_EQ(walk.isOpaque(), opaque) << place;
        ++place;
    }
    EXPECT_EQ(walk.left().level, 1) << "what was kept of the level closed last";
    EXPECT_EQ(walk.left().opcode, 10);

    walk.meet(10, 0);
    walk.meet(19, 1);
    EXPECT_TRUE(walk.canClose(11));
    EXPECT_FALSE(walk.canClose(22));
    walk.leave();
    EXPECT_EQ(walk.meet(11), kClosed);
}

}  // namespace
