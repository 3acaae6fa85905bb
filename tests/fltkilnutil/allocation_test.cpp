// A load of a node allocates nothing but room for value texts that are longer than any before.
#include "attrscene.h"

#include "../quillon/countingheap.h"

#include <kiln/host/diagnostics.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Allocations = AttrScene;

TEST_F(Allocations, AWarmLoadOfAnyKindAllocatesNothing) {
    std::vector<INode*> nodes;
    for (FltAttrGroup* const* group = fltAttrGroups(); *group != nullptr; ++group) {
        INode* const node = kindNode((*group)->kind);
        ASSERT_NE(fltAttrLoad(node, 1580), nullptr);
        ASSERT_TRUE(fltAttrStore(node, **group));  // now it has record and options to be read
        nodes.push_back(node);
    }
    ASSERT_EQ(nodes.size(), 14U);
    const auto loadAll = [&] {
        return std::ranges::all_of(nodes,
                                   [](INode* node) { return fltAttrLoad(node, 1580) != nullptr; });
    };
    ASSERT_TRUE(loadAll());
    const std::size_t before = heapAllocations();
    const std::size_t hostBefore = kiln::allocatedBlocks();
    bool loaded = true;
    {
        const kiln::AllocationLimit none(0);
        for (int i = 0; i < 10; ++i) loaded = loaded && loadAll();
    }
    EXPECT_EQ(heapAllocations(), before);
    EXPECT_EQ(kiln::allocatedBlocks(), hostBefore);
    EXPECT_TRUE(loaded);
    EXPECT_GT(before, 0U) << "the counter counts";
}

TEST_F(Allocations, AnEditStoresRecordAndOptionsOrNeither) {
    INode* const light = kindNode(FltNodeKind::LightPoint);
    FltAttrGroup* const loaded = fltAttrLoad(light, 1580);
    ASSERT_NE(loaded, nullptr);
    ASSERT_EQ(light->NumAppDataChunks(), 1);
    for (const std::size_t blocks : {0U, 1U, 2U, 3U}) {
        const kiln::AllocationLimit limit(blocks);
        EXPECT_FALSE(fltAttrStore(light, *loaded));
        EXPECT_EQ(light->NumAppDataChunks(), 1) << blocks;
    }
    EXPECT_TRUE(fltAttrStore(light, *loaded));
    EXPECT_EQ(light->NumAppDataChunks(), 3);
}

TEST_F(Allocations, OnlyATextLongerThanAnyBeforeNeedsRoom) {
    INode* const brief = kindNode(FltNodeKind::XRef);
    INode* const wordy = kindNode(FltNodeKind::XRef);
    const std::string longName(150, 'x');
    ASSERT_TRUE(edit(brief, FltNodeKind::XRef, "FltXRefFilename", "a.flt"));
    ASSERT_TRUE(edit(wordy, FltNodeKind::XRef, "FltXRefFilename", longName.c_str()));
    row(FltNodeKind::XRef, "FltXRefFilename").value = FltString();
    const auto allocationsOf = [](INode* node) {
        const std::size_t before = heapAllocations();
        EXPECT_NE(fltAttrLoad(node, 1580), nullptr);
        return heapAllocations() - before;
    };
    allocationsOf(brief);
    EXPECT_EQ(allocationsOf(brief), 0U);
    EXPECT_EQ(allocationsOf(wordy), 1U) << "the file name's text";
    EXPECT_EQ(value(FltNodeKind::XRef, "FltXRefFilename"), longName);
    EXPECT_EQ(allocationsOf(brief), 0U);
    EXPECT_EQ(allocationsOf(wordy), 0U);
}

}  // namespace
