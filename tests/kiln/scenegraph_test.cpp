#include "fixture.h"

#include <map>
#include <random>

namespace {

using ::testing::ElementsAre;

Matrix3 placed(double angle, const Point3& translation) {
    Matrix3 matrix = ScaleMatrix({1, 2, 0.5}) * RotAngleAxisMatrix(Normalize({1, 2, 3}), angle);
    matrix.SetTrans(translation);
    return matrix;
}

using SceneGraphTest = HostTest;

TEST_F(SceneGraphTest, KeepsWorldPositionWhenAskedTo) {
    INode* const parent = addNode("parent");
    INode* const other = addNode("other");
    INode* const child = addNode("child");
    parent->SetNodeTM(0, placed(1, {10, 20, 30}));
    other->SetNodeTM(0, placed(2, {-5, 0, 7}));
    const Matrix3 position = placed(0.3, {1, 2, 3});
    child->SetNodeTM(0, position);

    ASSERT_TRUE(parent->AttachChild(child, true));
    EXPECT_EQ(child->GetNodeTM(0), position) << "not a bit may change";
    EXPECT_LT(difference(child->GetLocalTM(0) * parent->GetNodeTM(0), position), 1e-12);

    // To and fro a thousand times: no drift.
    for (int i = 0; i < 1000; ++i) {
        other->AttachChild(child, true);
        child->Detach(0, true);
        parent->AttachChild(child, true);
    }
    EXPECT_EQ(child->GetNodeTM(0), position);

    // The kept position is the true one: it moves along with the parent from here.
    parent->SetNodeTM(0, parent->GetNodeTM(0) * TransMatrix({100, 0, 0}));
    EXPECT_LT(difference(child->GetNodeTM(0), position * TransMatrix({100, 0, 0})), 1e-10);
}

TEST_F(SceneGraphTest, KeepsLocalPositionOtherwise) {
    INode* const parent = addNode("parent");
    INode* const child = addNode("child");
    parent->SetNodeTM(0, TransMatrix({10, 0, 0}));
    child->SetNodeTM(0, TransMatrix({1, 0, 0}));
    EXPECT_EQ(child->GetNodeTM(0).GetTrans(), (Point3{1, 0, 0}));

    parent->AttachChild(child, false);
    EXPECT_EQ(child->GetNodeTM(0).GetTrans(), (Point3{11, 0, 0}));
    child->Detach(0, false);
    EXPECT_EQ(child->GetNodeTM(0).GetTrans(), (Point3{1, 0, 0}));
    EXPECT_EQ(child->GetParentNode(), root);
}

TEST_F(SceneGraphTest, MovesGrandchildrenAlong) {
    INode* const top = addNode("top");
    INode* const middle = addNode("middle", top);
    INode* const bottom = addNode("bottom", middle);
    bottom->SetNodeTM(0, TransMatrix({0, 0, 1}));
    middle->SetNodeTM(0, TransMatrix({0, 1, 0}));
    EXPECT_EQ(bottom->GetNodeTM(0).GetTrans(), (Point3{0, 1, 1}));
    top->SetNodeTM(0, TransMatrix({1, 0, 0}));
    EXPECT_EQ(bottom->GetNodeTM(0).GetTrans(), (Point3{1, 1, 1}));
    middle->SetLocalTM(0, ScaleMatrix({2, 2, 2}));
    EXPECT_EQ(bottom->GetNodeTM(0).GetTrans(), (Point3{1, 0, 2}));
}

TEST_F(SceneGraphTest, FlatParentTakesChildWithoutInverse) {
    INode* const flat = addNode("flat");
    flat->SetNodeTM(0, ScaleMatrix({1, 1, 0}));
    INode* const child = addNode("child");
    child->SetNodeTM(0, TransMatrix({1, 2, 3}));
    ASSERT_TRUE(flat->AttachChild(child, true));
    EXPECT_EQ(child->GetLocalTM(0).GetTrans(), (Point3{1, 2, 3}));
    EXPECT_EQ(child->GetNodeTM(0).GetTrans(), (Point3{1, 2, 0}));
}

TEST_F(SceneGraphTest, RefusesCyclesAndTheRoot) {
    INode* const top = addNode("top");
    INode* const middle = addNode("middle", top);
    INode* const bottom = addNode("bottom", middle);
    EXPECT_FALSE(bottom->AttachChild(top));
    EXPECT_FALSE(top->AttachChild(top));
    EXPECT_FALSE(top->AttachChild(root));
    EXPECT_FALSE(top->AttachChild(nullptr));
    host.DeleteNode(root);
    root->Detach(0);
    root->SetName("other");
    root->SetNodeTM(0, TransMatrix({1, 1, 1}));
    EXPECT_EQ(host.GetNodeCount(), 3);
    EXPECT_EQ(top->GetParentNode(), root);
    EXPECT_EQ(bottom->GetParentNode(), middle);
    EXPECT_STREQ(root->GetName(), "Scene Root");
    EXPECT_TRUE(root->GetNodeTM(0).IsIdentity());
}

TEST_F(SceneGraphTest, ChildOrderFollowsAttachment) {
    INode* const parent = addNode("parent");
    INode* const a = addNode("a", parent);
    INode* const b = addNode("b", parent);
    INode* const c = addNode("c", parent);
    EXPECT_THAT(childNames(parent), ElementsAre("a", "b", "c"));
    parent->AttachChild(a);  // again: to the end
    EXPECT_THAT(childNames(parent), ElementsAre("b", "c", "a"));
    EXPECT_EQ(parent->GetChildIndex(a), 2);

    // Reordering as a plug-in does it.
    for (INode* const child : {a, b, c}) child->Detach(0, true);
    EXPECT_EQ(parent->NumberOfChildren(), 0);
    for (INode* const child : {c, a, b}) parent->AttachChild(child, true);
    EXPECT_THAT(childNames(parent), ElementsAre("c", "a", "b"));
    EXPECT_EQ(parent->GetChildNode(3), nullptr);
    EXPECT_EQ(parent->GetChildNode(-1), nullptr);
    EXPECT_EQ(parent->GetChildIndex(root), -1);
    EXPECT_EQ(root->GetChildIndex(a), -1);
}

// Child lists lie in blocks; every way of taking children out must keep order and indices.
TEST_F(SceneGraphTest, LongChildListsKeepOrderWhileNodesLeave) {
    INode* const parent = addNode("parent");
    INode* const shelf = addNode("shelf");
    std::vector<INode*> expected;
    expected.reserve(2000);
    for (int i = 0; i < 2000; ++i) expected.push_back(addNode("n", parent));

    unsigned seed = 1;
    while (!expected.empty()) {
        seed = seed * 1664525u + 1013904223u;
        const std::size_t at = (seed >> 8) % expected.size();
        ASSERT_EQ(parent->GetChildNode(static_cast<int>(at)), expected[at]);
        ASSERT_EQ(parent->GetChildIndex(expected[at]), static_cast<int>(at));
        shelf->AttachChild(expected[at]);
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(at));
        if (seed % 7 == 0) {  // some come back, at the end
            INode* const back = shelf->GetChildNode(0);
            parent->AttachChild(back);
            expected.push_back(back);
        }
        if (expected.size() % 100 != 0) continue;
        for (std::size_t i = 0; i < expected.size(); ++i)
            ASSERT_EQ(parent->GetChildNode(static_cast<int>(i)), expected[i]);
        for (std::size_t i = expected.size(); i-- > 0;)
            ASSERT_EQ(parent->GetChildNode(static_cast<int>(i)), expected[i]);
    }
    EXPECT_EQ(parent->NumberOfChildren(), 0);
    EXPECT_EQ(shelf->NumberOfChildren(), 2000);
}

TEST_F(SceneGraphTest, DeletingTakesTheSubtreeOnce) {
    INode* const top = addNode("top");
    INode* const middle = addNode("middle", top);
    addNode("bottom", middle);
    INode* const stays = addNode("stays");
    host.SelectNode(middle);
    host.SelectNode(stays, false);
    const DWORD handle = middle->GetHandle();

    std::vector<std::string> deleted;
    Recorder recorder({NOTIFY_NODE_DELETED});
    recorder.onNotification = [&](int, void* parameter) {
        auto* const node = static_cast<INode*>(parameter);
        deleted.emplace_back(node->GetName());
        EXPECT_NE(node->GetParentNode(), nullptr) << "the subtree is still in place";
        // What is on its way out cannot be moved, deleted or given children.
        EXPECT_FALSE(stays->AttachChild(node));
        EXPECT_FALSE(node->AttachChild(stays));
        node->Detach(0);
        host.DeleteNode(stays);
    };
    host.DeleteNode(top);
    EXPECT_THAT(deleted, ElementsAre("top", "middle", "bottom"));
    EXPECT_EQ(host.GetNodeCount(), 1);
    EXPECT_EQ(host.GetSelNodeCount(), 1);
    EXPECT_EQ(host.GetSelNode(0), stays);
    EXPECT_EQ(host.GetINodeByName("bottom"), nullptr);
    EXPECT_EQ(host.GetINodeByHandle(handle), nullptr);
    EXPECT_FALSE(host.IsNodeInScene(middle));
    host.DeleteNode(middle);  // a stale pointer is not looked into
    stays->Delete(0);
    EXPECT_EQ(host.GetNodeCount(), 0);
}

TEST_F(SceneGraphTest, InstancesShareTheirObjectUntilTheLastGoes) {
    static int alive = 0;
    struct Counted : HelperObject {
        Counted() { ++alive; }
        ~Counted() override { --alive; }
        Class_ID ClassID() const override { return {1, 2}; }
        const char* GetObjectName() const override { return "Counted"; }
        Box3 GetLocalBoundBox(TimeValue) const override { return {}; }
    };
    auto* const object = new Counted;
    INode* const first = host.CreateObjectNode(object);
    INode* const second = host.CreateObjectNode(object);
    EXPECT_STREQ(first->GetName(), "Counted001");
    EXPECT_STREQ(second->GetName(), "Counted002");
    host.DeleteNode(first);
    EXPECT_EQ(second->EvalWorldState(0).obj, object);
    second->SetObjectRef(new DummyObject);
    EXPECT_EQ(alive, 1) << "an undo could bring it back";
    core.history().clear();
    EXPECT_EQ(alive, 0);
}

TEST_F(SceneGraphTest, NodesOfOneNameAreFoundInTurn) {
    INode* const first = addNode("same");
    INode* const second = addNode("same");
    INode* const third = addNode("same");
    EXPECT_EQ(host.GetINodeByName("same"), first);
    first->SetName("changed");
    EXPECT_EQ(host.GetINodeByName("same"), second);
    host.DeleteNode(second);
    EXPECT_EQ(host.GetINodeByName("same"), third);
    third->SetName(
        "\xFF"
        "bad\xC0\x80"
        "\xE6\xB0\xB4");
    EXPECT_STREQ(third->GetName(),
                 "\xEF\xBF\xBD"
                 "bad\xEF\xBF\xBD\xEF\xBF\xBD\xE6\xB0\xB4");
}

// Nodes come, go and are renamed among few names; each name must always lead to the node that has
// had it longest, and a node that went must be known as gone, though another may lie at its place.
TEST_F(SceneGraphTest, NamesLeadToTheirFirstNodeWhateverHappens) {
    std::mt19937 random(7);
    std::vector<std::string> names{"", "a", "node", "node with a much longer name than others"};
    for (int i = 0; i < 300; ++i) names.push_back(std::string("p").append(std::to_string(i)));
    for (int i = 0; i < 300; i += 10) names.push_back(std::to_string(i) + "0");
    const auto anyName = [&] { return names[random() % names.size()]; };
    std::map<std::string, std::vector<INode*>> named;
    std::vector<INode*> nodes;
    for (int step = 0; step < 20'000; ++step) {
        const auto which = random() % 8;
        if (nodes.empty() || which < 4) {
            const std::string name = anyName();
            nodes.push_back(addNode(name.c_str()));
            named[name].push_back(nodes.back());
            continue;
        }
        std::swap(nodes[random() % nodes.size()], nodes.back());
        INode* const node = nodes.back();
        const std::string before = node->GetName();
        const std::string after = which < 5 ? anyName() : before;
        if (which >= 5) {
            host.DeleteNode(node);
            nodes.pop_back();
            ASSERT_FALSE(host.IsNodeInScene(node));
        } else {
            node->SetName(after.c_str());
        }
        if (which >= 5 || after != before) std::erase(named[before], node);
        if (after != before) named[after].push_back(node);
        for (const std::string& name : {before, after, anyName()}) {
            const std::vector<INode*>& bearers = named[name];
            ASSERT_EQ(host.GetINodeByName(name.c_str()),
                      bearers.empty() ? nullptr : bearers.front())
                << name;
        }
    }
    EXPECT_EQ(host.GetNodeCount(), static_cast<int>(nodes.size()));
}

TEST_F(SceneGraphTest, SelectionKeepsItsOrder) {
    INode* const a = addNode("a");
    INode* const b = addNode("b");
    INode* const c = addNode("c");
    Recorder recorder({NOTIFY_SELECTION_CHANGED});
    host.SelectNode(c);
    host.SelectNode(a, false);
    host.SelectNode(a, false);
    host.SelectNode(b, false);
    host.SelectNode(root, false);
    host.DeSelectNode(a);
    EXPECT_EQ(host.GetSelNodeCount(), 2);
    EXPECT_EQ(host.GetSelNode(0), c);
    EXPECT_EQ(host.GetSelNode(1), b);
    EXPECT_EQ(host.GetSelNode(2), nullptr);
    EXPECT_FALSE(a->Selected());
    EXPECT_TRUE(b->Selected());
    EXPECT_EQ(recorder.seen.size(), 4u) << "only what changes something is told";
    host.SelectNode(b);
    host.SelectNode(b);
    host.ClearNodeSelection();
    host.ClearNodeSelection();
    EXPECT_EQ(recorder.seen.size(), 6u);
}

TEST_F(SceneGraphTest, GroupsGatherAndDissolve) {
    INode* const parent = addNode("parent");
    parent->SetNodeTM(0, TransMatrix({5, 5, 5}));
    INode* const a = addNode("a", parent);
    INode* const b = addNode("b", parent);
    INode* const below = addNode("below", a);
    a->SetNodeTM(0, TransMatrix({0, 0, 0}));
    b->SetNodeTM(0, TransMatrix({10, 20, 30}));
    INode* const head = host.GroupNodes({a, below, b, a, nullptr, root});
    ASSERT_NE(head, nullptr);
    EXPECT_STREQ(head->GetName(), "Group001");
    EXPECT_TRUE(head->IsGroupHead());
    EXPECT_FALSE(head->IsGroupMember());
    EXPECT_EQ(head->GetParentNode(), parent);
    EXPECT_THAT(childNames(head), ElementsAre("a", "b"));
    EXPECT_TRUE(a->IsGroupMember());
    EXPECT_FALSE(below->IsGroupMember());
    EXPECT_EQ(head->GetNodeTM(0).GetTrans(), (Point3{5, 10, 15}));
    EXPECT_EQ(b->GetNodeTM(0).GetTrans(), (Point3{10, 20, 30}));

    EXPECT_FALSE(host.UngroupNode(a));
    EXPECT_TRUE(host.UngroupNode(head));
    EXPECT_THAT(childNames(parent), ElementsAre("a", "b"));
    EXPECT_FALSE(b->IsGroupMember());
    EXPECT_EQ(b->GetNodeTM(0).GetTrans(), (Point3{10, 20, 30}));
    EXPECT_EQ(host.GroupNodes({}), nullptr);
}

// A recursion anywhere would overflow the stack here, and a walk per node would not end in time.
TEST_F(SceneGraphTest, DeepChainsAndLongSiblingListsWork) {
    constexpr int kMany = 100000;
    INode* const top = addNode("top");
    INode* deepest = top;
    for (int i = 0; i < kMany; ++i) deepest = addNode("deep", deepest);
    top->SetNodeTM(0, TransMatrix({1, 0, 0}));
    EXPECT_EQ(deepest->GetNodeTM(0).GetTrans(), (Point3{1, 0, 0}));

    INode* const wide = addNode("wide");
    wide->SetNodeTM(0, TransMatrix({0, 1, 0}));
    for (int i = 0; i < kMany; ++i) addNode("sibling", wide);
    Tab<INode*> children;
    for (int i = 0; i < wide->NumberOfChildren(); ++i) children.Append(wide->GetChildNode(i));
    for (INode* const child : children) child->Detach(0, true);
    for (INode* const child : children) wide->AttachChild(child, true);
    EXPECT_EQ(wide->NumberOfChildren(), kMany);
    EXPECT_EQ(wide->GetChildNode(kMany - 1), children[kMany - 1]);
    for (int i = 0; i < kMany / 2; ++i) host.DeleteNode(wide->GetChildNode(0));
    EXPECT_EQ(wide->GetChildNode(0), children[kMany / 2]);

    const std::string text = core.sceneText();
    host.DeleteNode(top);
    EXPECT_EQ(host.GetNodeCount(), 1 + kMany / 2);
    ASSERT_TRUE(core.loadSceneText(text, "deep.kiln"));
    EXPECT_EQ(host.GetNodeCount(), 2 + kMany + kMany / 2);
}

TEST_F(SceneGraphTest, ASubtreeIsWalkedParentsFirstAndAsFarAsAsked) {
    INode* const a = addNode("a");
    INode* const b = addNode("b", a);
    addNode("c", b);
    addNode("d", a);
    addNode("e");
    std::string names;
    const auto walked = [&](INode* top, const std::string& prune, const std::string& end) {
        names.clear();
        const bool whole = ForEachInSubtree(top, [&](INode& node) {
            names += node.GetName();
            return node.GetName() == end     ? WalkStep::kEnd
                   : node.GetName() == prune ? WalkStep::kPastThis
                                             : WalkStep::kOn;
        });
        return names + (whole ? "" : "!");
    };
    EXPECT_EQ(walked(a, "", ""), "abcd");
    EXPECT_EQ(walked(a, "b", ""), "abd");
    EXPECT_EQ(walked(a, "a", ""), "a");
    EXPECT_EQ(walked(a, "", "c"), "abc!");
    EXPECT_EQ(walked(a, "", "a"), "a!");
    EXPECT_EQ(walked(nullptr, "", ""), "");
    int count = 0;
    EXPECT_TRUE(ForEachInSubtree(root, [&](INode&) { ++count; }));
    EXPECT_EQ(count, 6);

    INode* deep = a;
    for (int i = 0; i < 100'000; ++i) {
        INode* const next = addNode("n");
        deep->AttachChild(next, false);
        deep = next;
    }
    count = 0;
    ForEachInSubtree(a, [&](INode&) { ++count; });
    EXPECT_EQ(count, 100'004);
}

TEST_F(SceneGraphTest, AConvertedObjectIsFreedUnlessItIsTheSource) {
    const ConvertedObject none(nullptr, 0, TRIOBJ_CLASS_ID);
    EXPECT_EQ(none.get(), nullptr);
    DummyObject dummy;
    const ConvertedObject noMesh(&dummy, 0, TRIOBJ_CLASS_ID);
    EXPECT_EQ(noMesh.get(), nullptr);
    BoxObject box;
    const ConvertedObject made(&box, 0, TRIOBJ_CLASS_ID);  // leaks unless it is freed
    ASSERT_NE(made.get(), nullptr);
    EXPECT_NE(made.get(), &box);
    const ConvertedObject same(&box, 0, BOXOBJ_CLASS_ID);  // not to be freed
    EXPECT_EQ(same.get(), &box);
}

}  // namespace
