// Creation while memory runs out, at every place where it can.
#include "scene.h"

#include "../quillon/countingheap.h"

#include <kiln/host/diagnostics.h>
#include <tessera/browserclient.h>
#include <tessera/nodecreation.h>

#include <gmock/gmock.h>

#include <vector>

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
    int refused = 0;
    for (const auto& creation : kCreations) {
        SCOPED_TRACE(creation.name);
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
    }
    // More where the host shares this program's heap; of its own some creations need none.
    EXPECT_GT(refused, 0);
}

TEST_F(OutOfMemoryTest, ANodeWhoseDataCannotBeStoredIsAPlainNamedHelper) {
    for (const std::size_t blocks : {0U, 1U, 2U, 3U, 4U}) {
        SCOPED_TRACE(blocks);
        bool made = false;
        {
            const kiln::AllocationLimit limit(blocks);
            made = aviary.CreateLOD();
        }
        if (blocks == 0) {
            EXPECT_FALSE(made) << "a creation that the history cannot hold is refused";
            EXPECT_EQ(host.GetNodeCount(), 0);
            continue;
        }
        ASSERT_TRUE(made);
        INode* const node = host.GetRootNode()->GetChildNode(0);
        EXPECT_STREQ(node->GetName(), "l001");
        EXPECT_EQ(aviary.HasData(node), blocks >= 3) << "a chunk is a block, and another its bytes";
        EXPECT_FALSE(fltHasRecord(node));
        host.DeleteNode(node);
    }
}

TEST_F(OutOfMemoryTest, AMeshIsMadeAFaceWithItsOptionsOrNotAtAll) {
    INode* const mesh = addMesh(nullptr, "mesh");
    std::size_t refused = 0;
    for (std::size_t blocks = 0; blocks < 20; ++blocks) {
        SCOPED_TRACE(blocks);
        bool kept = false;
        {
            const kiln::AllocationLimit limit(blocks);
            kept = aviary.SetKeepTriangles(mesh, 1);
        }
        ASSERT_EQ(aviary.HasData(mesh), kept);
        ASSERT_EQ(mesh->NumAppDataChunks(), kept ? 3 : 0);
        if (kept) break;
        ++refused;
    }
    EXPECT_TRUE(aviary.GetKeepTriangles(mesh));
    EXPECT_EQ(refused, 6U) << "three chunks, each a block and its bytes";
}

TEST_F(OutOfMemoryTest, SiblingsAreReorderedOrStayAsTheyWere) {
    INode* const parent = add(nullptr, "p");
    std::vector<INode*> children;
    for (const char* name : {"a", "b", "c", "d"}) children.push_back(add(parent, name));
    ASSERT_EQ(tessera::createBrowser(host), tessera::kBrowserDone);
    tessera::showBrowser(host);
    const RecordingBrowser& browser = recordingBrowser();
    int kept = 0;
    for (std::size_t allowed = 0;; ++allowed) {
        SCOPED_TRACE(allowed);
        failAllocationAfter(allowed);
        browser.send(tessera::BrowserEvent::kMoveDown, browser.find("a"), browser.find("p"));
        const bool failed = endAllocationFailure();
        ASSERT_THAT(childNames(parent), testing::AnyOf("a,b,c,d", "b,a,c,d"));
        ASSERT_EQ(host.GetRootNode()->NumberOfChildren(), 1);
        if (childNames(parent) == "a,b,c,d") ++kept;
        if (!failed) break;
        for (INode* const child : children) parent->AttachChild(child);
        tessera::showBrowser(host);
    }
    EXPECT_GT(kept, 0);
}

// Memory is short while they are put back, too: that needs none.
TEST_F(OutOfMemoryTest, SiblingsComeBackWithoutMemory) {
    INode* const parent = add(nullptr, "p");
    for (const char* name : {"a", "b", "c", "d", "e", "f"}) add(parent, name);
    ASSERT_EQ(tessera::createBrowser(host), tessera::kBrowserDone);
    tessera::showBrowser(host);
    struct Watch {
        INode* parent;
        int failures = 0;
    } watch{parent};
    const NOTIFYPROC exhaust = [](void* param, NotifyInfo* info) {
        auto& watched = *static_cast<Watch*>(param);
        if (static_cast<INode*>(info->callParam)->GetParentNode() != watched.parent) return;
        if (endAllocationFailure()) ++watched.failures;
        if (watched.failures < 2) failAllocationAfter(0);
    };
    ASSERT_TRUE(RegisterNotification(exhaust, &watch, NOTIFY_NODE_LINKED));
    recordingBrowser().send(tessera::BrowserEvent::kMoveDown, recordingBrowser().find("a"),
                            recordingBrowser().find("p"));
    endAllocationFailure();
    UnRegisterNotification(exhaust, &watch, NOTIFY_NODE_LINKED);
#ifndef _WIN32
    EXPECT_GE(watch.failures, 1) << "the host shares this program's heap";
#endif
    EXPECT_EQ(host.GetRootNode()->NumberOfChildren(), 1);
    EXPECT_EQ(parent->NumberOfChildren(), 6);
}

}  // namespace
