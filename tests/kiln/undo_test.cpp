#include "../support/historymodel.h"
#include "fixture.h"

#include <kiln/host/largesteps.h>
#include <kiln/scenewatch.h>

#include <algorithm>
#include <random>

namespace {

using ::testing::ElementsAre;

class UndoTest : public HostTest {
protected:
    ~UndoTest() override { history.setLimit(limitBefore); }

    /// A step that renames a node.
    void rename(INode* node, const char* name) {
        UndoScope scope("rename");
        node->SetName(name);
        scope.Commit();
    }
    std::vector<std::string> steps() {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < history.stepCount(); ++i) names.push_back(history.stepName(i));
        return names;
    }

    kiln::History& history = core.history();
    std::size_t limitBefore = history.limit();
};

TEST_F(UndoTest, ManyRandomChangesLeadBackAndForth) {
    std::size_t outOfMemory = 0;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        std::mt19937 random(seed);
        HistoryModel model(core, [&](unsigned below) { return random() % below; });
        for (int i = 0; i < 700; ++i) {
            const std::string wrong = model.step();
            ASSERT_EQ(wrong, "") << "seed " << seed << ", step " << i;
        }
        EXPECT_GT(model.changes, 150u);
        EXPECT_GT(model.undone, 50u);
        EXPECT_GT(model.rolledBack, 30u);
        outOfMemory += model.outOfMemory;
    }
    EXPECT_GT(outOfMemory, 20u);
}

TEST_F(UndoTest, ScopesWithinOneAnotherAreOneStepNamedByTheOuter) {
    {
        UndoScope outer("Création");
        addNode("a");
        {
            UndoScope inner("inner");
            addNode("b");
            inner.Commit();
        }
        {
            UndoScope refused("refused");
            addNode("c");
        }
        EXPECT_FALSE(history.undo()) << "not within a scope";
        outer.Commit();
    }
    EXPECT_THAT(steps(), ElementsAre("Création"));
    EXPECT_THAT(childNames(root), ElementsAre("a", "b"));
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(host.GetNodeCount(), 0);
    EXPECT_FALSE(history.undo());
    ASSERT_TRUE(history.redo());
    EXPECT_THAT(childNames(root), ElementsAre("a", "b"));
    {
        UndoScope nothing("nothing");
        host.GetINodeByName("a")->SetName("a");
        nothing.Commit();
    }
    EXPECT_THAT(steps(), ElementsAre("Création"));
}

TEST_F(UndoTest, WhatHappensOutsideOfScopesIsAStepForEachCommand) {
    INode* const node = addNode("a");
    node->Hide(true);
    history.endCommand();
    node->SetWireColor(5);
    rename(node, "b");
    EXPECT_THAT(steps(), ElementsAre("", "", "rename"));
    EXPECT_TRUE(history.goTo(1));
    EXPECT_EQ(node->GetWireColor(), DEFAULT_WIRE_COLOR);
    EXPECT_TRUE(node->IsHidden());
}

TEST_F(UndoTest, DeletedNodesComeBackAsTheSame) {
    INode* const parent = addNode("p");
    INode* const first = addNode("x", parent);
    INode* const doomed = addNode("x", parent);
    addNode("x", parent);
    INode* const below = addNode("below", doomed);
    auto* const map = new BitmapTex;
    below->SetTexmap(map);
    below->AddAppDataChunk({1, 2}, 3, 4, 3, hostBlock("abc"));
    below->AllocCustAttribContainer()->AppendCustAttrib(new ModelAttrib);
    host.SelectNode(first);
    host.SelectNode(below, false);
    const std::string before = core.sceneText();
    const DWORD handle = below->GetHandle();

    UndoScope scope("delete");
    host.DeleteNode(doomed);
    scope.Commit();
    EXPECT_FALSE(host.IsNodeInScene(below));
    EXPECT_EQ(host.GetINodeByHandle(handle), nullptr);
    EXPECT_EQ(host.GetINodeByName("below"), nullptr);
    EXPECT_EQ(host.GetSelNodeCount(), 1);
    EXPECT_FALSE(parent->AttachChild(below)) << "it is not there";
    EXPECT_EQ(parent->GetChildIndex(doomed), -1);
    below->SetName("nobody");
    below->Delete(0);

    Recorder recorder({NOTIFY_NODE_CREATED, NOTIFY_NODE_DELETED, NOTIFY_NODE_LINKED,
                       NOTIFY_SELECTION_CHANGED, NOTIFY_SCENE_UNDO, NOTIFY_SCENE_REDO});
    recorder.onNotification = [&](int code, void* node) {
        if (code == NOTIFY_NODE_CREATED) {
            EXPECT_EQ(host.GetNodeCount(), 5) << "all of them are back";
        }
        EXPECT_FALSE(history.undo()) << "not meanwhile";
        core.newScene();  // nor this
        if (code == NOTIFY_NODE_DELETED) {
            EXPECT_NE(*static_cast<INode*>(node)->GetName(), '\0');
        }
    };
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(core.sceneText(), before);
    EXPECT_EQ(host.GetINodeByHandle(handle), below);
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_NODE_CREATED, NOTIFY_NODE_CREATED,
                                           NOTIFY_SELECTION_CHANGED, NOTIFY_SCENE_UNDO));
    recorder.seen.clear();
    ASSERT_TRUE(history.redo());
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_NODE_DELETED, NOTIFY_NODE_DELETED,
                                           NOTIFY_SELECTION_CHANGED, NOTIFY_SCENE_REDO));
}

TEST_F(UndoTest, WhatListenersDoDuringAnUndoIsAStepOfItsOwn) {
    INode* const node = addNode("a");
    rename(node, "b");
    rename(node, "c");
    Recorder recorder({NOTIFY_NODE_RENAMED});
    recorder.onNotification = [&](int, void*) { node->SetWireColor(7); };
    ASSERT_TRUE(history.undo());
    recorder.onNotification = nullptr;
    EXPECT_FALSE(history.canRedo()) << "another change has come after it";
    EXPECT_THAT(steps(), ElementsAre("", "rename", ""));
    ASSERT_TRUE(history.goTo(1));
    EXPECT_STREQ(node->GetName(), "a");
    EXPECT_EQ(node->GetWireColor(), DEFAULT_WIRE_COLOR);
}

TEST_F(UndoTest, WatchersAreToldOnce) {
    for (int i = 0; i < 100; ++i) addNode("n");
    static int told;
    told = 0;
    SceneWatch watch([](void*) { ++told; }, nullptr);
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(told, 1);
    watch.Take();
    { const UndoScope rolledBack("nothing happened"); }
    EXPECT_EQ(told, 1);
    ASSERT_TRUE(history.redo());
    EXPECT_EQ(told, 2);
}

TEST_F(UndoTest, ARollbackTellsWhatWasToldBefore) {
    Recorder recorder({NOTIFY_NODE_CREATED, NOTIFY_NODE_DELETED, NOTIFY_SELECTION_CHANGED});
    {
        const UndoScope scope("refused");
        host.SelectNode(addNode("a"));
    }
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_NODE_CREATED, NOTIFY_SELECTION_CHANGED,
                                           NOTIFY_NODE_DELETED, NOTIFY_SELECTION_CHANGED));
    EXPECT_FALSE(core.isModified());
}

TEST_F(UndoTest, ScopesWithOneJoinAreOneStep) {
    constexpr DWORD kPreview = 5;
    INode* const a = addNode("a");
    INode* const b = addNode("b");
    const auto preview = [&](bool hideA, bool hideB) {
        UndoScope scope("preview", kPreview);
        a->Hide(hideA);
        b->Hide(hideB);
        scope.Commit();
    };
    preview(true, false);
    core.setModified(false);
    const std::size_t bytes = history.bytes();
    for (int i = 0; i < 1000; ++i) preview(i % 2 == 0, i % 3 == 0);
    EXPECT_EQ(history.stepCount(), 2u);
    EXPECT_LT(history.bytes(), bytes + 1000) << "only what was before the first of them is kept";
    EXPECT_TRUE(core.isModified());
    ASSERT_TRUE(history.undo());
    EXPECT_FALSE(a->IsHidden() || b->IsHidden());
    EXPECT_TRUE(core.isModified()) << "the saved state was in the middle";
    ASSERT_TRUE(history.redo());
    EXPECT_TRUE(b->IsHidden());
    rename(a, "c");
    preview(false, false);
    EXPECT_EQ(history.stepCount(), 4u) << "something else came between";
}

TEST_F(UndoTest, TheOldestStepsGoFirst) {
    INode* const node = addNode("a");
    history.endCommand();
    core.setModified(false);
    const std::string large(10'000, 'x');
    history.setLimit(100'000);
    for (int i = 0; i < 50; ++i) {
        rename(node, (large + std::to_string(i)).c_str());
        EXPECT_LE(history.bytes(), 100'000u);
    }
    EXPECT_GT(history.stepCount(), 5u);
    EXPECT_LT(history.stepCount(), 12u);
    EXPECT_TRUE(history.goTo(0));
    EXPECT_TRUE(core.isModified()) << "what was saved cannot be reached any more";
    EXPECT_NE(std::string(node->GetName()), "a");
    EXPECT_TRUE(history.goTo(history.stepCount()));
    EXPECT_EQ(node->GetName(), large + "49");

    EXPECT_TRUE(IsUndoable(100'000));
    EXPECT_FALSE(IsUndoable(100'001));
    rename(node, std::string(200'000, 'y').c_str());
    rename(node, "short");
    EXPECT_EQ(history.stepCount(), 0u) << "it was too large for the history";

    history.setLimit(0);
    rename(node, "b");
    node->SetName("c");
    EXPECT_EQ(history.stepCount(), 0u);
    EXPECT_TRUE(core.isModified());
    {
        const UndoScope refused("refused");
        node->SetName("d");
    }
    EXPECT_STREQ(node->GetName(), "c");
}

/// Answers the question about large steps.
struct Answers {
    explicit Answers(bool agrees) {
        kiln::setLargeStepQuestion([this, agrees](const std::string& name) {
            asked.push_back(name);
            // As a list of steps does that is painted meanwhile.
            kiln::Core::get()->history().stepCount();
            return agrees;
        });
    }
    ~Answers() { kiln::setLargeStepQuestion({}); }

    std::vector<std::string> asked;
};

TEST_F(UndoTest, RefusingALargeStepLeavesEverythingAsItWas) {
    INode* const a = addNode("a");
    INode* const b = addNode("b");
    host.SelectNode(a);
    history.endCommand();
    history.setLimit(100'000);
    const std::string before = core.sceneText();
    const auto large = [](int i) { return std::string(30'000, 'x') + std::to_string(i); };
    const auto hasOneStep = [&] {
        return core.sceneText() == before && history.doneCount() == 1 && host.GetSelNode(0) == a;
    };
    Answers answers(false);
    {
        UndoScope scope("renames");
        const auto renameALot = [&] {
            for (int i = 0; i < 9; ++i) {
                host.SelectNode(b);
                b->SetName(large(i).c_str());
                a->SetName(large(i).c_str());
            }
        };
        EXPECT_THROW(renameALot(), kiln::StepRefused);
    }
    EXPECT_THAT(answers.asked, ElementsAre("renames"));
    EXPECT_TRUE(hasOneStep());

    // Who goes on all the same is not asked again and has done nothing.
    const auto renameInAnyCase = [&] {
        for (int i = 0; i < 9; ++i) {
            try {
                a->SetName(large(i).c_str());
                b->SetName(large(i).c_str());
            } catch (const std::bad_alloc&) {
            }
        }
        addNode("c");
    };
    answers.asked.clear();
    EXPECT_TRUE(RunUndoable("goes on", [&] {
        renameInAnyCase();
        return true;
    }));
    EXPECT_THAT(answers.asked, ElementsAre("goes on"));
    EXPECT_TRUE(hasOneStep());
    renameInAnyCase();  // outside of scopes
    history.endCommand();
    EXPECT_THAT(answers.asked, ElementsAre("goes on", ""));
    EXPECT_TRUE(hasOneStep());

    // Nobody is told of a deletion that does not come.
    b->AddAppDataChunk({1, 1}, 1, 1, 200'000, hostBlock(std::string(200'000, 'x')));
    history.endCommand();
    const std::string withChunk = core.sceneText();
    const Recorder deletions({NOTIFY_NODE_DELETED});
    EXPECT_THROW(RunUndoable("delete", [&] { return host.DeleteNode(b), true; }),
                 kiln::StepRefused);
    EXPECT_TRUE(deletions.seen.empty());
    EXPECT_EQ(core.sceneText(), withChunk);
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(core.sceneText(), before);
}

TEST_F(UndoTest, ALargeStepIsCarriedOutWhenTheUserAgrees) {
    INode* const node = addNode("a");
    history.endCommand();
    history.setLimit(100'000);
    Answers answers(true);
    UndoScope scope("renames");
    for (int i = 0; i < 9; ++i) {
        node->SetName(std::string(30'000, static_cast<char>('a' + i)).c_str());
        addNode("other")->SetName("another");
    }
    scope.Commit();
    EXPECT_THAT(answers.asked, ElementsAre("renames"));
    EXPECT_EQ(history.stepCount(), 0u);
    EXPECT_EQ(node->GetName(), std::string(30'000, 'i'));
    // Without a history there is nothing to ask about.
    history.setLimit(0);
    rename(node, std::string(200'000, 'y').c_str());
    EXPECT_EQ(answers.asked.size(), 1u);
}

TEST_F(UndoTest, DeletedNodesCountWithAllTheyHave) {
    INode* const top = addNode("top");
    INode* const node = addNode("a", top);
    node->AddAppDataChunk({1, 1}, 1, 1, 5000, hostBlock(std::string(5000, 'x')));
    auto* const tri = new TriObject;
    tri->GetMesh().verts.SetCount(1000);
    node->SetObjectRef(tri);
    EXPECT_GT(UndoBytesOfDeleting(top), 5000 + 1000 * sizeof(Point3));
    history.clear();
    host.DeleteNode(top);
    history.endCommand();
    EXPECT_GT(history.bytes(), 5000 + 1000 * sizeof(Point3));
}

TEST_F(UndoTest, TheTitleKnowsWhatWasSaved) {
    INode* const node = addNode("a");
    rename(node, "b");
    core.setModified(false);
    rename(node, "c");
    EXPECT_TRUE(core.isModified());
    history.undo();
    EXPECT_FALSE(core.isModified());
    history.undo();
    EXPECT_TRUE(core.isModified());
    rename(node, "d");
    history.undo();
    EXPECT_TRUE(core.isModified()) << "what was saved is not on this way";

    UndoScope scope("saves within");
    node->SetName("e");
    core.setModified(false);
    EXPECT_FALSE(core.isModified());
    scope.Commit();
    EXPECT_FALSE(core.isModified());
    history.undo();
    EXPECT_TRUE(core.isModified());

    const UndoScope goesOn("goes on after saving");
    INode* const made = addNode("f");
    made->SetWireColor(1);
    core.setModified(false);
    made->SetWireColor(2);
    EXPECT_TRUE(core.isModified());
}

TEST_F(UndoTest, UnannouncedChangesAreSafeAndNotSaved) {
    INode* const node = addNode("a");
    node->AddAppDataChunk({1, 1}, 1, 1, 4, hostBlock("abcd"));
    history.endCommand();
    AppDataChunk* const chunk = node->GetAppDataChunk({1, 1}, 1, 1);
    ASSERT_TRUE(node->AboutToChangeAppData(*chunk, 1, 3));
    std::memcpy(static_cast<char*>(chunk->data) + 1, "xyz", 3);
    node->NotifyAppDataChanged();
    EXPECT_FALSE(node->AboutToChangeAppData(*chunk, 2, 3)) << "beyond the end";
    EXPECT_FALSE(node->AboutToChangeAppData(*chunk, 5, 0));
    history.endCommand();
    core.setModified(false);

    KILN_free(chunk->data);
    chunk->data = hostBlock("no");
    chunk->length = 2;
    node->NotifyAppDataChanged();
    EXPECT_TRUE(core.isModified());
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(bytesOf(chunk), "no") << "the announced bytes are not there any more";
    EXPECT_TRUE(core.isModified());
    ASSERT_TRUE(history.redo());
    ASSERT_TRUE(history.goTo(0));
}

TEST_F(UndoTest, ChangesWithoutMemoryAreRefusedWhole) {
    INode* const parent = addNode("parent");
    INode* const node = addNode("a");
    parent->SetNodeTM(0, TransMatrix({1, 2, 3}));
    node->AddAppDataChunk({1, 1}, 1, 1, 4, hostBlock("abcd"));
    node->AllocCustAttribContainer()->AppendCustAttrib(new ModelAttrib);
    auto* const map = new BitmapTex;
    host.AddTexmap(map);
    history.endCommand();
    const std::string before = core.sceneText();
    const kiln::AllocationLimit none(0);
    EXPECT_THROW(node->SetName("b"), std::bad_alloc);
    EXPECT_THROW(parent->AttachChild(node), std::bad_alloc);
    EXPECT_THROW(node->SetNodeTM(0, TransMatrix({1, 0, 0})), std::bad_alloc);
    EXPECT_THROW(node->Hide(true), std::bad_alloc);
    EXPECT_THROW(host.DeleteNode(node), std::bad_alloc);
    EXPECT_THROW(host.RemoveTexmap(map), std::bad_alloc);
    EXPECT_EQ(host.CreateObjectNode(nullptr), nullptr);
    EXPECT_FALSE(node->RemoveAppDataChunk({1, 1}, 1, 1));
    EXPECT_FALSE(node->AboutToChangeAppData(*node->GetAppDataChunk(0), 0, 1));
    node->ClearAllAppData();
    EXPECT_FALSE(node->GetCustAttribContainer()->RemoveCustAttrib(0));
    node->DeleteCustAttribContainer();
    EXPECT_FALSE(node->GetObjectRef()->AboutToChange() && parent->GetObjectRef()->AboutToChange());
    EXPECT_EQ(core.sceneText(), before);
    EXPECT_TRUE(host.IsNodeInScene(node));
}

TEST_F(UndoTest, EachSceneHasAHistoryOfItsOwn) {
    INode* const node = addNode("a");
    history.endCommand();
    const std::string text = core.sceneText();
    auto lost = std::make_unique<UndoScope>("lost");
    node->SetName("b");
    core.newScene();
    addNode("c");
    lost.reset();  // of a scene that is not there any more
    EXPECT_THAT(childNames(root = host.GetRootNode()), ElementsAre("c"));
    EXPECT_EQ(history.stepCount(), 1u);
    ASSERT_TRUE(core.loadSceneText(text, "a.kiln"));
    EXPECT_EQ(history.stepCount(), 0u);
    EXPECT_FALSE(core.isModified());
}

TEST_F(UndoTest, ListenersOfARollbackMayLookAtTheHistoryAndMakeSteps) {
    INode* const node = addNode("a");
    history.endCommand();
    Recorder recorder({NOTIFY_NODE_DELETED});
    recorder.onNotification = [&](int, void*) {
        EXPECT_GT(history.stepCount(), 0u);
        rename(node, "b");
    };
    {
        const UndoScope refused("refused");
        addNode("c");
    }
    recorder.onNotification = nullptr;
    EXPECT_THAT(childNames(root), ElementsAre("b"));
    ASSERT_TRUE(history.undo());
    EXPECT_STREQ(node->GetName(), "a");

    history.setLimit(0);
    core.setModified(false);
    {
        const UndoScope refused("refused");
        addNode("c");
    }
    EXPECT_FALSE(core.isModified());
}

TEST_F(UndoTest, ASceneMayGoInTheMiddleOfAStep) {
    INode* const parent = addNode("parent");
    INode* const child = addNode("child", parent);
    history.endCommand();
    root->AttachChild(child);
    history.endCommand();
    {
        const UndoScope scope("deletes the former parent");
        host.DeleteNode(parent);
        core.newScene();
    }
    INode* const other = addNode("other");
    history.endCommand();
    addNode("undone", other);
    ASSERT_TRUE(history.undo());
    const UndoScope scope("deletes its parent");
    host.DeleteNode(other);
    core.newScene();
    EXPECT_EQ(host.GetNodeCount(), 0);
}

TEST_F(UndoTest, TheSceneStaysWhileAnotherIsRead) {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.kiln");
    INode* const node = addNode("a");
    ASSERT_TRUE(core.saveScene(path));
    const auto meanwhile = [&](double, const char*) {
        core.newScene();
        EXPECT_FALSE(core.openImported("a.smp").ok());
        EXPECT_FALSE(history.undo());
        return false;
    };
    EXPECT_EQ(core.loadScene(path, meanwhile).code, IMPEXP_CANCEL);
    EXPECT_TRUE(host.IsNodeInScene(node));
    EXPECT_TRUE(history.undo());
}

TEST_F(UndoTest, AStateThatCannotBeSavedStays) {
    struct Attrib final : CustAttrib {
        Class_ID ClassID() const override { return {1, 2}; }
        std::vector<BYTE> SaveState() const override {
            if (fails) throw std::bad_alloc();
            return {number};
        }
        bool LoadState(const BYTE* bytes, std::size_t) override {
            number = *bytes;
            return true;
        }
        BYTE number = 1;
        bool fails = false;
    };
    auto* const attrib = new Attrib;
    addNode("a")->AllocCustAttribContainer()->AppendCustAttrib(attrib);
    history.endCommand();
    ASSERT_TRUE(attrib->AboutToChange());
    attrib->number = 2;
    attrib->fails = true;
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(attrib->number, 2);
    attrib->fails = false;
    EXPECT_TRUE(history.redo());
    EXPECT_EQ(attrib->number, 2);
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(attrib->number, 1);
}

TEST_F(UndoTest, PlacesAmongManySiblingsAreKept) {
    std::vector<INode*> nodes;
    nodes.reserve(2000);
    for (int i = 0; i < 2000; ++i) nodes.push_back(addNode(("n" + std::to_string(i)).c_str()));
    history.endCommand();
    std::mt19937 random(3);
    std::vector<std::string> states{core.sceneText()};
    for (int round = 0; round < 6; ++round) {
        std::shuffle(nodes.begin(), nodes.end(), random);
        UndoScope scope("round");
        for (int i = 0; i < 300; ++i) {
            host.DeleteNode(nodes.back());
            nodes.pop_back();
            root->AttachChild(nodes[static_cast<std::size_t>(i)]);
        }
        scope.Commit();
        states.push_back(core.sceneText());
    }
    for (std::size_t i = states.size() - 1; i > 0; --i) {
        ASSERT_TRUE(history.undo());
        ASSERT_EQ(core.sceneText(), states[i - 1]);
    }
    ASSERT_TRUE(history.goTo(states.size()));
    EXPECT_EQ(core.sceneText(), states.back());
    history.clear();
    EXPECT_THAT(childNames(root).size(), 200u);
    while (root->NumberOfChildren() > 0) host.DeleteNode(root->GetChildNode(0));
}

}  // namespace
