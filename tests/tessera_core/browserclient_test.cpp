#include "scene.h"

#include <quillon/fltinstance.h>
#include <tessera/browserclient.h>

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
    browser.send(BrowserEvent::rebuild);
    EXPECT_EQ(browser.outline(), "Scene Root(renamed(b),c)");

    browser.send(BrowserEvent::closed);
    EXPECT_TRUE(AcceleratorsEnabled());
    a->SetName("again");
    EXPECT_EQ(browser.sceneChanges, 1);

    // Opening it twice must not make it hear everything twice.
    open();
    open();
    a->SetName("third");
    EXPECT_EQ(browser.sceneChanges, 1);
    browser.send(BrowserEvent::closed);
}

TEST_F(BrowserClientTest, ItsOwnEditsDoNotMakeTheTreeStale) {
    INode* const group = add(nullptr, "group");
    INode* const child = add(nullptr, "child");
    Matrix3 moved;
    moved.SetTrans(Point3(1, 2, 3));
    group->SetNodeTM(0, moved);
    open();
    send(BrowserEvent::rename, "child", nullptr, reinterpret_cast<std::uintptr_t>("塔楼"));
    EXPECT_STREQ(child->GetName(), "塔楼");
    send(BrowserEvent::attach, "child", "group");
    EXPECT_EQ(child->GetParentNode(), group);
    EXPECT_TRUE(child->GetNodeTM(0) == Matrix3()) << "its place in the world stays";
    EXPECT_EQ(browser.outline(), "Scene Root(group(塔楼))");
    send(BrowserEvent::create, "group", nullptr, 73, 1580);
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
    send(BrowserEvent::attach, "child", "head");
    EXPECT_TRUE(child->IsGroupMember());
    send(BrowserEvent::attach, "head", "child");
    EXPECT_EQ(head->GetParentNode(), host.GetRootNode()) << "below itself is refused";
    EXPECT_EQ(browser.outline(), "Scene Root(head(child))");
}

TEST_F(BrowserClientTest, MovesAmongSiblings) {
    INode* const parent = add(nullptr, "p");
    for (const char* name : {"a", "b", "c", "d"}) add(parent, name);
    const auto order = [&] { return childNames(parent); };
    open();
    send(BrowserEvent::moveDown, "a", "p");
    EXPECT_EQ(order(), "b,a,c,d");
    EXPECT_EQ(browser.outline(), "Scene Root(p(b,a,c,d))");
    ASSERT_TRUE(browser.selected);
    EXPECT_EQ(browser.selected->text, "a");
    send(BrowserEvent::moveUp, "b", "p");  // already first
    EXPECT_EQ(order(), "b,a,c,d");
    send(BrowserEvent::moveUp, "d", "p");
    EXPECT_EQ(order(), "b,a,d,c");
    send(BrowserEvent::moveUp, "d", nullptr);  // no parent
    EXPECT_EQ(order(), "b,a,d,c");

    const BrowserItem block[] = {item("a"), item("c"), nullptr};
    const auto list = reinterpret_cast<std::uintptr_t>(block);
    browser.send(BrowserEvent::moveUpTogether, item("a"), item("p"), list);
    EXPECT_EQ(order(), "a,b,c,d");
    const BrowserItem last[] = {item("b"), item("c"), nullptr};
    browser.send(BrowserEvent::moveDownTogether, item("b"), item("p"),
                 reinterpret_cast<std::uintptr_t>(last));
    EXPECT_EQ(order(), "a,d,b,c");
    const BrowserItem end[] = {item("c"), nullptr};
    browser.send(BrowserEvent::moveDownTogether, item("b"), item("p"),
                 reinterpret_cast<std::uintptr_t>(end));
    EXPECT_EQ(order(), "a,d,b,c") << "a block at the end stays";
    EXPECT_EQ(browser.sceneChanges, 0);
}

// While the siblings are moved, a handler of someone else's links their parent below one of them.
TEST_F(BrowserClientTest, ASiblingThatTheHostRefusesLosesNoOther) {
    struct Meddler {
        INode* parent;
        INode* child;
    } meddler{add(nullptr, "p"), nullptr};
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        INode* const child = add(meddler.parent, name);
        if (*name == 'c') meddler.child = child;
    }
    open();
    const NOTIFYPROC meddle = [](void* param, NotifyInfo* info) {
        auto& [parent, child] = *static_cast<Meddler*>(param);
        const auto* const moved = static_cast<INode*>(info->callParam);
        if (moved->GetParentNode() == parent && child->GetParentNode() != parent &&
            parent->GetParentNode() != child)
            child->AttachChild(parent);
    };
    ASSERT_TRUE(RegisterNotification(meddle, &meddler, NOTIFY_NODE_LINKED));
    send(BrowserEvent::moveDown, "a", "p");
    UnRegisterNotification(meddle, &meddler, NOTIFY_NODE_LINKED);
    EXPECT_EQ(meddler.parent->GetParentNode(), meddler.child);
    EXPECT_EQ(childNames(host.GetRootNode()), "c");
    EXPECT_EQ(childNames(meddler.parent), "a,b,d,e") << "in their old order";
}

TEST_F(BrowserClientTest, MovesAtTheTopLevelToo) {
    for (const char* name : {"a", "b", "c"}) add(nullptr, name);
    open();
    send(BrowserEvent::moveDown, "a", "Scene Root");
    EXPECT_EQ(childNames(host.GetRootNode()), "b,a,c");
    EXPECT_EQ(browser.outline(), "Scene Root(b,a,c)");
}

TEST_F(BrowserClientTest, AnswersWhatTheBrowserAsks) {
    INode* const a = add(nullptr, "a");
    INode* const b = add(a, "b");
    open();
    browser.send(BrowserEvent::selectInHost);
    send(BrowserEvent::selectInHost, "a");
    send(BrowserEvent::selectInHost, "b");
    std::uint32_t count = 99;
    const auto countSlot = reinterpret_cast<std::uintptr_t>(&count);
    browser.send(BrowserEvent::countSelected, nullptr, nullptr, countSlot);
    ASSERT_EQ(count, 2u);
    tessera::NodeHandle handle = 0;
    browser.send(BrowserEvent::getSelected, nullptr, nullptr, 1,
                 reinterpret_cast<std::uintptr_t>(&handle));
    EXPECT_EQ(handle, reinterpret_cast<tessera::NodeHandle>(b));
    send(BrowserEvent::countSwitchChildren, "a", nullptr, countSlot);
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
    browser.send(BrowserEvent::selectInHost);
    EXPECT_EQ(host.GetSelNodeCount(), 0);
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
        send(BrowserEvent::selectInHost, gone);
        send(BrowserEvent::moveDown, gone, "parent");
        send(BrowserEvent::moveUp, "stays", gone);
        send(BrowserEvent::attach, gone, "stays");
        send(BrowserEvent::attach, "stays", gone);
        send(BrowserEvent::rename, gone, nullptr, reinterpret_cast<std::uintptr_t>("renamed"));
        send(BrowserEvent::create, gone, nullptr, 2, 1580);
        send(BrowserEvent::countSwitchChildren, gone, nullptr,
             reinterpret_cast<std::uintptr_t>(&count));
    }
    EXPECT_EQ(count, 99u);
    EXPECT_EQ(host.GetSelNodeCount(), 0);
    EXPECT_EQ(childNames(host.GetRootNode()), "parent");
    EXPECT_EQ(childNames(parent), "stays");
    EXPECT_EQ(browser.outline(), "Scene Root(parent(doomed(below),stays))") << "until refilled";

    core.newScene();
    send(BrowserEvent::rename, "stays", nullptr, reinterpret_cast<std::uintptr_t>("renamed"));
    send(BrowserEvent::create, "parent", nullptr, 2, 1580);
    EXPECT_EQ(host.GetRootNode()->NumberOfChildren(), 0);

    add(nullptr, "new");
    browser.send(BrowserEvent::rebuild);
    send(BrowserEvent::rename, "new", nullptr, reinterpret_cast<std::uintptr_t>("renamed"));
    EXPECT_EQ(childNames(host.GetRootNode()), "renamed") << "a refilled tree is trusted again";
}

INode* addInstance(INode* node, FltInstance&& record, int number) {
    record.instanceNumber = static_cast<std::int16_t>(number);
    EXPECT_TRUE(fltPutRecord(node, record));
    return node;
}

// Definitions within definitions: each is looked up at once, however many are being listed.
TEST_F(BrowserClientTest, ListsVeryManyDefinitionsOneWithinTheOther) {
    constexpr int kCount = 30'000;
    for (int i = 0; i < kCount; ++i) {
        INode* const definition = addInstance(add(nullptr, "d", 62), FltInstanceDef(), i);
        addInstance(add(definition, "r", 61), FltInstanceRef(), i + 1);
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
    for (int i = 0; i < kDepth; ++i) node = add(node, "n", 2);
    open();
    int depth = 0;
    for (const _TREEITEM* at = &browser.top; !at->children.empty(); at = at->children[0].get())
        ++depth;
    EXPECT_EQ(depth, kDepth + 1);
}

TEST_F(BrowserClientTest, AReferenceListsWhatItsDefinitionHolds) {
    const auto instance = [&](INode* parent, const char* name, FltInstance& record, int number) {
        INode* const node = add(parent, name, record.opcode());
        record.instanceNumber = static_cast<std::int16_t>(number);
        EXPECT_TRUE(fltPutRecord(node, record));
        return node;
    };
    FltInstanceDef definition;
    FltInstanceRef reference;
    INode* const tree = instance(nullptr, "tree", definition, 7);
    add(tree, "trunk");
    instance(tree, "itself", reference, 7);  // a definition that uses itself must come to an end
    instance(nullptr, "use", reference, 7);
    add(instance(nullptr, "lost", reference, 8), "own");
    open();
    EXPECT_EQ(browser.outline(),
              "Scene Root(tree(trunk,itself(trunk,itself)),use(trunk,itself),lost(own))");
}

}  // namespace
