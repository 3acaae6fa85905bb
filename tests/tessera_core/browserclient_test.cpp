#include "scene.h"

#include <quillon/fltinstance.h>
#include <quillon/fltopcode.h>
#include <tessera/browserclient.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <map>

namespace {

using tessera::BrowserEvent;
using tessera::BrowserItem;

class BrowserClientTest : public SceneTest {
protected:
    /// An earlier test may have left its handlers registered.
    void open() {
        aviary.Browser();
        browser.sceneChanges = 0;
    }

    RecordingBrowser& browser = recordingBrowser();

    BrowserItem item(const char* name) const { return browser.find(name); }

    void send(BrowserEvent event, const char* first, const char* second = nullptr,
              std::uintptr_t argument = 0, std::uintptr_t argument2 = 0) const {
        browser.send(event, item(first), second ? item(second) : nullptr, argument, argument2);
    }
};

INode* addInstance(INode* node, FltInstance&& record, int number) {
    record.instanceNumber = static_cast<std::int16_t>(number);
    EXPECT_TRUE(fltPutRecord(node, record));
    return node;
}

TEST_F(BrowserClientTest, OpensFilledAndFollowsTheSceneUntilClosed) {
    INode* const a = add(nullptr, "a");
    add(a, "b");
    add(nullptr, "c");
    open();
    EXPECT_TRUE(browser.shown);
    EXPECT_EQ(browser.outline(), "Scene Root(a(b),c)");
    EXPECT_FALSE(AcceleratorsEnabled());

    a->SetName("renamed");
    EXPECT_EQ(browser.sceneChanges, 1);
    browser.send(BrowserEvent::kRebuild);
    EXPECT_EQ(browser.outline(), "Scene Root(renamed(b),c)");

    browser.send(BrowserEvent::kClosed);
    EXPECT_TRUE(AcceleratorsEnabled());
    a->SetName("again");
    EXPECT_EQ(browser.sceneChanges, 1);

    // Opening it twice must not make it hear everything twice.
    open();
    open();
    a->SetName("third");
    EXPECT_EQ(browser.sceneChanges, 1);
    browser.send(BrowserEvent::kClosed);
}

// Nothing else tells of an attribute that is what it was again.
TEST_F(BrowserClientTest, AnUndoneAttributeMakesTheFormStale) {
    INode* const a = add(nullptr, "a");
    kiln::History& history = kiln::Core::get()->history();
    history.endCommand();
    open();
    ASSERT_TRUE(fltPutComment(a, "new"));
    EXPECT_EQ(browser.sceneChanges, 0);
    ASSERT_TRUE(history.undo());
    EXPECT_EQ(browser.sceneChanges, 1);
    ASSERT_TRUE(history.redo());
    EXPECT_EQ(browser.sceneChanges, 2);
    browser.send(BrowserEvent::kClosed);
    history.undo();
    EXPECT_EQ(browser.sceneChanges, 2) << "a closed one does not follow";
}

TEST_F(BrowserClientTest, ARefusedFormIsNotFilledShownOrFollowed) {
    INode* const a = add(nullptr, "a");
    open();
    browser.send(BrowserEvent::kClosed);
    browser = RecordingBrowser{};
    for (const auto refusal : {tessera::kBrowserRefused, tessera::kBrowserNoMemory,
                               tessera::kBrowserDialogFailed, tessera::kBrowserFormMissing}) {
        browser.refusal = refusal;
        browser.exists = true;  // so that it would take what it were given
        aviary.Browser();
        a->SetName((std::string(a->GetName()) + "x").c_str());
        EXPECT_TRUE(AcceleratorsEnabled());
        EXPECT_EQ(browser.outline(), "");
        EXPECT_FALSE(browser.shown);
        EXPECT_EQ(browser.sceneChanges, 0);
    }
}

TEST_F(BrowserClientTest, ItsOwnEditsDoNotMakeTheTreeStale) {
    INode* const group = add(nullptr, "group");
    INode* const child = add(nullptr, "child");
    Matrix3 moved;
    moved.SetTrans({1, 2, 3});
    group->SetNodeTM(0, moved);
    open();
    send(BrowserEvent::kRename, "child", nullptr, reinterpret_cast<std::uintptr_t>("塔楼"));
    EXPECT_STREQ(child->GetName(), "塔楼");
    send(BrowserEvent::kAttach, "child", "group");
    EXPECT_EQ(child->GetParentNode(), group);
    EXPECT_TRUE(child->GetNodeTM(0) == Matrix3()) << "its place in the world stays";
    EXPECT_EQ(browser.outline(), "Scene Root(group(塔楼))");
    send(BrowserEvent::kCreate, "group", nullptr, 73, 1580);
    ASSERT_EQ(group->NumberOfChildren(), 2);
    EXPECT_TRUE(aviary.IsOfType(group->GetChildNode(1), "LOD"));
    EXPECT_EQ(browser.outline(),
              std::string("Scene Root(group(塔楼,") + group->GetChildNode(1)->GetName() + "))");
    EXPECT_EQ(browser.sceneChanges, 0);
    child->SetName("outside");
    EXPECT_EQ(browser.sceneChanges, 1) << "other changes are seen again afterwards";
}

TEST_F(BrowserClientTest, ATargetThatHeadsAHostGroupTakesTheNodeIn) {
    INode* const head = add(nullptr, "head");
    head->SetGroupHead(true);
    INode* const child = add(nullptr, "child");
    open();
    send(BrowserEvent::kAttach, "child", "head");
    EXPECT_TRUE(child->IsGroupMember());
    EXPECT_EQ(browser.beeps, 0);
    send(BrowserEvent::kAttach, "head", "child");
    EXPECT_EQ(browser.beeps, 1);
    EXPECT_EQ(head->GetParentNode(), host.GetRootNode()) << "below itself is refused";
    EXPECT_EQ(browser.outline(), "Scene Root(head(child))");
}

TEST_F(BrowserClientTest, AReferenceIsNotAttachedIntoItsDefinition) {
    INode* const tree = addInstance(add(nullptr, "tree", kFltInstanceDef), FltInstanceDef(), 7);
    INode* const group = add(nullptr, "group", 2);
    addInstance(add(group, "use", kFltInstanceRef), FltInstanceRef(), 7);
    open();
    for (const char* held : {"use", "group"}) send(BrowserEvent::kAttach, held, "tree");
    EXPECT_EQ(tree->NumberOfChildren(), 0);
    EXPECT_EQ(browser.beeps, 2);
    send(BrowserEvent::kAttach, "tree", "group");
    EXPECT_EQ(tree->GetParentNode(), group);
    EXPECT_EQ(browser.beeps, 2);
}

TEST_F(BrowserClientTest, MovesAmongSiblings) {
    INode* const parent = add(nullptr, "p");
    for (const char* name : {"a", "b", "c", "d"}) add(parent, name);
    const auto order = [&] { return childNames(parent); };
    open();
    send(BrowserEvent::kMoveDown, "a", "p");
    EXPECT_EQ(order(), "b,a,c,d");
    EXPECT_EQ(browser.outline(), "Scene Root(p(b,a,c,d))");
    ASSERT_TRUE(browser.selected);
    EXPECT_EQ(browser.selected->text, "a");
    const auto refused = [&](BrowserEvent event, const char* first, const char* parentItem) {
        const std::string before = order();
        const int beeps = browser.beeps;
        send(event, first, parentItem);
        EXPECT_EQ(order(), before) << first;
        EXPECT_EQ(browser.beeps, beeps + 1) << first;
    };
    refused(BrowserEvent::kMoveUp, "b", "p");    // already first
    refused(BrowserEvent::kMoveDown, "d", "p");  // already last
    send(BrowserEvent::kMoveUp, "d", "p");
    EXPECT_EQ(order(), "b,a,d,c");
    refused(BrowserEvent::kMoveUp, "d", nullptr);  // no parent
    refused(BrowserEvent::kMoveDown, "d", "a");    // another one's child
    EXPECT_EQ(browser.beeps, 4);

    const BrowserItem block[] = {item("a"), item("c"), nullptr};
    const auto list = reinterpret_cast<std::uintptr_t>(block);
    browser.send(BrowserEvent::kMoveUpTogether, item("a"), item("p"), list);
    EXPECT_EQ(order(), "a,b,c,d");
    const BrowserItem last[] = {item("b"), item("c"), nullptr};
    browser.send(BrowserEvent::kMoveDownTogether, item("b"), item("p"),
                 reinterpret_cast<std::uintptr_t>(last));
    EXPECT_EQ(order(), "a,d,b,c");
    const BrowserItem end[] = {item("c"), nullptr};
    browser.send(BrowserEvent::kMoveDownTogether, item("b"), item("p"),
                 reinterpret_cast<std::uintptr_t>(end));
    EXPECT_EQ(order(), "a,d,b,c") << "a block at the end stays";
    EXPECT_EQ(browser.beeps, 5);
    refused(BrowserEvent::kMoveUpTogether, "a", "p");
    EXPECT_EQ(browser.sceneChanges, 0);
}

TEST_F(BrowserClientTest, EachEditIsOneStepAndEachRefusalNone) {
    INode* const parent = add(nullptr, "p");
    for (const char* name : {"a", "b", "c"}) add(parent, name);
    open();
    kiln::History& history = kiln::Core::get()->history();
    const auto text = [] { return kiln::Core::get()->sceneText(); };
    const auto makesStep = [&](const char* name, const std::function<void()>& edit) {
        history.clear();
        const std::string before = text();
        edit();
        ASSERT_EQ(history.stepCount(), 1u) << name;
        EXPECT_EQ(history.stepName(0), name);
        const std::string after = text();
        ASSERT_TRUE(history.undo());
        EXPECT_EQ(text(), before) << name;
        ASSERT_TRUE(history.redo());
        EXPECT_EQ(text(), after) << name;
        browser.send(BrowserEvent::kRebuild);
    };
    makesStep("下移", [&] { send(BrowserEvent::kMoveDown, "a", "p"); });
    makesStep("上移", [&] { send(BrowserEvent::kMoveUp, "c", "p"); });
    makesStep("改变父节点", [&] { send(BrowserEvent::kAttach, "a", "b"); });
    makesStep("创建", [&] { send(BrowserEvent::kCreate, "b", nullptr, 2, 1580); });
    makesStep("重命名", [&] {
        send(BrowserEvent::kRename, "b", "p", reinterpret_cast<std::uintptr_t>("B"));
    });
    history.clear();
    send(BrowserEvent::kMoveUp, "B", "p");
    send(BrowserEvent::kAttach, "p", "a");
    EXPECT_EQ(history.stepCount(), 0u);

    // The tree is stale after an undo, as after any change from outside.
    send(BrowserEvent::kRename, "a", "B", reinterpret_cast<std::uintptr_t>("A"));
    const int before = browser.sceneChanges;
    ASSERT_TRUE(history.undo());
    EXPECT_GT(browser.sceneChanges, before);
}

bool sameBits(const Matrix3& a, const Matrix3& b) {
    using Bits = std::array<std::byte, sizeof a>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

Matrix3 rotated() {
    return RotAngleAxisMatrix(Normalize({1, 2, 3}), 0.7) * TransMatrix({6378137.3, 0.1, -5});
}

TEST_F(BrowserClientTest, MovedSiblingsKeepTheirLocalTransformsBitForBit) {
    const double nan = std::nan("");
    const struct {
        const char* what;
        Matrix3 parent;
    } cases[] = {
        {"rotated", rotated()},
        {"skewed", {{1, 0.3, 0}, {0, 1.0 / 3, 0.7}, {0.1, 0, 1e-3}, {1, 2, 3}}},
        {"singular", {{1, 2, 3}, {2, 4, 6}, {0, 0, 1}, {7, 8, 9}}},
        {"no numbers", {{nan, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        core.newScene();
        INode* const parent = add(add(nullptr, "top"), "p");
        parent->SetLocalTM(0, c.parent);
        parent->GetParentNode()->SetLocalTM(0, rotated());
        std::map<INode*, Matrix3> locals;
        locals[add(parent, "a")] = Matrix3();
        locals[add(parent, "b")] = rotated();
        locals[add(parent, "c")] = Matrix3({1, 0, 0}, {0, -0.0, 0}, {0, 0, 1e-300}, {0.1, 0, 0});
        for (const auto& [node, local] : locals) node->SetLocalTM(0, local);
        open();
        send(BrowserEvent::kMoveDown, "a", "p");
        send(BrowserEvent::kMoveUp, "c", "p");
        EXPECT_EQ(childNames(parent), "b,c,a");
        for (const auto& [node, local] : locals)
            EXPECT_TRUE(sameBits(node->GetLocalTM(0), local)) << node->GetName();
    }
}

// While the siblings are moved, a handler of someone else's links their parent below one of them.
// The move is refused then, and all of it is taken back.
TEST_F(BrowserClientTest, ASiblingThatTheHostRefusesLosesNoOther) {
    struct Meddler {
        INode* parent;
        INode* child;
    } meddler{add(nullptr, "p"), nullptr};
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        INode* const child = add(meddler.parent, name);
        if (*name == 'c') meddler.child = child;
    }
    meddler.parent->SetLocalTM(0, rotated());
    open();
    const NOTIFYPROC meddle = [](void* param, NotifyInfo* info) {
        auto& [parent, child] = *static_cast<Meddler*>(param);
        const auto* const moved = static_cast<INode*>(info->callParam);
        if (moved->GetParentNode() == parent && child->GetParentNode() != parent &&
            parent->GetParentNode() != child)
            child->AttachChild(parent);
    };
    ASSERT_TRUE(RegisterNotification(meddle, &meddler, NOTIFY_NODE_LINKED));
    send(BrowserEvent::kMoveDown, "a", "p");
    UnRegisterNotification(meddle, &meddler, NOTIFY_NODE_LINKED);
    EXPECT_EQ(childNames(host.GetRootNode()), "p");
    EXPECT_EQ(childNames(meddler.parent), "a,b,c,d,e") << "in their old order";
    EXPECT_TRUE(sameBits(meddler.parent->GetLocalTM(0), rotated()));
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(sameBits(meddler.parent->GetChildNode(i)->GetLocalTM(0), Matrix3())) << i;
}

TEST_F(BrowserClientTest, MovesAtTheTopLevelToo) {
    for (const char* name : {"a", "b", "c"}) add(nullptr, name);
    open();
    send(BrowserEvent::kMoveDown, "a", "Scene Root");
    EXPECT_EQ(childNames(host.GetRootNode()), "b,a,c");
    EXPECT_EQ(browser.outline(), "Scene Root(b,a,c)");
}

TEST_F(BrowserClientTest, AnswersWhatTheBrowserAsks) {
    INode* const a = add(nullptr, "a");
    INode* const b = add(a, "b");
    open();
    NotingWindow window;
    core.setHostWindow(&window);
    core.setTime(480);
    host.SelectNode(b);
    browser.send(BrowserEvent::kSelectInHost);
    EXPECT_EQ(host.GetSelNodeCount(), 0);
    send(BrowserEvent::kSelectInHost, "a");
    send(BrowserEvent::kSelectInHost, "b");
    send(BrowserEvent::kSelectInHost, "Scene Root");  // which hosts cannot select
    EXPECT_EQ(window.redraws, (std::vector<TimeValue>{480, 480, 480, 480}));
    browser.send(BrowserEvent::kRedraw);
    EXPECT_EQ(window.redraws.size(), 5U);
    core.setHostWindow(nullptr);

    std::uint32_t count = 99;
    const auto countSlot = reinterpret_cast<std::uintptr_t>(&count);
    EnableAccelerators();
    browser.send(BrowserEvent::kCountSelected, nullptr, nullptr, countSlot);
    EXPECT_FALSE(AcceleratorsEnabled());
    ASSERT_EQ(count, 2u);
    EnableAccelerators();
    browser.send(BrowserEvent::kActivated);
    EXPECT_FALSE(AcceleratorsEnabled());
    for (const std::uintptr_t index : {0U, 1U, 2U}) {
        auto handle = tessera::NodeHandle{1};
        browser.send(BrowserEvent::kGetSelected, nullptr, nullptr, index,
                     reinterpret_cast<std::uintptr_t>(&handle));
        INode* const expected[] = {a, b, nullptr};
        EXPECT_EQ(handle, reinterpret_cast<tessera::NodeHandle>(expected[index])) << index;
    }
    browser.send(BrowserEvent::kGetSelected);
    send(BrowserEvent::kCountSwitchChildren, "a", nullptr, countSlot);
    EXPECT_EQ(count, 1u);
    for (const int code : {4, 5, 6, 12, 20, 21}) {
        count = 1;
        browser.send(static_cast<BrowserEvent>(code), nullptr, nullptr, countSlot);
        EXPECT_EQ(count, 0u) << code;
        browser.send(static_cast<BrowserEvent>(code));
    }
    count = 1;
    for (const int code : {22, 23, 1000}) {
        browser.send(static_cast<BrowserEvent>(code), nullptr, nullptr, countSlot);
        EXPECT_EQ(count, 1u) << code;
    }
}

TEST_F(BrowserClientTest, CreatesWhatItIsToldTo) {
    host.SelectNode(add(nullptr, "selected"));
    add(nullptr, "parent");
    open();
    // The browser sends opcodes extended by their sign.
    const struct {
        std::uintptr_t opcode;
        std::uint16_t kind;
    } cases[] = {{63, 63}, {static_cast<std::uintptr_t>(-2), 0xFFFE}};
    for (const auto& c : cases) {
        send(BrowserEvent::kCreate, "parent", nullptr, c.opcode, 1420);
        INode* const parent = host.GetRootNode()->GetChildNode(1);
        INode* const node = parent->GetChildNode(parent->NumberOfChildren() - 1);
        ASSERT_TRUE(node) << "below the item, whatever is selected";
        const BrowserItem made = item("parent")->children.back().get();
        EXPECT_EQ(made->text, node->GetName());
        EXPECT_EQ(made->node, reinterpret_cast<tessera::NodeHandle>(node));
        FltNodeKind kind{};
        std::uint32_t revision = 0;
        EXPECT_TRUE(fltGetKind(node, false, kind) && fltGetParameter(node, revision));
        EXPECT_EQ(kind, FltNodeKind{c.kind});
        EXPECT_EQ(revision, 1420U);
    }
}

TEST_F(BrowserClientTest, LooksIntoNoNodeThatHasGone) {
    INode* const parent = add(nullptr, "parent");
    INode* const doomed = add(parent, "doomed");
    add(doomed, "below");
    add(parent, "stays");
    open();
    host.DeleteNode(doomed);
    std::uint32_t count = 99;
    for (const char* gone : {"doomed", "below"}) {
        send(BrowserEvent::kSelectInHost, gone);
        send(BrowserEvent::kMoveDown, gone, "parent");
        send(BrowserEvent::kMoveUp, "stays", gone);
        send(BrowserEvent::kAttach, gone, "stays");
        send(BrowserEvent::kAttach, "stays", gone);
        send(BrowserEvent::kRename, gone, nullptr, reinterpret_cast<std::uintptr_t>("renamed"));
        send(BrowserEvent::kCreate, gone, nullptr, 2, 1580);
        send(BrowserEvent::kCountSwitchChildren, gone, nullptr,
             reinterpret_cast<std::uintptr_t>(&count));
    }
    EXPECT_EQ(count, 99u);
    EXPECT_EQ(host.GetSelNodeCount(), 0);
    EXPECT_EQ(childNames(host.GetRootNode()), "parent");
    EXPECT_EQ(childNames(parent), "stays");
    EXPECT_EQ(browser.outline(), "Scene Root(parent(doomed(below),stays))") << "until refilled";
    EXPECT_EQ(browser.beeps, 10) << "a move, an attach or a creation that is refused";

    browser.title = "imported.flt";
    core.newScene();
    EXPECT_EQ(browser.title, "") << "the file is no longer what is shown";
    send(BrowserEvent::kRename, "stays", nullptr, reinterpret_cast<std::uintptr_t>("renamed"));
    send(BrowserEvent::kCreate, "parent", nullptr, 2, 1580);
    EXPECT_EQ(host.GetRootNode()->NumberOfChildren(), 0);

    add(nullptr, "new");
    browser.send(BrowserEvent::kRebuild);
    send(BrowserEvent::kRename, "new", nullptr, reinterpret_cast<std::uintptr_t>("renamed"));
    EXPECT_EQ(childNames(host.GetRootNode()), "renamed") << "a refilled tree is trusted again";
}

// Definitions within definitions: each is looked up at once, however many are being listed.
TEST_F(BrowserClientTest, ListsVeryManyDefinitionsOneWithinTheOther) {
    constexpr int kCount = 30'000;
    for (int i = 0; i < kCount; ++i) {
        INode* const definition =
            addInstance(add(nullptr, "d", kFltInstanceDef), FltInstanceDef(), i);
        addInstance(add(definition, "r", kFltInstanceRef), FltInstanceRef(), i + 1);
    }
    open();
    int depth = 0;
    for (const _TREEITEM* at = &browser.top; !at->children.empty(); at = at->children[0].get())
        ++depth;
    EXPECT_EQ(depth, kCount + 2) << "root, definition, and a reference for each definition";
}

TEST_F(BrowserClientTest, FillsAsDeepAsTheSceneIs) {
    constexpr int kDepth = 100'000;
    INode* node = nullptr;
    for (int i = 0; i < kDepth; ++i) node = add(node, "n", kFltGroup);
    open();
    int depth = 0;
    for (const _TREEITEM* at = &browser.top; !at->children.empty(); at = at->children[0].get())
        ++depth;
    EXPECT_EQ(depth, kDepth + 1);
}

TEST_F(BrowserClientTest, AReferenceListsWhatItsDefinitionHolds) {
    INode* const tree = addInstance(add(nullptr, "tree", kFltInstanceDef), FltInstanceDef(), 7);
    add(tree, "trunk");
    // A definition that uses itself must come to an end.
    addInstance(add(tree, "itself", kFltInstanceRef), FltInstanceRef(), 7);
    addInstance(add(nullptr, "use", kFltInstanceRef), FltInstanceRef(), 7);
    add(addInstance(add(nullptr, "lost", kFltInstanceRef), FltInstanceRef(), 8), "own");
    open();
    EXPECT_EQ(browser.outline(),
              "Scene Root(tree(trunk,itself(trunk,itself)),use(trunk,itself),lost(own))");
}

// Each edit is made on one item, and the others of the same node show it as a new filling would.
TEST_F(BrowserClientTest, EditsShowWhereverTheNodesAreListed) {
    INode* const tree = addInstance(add(nullptr, "tree", kFltInstanceDef), FltInstanceDef(), 7);
    INode* const crown = add(tree, "crown", kFltGroup);
    add(crown, "leaf");
    add(tree, "trunk");
    INode* const use = addInstance(add(nullptr, "use", kFltInstanceRef), FltInstanceRef(), 7);
    add(nullptr, "other", kFltGroup);
    add(nullptr, "apple");
    open();
    const BrowserItem listedCrown = browser.top.children[0]->children[1]->children[0].get();
    ASSERT_EQ(listedCrown->text, "crown");
    browser.send(BrowserEvent::kRename, listedCrown, listedCrown->parent,
                 reinterpret_cast<std::uintptr_t>("top"));
    EXPECT_EQ(browser.outline(),
              "Scene Root(tree(top(leaf),trunk),use(top(leaf),trunk),other,apple)");
    send(BrowserEvent::kMoveDown, "top", "tree");
    EXPECT_EQ(browser.outline(),
              "Scene Root(tree(trunk,top(leaf)),use(trunk,top(leaf)),other,apple)");
    send(BrowserEvent::kAttach, "apple", "top");
    EXPECT_EQ(browser.outline(),
              "Scene Root(tree(trunk,top(leaf,apple)),use(trunk,top(leaf,apple)),other)");
    const BrowserItem listedTop = browser.top.children[0]->children[1]->children[1].get();
    browser.send(BrowserEvent::kAttach, listedTop, item("other"));
    EXPECT_EQ(browser.outline(), "Scene Root(tree(trunk),use(trunk),other(top(leaf,apple)))");
    send(BrowserEvent::kCreate, "tree", nullptr, 2, 1580);
    const std::string made = tree->GetChildNode(1)->GetName();
    EXPECT_EQ(browser.outline(), "Scene Root(tree(trunk," + made + "),use(trunk," + made +
                                     "),other(top(leaf,apple)))");
    // What is below the reference itself is not listed.
    send(BrowserEvent::kAttach, "top", "use");
    EXPECT_EQ(crown->GetParentNode(), use);
    EXPECT_EQ(browser.outline(),
              "Scene Root(tree(trunk," + made + "),use(trunk," + made + "),other)");
    EXPECT_EQ(browser.sceneChanges, 0);
}

TEST_F(BrowserClientTest, ADefinitionThatMovesIsFoundFromElsewhere) {
    INode* const first = add(nullptr, "first", kFltHeader);
    INode* const second = add(nullptr, "second", kFltHeader);
    const auto define = [&](INode* database, const char* name, const char* child) {
        INode* const group = add(database, name, 2);
        add(addInstance(add(group, "d", kFltInstanceDef), FltInstanceDef(), 1), child);
    };
    define(first, "g", "a");
    define(second, "h", "b");
    addInstance(add(second, "use", kFltInstanceRef), FltInstanceRef(), 1);
    open();
    EXPECT_EQ(browser.outline(), "Scene Root(first(g(d(a))),second(h(d(b)),use(b)))");
    send(BrowserEvent::kAttach, "h", "first");
    EXPECT_EQ(browser.outline(), "Scene Root(first(g(d(a)),h(d(b))),second(use(a)))");
}

TEST_F(BrowserClientTest, OnlyEditsThatConcernOtherItemsFillTheTreeAnew) {
    INode* const tree = addInstance(add(nullptr, "tree", kFltInstanceDef), FltInstanceDef(), 7);
    add(tree, "trunk");
    addInstance(add(nullptr, "use", kFltInstanceRef), FltInstanceRef(), 7);
    INode* const group = add(nullptr, "group");
    for (const char* name : {"a", "b"}) add(group, name);
    open();
    send(BrowserEvent::kRename, "tree", nullptr, reinterpret_cast<std::uintptr_t>("oak"));
    send(BrowserEvent::kMoveDown, "a", "group");
    send(BrowserEvent::kMoveUp, "trunk", "tree");  // refused, as it is the first
    send(BrowserEvent::kAttach, "b", "a");
    send(BrowserEvent::kAttach, "tree", "use");  // a definition
    EXPECT_EQ(browser.refreshes, 1);
    send(BrowserEvent::kCreate, "group", nullptr, 2, 1580);
    EXPECT_EQ(browser.refreshes, 1);
}

}  // namespace
