#include "fixture.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr Class_ID kOwner(0x6A3C1F07, 0x2E9D0001);
constexpr SClass_ID kSuper = SCENE_IMPORT_CLASS_ID;

using ChunksTest = HostTest;

TEST_F(ChunksTest, AreKeyedByTheirThreeIds) {
    INode* const node = addNode("node");
    ASSERT_NE(node->AddAppDataChunk(kOwner, kSuper, 0, 3, hostBlock("abc")), nullptr);
    ASSERT_NE(node->AddAppDataChunk(kOwner, kSuper, 1, 2, hostBlock("de")), nullptr);
    ASSERT_NE(node->AddAppDataChunk(kOwner, kSuper + 1, 0, 1, hostBlock("f")), nullptr);
    ASSERT_NE(node->AddAppDataChunk(Class_ID(1, 2), kSuper, 0, 0, nullptr), nullptr);
    EXPECT_EQ(bytesOf(node->GetAppDataChunk(kOwner, kSuper, 0)), "abc");
    EXPECT_EQ(bytesOf(node->GetAppDataChunk(kOwner, kSuper, 1)), "de");
    EXPECT_EQ(node->GetAppDataChunk(kOwner, kSuper, 2), nullptr);
    EXPECT_EQ(node->NumAppDataChunks(), 4);

    EXPECT_TRUE(node->RemoveAppDataChunk(kOwner, kSuper, 0));
    EXPECT_FALSE(node->RemoveAppDataChunk(kOwner, kSuper, 0));
    EXPECT_EQ(bytesOf(node->GetAppDataChunk(kOwner, kSuper + 1, 0)), "f");
}

// Leaks and double frees of the blocks show at the end of the test.
TEST_F(ChunksTest, ReplaceAndUpdateInPlace) {
    INode* const node = addNode("node");
    AppDataChunk* const chunk = node->AddAppDataChunk(kOwner, kSuper, 1, 3, hostBlock("abc"));
    EXPECT_EQ(node->AddAppDataChunk(kOwner, kSuper, 1, 4, hostBlock("defg")), chunk);
    EXPECT_EQ(bytesOf(chunk), "defg");
    EXPECT_EQ(node->NumAppDataChunks(), 1);

    chunk->data = KILN_realloc(chunk->data, 6);
    std::memcpy(static_cast<char*>(chunk->data) + 4, "hi", 2);
    chunk->length = 6;
    EXPECT_EQ(bytesOf(node->GetAppDataChunk(kOwner, kSuper, 1)), "defghi");
}

TEST_F(ChunksTest, FailureLeavesTheBlockWithTheCaller) {
    INode* const node = addNode("node");
    void* const block = hostBlock("abc");
    {
        const kiln::AllocationLimit none(0);
        EXPECT_EQ(KILN_malloc(1), nullptr);
        EXPECT_EQ(KILN_realloc(block, 100), nullptr);
        EXPECT_EQ(KILN_strdup("x"), nullptr);
        EXPECT_EQ(node->AddAppDataChunk(kOwner, kSuper, 0, 3, block), nullptr);
        EXPECT_EQ(node->AllocCustAttribContainer(), nullptr);
    }
    EXPECT_EQ(node->NumAppDataChunks(), 0);
    EXPECT_EQ(node->AddAppDataChunk(kOwner, kSuper, 0, 3, nullptr), nullptr);
    EXPECT_NE(node->AddAppDataChunk(kOwner, kSuper, 0, 3, block), nullptr);
    EXPECT_EQ(KILN_malloc(SIZE_MAX - 4), nullptr);
}

#if defined(__SANITIZE_ADDRESS__)
TEST(HostAllocatorTest, BlocksOfNoBytesAreNoLeaks) {
    static void* blocks[8];
    for (void*& block : blocks) block = KILN_malloc(0);
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0);
    for (void* const block : blocks) KILN_free(block);
}
#endif

#ifndef _WIN32
TEST(HostAllocatorDeathTest, NoticesBlocksThatAreNotItsOwn) {
    alignas(16) static char foreign[64] = {};
    EXPECT_DEATH(KILN_free(foreign + 32), "does not have");
}
#endif

struct Mark final : CustAttrib {
    explicit Mark(int which) : which_(which) { ++alive; }
    ~Mark() override { --alive; }
    Class_ID ClassID() const override { return {0x55, 0}; }
    int which_;
    static int alive;
};
int Mark::alive = 0;

TEST_F(ChunksTest, CustomAttributesKeepTheirOrder) {
    auto* const map = new BitmapTex;
    host.AddTexmap(map);
    host.AddTexmap(map);
    EXPECT_EQ(host.GetTexmapCount(), 1);
    EXPECT_EQ(map->GetCustAttribContainer(), nullptr);
    ICustAttribContainer* const container = map->AllocCustAttribContainer();
    ASSERT_EQ(map->AllocCustAttribContainer(), container);

    EXPECT_TRUE(container->AppendCustAttrib(new Mark(1)));
    EXPECT_TRUE(container->InsertCustAttrib(0, new Mark(0)));
    EXPECT_TRUE(container->InsertCustAttrib(2, new Mark(2)));
    EXPECT_FALSE(container->InsertCustAttrib(4, nullptr));
    EXPECT_TRUE(container->RemoveCustAttrib(1));
    EXPECT_FALSE(container->RemoveCustAttrib(2));
    EXPECT_FALSE(container->RemoveCustAttrib(-1));
    ASSERT_EQ(container->GetNumCustAttribs(), 2);
    EXPECT_EQ(static_cast<Mark*>(container->GetCustAttrib(0))->which_, 0);
    EXPECT_EQ(static_cast<Mark*>(container->GetCustAttrib(1))->which_, 2);
    EXPECT_EQ(Mark::alive, 3) << "an undo could bring it back";
    core.history().clear();
    EXPECT_EQ(Mark::alive, 2);

    // A node keeps the map alive after the scene's list has dropped it.
    INode* const node = addNode("node");
    node->SetTexmap(map);
    EXPECT_TRUE(host.RemoveTexmap(map));
    EXPECT_FALSE(host.RemoveTexmap(map));
    EXPECT_EQ(Mark::alive, 2);
    host.DeleteNode(node);
    EXPECT_EQ(Mark::alive, 2);
    core.history().clear();
    EXPECT_EQ(Mark::alive, 0);
}

// As an import of very many that is taken back. Looking through all of them for each, or closing
// the list up behind each, would outlast the test's time limit.
TEST_F(ChunksTest, TakesVeryManyTextureMaps) {
    constexpr int kMany = 500'000;
    std::vector<Texmap*> maps;
    for (int i = 0; i < kMany; ++i) {
        maps.push_back(new BitmapTex);
        host.AddTexmap(maps.back());
    }
    EXPECT_EQ(host.GetTexmapCount(), kMany);
    Texmap* const middle = maps[kMany / 2];
    EXPECT_TRUE(host.RemoveTexmap(middle));
    EXPECT_EQ(host.GetTexmap(kMany / 2), maps[kMany / 2 + 1]) << "the others keep their order";
    for (int i = 0; i < kMany / 4; ++i) {
        ASSERT_TRUE(host.RemoveTexmap(maps[static_cast<std::size_t>(i)]));
        ASSERT_TRUE(host.RemoveTexmap(maps[static_cast<std::size_t>(kMany - 1 - i)]));
    }
    EXPECT_EQ(host.GetTexmapCount(), kMany / 2 - 1);
    EXPECT_EQ(host.GetTexmap(0), maps[kMany / 4]);
}

}  // namespace
