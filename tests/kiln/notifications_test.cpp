#include "fixture.h"

#include <kiln/language.h>
#include <kiln/undo.h>

#include <set>

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

TEST_F(NotificationsTest, TellOfAnotherLanguageOnly) {
    const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
    Recorder languages{{NOTIFY_LANGUAGE_CHANGED}};
    EXPECT_TRUE(kiln::Core::setLanguage(KILN_LANGUAGE_ENGLISH));
    EXPECT_TRUE(kiln::Core::setLanguage(KILN_LANGUAGE_ENGLISH));
    EXPECT_FALSE(kiln::Core::setLanguage(0x0407));
    EXPECT_EQ(GetLanguage(), KILN_LANGUAGE_ENGLISH);
    EXPECT_TRUE(kiln::Core::setLanguage(KILN_LANGUAGE_CHINESE));
    EXPECT_THAT(languages.seen, ElementsAre(NOTIFY_LANGUAGE_CHANGED, NOTIFY_LANGUAGE_CHANGED));
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

/// Counts how often it is told.
class CountingWatch {
public:
    int told = 0;
    SceneWatch watch{[](void* self) { ++static_cast<CountingWatch*>(self)->told; }, this};
};

struct NamedChange {
    const char* name;
    std::function<void()> make;
};

TEST_F(NotificationsTest, AWatchHearsOfEveryKindOfChangeOnce) {
    INode* const node = addNode("a");
    auto* const light = new GenLight(OMNI_LIGHT_CLASS_ID);
    INode* const lamp = host.CreateObjectNode(light, "lamp");
    auto* const map = new BitmapTex;
    const std::string text = core.sceneText();
    CountingWatch one, other;
    for (const NamedChange& change : std::vector<NamedChange>{
             {"name", [&] { node->SetName("b"); }},
             {"place", [&] { lamp->AttachChild(node); }},
             {"transform",
              [&] {
                  node->SetLocalTM(0, TransMatrix({1, 0, 0}));
              }},
             {"object", [&] { node->SetObjectRef(new BoxObject); }},
             {"texture map", [&] { node->SetTexmap(map); }},
             {"picture", [&] { map->SetMapName("a.rgb"); }},
             {"visibility", [&] { node->Hide(true); }},
             {"wire color", [&] { node->SetWireColor(1); }},
             {"color of a light", [&] { light->SetColor(1); }},
             {"strength of a light", [&] { light->SetIntensity(2); }},
             {"light off", [&] { light->SetUseLight(false); }},
             {"size", [&] { static_cast<BoxObject*>(node->GetObjectRef())->SetSize(1, 2, 3); }},
             {"new chunk",
              [&] {
                  node->AddAppDataChunk({1, 1}, 1, 1, 0, nullptr);
              }},
             {"chunk of an object",
              [&] {
                  light->AddAppDataChunk({1, 1}, 1, 1, 0, nullptr);
              }},
             {"chunk in place", [&] { node->NotifyAppDataChanged(); }},
             {"chunk gone",
              [&] {
                  node->RemoveAppDataChunk({1, 1}, 1, 1);
              }},
             {"what the host cannot see", [&] { node->InvalidateWS(); }},
             {"what nobody names", [&] { host.RedrawViews(0); }},
             {"deletion", [&] { host.DeleteNode(node); }},
             {"creation", [&] { addNode("c"); }},
             {"another scene", [&] { core.newScene(); }},
             {"a file", [&] { ASSERT_TRUE(core.loadSceneText(text, "a.kiln")); }}}) {
        one.told = 0;
        change.make();
        EXPECT_EQ(one.told, 1) << change.name;
        EXPECT_TRUE(one.watch.HasChanged());
        EXPECT_TRUE(one.watch.Take()) << change.name;
        EXPECT_FALSE(one.watch.Take());
    }
    EXPECT_EQ(other.told, 1) << "it never asked, so it was told once";
}

// So that who shows the scene need not read all of it.
TEST_F(NotificationsTest, AWatchNamesTheNodesThatHaveChangedInThemselves) {
    INode* const node = addNode("a");
    INode* const other = addNode("b");
    BitmapTex* const map = new BitmapTex;
    CountingWatch watch;
    const auto named = [&] {
        const auto nodes = watch.watch.ChangedNodes();
        return std::vector<INode*>(nodes.begin(), nodes.end());
    };
    for (const NamedChange& change :
         std::vector<NamedChange>{{"object", [&] { node->SetObjectRef(new BoxObject); }},
                                  {"texture map", [&] { node->SetTexmap(map); }},
                                  {"wire color", [&] { node->SetWireColor(1); }},
                                  {"new chunk",
                                   [&] {
                                       node->AddAppDataChunk({1, 1}, 1, 1, 0, nullptr);
                                   }},
                                  {"chunk in place", [&] { node->NotifyAppDataChanged(); }},
                                  {"chunk gone",
                                   [&] {
                                       node->RemoveAppDataChunk({1, 1}, 1, 1);
                                   }},
                                  {"what the host cannot see", [&] { node->InvalidateWS(); }}}) {
        change.make();
        EXPECT_THAT(named(), ElementsAre(node)) << change.name;
        other->SetWireColor(other->GetWireColor() + 1);
        EXPECT_THAT(named(), ElementsAre(node, other)) << change.name;
        EXPECT_FALSE(watch.watch.HasChangedOtherwise()) << change.name;
        watch.watch.Take();
        EXPECT_TRUE(named().empty()) << change.name;
    }
    host.RedrawViews(0);
    EXPECT_TRUE(named().empty());
    EXPECT_FALSE(watch.watch.HasChangedOtherwise()) << "drawing anew changes nothing";
    watch.watch.Take();
    for (const NamedChange& change : std::vector<NamedChange>{
             {"visibility", [&] { node->Hide(true); }},
             {"place", [&] { other->AttachChild(node); }},
             {"name", [&] { node->SetName("c"); }},
             {"picture", [&] { map->SetMapName("a.rgb"); }},
             {"chunk of an object",
              [&] {
                  node->GetObjectRef()->AddAppDataChunk({1, 1}, 1, 1, 0, nullptr);
              }},
             {"creation", [&] { addNode("c"); }},
             {"deletion", [&] { host.DeleteNode(node); }},
             {"too many", [&] {
                  std::vector<INode*> many;
                  for (int i = 0; i < 300; ++i) many.push_back(addNode("n"));
                  watch.watch.Take();
                  for (INode* const one : many) one->SetWireColor(1);
              }}}) {
        other->SetWireColor(other->GetWireColor() + 1);
        change.make();
        EXPECT_TRUE(named().empty()) << change.name;
        EXPECT_TRUE(watch.watch.HasChangedOtherwise()) << change.name;
        other->SetWireColor(other->GetWireColor() + 1);
        EXPECT_TRUE(named().empty()) << change.name;
        watch.watch.Take();
    }
}

// As many as a hand drags at once, also when the drag is taken back.
TEST_F(NotificationsTest, AWatchNamesTheNodesThatHaveMoved) {
    std::vector<INode*> many;
    for (int i = 0; i < 300; ++i) many.push_back(addNode("n"));
    CountingWatch watch;
    const auto moved = [&] {
        const auto nodes = watch.watch.MovedNodes();
        return std::set<INode*>(nodes.begin(), nodes.end());
    };
    const std::set<INode*> all(many.begin(), many.end());
    const auto expectAll = [&](const char* what) {
        EXPECT_EQ(moved(), all) << what;
        EXPECT_TRUE(watch.watch.ChangedNodes().empty()) << what;
        EXPECT_FALSE(watch.watch.HasChangedOtherwise()) << what;
        EXPECT_TRUE(watch.watch.Take()) << what;
        EXPECT_TRUE(moved().empty()) << what;
    };
    const auto moveAll = [&](double x) {
        for (std::size_t i = 0; i < many.size(); ++i)
            if (i % 2 == 0)
                many[i]->SetNodeTM(0, TransMatrix({x, 0, 0}));
            else
                many[i]->SetLocalTM(0, TransMatrix({x, 0, 0}));
    };
    moveAll(1);
    expectAll("moved");
    {
        const UndoScope scope("drag");
        moveAll(2);
        watch.watch.Take();
    }
    expectAll("rolled back");
    {
        UndoScope scope("drag");
        moveAll(3);
        scope.Commit();
    }
    watch.watch.Take();
    core.history().undo();
    expectAll("undone");
    core.history().redo();
    expectAll("redone");
    {
        const UndoScope scope("drag and more");
        moveAll(4);
        many[0]->Hide(true);
        watch.watch.Take();
    }
    EXPECT_TRUE(watch.watch.HasChangedOtherwise());
    watch.watch.Take();
    moveAll(5);
    many[0]->SetWireColor(7);
    EXPECT_EQ(moved(), all);
    EXPECT_THAT(watch.watch.ChangedNodes(), ElementsAre(many[0]));
    host.DeleteNode(many[1]);
    EXPECT_TRUE(moved().empty()) << "one of them may be gone";
}

TEST_F(NotificationsTest, AWatchHearsNothingWhereNothingChanges) {
    INode* const node = addNode("a");
    CountingWatch watch;
    node->Hide(false);
    node->SetName("a");
    node->SetWireColor(node->GetWireColor());
    node->RemoveAppDataChunk({1, 1}, 1, 1);
    host.SelectNode(node);
    core.setModified(true);
    EXPECT_EQ(watch.told, 0);
    core.setModified(false);
    node->InvalidateWS();
    EXPECT_EQ(watch.told, 1);
    EXPECT_FALSE(core.isModified()) << "nothing that is saved has changed";
}

TEST_F(NotificationsTest, ManyChangesAreToldOnce) {
    std::vector<INode*> nodes;
    for (int i = 0; i < 10'000; ++i) nodes.push_back(addNode("n"));
    CountingWatch watch;
    { const CountingWatch gone; }
    for (INode* const node : nodes) node->AddAppDataChunk({1, 1}, 1, 1, 0, nullptr);
    EXPECT_EQ(watch.told, 1);
    watch.watch.Take();
    for (INode* const node : nodes) node->NotifyAppDataChanged();
    EXPECT_EQ(watch.told, 2);
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
    host.ZoomToSelection();
}

}  // namespace
