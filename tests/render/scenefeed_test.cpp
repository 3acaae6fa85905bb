#include <render/scenefeed.h>

#include <kiln/host/host.h>

#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <set>

using namespace render;

namespace {

class SceneFeedTest : public testing::Test {
protected:
    ~SceneFeedTest() override { kiln::Core::destroy(); }

    ItemIndex itemOf(const INode* node) const {
        for (ItemIndex i = 0; i < feed_.model().items().size(); ++i)
            if (feed_.nodeOf(i) == node) return i;
        return kNoItem;
    }

    Interface& host_ = kiln::Core::create().hostInterface();
    SceneFeed feed_;
};

TEST_F(SceneFeedTest, ShowsSurfacesInWorldSpaceInTheirColor) {
    INode* group = host_.CreateObjectNode(new DummyObject, "group");
    INode* box = host_.CreateObjectNode(new BoxObject(4, 2, 6), "box");
    box->SetWireColor(0x00112233);
    group->AttachChild(box);
    group->SetNodeTM(0, TransMatrix({100, 0, 0}));
    feed_.build(host_);

    const Item& item = feed_.model().items()[itemOf(box)];
    EXPECT_EQ(item.triangleCount, 12u);
    EXPECT_DOUBLE_EQ(item.box.min.x, 99);
    EXPECT_DOUBLE_EQ(item.box.max.x, 101);
    EXPECT_DOUBLE_EQ(item.box.max.z, 6);
    EXPECT_EQ(feed_.model().triangles()[item.firstTriangle].color, 0x332211u);
    EXPECT_EQ(feed_.counts().nodes, 2);
    EXPECT_EQ(feed_.counts().faces, 6u);
}

TEST_F(SceneFeedTest, HidesANodeButNotItsChildren) {
    INode* parent = host_.CreateObjectNode(new BoxObject, "parent");
    INode* child = host_.CreateObjectNode(new BoxObject, "child");
    parent->AttachChild(child);
    parent->Hide(true);
    feed_.build(host_);
    EXPECT_EQ(itemOf(parent), kNoItem);
    EXPECT_NE(itemOf(child), kNoItem);
    EXPECT_EQ(feed_.counts().hidden, 1);
}

TEST_F(SceneFeedTest, TakesOverLightsThatShineAndAreNotHidden) {
    const auto light = [&](const Class_ID& kind, const char* name) {
        auto* object = new GenLight(kind);
        object->SetColor(0x000000FF);
        object->SetIntensity(0.5);
        INode* node = host_.CreateObjectNode(object, name);
        node->SetNodeTM(0, TransMatrix({1, 2, 3}));
        return node;
    };
    light(DIR_LIGHT_CLASS_ID, "sun");
    INode* lamp = light(OMNI_LIGHT_CLASS_ID, "lamp");
    static_cast<GenLight*>(light(SPOT_LIGHT_CLASS_ID, "off")->GetObjectRef())->SetUseLight(false);
    feed_.build(host_);
    ASSERT_EQ(feed_.model().lights().size(), 2u);
    const Light& sun = feed_.model().lights()[0];
    EXPECT_EQ(sun.kind, LightKind::kDirectional);
    EXPECT_FLOAT_EQ(sun.direction.z, -1);
    EXPECT_FLOAT_EQ(sun.strength.x, 0.5f);
    EXPECT_FLOAT_EQ(sun.strength.z, 0);
    EXPECT_EQ(feed_.model().lights()[1].kind, LightKind::kPoint);
    EXPECT_EQ(feed_.model().lights()[1].position.y, 2);
    lamp->Hide(true);
    feed_.build(host_);
    EXPECT_EQ(feed_.model().lights().size(), 1u);
}

TEST_F(SceneFeedTest, VerticesKeepTheirColorsAndNormalsTurnWithTheirNode) {
    auto* object = new TriObject;
    Mesh& mesh = object->GetMesh();
    for (const Point3& p : {Point3{0, 0, 0}, Point3{1, 0, 0}, Point3{0, 1, 0}}) {
        mesh.verts.Append(p);
        mesh.normals.Append(Point3f{0, 0.6F, 0.8F});
        mesh.colors.Append(0x000000FF);
    }
    const DWORD corners[] = {0, 1, 2};
    mesh.AppendPolygon(3, corners);
    INode* node = host_.CreateObjectNode(object, "face");
    node->SetNodeTM(0, ScaleMatrix({1, 1, 2}) * TransMatrix({9, 9, 9}));
    feed_.build(host_);
    const Item& item = feed_.model().items()[itemOf(node)];
    ASSERT_TRUE(item.hasFinish);
    const Finish& finish = feed_.model().finishes()[item.firstFinish];
    EXPECT_EQ(finish.color, 0xFF0000u);
    // Stretched to twice the height, a slope's normal leans more towards the horizon.
    EXPECT_NEAR(finish.normal.y / finish.normal.z, 1.5, 1e-5);
    EXPECT_NEAR(length(finish.normal), 1, 1e-5);
}

TEST_F(SceneFeedTest, AGroupIsBracketedWithAllBelowIt) {
    INode* head = host_.CreateObjectNode(new DummyObject, "head");
    INode* middle = host_.CreateObjectNode(new DummyObject, "middle");
    INode* box = host_.CreateObjectNode(new BoxObject, "box");
    box->SetNodeTM(0, TransMatrix({50, 60, 70}));
    middle->AttachChild(box);
    head->AttachChild(middle);
    host_.SelectNode(head);
    feed_.build(host_);
    EXPECT_DOUBLE_EQ(feed_.model().selectedBox().max.z, 80);
    EXPECT_DOUBLE_EQ(feed_.model().selectedBox().min.x, 45) << "not from where the helpers are";
    EXPECT_DOUBLE_EQ(feed_.model().box().min.x, 45);

    INode* lonely = host_.CreateObjectNode(new DummyObject, "lonely");
    host_.SelectNode(lonely);
    feed_.build(host_);
    EXPECT_DOUBLE_EQ(feed_.model().selectedBox().max.x, 0) << "a helper alone is where it is";
    EXPECT_FALSE(feed_.model().selectedBox().empty());
    EXPECT_FALSE(feed_.model().items()[itemOf(box)].selected);
    host_.SelectNode(head);
    feed_.updateSelection();
    EXPECT_TRUE(feed_.model().items()[itemOf(box)].outlined);
    EXPECT_FALSE(feed_.model().items()[itemOf(lonely)].outlined);
    host_.SelectNode(box);
    feed_.updateSelection();
    EXPECT_DOUBLE_EQ(feed_.model().selectedBox().min.z, 70);
}

/// Knows what the tests tell it.
class Looks final : public NodeLookSource {
public:
    void BeginLooks(Interface*) noexcept override { ++open; }
    void EndLooks() noexcept override { --open; }
    bool GetLook(INode* node, NodeLook& look) noexcept override {
        EXPECT_EQ(open, 1);
        const auto found = looks.find(node);
        if (found == looks.end()) return false;
        look = found->second;
        return true;
    }
    bool GetBranch(INode* node, NodeBranch& branch) noexcept override {
        const auto found = branches.find(node);
        if (found == branches.end()) return false;
        branch = found->second;
        return true;
    }
    bool IsOnlyInstanced(INode* node) noexcept override { return onlyInstanced.contains(node); }
    INode* GetInstanced(INode* node) noexcept override {
        const auto found = definitions.find(node);
        return found == definitions.end() ? nullptr : found->second;
    }

    int open = 0;
    std::map<INode*, NodeLook> looks;
    std::map<INode*, NodeBranch> branches;
    std::map<INode*, INode*> definitions;
    std::set<INode*> onlyInstanced;
};

TEST_F(SceneFeedTest, SurfacesLookAsTheSourceSays) {
    Looks source;
    INode* plain = host_.CreateObjectNode(new BoxObject, "plain");
    INode* glass = host_.CreateObjectNode(new BoxObject, "glass");
    NodeLook& look = source.looks[glass];
    look.diffuse = {0.5F, 0.25F, 1};
    look.opacity = 0.5F;
    look.lit = false;
    look.layer = 3;
    look.picture = "missing.rgb";
    feed_.build(host_);
    EXPECT_EQ(source.open, 0);
    const auto surfaceOf = [&](INode* node) {
        return feed_.model().surfaceOf(feed_.model().items()[itemOf(node)]);
    };
    EXPECT_EQ(surfaceOf(plain), Surface());
    const Surface surface = surfaceOf(glass);
    EXPECT_EQ(surface.diffuse, (Vec3{0.5F, 0.25F, 1}));
    EXPECT_EQ(surface.opacity, 0.5F);
    EXPECT_FALSE(surface.lit);
    EXPECT_EQ(surface.layer, 3);
    EXPECT_TRUE(feed_.model().hasTranslucent());
    EXPECT_THAT(feed_.takeFailures(), testing::IsEmpty()) << "a box has no texture coordinates";
}

TEST_F(SceneFeedTest, LightsShineAsTheSourceSays) {
    Looks source;
    INode* const off = host_.CreateObjectNode(new GenLight(OMNI_LIGHT_CLASS_ID), "off");
    source.looks[off].shines = false;
    auto* const dark = new GenLight(OMNI_LIGHT_CLASS_ID);
    dark->SetUseLight(false);
    INode* const on = host_.CreateObjectNode(dark, "on");
    source.looks[on].shines = true;
    source.looks[on].light = {{0, 1, 7}};
    feed_.build(host_);
    ASSERT_EQ(feed_.model().lights().size(), 1u);
    EXPECT_EQ(feed_.model().lights()[0].strength, (Vec3{0, 1, 1}));
}

TEST_F(SceneFeedTest, NumbersOfASourceThatAreNoSharesAreMadeSuch) {
    Looks source;
    INode* const box = host_.CreateObjectNode(new BoxObject, "box");
    NodeLook& look = source.looks[box];
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    look.opacity = -3;
    look.emissive = {kNone, 1e30F, -1};
    look.layer = 1000;
    feed_.build(host_);
    const Surface surface = feed_.model().surfaceOf(feed_.model().items()[itemOf(box)]);
    EXPECT_EQ(surface.opacity, 0);
    EXPECT_EQ(surface.emissive, (Vec3{0, 1, 0}));
    EXPECT_EQ(surface.layer, 127);
}

TEST_F(SceneFeedTest, InstancesShowTheirDefinitionsWhereTheyStand) {
    Looks source;
    INode* definition = host_.CreateObjectNode(new DummyObject, "definition");
    INode* box = host_.CreateObjectNode(new BoxObject(2, 2, 2), "box");
    definition->AttachChild(box);
    box->SetLocalTM(0, TransMatrix({1, 0, 0}));
    definition->SetNodeTM(0, TransMatrix({1000, 0, 0}));
    INode* reference = host_.CreateObjectNode(new DummyObject, "reference");
    reference->SetNodeTM(0, ScaleMatrix({2, 2, 2}) * TransMatrix({0, 50, 0}));
    source.definitions[reference] = definition;
    feed_.build(host_);

    const auto items = feed_.model().items();
    ItemIndex shown = kNoItem;
    for (ItemIndex i = 0; i < items.size(); ++i)
        if (feed_.nodeOf(i) == reference && items[i].hasSurface()) shown = i;
    ASSERT_NE(shown, kNoItem) << "a click on it selects the reference";
    EXPECT_EQ(items[shown].box.min.x, 0);
    EXPECT_EQ(items[shown].box.max.x, 4);
    EXPECT_EQ(items[shown].box.min.y, 48);
    EXPECT_EQ(feed_.counts().nodes, 3);
    EXPECT_EQ(feed_.counts().faces, 12u);
    EXPECT_THAT(feed_.nodes(), testing::UnorderedElementsAre(definition, box, reference));

    host_.SelectNode(reference);
    feed_.updateSelection();
    EXPECT_TRUE(feed_.model().items()[shown].outlined);
    EXPECT_FALSE(feed_.model().items()[itemOf(box)].outlined);
    EXPECT_EQ(feed_.model().selectedBox().max.y, 52);
    host_.SelectNode(box);
    feed_.updateSelection();
    EXPECT_FALSE(feed_.model().items()[shown].outlined);
}

// A user counts the faces that were drawn and not what they are cut into, whatever the cuts look
// like.
TEST_F(SceneFeedTest, CountsPolygons) {
    auto* shape = new TriObject;
    Mesh& mesh = shape->GetMesh();
    for (int i = 0; i < 5; ++i) {
        const Point3 vertex{std::cos(i * 1.2), std::sin(i * 1.2), 0};
        mesh.verts.Append(1, &vertex);
    }
    const DWORD corners[] = {0, 1, 2, 3, 4};
    ASSERT_TRUE(mesh.AppendPolygon(5, corners));
    ASSERT_TRUE(mesh.AppendPolygon(3, corners));
    INode* node = host_.CreateObjectNode(shape, "pentagon and triangle");
    feed_.build(host_);
    EXPECT_EQ(feed_.model().triangles().size(), 4u);
    EXPECT_EQ(feed_.counts().faces, 2u);
    for (Face& face : mesh.faces) face.flags = 0;  // a surface without any outline
    node->InvalidateWS();
    feed_.build(host_);
    EXPECT_EQ(feed_.counts().faces, 1u);
}

TEST_F(SceneFeedTest, WhatOnlyInstancesShowIsNotInItsOwnPlace) {
    Looks source;
    INode* definition = host_.CreateObjectNode(new BoxObject(2, 2, 2), "definition");
    INode* part = host_.CreateObjectNode(new BoxObject(2, 2, 2), "part");
    INode* within = host_.CreateObjectNode(new BoxObject(2, 2, 2), "definition within");
    INode* hidden = host_.CreateObjectNode(nullptr, "hidden");
    definition->AttachChild(hidden);
    hidden->AttachChild(part);
    hidden->Hide(true);
    part->AttachChild(within);
    source.onlyInstanced = {definition, within};
    feed_.build(host_);
    EXPECT_EQ(feed_.counts().faces, 0u);
    EXPECT_EQ(feed_.counts().nodes, 4);
    EXPECT_EQ(feed_.counts().hidden, 1);
    EXPECT_THAT(feed_.nodes(), testing::IsEmpty());
    INode* reference = host_.CreateObjectNode(nullptr, "reference");
    source.definitions[reference] = definition;
    feed_.build(host_);
    EXPECT_EQ(feed_.counts().faces, 12u) << "it and its part, without the one within";
    EXPECT_THAT(feed_.nodes(), testing::ElementsAre(reference));
}

TEST_F(SceneFeedTest, InstancesWithinThemselvesEnd) {
    Looks source;
    // Each of twenty definitions shows the next one twice, and the last one the first.
    std::vector<INode*> definitions;
    for (int i = 0; i < 20; ++i)
        definitions.push_back(host_.CreateObjectNode(new BoxObject, "definition"));
    for (std::size_t i = 0; i < definitions.size(); ++i) {
        for (int twice = 0; twice < 2; ++twice) {
            INode* reference = host_.CreateObjectNode(nullptr, "reference");
            definitions[i]->AttachChild(reference);
            source.definitions[reference] = definitions[(i + 1) % definitions.size()];
        }
    }
    feed_.build(host_);
    EXPECT_LT(feed_.model().items().size(), 300'000u);
    source.definitions.clear();
    INode* own = host_.CreateObjectNode(new BoxObject, "own");
    source.definitions[own] = own;
    feed_.build(host_);
    EXPECT_EQ(feed_.counts().faces, 6u * (20 + 2)) << "itself, and itself within itself once";
}

TEST_F(SceneFeedTest, InstancesVeryDeepWithinOthersEnd) {
    Looks source;
    INode* const first = host_.CreateObjectNode(new BoxObject, "first");
    INode* last = first;
    for (int i = 0; i < 530; ++i) {
        INode* const next = host_.CreateObjectNode(new BoxObject, "next");
        source.definitions[last] = next;
        last = next;
    }
    feed_.build(host_);
    std::size_t within = 0;
    for (const SceneModel* model = &feed_.model(); !model->placements().empty(); ++within)
        model = model->placements().front().model.get();
    EXPECT_EQ(within, 512u) << "models within one another";
}

TEST_F(SceneFeedTest, KeepsBadMeshesAndDeepScenesFromDoingHarm) {
    auto* broken = new TriObject;
    const Point3 corner{1, 2, 3};
    broken->GetMesh().verts.Append(1, &corner);
    Face face;
    face.v[0] = 7;
    broken->GetMesh().faces.Append(1, &face);
    host_.CreateObjectNode(broken, "broken");
    INode* above = host_.GetRootNode();
    constexpr int kDepth = 20000;
    for (int i = 0; i < kDepth; ++i) {
        INode* node = host_.CreateObjectNode(nullptr, "link");
        above->AttachChild(node);
        above = node;
    }
    feed_.build(host_);
    EXPECT_EQ(feed_.counts().nodes, kDepth + 1);
    EXPECT_EQ(feed_.counts().faces, 0u);
}

}  // namespace
