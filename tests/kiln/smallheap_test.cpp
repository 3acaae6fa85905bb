#include <gtest/gtest.h>
#include <smallheap.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

using kiln::SmallHeap;

struct Block {
    unsigned char* bytes;
    std::size_t size;
    unsigned char filling;

    bool isIntact() const {
        return std::all_of(bytes, bytes + size,
                           [this](unsigned char byte) { return byte == filling; });
    }
};

Block allocateFilled(SmallHeap& heap, std::size_t size, unsigned char filling) {
    auto* const bytes = static_cast<unsigned char*>(heap.allocate(size));
    if (bytes != nullptr) std::memset(bytes, filling, size);
    return {bytes, size, filling};
}

// Blocks of all sizes come and go in disorder; none may ever lie in another.
TEST(SmallHeapTest, KeepsBlocksApart) {
    SmallHeap heap;
    std::mt19937 random(5);
    std::vector<Block> blocks;
    for (int round = 0; round < 200'000; ++round) {
        // Waves, so that pages fill, empty and change their size of block.
        const bool grows = round / 20'000 % 2 == 0;
        if (blocks.empty() || random() % 8 < (grows ? 6U : 2U)) {
            const std::size_t size = 1 + random() % SmallHeap::kLargest;
            const Block block =
                allocateFilled(heap, size, static_cast<unsigned char>(random() % 256));
            ASSERT_NE(block.bytes, nullptr);
            const auto address = reinterpret_cast<std::uintptr_t>(block.bytes);
            ASSERT_EQ(address % ((size + 7) / 8 % 2 == 0 ? 16 : 8), 0U) << size;
            blocks.push_back(block);
        } else {
            std::swap(blocks[random() % blocks.size()], blocks.back());
            ASSERT_TRUE(blocks.back().isIntact()) << round;
            heap.free(blocks.back().bytes);
            blocks.pop_back();
        }
    }
    for (const Block& block : blocks) {
        ASSERT_TRUE(block.isIntact());
        heap.free(block.bytes);
    }
    EXPECT_EQ(heap.regions(), 1U);
}

TEST(SmallHeapTest, GivesMemoryBackAndUsesItForOtherSizes) {
    SmallHeap heap;
    const auto fill = [&heap](std::size_t size, std::size_t count) {
        std::vector<void*> blocks(count);
        for (void*& block : blocks) block = heap.allocate(size);
        return blocks;
    };
    // Without a word for each block: 10 regions of 2 MB hold them, with a page of 64 KB to spare.
    const std::vector<void*> small = fill(40, (20U << 20) / 40 - 2000);
    EXPECT_EQ(heap.regions(), 10U);
    for (void* const block : small) heap.free(block);
    EXPECT_EQ(heap.regions(), 1U);

    const std::vector<void*> large = fill(1000, 2000);
    EXPECT_EQ(heap.regions(), 1U);
    // One block is enough to keep its page, and no other.
    for (std::size_t i = 1; i < large.size(); ++i) heap.free(large[i]);
    const std::vector<void*> others = fill(24, 80'000);
    EXPECT_EQ(heap.regions(), 1U);
    for (void* const block : others) heap.free(block);
    heap.free(large.front());
}

TEST(SmallHeapTest, ReusesTheBlockFreedLast) {
    SmallHeap heap;
    void* const kept = heap.allocate(64);
    void* const block = heap.allocate(64);
    heap.free(block);
    EXPECT_EQ(heap.allocate(61), block);
    EXPECT_NE(heap.allocate(64), kept);
}

// Natively the sanitizer watches over these blocks as over the system's.
TEST(SmallHeapTest, TheSanitizerSeesWhatIsNotGivenOut) {
#ifdef KILN_ADDRESS_SANITIZER
    SmallHeap heap;
    auto* const block = static_cast<unsigned char*>(heap.allocate(20));
    auto* const other = static_cast<unsigned char*>(heap.allocate(20));
    EXPECT_EQ(__asan_region_is_poisoned(block, 20), nullptr);
    EXPECT_EQ(__asan_region_is_poisoned(block, 21), block + 20) << "beyond what was asked for";
    EXPECT_TRUE(__asan_address_is_poisoned(other + 24)) << "never given out";
    heap.free(block);
    EXPECT_EQ(__asan_region_is_poisoned(block, 20), block) << "freed";
    EXPECT_EQ(heap.allocate(20), block);
    EXPECT_EQ(__asan_region_is_poisoned(block, 20), nullptr);
    EXPECT_EQ(__asan_region_is_poisoned(other, 20), nullptr);
#else
    GTEST_SKIP() << "built without the address sanitizer";
#endif
}

}  // namespace
