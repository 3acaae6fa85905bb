#include "fixture.h"

namespace {

using ::testing::ElementsAre;

class NotificationsTest : public HostTest {
protected:
    Recorder recorder{{NOTIFY_NODE_CREATED, NOTIFY_NODE_DELETED, NOTIFY_NODE_RENAMED,
                       NOTIFY_NODE_LINKED, NOTIFY_SCENE_NEW, NOTIFY_SCENE_OPENED,
                       NOTIFY_SCENE_RESET, NOTIFY_SCENE_PRE_CLEAR, NOTIFY_SCENE_SAVED}};
};

TEST_F(NotificationsTest, TellEachChangeOnce) {
    INode* const parent = addNode("a");
    INode* const child = addNode("b");
    parent->AttachChild(child);
    parent->AttachChild(child);  // it is the last child already
    child->SetName("b");
    child->SetName("c");
    child->Detach(0);
    child->Detach(0);
    host.DeleteNode(child);
    EXPECT_THAT(recorder.seen, ElementsAre(0x3B, 0x3B, 0x1E, 0x0A, 0x1E, 0x3C));
}

TEST_F(NotificationsTest, TellTheFateOfTheWholeScene) {
    INode* const node = addNode("a");
    const std::string text = core.sceneText();
    recorder.seen.clear();
    recorder.onNotification = [&](int code, void*) {
        if (code == NOTIFY_SCENE_PRE_CLEAR) {
            EXPECT_EQ(host.GetNodeCount(), 1) << "nothing has gone yet";
        }
    };
    ASSERT_TRUE(host.IsNodeInScene(node));
    core.newScene();
    EXPECT_FALSE(host.IsNodeInScene(node));
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_SCENE_PRE_CLEAR, 0x06));

    recorder.onNotification = nullptr;
    recorder.seen.clear();
    core.setTime(480);
    core.resetScene();
    EXPECT_EQ(host.GetTime(), 0);
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_SCENE_PRE_CLEAR, 0x06, NOTIFY_SCENE_RESET));

    recorder.seen.clear();
    ASSERT_TRUE(core.loadSceneText(text, "a.kiln"));
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_SCENE_PRE_CLEAR, 0x08));
    recorder.seen.clear();
    ASSERT_FALSE(core.loadSceneText("{", "a.kiln"));
    EXPECT_THAT(recorder.seen, ElementsAre());
}

TEST_F(NotificationsTest, HandlersMayComeAndGoMeanwhile) {
    Recorder later({});
    static int lateCalls;
    lateCalls = 0;
    const NOTIFYPROC late = [](void*, NotifyInfo*) { ++lateCalls; };
    Recorder last({NOTIFY_NODE_RENAMED});
    recorder.onNotification = [&](int, void*) {
        RegisterNotification(late, nullptr, NOTIFY_NODE_CREATED);
        RegisterNotification(late, nullptr, NOTIFY_NODE_CREATED);
    };
    addNode("a");
    EXPECT_EQ(lateCalls, 0) << "not for the one under way";
    recorder.onNotification = nullptr;
    addNode("b");
    EXPECT_EQ(lateCalls, 1) << "registered twice is registered once";

    recorder.onNotification = [&](int, void*) {
        UnRegisterNotification(late, nullptr, NOTIFY_NODE_CREATED);
        throw 1;  // keeps no one else from hearing
    };
    addNode("c")->SetName("d");
    EXPECT_EQ(lateCalls, 1) << "not even for the one under way";
    EXPECT_THAT(last.seen, ElementsAre(NOTIFY_NODE_RENAMED));
    EXPECT_FALSE(UnRegisterNotification(late, nullptr, NOTIFY_NODE_CREATED));
    EXPECT_FALSE(RegisterNotification(nullptr, nullptr, 1));
}

TEST_F(NotificationsTest, ModifiedFollowsTheGraph) {
    EXPECT_FALSE(core.isModified());
    INode* const node = addNode("a");
    EXPECT_TRUE(core.isModified());
    for (const std::function<void()>& change : std::vector<std::function<void()>>{
             [&] { node->SetName("b"); }, [&] { node->Hide(true); }, [&] { node->SetWireColor(1); },
             [&] {
                 node->SetNodeTM(0, TransMatrix({1, 0, 0}));
             },
             [&] {
                 node->AddAppDataChunk({1, 1}, 1, 1, 0, nullptr);
             },
             [&] { node->NotifyAppDataChanged(); },
             [&] {
                 node->RemoveAppDataChunk({1, 1}, 1, 1);
             },
             [&] { host.DeleteNode(node); }}) {
        core.setModified(false);
        change();
        EXPECT_TRUE(core.isModified());
    }
    EXPECT_FALSE(core.loadSceneText("[]", "x"));
    EXPECT_TRUE(core.isModified());
    core.newScene();
    EXPECT_FALSE(core.isModified());
}

TEST_F(NotificationsTest, AcceleratorsAreASwitch) {
    struct Window : kiln::HostWindow {
        void acceleratorsChanged(bool enabled) override { changes.push_back(enabled); }
        std::vector<bool> changes;
    } window;
    core.setHostWindow(&window);
    DisableAccelerators();
    DisableAccelerators();
    EXPECT_FALSE(AcceleratorsEnabled());
    EnableAccelerators();
    EXPECT_TRUE(AcceleratorsEnabled());
    EXPECT_THAT(window.changes, ElementsAre(false, true));
    core.setHostWindow(nullptr);
    DisableAccelerators();
    EnableAccelerators();
    EXPECT_EQ(host.GetKilnHWND(), nullptr);
    EXPECT_EQ(host.AddRollupPage(nullptr, 1, nullptr, "page"), nullptr);
    host.RedrawViews(0);
}

}  // namespace
