// Scene files come from anywhere. Whatever bytes the chunks hold, they are read, refused or taken
// as zeros; the sanitizers watch.
#include "attrscene.h"

#include <kiln/host/diagnostics.h>

#include <gtest/gtest.h>

#include <quillon/fltopcode.h>
#include <random>

using namespace testing_chunks;

namespace {

using HostileChunks = AttrScene;

class RandomBytes {
public:
    std::uint32_t number(std::uint32_t below) {
        return static_cast<std::uint32_t>(random_()) % below;
    }

    /// Random bytes, most of them dressed up as a record of `opcode`.
    Bytes record(std::uint16_t opcode) {
        Bytes bytes(number(420));
        for (std::uint8_t& byte : bytes)
            byte = number(3) == 0 ? 0xFF : static_cast<std::uint8_t>(number(256));
        if (bytes.size() < 4 || number(8) == 0) return bytes;
        const auto length =
            static_cast<std::uint32_t>(bytes.size()) - (number(3) == 0 ? number(5) : 0);
        bytes[0] = static_cast<std::uint8_t>(opcode >> 8);
        bytes[1] = static_cast<std::uint8_t>(opcode);
        bytes[2] = static_cast<std::uint8_t>(length >> 8);
        bytes[3] = static_cast<std::uint8_t>(length);
        return bytes;
    }

private:
    std::minstd_rand random_{20};
};

std::uint16_t optionsOpcode(FltNodeKind kind) {
    return kind == FltNodeKind::LightSource ? 102 : static_cast<std::uint16_t>(kind);
}

std::vector<Bytes> allChunks(INode* node) {
    return {chunkBytes(node, kKindChunk), chunkBytes(node, kRecordChunk),
            chunkBytes(node, kCommentChunk), chunkBytes(node, kOptionsChunk)};
}

TEST_F(HostileChunks, ArbitraryBytesLoadAndStoreOrAreRefusedUntouched) {
    RandomBytes random;
    int loaded = 0;
    int refused = 0;
    for (FltAttrGroup* const* g = fltAttrGroups(); *g != nullptr; ++g) {
        const FltNodeKind kind = (*g)->kind;
        for (int round = 0; round < 100; ++round) {
            INode* const node = kindNode(kind, random.number(2) == 0 ? 1580 : random.number(2000));
            if (random.number(10) == 0) setChunk(node, kKindChunk, random.record(0));
            setChunk(node, kRecordChunk, random.record(static_cast<std::uint16_t>(kind)));
            setChunk(node, kCommentChunk, random.record(kFltComment));
            if (random.number(3) != 0)
                setChunk(node, kOptionsChunk, random.record(optionsOpcode(kind)));
            const std::vector<Bytes> before = allChunks(node);

            std::string comment;
            if (fltGetComment(node, comment)) {
                EXPECT_TRUE(fltPutComment(node, comment));
            }
            setChunk(node, kCommentChunk, before[2]);

            FltAttrGroup* const group = fltAttrLoad(node, 1580);
            ASSERT_EQ(allChunks(node), before);
            if (group == nullptr) {
                ++refused;
                continue;
            }
            ++loaded;
            for (FltAttrDesc* row = group->descriptors; !row->isTerminator(); ++row)
                row->value.setText(row->choices.empty() ? "3" : row->choices.back());
            if (!fltAttrStore(node, *group)) continue;
            EXPECT_EQ(fltAttrLoad(node, 1580), group) << "what was stored can be loaded";
            INode* const copy = dummy();
            EXPECT_TRUE(fltCopyData(node, copy));
        }
    }
    EXPECT_GT(loaded, 300);
    EXPECT_GT(refused, 300);
}

TEST_F(HostileChunks, WithoutMemoryAStoreFailsAndLosesNothing) {
    INode* const face = recordNode(FltNodeKind::Face, RecordBytes(5, 64), 1420);
    FltAttrGroup* const group = fltAttrLoad(face, 1580);
    ASSERT_NE(group, nullptr);
    ASSERT_TRUE(fltEnsureKind(face, FltNodeKind::Face, 1580));  // stored again it is longer
    const std::vector<Bytes> before = allChunks(face);
    INode* const plain = dummy();
    {
        const kiln::AllocationLimit none(0);
        EXPECT_FALSE(fltAttrStore(face, *group));
        EXPECT_FALSE(fltPutComment(face, "x"));
        EXPECT_FALSE(fltEnsureKind(plain, FltNodeKind::Face, 1580));
        EXPECT_FALSE(fltCopyData(face, plain));
    }
    EXPECT_EQ(allChunks(face), before);
    EXPECT_EQ(plain->NumAppDataChunks(), 0);
    EXPECT_TRUE(fltAttrStore(face, *group));
    EXPECT_EQ(chunkBytes(face, kRecordChunk).size(), 80U);
}

TEST_F(HostileChunks, EveryBufferIsTheHostsAndIsFreedWithTheScene) {
    const std::size_t before = kiln::allocatedBlocks();
    {
        INode* const node = kindNode(FltNodeKind::Switch);
        FltAttrGroup* const group = fltAttrLoad(node, 1580);
        ASSERT_NE(group, nullptr);
        ASSERT_TRUE(fltAttrStore(node, *group));
        ASSERT_TRUE(fltPutComment(node, "short"));
        ASSERT_TRUE(fltPutComment(node, "long enough to need a buffer of another length"));
        ASSERT_TRUE(fltCopyData(node, node));
        INode* const copy = dummy();
        ASSERT_TRUE(fltCopyData(node, copy));
        ASSERT_TRUE(fltRemoveData(copy));
    }
    kiln::Core::get()->newScene();
    EXPECT_EQ(kiln::allocatedBlocks(), before);
}

}  // namespace
