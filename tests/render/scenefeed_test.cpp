#include <render/renderer.h>
#include <render/scenefeed.h>

#include <kiln/host/host.h>

#include <gmock/gmock.h>

#include <functional>
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
        ++asked;
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

    std::optional<Matrix3> GetMotion(INode* node,
                                     const NodeJoint::Values& values) noexcept override {
        EXPECT_EQ(open, 1);
        if (!joints.contains(node)) return std::nullopt;
        return RotAngleAxisMatrix({0, 0, 1}, values[5]) * ScaleMatrix({values[6], 1, 1}) *
               TransMatrix({values[0], 0, 0});
    }

    int open = 0;
    int asked = 0;  // for looks
    std::set<INode*> joints;
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
    EXPECT_THAT(feed_.takeFailures(), testing::IsEmpty()) << "a box has no texture coordinates";
}

TEST_F(SceneFeedTest, APictureThatIsMissingIsACheckerboard) {
    Looks source;
    auto* const object = new TriObject;
    Mesh& mesh = object->GetMesh();
    for (const Point3& p : {Point3{0, 0, 0}, Point3{9, 0, 0}, Point3{9, 9, 0}}) {
        mesh.verts.Append(p);
        mesh.tVerts.Append(Point3f{static_cast<float>(p.x), static_cast<float>(p.y), 0});
    }
    mesh.AppendPolygon(3, std::data({DWORD{0}, DWORD{1}, DWORD{2}}));
    mesh.tvFaces.Append(TVFace{{0, 1, 2}});
    INode* const node = host_.CreateObjectNode(object, "wall");
    const auto textureFor = [&](const char* picture) {
        source.looks[node].picture = picture;
        feed_.build(host_);
        return feed_.model().surfaceOf(feed_.model().items()[itemOf(node)]).texture;
    };
    const Texture* const texture = textureFor("missing.rgb");
    ASSERT_TRUE(texture);
    EXPECT_EQ(feed_.takeFailures().size(), 1u);
    const Texture::Level level = texture->level(0);
    const int cell = 256 << level.widthBits >> 3;
    EXPECT_NE(level.at(cell / 2, cell / 2), level.at(cell * 3 / 2, cell / 2));
    EXPECT_EQ(level.at(cell / 2, cell / 2), level.at(cell * 3 / 2, cell * 3 / 2));
    EXPECT_EQ(textureFor(nullptr), nullptr) << "none is not missing";
    EXPECT_EQ(textureFor(""), nullptr);
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

/// A scene of many nodes, of which single ones change.
class FollowingTest : public SceneFeedTest {
protected:
    FollowingTest() {
        for (int i = 0; i < 30; ++i) {
            INode* const group = host_.CreateObjectNode(new DummyObject, "group");
            groups_.push_back(group);
            for (int k = 0; k < 30; ++k) {
                INode* const box = host_.CreateObjectNode(new BoxObject(1, 1, 1), "box");
                box->SetNodeTM(0, TransMatrix({4. * k, 4. * i, 0}));
                group->AttachChild(box);
                boxes_.push_back(box);
            }
        }
        branch(29).range = ViewRange{0, 300, {}};
        INode* const definition = add(new BoxObject(3, 3, 3));
        instance_ = add(nullptr);
        instance_->SetNodeTM(0, TransMatrix({-20, 0, 0}));
        source_.definitions[instance_] = definition;
        host_.SelectNode(groups_[3]);
        feed_.build(host_);
        host_.SelectNode(groups_[29], false);
        feed_.updateSelection();
    }

    INode* add(Object* object) { return host_.CreateObjectNode(object, "node"); }
    NodeBranch& branch(std::size_t group) { return source_.branches[groups_[group]]; }
    bool follow(std::vector<INode*> nodes) {
        source_.asked = 0;
        return feed_.follow(host_, nodes);
    }

    /// All that a picture and picking take from the model.
    static std::vector<double> readOut(const SceneModel& model) {
        std::vector<double> all;
        const auto add = [&](const Box& box) {
            for (const Vec3d p : {box.min, box.max}) all.insert(all.end(), {p.x, p.y, p.z});
        };
        add(model.box());
        add(model.selectedBox());
        all.insert(all.end(), {double(model.isPlain()), double(model.sample())});
        for (const Item& item : model.items()) {
            add(item.box);
            add(item.selectionBox);
            all.insert(all.end(), {double(item.outlined), double(item.hours), double(item.range),
                                   model.surfaceOf(item).opacity, double(item.triangleCount)});
            for (const Triangle& t :
                 model.triangles().subspan(item.firstTriangle, item.triangleCount))
                for (const std::uint32_t v : t.vertex)
                    all.insert(all.end(), {double(t.color), model.vertices()[v].x, t.normal.y,
                                           item.origin.x, double(t.edges)});
        }
        for (const Range& range : model.ranges())
            all.insert(all.end(), {range.centre.x, range.centre.z, range.farthest});
        for (const Mark& mark : model.marks()) all.insert(all.end(), {mark.position.x});
        for (const Placement& placement : model.placements()) add(placement.place.box(model.box()));
        model.walk([&](const Block& block) { return add(block.box), true; }, [](ItemIndex) {});
        return all;
    }
    void expectAsReadAnew(const char* what) {
        SceneFeed fresh;
        fresh.build(host_);
        EXPECT_EQ(readOut(feed_.model()), readOut(fresh.model())) << what;
        EXPECT_EQ(feed_.counts().faces, fresh.counts().faces) << what;
    }

    Looks source_;
    std::vector<INode*> groups_, boxes_;
    INode* instance_;
};

TEST_F(FollowingTest, AnEditOfANodeIsReadWithoutTheScene) {
    const auto meshOf = [&](INode* node) -> Mesh& {
        return static_cast<TriObject*>(node->GetObjectRef())->GetMesh();
    };
    INode* const rim = boxes_.back();
    const DWORD corners[] = {0, 1, 2, 3};
    auto* const shape = new TriObject;
    for (const Point3& p : {Point3{0, 0, 0}, Point3{9, 0, 0}, Point3{9, 9, 0}, Point3{0, 9, 0}})
        shape->GetMesh().verts.Append(p);
    shape->GetMesh().AppendPolygon(4, corners);
    INode* const own = add(shape);
    feed_.build(host_);

    const struct {
        const char* name;
        INode* node;
        int asked;
        std::function<void()> make;
    } edits[] = {
        {"color", boxes_[7], 1, [&] { boxes_[7]->SetWireColor(0x123456); }},
        {"look", boxes_[7], 1, [&] { source_.looks[boxes_[7]].opacity = 0.5F; }},
        {"plain again", boxes_[7], 1, [&] { source_.looks.clear(); }},
        {"beyond all others", rim, 1,
         [&] {
             rim->SetNodeTM(0, TransMatrix({900, 0, -70}));
         }},
        {"and back", rim, 1,
         [&] {
             rim->SetNodeTM(0, TransMatrix({3, 3, 3}));
         }},
        {"size", boxes_[1], 1,
         [&] { static_cast<BoxObject*>(boxes_[1]->GetObjectRef())->SetSize(2, 2, 99); }},
        {"a group", groups_[2], 30,
         [&] {
             groups_[2]->SetNodeTM(0, TransMatrix({0, 0, 50}));
         }},
        {"what moves all below", groups_[4], 30,
         [&] {
             branch(4).motion = TransMatrix({7, 7, 7});
         }},
        {"hours of all below", groups_[4], 30, [&] { branch(4).byDay = false; }},
        {"range of all below", groups_[29], 30, [&] { branch(29).range->farthest = 20; }},
        {"the middle of a range", boxes_[29 * 30], 1,
         [&] {
             boxes_[29 * 30]->SetNodeTM(0, TransMatrix({0, 0, -400}));
         }},
        {"an instance", instance_, 0,
         [&] {
             instance_->SetNodeTM(0, TransMatrix({-90, 0, 0}));
         }},
        {"more vertices in place", own, 1,
         [&] {
             meshOf(own).verts.Append(Point3{4, 4, 8});
             meshOf(own).AppendPolygon(3, std::data({DWORD{0}, DWORD{1}, DWORD{4}}));
         }},
        {"fewer", own, 1, [&] { meshOf(own).faces.Delete(1, 2); }},
    };
    for (const auto& edit : edits) {
        edit.make();
        ASSERT_TRUE(follow({edit.node, edit.node})) << edit.name;
        EXPECT_EQ(source_.asked, edit.asked) << edit.name;
        expectAsReadAnew(edit.name);
    }
}

// Surfaces, marks, lights and what stands in place of others; one joint hangs below another.
TEST_F(FollowingTest, AJointMovesWhatHangsBelowItAndNothingIsReadOfIt) {
    INode* const arm = groups_[4];
    INode* const hand = add(nullptr);
    auto* const points = new TriObject;
    for (const double x : {1., 2.}) {
        points->GetMesh().verts.Append(Point3{x, 0, 0});
        points->GetMesh().normals.Append(Point3f{1, 0, 0});
    }
    auto* const smooth = new TriObject;
    for (const Point3& p : {Point3{0, 0, 0}, Point3{9, 0, 0}, Point3{9, 9, 0}}) {
        smooth->GetMesh().verts.Append(p);
        smooth->GetMesh().normals.Append(Point3f{1, 0, 0});
    }
    smooth->GetMesh().AppendPolygon(3, std::data({DWORD{0}, DWORD{1}, DWORD{2}}));
    INode* const shape = add(smooth);
    arm->AttachChild(hand);
    for (INode* const node : {add(points), shape, add(new GenLight(FSPOT_LIGHT_CLASS_ID)),
                              add(nullptr), instance_, groups_[6], boxes_[5 * 30]})
        hand->AttachChild(node);
    source_.joints = {arm, hand};
    feed_.build(host_);
    SceneFeed fresh;
    const auto posed = [&](const Poses& poses, const char* what) {
        source_.asked = 0;
        feed_.setPoses(poses);
        EXPECT_TRUE(feed_.followPoses(host_)) << what;
        EXPECT_EQ(source_.asked, 0) << what;
        fresh.clear();
        fresh.setPoses(poses);
        fresh.build(host_);
        EXPECT_EQ(readOut(feed_.model()), readOut(fresh.model())) << what;
        const SceneModel &ours = feed_.model(), &theirs = fresh.model();
        ASSERT_EQ(ours.lights().size(), 1u);
        EXPECT_EQ(ours.lights()[0].position.x, theirs.lights()[0].position.x) << what;
        EXPECT_EQ(ours.lights()[0].direction.y, theirs.lights()[0].direction.y) << what;
        for (std::size_t i = 0; i < ours.marks().size(); ++i)
            EXPECT_EQ(ours.marks()[i].normal.y, theirs.marks()[i].normal.y) << what;
        for (std::size_t i = 0; i < ours.finishes().size(); ++i)
            EXPECT_EQ(ours.finishes()[i].normal.y, theirs.finishes()[i].normal.y) << what;
    };
    const std::vector<double> atRest = readOut(feed_.model());
    const auto values = [](double x, double yaw, double scale) {
        return NodeJoint::Values{x, 0, 0, 0, 0, yaw, scale, 1, 1};
    };
    const DWORD upper = arm->GetHandle(), lower = hand->GetHandle();
    posed({{lower, values(5, 1, 2)}}, "the lower one");
    EXPECT_NE(readOut(feed_.model()), atRest);
    posed({{lower, values(5, 1, 2)}, {upper, values(-900, 0.5, 1)}}, "both");
    feed_.setPoses({{upper, values(7, 2, 1)}});
    shape->SetWireColor(0x123456);
    ASSERT_TRUE(follow({shape})) << "an edit meanwhile";
    posed({{upper, values(7, 2, 1)}}, "the upper one");
    feed_.setPoses({});
    feed_.setPoses({{upper, values(7, 2, 1)}, {upper + 10'000, values(1, 1, 1)}});
    posed({{upper, values(7, 2, 1)}}, "there and back");
    feed_.setPoses({{upper, values(7, 2, -1)}});
    EXPECT_FALSE(feed_.followPoses(host_)) << "fronts become backs";
    feed_.build(host_);
    feed_.setPoses({});
    EXPECT_FALSE(feed_.followPoses(host_));
    feed_.build(host_);
    posed({}, "none");
}

// As a drag moves many: what hangs below them, too.
TEST_F(FollowingTest, MovedNodesAreShownWhereTheyAreAndNothingIsReadOfThem) {
    auto* const points = new TriObject;
    points->GetMesh().verts.Append(Point3{1, 0, 0});
    points->GetMesh().normals.Append(Point3f{1, 0, 0});
    INode* const lamp = add(new GenLight(FSPOT_LIGHT_CLASS_ID));
    INode* const hidden = add(new BoxObject(2, 2, 2));
    INode* const smooth = add(new TriObject);
    Mesh& mesh = static_cast<TriObject*>(smooth->GetObjectRef())->GetMesh();
    for (const Point3& p : {Point3{0, 0, 0}, Point3{9, 0, 0}, Point3{9, 9, 0}}) {
        mesh.verts.Append(p);
        mesh.normals.Append(Point3f{1, 0, 0});
    }
    mesh.AppendPolygon(3, std::data({DWORD{0}, DWORD{1}, DWORD{2}}));
    hidden->Hide(true);
    for (INode* const node : {lamp, hidden, smooth, instance_, add(points)})
        groups_[1]->AttachChild(node);
    groups_[2]->AttachChild(groups_[1]);
    branch(3).motion = TransMatrix({7, 7, 7});
    branch(4).range = ViewRange{0, 300, Point3{1, 2, 3}};
    feed_.build(host_);

    std::vector<INode*> all = boxes_;
    all.insert(all.end(), groups_.rbegin(), groups_.rend());
    const Matrix3 turn = RotAngleAxisMatrix({0, 0, 1}, 0.5);
    const struct {
        const char* name;
        std::vector<INode*> nodes;
        Matrix3 change;
        std::vector<INode*> changed = {};
    } moves[] = {
        {"one", {boxes_[7]}, TransMatrix({0.3, 900, 0.7})},
        {"with all below", {groups_[2]}, TransMatrix({5, 6, 7})},
        {"what moves itself when it turns", {groups_[3]}, turn},
        {"all", all, TransMatrix({-0.1, 3, 1e6})},
        {"turned", all, turn},
        {"larger", boxes_, ScaleMatrix({3, 2, 2})},
        {"far below another", {boxes_[40]}, TransMatrix({0, 0, 5e6})},
        {"twice", {groups_[1], groups_[2], groups_[1]}, TransMatrix({1, 0, 0})},
        {"and edited", {boxes_[31], boxes_[32]}, turn, {boxes_[31]}},
    };
    for (const auto& move : moves) {
        for (INode* const node : move.nodes)
            node->SetLocalTM(
                0, node->GetNodeTM(0) * Inverse(node->GetParentNode()->GetNodeTM(0)) * move.change);
        for (INode* const node : move.changed)
            static_cast<BoxObject*>(node->GetObjectRef())->SetSize(5, 1, 1);
        source_.asked = 0;
        ASSERT_TRUE(feed_.follow(host_, move.changed, move.nodes)) << move.name;
        EXPECT_EQ(source_.asked, static_cast<int>(move.changed.size())) << move.name;
        expectAsReadAnew(move.name);
        SceneFeed fresh;
        fresh.build(host_);
        ASSERT_EQ(feed_.model().lights().size(), 1u);
        EXPECT_EQ(feed_.model().lights()[0].position, fresh.model().lights()[0].position);
        EXPECT_EQ(feed_.model().finishes()[0].normal, fresh.model().finishes()[0].normal);
        EXPECT_EQ(feed_.model().marks().back().normal, fresh.model().marks().back().normal);
    }
    const auto isFollowed = [&](INode* node, const Matrix3& place) {
        node->SetNodeTM(0, place);
        const bool followed = feed_.follow(host_, {}, {{node}});
        feed_.build(host_);
        return followed;
    };
    EXPECT_FALSE(isFollowed(boxes_[3], ScaleMatrix({1, 1, -1}))) << "fronts become backs";
    EXPECT_FALSE(isFollowed(boxes_[3], Matrix3())) << "and fronts again";
    EXPECT_FALSE(isFollowed(source_.definitions[instance_], TransMatrix({1, 0, 0})));
    EXPECT_TRUE(isFollowed(hidden, TransMatrix({1, 0, 0})));
    EXPECT_FALSE(isFollowed(boxes_[3], TransMatrix({0, 1e308 * 10, 0}))) << "nowhere";
    EXPECT_FALSE(isFollowed(boxes_[3], Matrix3())) << "and back";
}

// Whoever asks is told, and reads everything.
TEST_F(FollowingTest, WhatChangesMoreThanItselfIsNotFollowed) {
    EXPECT_FALSE(follow({host_.GetRootNode()}));
    feed_.build(host_);
    EXPECT_TRUE(follow({}));
    EXPECT_FALSE(follow({source_.definitions[instance_]})) << "its instance shows it, too";
    feed_.build(host_);
    const std::uint32_t first = 1;
    branch(8).shownChildren = &first;
    branch(8).shownWords = 1;
    EXPECT_FALSE(follow({groups_[8]})) << "a switch has other children now";
    feed_.build(host_);
    boxes_[0]->SetObjectRef(boxes_[1]->GetObjectRef());
    EXPECT_FALSE(follow({boxes_[0]}));
    feed_.build(host_);
    EXPECT_FALSE(follow({boxes_[1]})) << "another node has the same object";
    INode* const lamp = add(new GenLight(OMNI_LIGHT_CLASS_ID));
    EXPECT_FALSE(follow({lamp})) << "nobody has read it";
    feed_.build(host_);
    EXPECT_FALSE(follow({lamp})) << "it lights all others";
    EXPECT_FALSE(follow({boxes_[5]})) << "what was begun has to be ended by reading everything";
    feed_.build(host_);
    expectAsReadAnew("in the end");
    const Looks other;
    EXPECT_FALSE(follow({boxes_[5]})) << "who is asked knows other things";
}

// However often that is: what is left behind of shapes that have grown is bounded.
TEST_F(FollowingTest, GrowingForEverDoesNotFillTheMemory) {
    auto* const shape = new TriObject;
    Mesh& mesh = shape->GetMesh();
    for (int i = 0; i < 2; ++i) mesh.verts.Append(Point3{0, 1. * i, 0});
    INode* const own = add(shape);
    std::size_t most = 0;
    for (DWORD i = 2; i < 300; ++i) {
        mesh.verts.Append(Point3{1. * i, 0, 0});
        const DWORD corners[] = {0, 1, i};
        mesh.AppendPolygon(3, corners);
        if (!follow({own})) feed_.build(host_);
        most = std::max(most, feed_.model().vertices().size());
    }
    EXPECT_LT(most, 8 * 900u + 30'000);
    expectAsReadAnew("after all");
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

TEST(LightLooks, ShareTheirStepsAndStayOnBeyondAllMeasure) {
    SceneModel model;
    const std::vector<LightPointStep> one(3, {1, true, {}}), other(2, {1, false, {}});
    const std::vector<LightPointStep> most(4'000'000 - 5, {1, true, {}}), few(4, {2, true, {}});
    const auto look = [&](const std::vector<LightPointStep>& steps) {
        LightPointLook added;
        added.period = 3;
        added.steps = steps.data();
        added.stepCount = steps.size();
        const std::uint32_t index = model.addLightLook(added);
        return model.lightLooks()[index];
    };
    const LightPointStep* const first = look(one).steps;
    EXPECT_NE(first, one.data()) << "a copy";
    EXPECT_NE(look(other).steps, first);
    EXPECT_EQ(look(one).steps, first);
    EXPECT_EQ(look(most).stepCount, most.size());
    EXPECT_FALSE(look(few).changes());
    EXPECT_EQ(look(few).stepCount, 0U);
    EXPECT_EQ(look(one).steps, first);
}

}  // namespace
