#include "scene.h"

#include <set>

namespace {

class NodeCreationTest : public SceneTest {};

TEST_F(NodeCreationTest, EveryKindGetsItsDataAndItsName) {
    const struct {
        bool (IAviaryUtil::*create)();
        const char* prefix;
        const char* type;
    } kKinds[] = {
        {&IAviaryUtil::CreateGroup, "g", "GROUP"},
        {&IAviaryUtil::CreateObject, "o", "OBJECT"},
        {&IAviaryUtil::CreateSwitch, "s", "SWITCH"},
        {&IAviaryUtil::CreateLOD, "l", "LOD"},
        {&IAviaryUtil::CreateDOF, "d", "DOF"},
        {&IAviaryUtil::CreateBSP, "b", "BSP"},
        {&IAviaryUtil::CreateClipRegion, "c", "CLIP_REGION"},
        {&IAviaryUtil::CreateExternalRef, "x", "EXTERNAL_REF"},
        {&IAviaryUtil::CreateLightPoint, "lp", "LIGHT_POINT"},
    };
    std::set<std::string> names;
    for (const auto& kind : kKinds) {
        SCOPED_TRACE(kind.type);
        for (int i = 0; i < 2; ++i) {
            ASSERT_TRUE((aviary.*kind.create)());
            INode* const root = host.GetRootNode();
            INode* const node = root->GetChildNode(root->NumberOfChildren() - 1);
            const std::string name = node->GetName();
            EXPECT_TRUE(names.insert(name).second) << name;
            EXPECT_TRUE(name.starts_with(kind.prefix) && name != kind.prefix) << name;
            EXPECT_TRUE(aviary.HasData(node));
            EXPECT_TRUE(aviary.IsOfType(node, kind.type));
            EXPECT_TRUE(fltHasRecord(node));
            std::uint32_t revision = 0;
            EXPECT_TRUE(fltGetParameter(node, revision));
            EXPECT_EQ(revision, 1580u);
        }
    }
}

TEST_F(NodeCreationTest, AKindWithoutARecordIsTaggedAndNothingMore) {
    ASSERT_TRUE(aviary.CreateNode(91));
    INode* const node = host.GetRootNode()->GetChildNode(0);
    EXPECT_EQ(node->GetName()[0], 'q');
    EXPECT_TRUE(aviary.IsOfType(node, "SOUND"));
    EXPECT_FALSE(fltHasRecord(node));
}

TEST_F(NodeCreationTest, NamesFollowTheSceneThatIsShown) {
    ASSERT_TRUE(aviary.CreateGroup());
    EXPECT_STREQ(host.GetRootNode()->GetChildNode(0)->GetName(), "g001");
    kiln::Core::destroy();
    Interface& next = kiln::Core::create().hostInterface();
    next.CreateObjectNode(new DummyObject, "g001");
    ASSERT_TRUE(aviary.CreateGroup());
    EXPECT_STREQ(next.GetRootNode()->GetChildNode(1)->GetName(), "g002");
    kiln::Core::create().newScene();
    ASSERT_TRUE(aviary.CreateGroup());
    EXPECT_STREQ(next.GetRootNode()->GetChildNode(0)->GetName(), "g001");
}

TEST_F(NodeCreationTest, OneSelectedNodeIsTheParentAndTheOriginIsTheWorlds) {
    INode* const parent = add(nullptr, "parent");
    Matrix3 moved;
    moved.SetTrans({5, 6, 7});
    parent->SetNodeTM(0, moved);
    INode* const other = add(nullptr, "other");
    host.SelectNode(parent);
    ASSERT_TRUE(aviary.CreateGroup());
    ASSERT_EQ(parent->NumberOfChildren(), 1);
    EXPECT_TRUE(parent->GetChildNode(0)->GetNodeTM(0) == Matrix3());

    host.SelectNode(other, false);
    ASSERT_TRUE(aviary.CreateGroup());
    EXPECT_EQ(parent->NumberOfChildren(), 1);
    EXPECT_EQ(other->NumberOfChildren(), 0);
}

}  // namespace
