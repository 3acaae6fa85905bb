#include "chunkbytes.h"
#include "testscene.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/kilnlightpoint.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlod.h>
#include <quillon/fltswitch.h>

#include <gtest/gtest.h>

#include <string>

using namespace testing_chunks;

namespace {

using NodeData = TestScene;

const Bytes kGroupKindBlock = {0, 0, 0, 0, 2, 0, 0, 0, 0x2C, 0x06, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                               0, 0, 0, 0, 0, 0, 0, 0, 0,    0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

RecordBytes groupBytes() {
    return RecordBytes(2, 32).text(4, "g7").int16(12, 0xFFFE).int32(16, 0x40000000).int8(26, 5);
}

TEST_F(NodeData, EnsureKindWritesTheKindBlockAndKeepsItAfterwards) {
    INode* const node = dummy();
    EXPECT_FALSE(fltHasData(node));
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Group, 1580));
    EXPECT_TRUE(fltHasData(node));
    EXPECT_EQ(chunkBytes(node, kKindChunk), kGroupKindBlock);

    const void* const block = chunk(node, kKindChunk)->data;
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Lod, 1420));
    EXPECT_EQ(chunk(node, kKindChunk)->data, block);
    Bytes expected = kGroupKindBlock;
    expected[4] = 73;
    expected[8] = 0x8C;
    expected[9] = 0x05;
    EXPECT_EQ(chunkBytes(node, kKindChunk), expected);
}

TEST_F(NodeData, OnlyTheSixteenBitsOfTheKindAreRead) {
    INode* const node = dummy();
    Bytes bytes(40, 0xEE);
    bytes[4] = 63;
    bytes[5] = 0;
    setChunk(node, kKindChunk, bytes);
    FltNodeKind kind{};
    ASSERT_TRUE(fltGetKind(node, false, kind));
    EXPECT_EQ(kind, FltNodeKind::XRef);
    std::uint32_t parameter = 0;
    ASSERT_TRUE(fltGetParameter(node, parameter));
    EXPECT_EQ(parameter, 0xEEEEEEEE);
}

TEST_F(NodeData, AKindBlockTooShortToReadIsNoneAndIsReplaced) {
    INode* const node = dummy();
    for (const std::size_t size : {0U, 5U, 11U}) {
        setChunk(node, kKindChunk, Bytes(size, 2));
        FltNodeKind kind{};
        std::uint32_t parameter = 0;
        EXPECT_FALSE(fltHasData(node));
        EXPECT_FALSE(fltGetKind(node, false, kind));
        EXPECT_FALSE(fltGetParameter(node, parameter));
        EXPECT_FALSE(fltPutRecord(node, FltGroup()));
    }
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Group, 1580));
    EXPECT_EQ(chunkBytes(node, kKindChunk), kGroupKindBlock);
}

TEST_F(NodeData, TheKindIsDerivedFromTheHostObject) {
    // A closed one can become a mesh.
    const auto line = [this](bool closed, bool renderable) {
        auto* const shape = new SplineShape;
        shape->SetClosed(closed);
        shape->SetRenderable(renderable);
        for (const Point3& point : {Point3{0, 0, 0}, Point3{1, 0, 0}, Point3{0, 1, 0}})
            shape->GetPoints().Append(1, &point);
        return node(shape);
    };
    INode* const head = dummy();
    head->SetGroupHead(true);
    INode* const boxHead = node(new BoxObject);
    boxHead->SetGroupHead(true);

    const FltNodeKind none{};
    const struct {
        const char* what;
        INode* node;
        FltNodeKind kind;
    } cases[] = {
        {"mesh", node(new TriObject), FltNodeKind::Face},
        {"box", node(new BoxObject), FltNodeKind::Face},
        {"box at the head of a group", boxHead, FltNodeKind::Face},
        {"rendered outline", line(true, true), FltNodeKind::Face},
        {"outline that is not rendered", line(true, false), none},
        {"rendered line that can be no mesh", line(false, true), none},
        {"omni light", node(new GenLight(OMNI_LIGHT_CLASS_ID)), FltNodeKind::LightSource},
        {"directional light", node(new GenLight(DIR_LIGHT_CLASS_ID)), FltNodeKind::LightSource},
        {"free spot light", node(new GenLight(FSPOT_LIGHT_CLASS_ID)), FltNodeKind::LightSource},
        {"target spot light", node(new GenLight(SPOT_LIGHT_CLASS_ID)), none},
        {"dummy", dummy(), none},
        {"group head", head, FltNodeKind::Group},
    };
    for (const auto& c : cases) {
        FltNodeKind kind{};
        EXPECT_EQ(fltGetKind(c.node, true, kind), c.kind != none) << c.what;
        EXPECT_EQ(kind, c.kind) << c.what;
        EXPECT_EQ(fltIsFaceObject(c.node), c.kind == FltNodeKind::Face) << c.what;
        EXPECT_FALSE(fltGetKind(c.node, false, kind)) << c.what;
        EXPECT_EQ(c.node->NumAppDataChunks(), 0) << c.what;
    }
    ASSERT_TRUE(fltEnsureKind(head, FltNodeKind::Switch, 1580));
    FltNodeKind kind{};
    ASSERT_TRUE(fltGetKind(head, true, kind));
    EXPECT_EQ(kind, FltNodeKind::Switch) << "a stored kind comes before a derived one";
}

TEST_F(NodeData, ARecordIsStoredInOpenFlightForm) {
    INode* const node = dummy();
    FltGroup group;
    std::memcpy(group.asciiId, "g7", 2);
    group.relativePriority = -2;
    group.flags = 0x40000000;
    group.layerCode = 5;
    EXPECT_FALSE(fltPutRecord(node, group)) << "without a kind block";
    EXPECT_EQ(node->NumAppDataChunks(), 0);

    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Group, 1580));
    ASSERT_TRUE(fltPutRecord(node, group));
    EXPECT_EQ(chunkBytes(node, kRecordChunk), groupBytes());

    const AppDataChunk* const record = chunk(node, kRecordChunk);
    const void* const block = record->data;
    group.layerCode = 6;
    ASSERT_TRUE(fltPutRecord(node, group));
    EXPECT_EQ(chunk(node, kRecordChunk), record);
    EXPECT_EQ(record->data, block);
    EXPECT_EQ(chunkBytes(node, kRecordChunk), groupBytes().int8(26, 6));
    EXPECT_EQ(node->NumAppDataChunks(), 2);
}

TEST_F(NodeData, ARecordOfAnotherLengthGetsANewBufferInTheSameChunk) {
    INode* const node = dummy();
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Switch, 1580));
    FltSwitch record;
    record.setMaskBits(1);
    ASSERT_TRUE(fltPutRecord(node, record));
    const AppDataChunk* const stored = chunk(node, kRecordChunk);
    EXPECT_EQ(stored->length, 32U);
    for (int i = 0; i < 5; ++i) record.maskWords.append(0xA5A5A5A5);
    ASSERT_TRUE(fltPutRecord(node, record));
    EXPECT_EQ(chunk(node, kRecordChunk), stored);
    EXPECT_EQ(stored->length, 56U);
    FltSwitch read;
    ASSERT_TRUE(fltGetRecord(node, read));
    EXPECT_EQ(read.maskWords.count(), 6);
}

TEST_F(NodeData, ARecordTooLongToStoreLeavesTheOneThatIsThere) {
    INode* const node = dummy();
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Switch, 1580));
    FltSwitch record;
    ASSERT_TRUE(fltPutRecord(node, record));
    const Bytes before = chunkBytes(node, kRecordChunk);
    record.maskWords.resize(20000);
    EXPECT_FALSE(fltPutRecord(node, record));
    EXPECT_EQ(chunkBytes(node, kRecordChunk), before);
}

TEST_F(NodeData, DamagedRecordsAreRefusedAndKept) {
    const Bytes whole = groupBytes();
    Bytes tooLong = whole;
    tooLong[3] = 33;  // one byte more than there is
    Bytes noHeader = whole;
    noHeader[3] = 3;
    const struct {
        const char* what;
        Bytes bytes;
    } cases[] = {
        {"another opcode", RecordBytes(4, 32)},
        {"a length beyond the chunk", tooLong},
        {"a length below a header", noHeader},
        {"no length at all", Bytes(3, 0)},
        {"nothing", {}},
    };
    for (const auto& c : cases) {
        INode* const node = dummy();
        ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Group, 1580));
        setChunk(node, kRecordChunk, c.bytes);
        FltGroup group;
        EXPECT_FALSE(fltGetRecord(node, group)) << c.what;
        EXPECT_TRUE(fltHasRecord(node)) << c.what;
        EXPECT_EQ(chunkBytes(node, kRecordChunk), c.bytes) << c.what;
    }
}

TEST_F(NodeData, AShortRecordReadsAsZerosWithoutTouchingTheRestOfTheChunk) {
    INode* const node = dummy();
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Lod, 1580));
    Bytes bytes = RecordBytes(73, 72).float64(16, 250).float64(24, 10).float64(64, 3);
    bytes[3] = 24;  // the record ends behind the switch-in distance, the chunk does not
    setChunk(node, kRecordChunk, bytes);
    FltLod lod;
    ASSERT_TRUE(fltGetRecord(node, lod));
    EXPECT_EQ(lod.switchInDistance, 250);
    EXPECT_EQ(lod.switchOutDistance, 0);
    EXPECT_EQ(lod.transitionRange, 0);
    EXPECT_EQ(chunkBytes(node, kRecordChunk), bytes);
}

// A node that has a kind keeps it, and its revision, by which its record is written and read.
TEST_F(NodeData, DataAreStoredAtTheRevisionThatTheNodeHas) {
    FltFace face;
    face.textureIndex = 7;
    INode* const old = dummy();
    ASSERT_TRUE(fltEnsureKind(old, FltNodeKind::Face, 1420));
    const Bytes kind = chunkBytes(old, kKindChunk);
    ASSERT_TRUE(fltPutData(old, FltNodeKind::Face, 1580, face, nullptr));
    EXPECT_EQ(chunkBytes(old, kKindChunk), kind);
    INode* const recent = dummy();
    ASSERT_TRUE(fltPutData(recent, FltNodeKind::Face, 1580, face, nullptr));
    EXPECT_LT(chunkBytes(old, kRecordChunk).size(), chunkBytes(recent, kRecordChunk).size());
    FltFace read;
    ASSERT_TRUE(fltGetRecord(old, read));
    EXPECT_EQ(read.textureIndex, 7);
}

TEST_F(NodeData, CommentsAreCommentRecordsAndNeedNoKind) {
    INode* const node = dummy();
    std::string text = "untouched";
    EXPECT_FALSE(fltGetComment(node, text));
    EXPECT_EQ(text, "untouched");
    ASSERT_TRUE(fltPutComment(node, "tower 塔"));
    EXPECT_EQ(chunkBytes(node, kCommentChunk), RecordBytes(31, 16).text(4, "tower 塔"));
    ASSERT_TRUE(fltGetComment(node, text));
    EXPECT_EQ(text, "tower 塔");

    const Bytes before = chunkBytes(node, kCommentChunk);
    EXPECT_FALSE(fltPutComment(node, std::string(70000, 'x')));
    EXPECT_EQ(chunkBytes(node, kCommentChunk), before);
    const std::string longest(65520, 'x');
    ASSERT_TRUE(fltPutComment(node, longest));
    ASSERT_TRUE(fltGetComment(node, text));
    EXPECT_EQ(text, longest);

    ASSERT_TRUE(fltPutComment(node, ""));
    ASSERT_TRUE(fltGetComment(node, text));
    EXPECT_EQ(text, "");
    const Bytes unterminated = RecordBytes(31, 8).text(4, "abcd");
    setChunk(node, kCommentChunk, unterminated);
    ASSERT_TRUE(fltGetComment(node, text));
    EXPECT_EQ(text, "abcd");
    setChunk(node, kCommentChunk, RecordBytes(2, 8));
    EXPECT_FALSE(fltGetComment(node, text));
}

TEST_F(NodeData, CopyTakesEveryChunkThatTheSourceHas) {
    INode* const source = dummy();
    INode* const destination = dummy();
    ASSERT_TRUE(fltEnsureKind(source, FltNodeKind::Group, 1580));
    setChunk(source, kRecordChunk, groupBytes());
    setChunk(destination, kOptionsChunk, RecordBytes(5, 32));
    ASSERT_TRUE(fltPutComment(destination, "own"));
    const Bytes comment = chunkBytes(destination, kCommentChunk);
    ASSERT_TRUE(fltCopyData(source, destination));
    EXPECT_EQ(chunkBytes(destination, kOptionsChunk), RecordBytes(5, 32));
    EXPECT_EQ(chunkBytes(destination, kCommentChunk), comment);

    ASSERT_TRUE(fltPutComment(source, "hangar"));
    setChunk(source, kOptionsChunk, RecordBytes(111, 16));
    ASSERT_TRUE(fltCopyData(source, destination));
    for (const DWORD id : {kKindChunk, kRecordChunk, kCommentChunk, kOptionsChunk}) {
        EXPECT_EQ(chunkBytes(destination, id), chunkBytes(source, id)) << id;
        EXPECT_NE(chunk(destination, id)->data, chunk(source, id)->data) << id;
    }

    EXPECT_TRUE(fltCopyData(source, source));
    EXPECT_EQ(chunkBytes(source, kRecordChunk), groupBytes());
}

TEST_F(NodeData, CopyWithoutARecordFailsAfterTheKindBlock) {
    INode* const source = dummy();
    INode* const destination = dummy();
    ASSERT_TRUE(fltEnsureKind(destination, FltNodeKind::Lod, 1420));
    ASSERT_TRUE(fltPutRecord(destination, FltLod()));
    const Bytes record = chunkBytes(destination, kRecordChunk);
    EXPECT_FALSE(fltCopyData(source, destination)) << "nothing to copy";
    ASSERT_TRUE(fltEnsureKind(source, FltNodeKind::Group, 1580));
    ASSERT_TRUE(fltPutComment(source, "not copied"));
    EXPECT_FALSE(fltCopyData(source, destination));
    EXPECT_EQ(chunkBytes(destination, kKindChunk), kGroupKindBlock);
    EXPECT_EQ(chunkBytes(destination, kRecordChunk), record);
    EXPECT_EQ(chunk(destination, kCommentChunk), nullptr);
}

TEST_F(NodeData, RemoveClearsAllFiveChunksAndNoOthers) {
    INode* const node = dummy();
    EXPECT_FALSE(fltRemoveData(node));
    for (DWORD id = 0; id <= 5; ++id) setChunk(node, id, Bytes(4, 1));
    EXPECT_TRUE(fltRemoveData(node));
    EXPECT_EQ(node->NumAppDataChunks(), 1);
    EXPECT_NE(chunk(node, 5), nullptr);
    EXPECT_FALSE(fltRemoveData(node));
}

TEST_F(NodeData, ANullNodeIsAFailureEverywhere) {
    FltNodeKind kind{};
    std::uint32_t parameter = 0;
    FltGroup group;
    KilnFace face;
    std::string text;
    EXPECT_FALSE(fltHasData(nullptr));
    EXPECT_FALSE(fltEnsureKind(nullptr, FltNodeKind::Group, 1580));
    EXPECT_FALSE(fltGetKind(nullptr, true, kind));
    EXPECT_FALSE(fltGetParameter(nullptr, parameter));
    EXPECT_FALSE(fltIsFaceObject(nullptr));
    EXPECT_FALSE(fltPutRecord(nullptr, group));
    EXPECT_FALSE(fltGetRecord(nullptr, group));
    EXPECT_FALSE(fltPutOptions(nullptr, face));
    EXPECT_FALSE(fltGetOptions(nullptr, face));
    EXPECT_FALSE(fltPutComment(nullptr, "x"));
    EXPECT_FALSE(fltGetComment(nullptr, text));
    EXPECT_FALSE(fltCopyData(nullptr, dummy()));
    EXPECT_FALSE(fltCopyData(dummy(), nullptr));
    EXPECT_FALSE(fltRemoveData(nullptr));
}

}  // namespace
