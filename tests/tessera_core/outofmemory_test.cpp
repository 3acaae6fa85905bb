// Creation while memory runs out, at every place where it can.
#include "scene.h"

#include "../quillon/countingheap.h"

#include <kiln/host/diagnostics.h>
#include <tessera/nodecreation.h>

#include <gmock/gmock.h>

namespace {

using OutOfMemoryTest = SceneTest;

constexpr unsigned short kSound = 91;  // a kind without a record of its own

const struct {
    const char* name;
    bool (*create)(IAviaryUtil&);
} kCreations[] = {
    {"g", [](IAviaryUtil& a) { return a.CreateGroup(); }},
    {"o", [](IAviaryUtil& a) { return a.CreateObject(); }},
    {"s", [](IAviaryUtil& a) { return a.CreateSwitch(); }},
    {"l", [](IAviaryUtil& a) { return a.CreateLOD(); }},
    {"d", [](IAviaryUtil& a) { return a.CreateDOF(); }},
    {"b", [](IAviaryUtil& a) { return a.CreateBSP(); }},
    {"c", [](IAviaryUtil& a) { return a.CreateClipRegion(); }},
    {"x", [](IAviaryUtil& a) { return a.CreateExternalRef(); }},
    {"lp", [](IAviaryUtil& a) { return a.CreateLightPoint(); }},
    {"q", [](IAviaryUtil& a) { return a.CreateNode(kSound); }},
};

TEST_F(OutOfMemoryTest, ACreationThatFailsLeavesNothingBehind) {
    INode* const parent = add(nullptr, "parent");
    host.SelectNode(parent);
    for (const auto& creation : kCreations) {
        SCOPED_TRACE(creation.name);
        int refused = 0;
        for (std::size_t allowed = 0;; ++allowed) {
            SCOPED_TRACE(allowed);
            tessera::releaseNameMaker();  // so that it is made anew, which can fail too
            failAllocationAfter(allowed);
            const bool made = creation.create(aviary);
            const bool failed = endAllocationFailure();
            ASSERT_EQ(parent->NumberOfChildren(), made ? 1 : 0);
            ASSERT_EQ(host.GetNodeCount(), made ? 2 : 1);
            if (made) {
                EXPECT_THAT(parent->GetChildNode(0)->GetName(),
                            testing::MatchesRegex(std::string(creation.name) + "..."));
                host.DeleteNode(parent->GetChildNode(0));
            } else {
                ASSERT_TRUE(failed);
                ++refused;
            }
            if (!failed) break;
        }
        EXPECT_GT(refused, 0);  // more where the host shares this program's heap
    }
}

TEST_F(OutOfMemoryTest, ANodeWhoseDataCannotBeStoredIsAPlainNamedHelper) {
    for (const std::size_t blocks : {0U, 1U, 2U, 3U}) {
        SCOPED_TRACE(blocks);
        bool made = false;
        {
            const kiln::AllocationLimit limit(blocks);
            made = aviary.CreateLOD();
        }
        ASSERT_TRUE(made);
        INode* const node = host.GetRootNode()->GetChildNode(0);
        EXPECT_STREQ(node->GetName(), "l001");
        EXPECT_EQ(aviary.HasData(node), blocks >= 2) << "a chunk is a block, and another its bytes";
        EXPECT_FALSE(fltHasRecord(node));
        host.DeleteNode(node);
    }
}

}  // namespace
