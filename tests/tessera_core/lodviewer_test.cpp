#include "lodbands.h"

#include <quillon/fltopcode.h>
#include <quillon/fltswitch.h>
#include <tessera/lodviewer.h>

#include <cmath>
#include <limits>
#include <map>

namespace {

using tessera::LodViewer;

TEST_F(LodViewerTest, StepsBandByBandAndStopsAtTheEnds) {
    buildBands();
    outsideMesh->Hide(true);
    const struct {
        double from;
        bool (LodViewer::*step)();
        bool changed;
        double to;
    } kSteps[] = {
        {300, &LodViewer::MostDetail, true, 50},
        {300, &LodViewer::LeastDetail, true, 1250},
        {300, &LodViewer::MoreDetail, true, 50},
        {300, &LodViewer::LessDetail, true, 1250},
        {50, &LodViewer::MoreDetail, false, 50},
        {50, &LodViewer::LessDetail, true, 300},
        {1250, &LodViewer::LessDetail, false, 1250},
        {1250, &LodViewer::MoreDetail, true, 300},
        // At a switch distance itself both steps take the band at their side.
        {100, &LodViewer::MoreDetail, true, 50},
        {100, &LodViewer::LessDetail, true, 300},
        {9000, &LodViewer::MoreDetail, true, 1250},
        {9000, &LodViewer::LessDetail, false, 9000},
        {-5, &LodViewer::LessDetail, true, 50},
        {-5, &LodViewer::MoreDetail, false, -5},
    };
    for (const auto& step : kSteps) {
        SCOPED_TRACE(step.from);
        aviary.StoreLodDistance(step.from);
        LodViewer viewer(host);
        EXPECT_EQ((viewer.*step.step)(), step.changed);
        EXPECT_EQ(aviary.GetLodDistance(), step.to);
    }
    EXPECT_TRUE(outsideMesh->IsHidden()) << "geometry outside every level of detail is left alone";
}

TEST_F(LodViewerTest, LooksThatFollowOneAnotherAreOneStep) {
    buildBands();
    core.history().clear();
    const std::string before = shown();
    for (const double distance : {50.0, 300.0, 1250.0, 50.0, 300.0}) {
        aviary.StoreLodDistance(distance);
        ASSERT_TRUE(LodViewer(host).MoreDetail() || LodViewer(host).LessDetail());
    }
    EXPECT_EQ(core.history().stepCount(), 1u);
    const std::string after = shown();
    EXPECT_NE(after, before);
    ASSERT_TRUE(core.history().undo());
    EXPECT_EQ(shown(), before);
    ASSERT_TRUE(core.history().redo());
    EXPECT_EQ(shown(), after);
}

TEST_F(LodViewerTest, AnEditedDistanceIsFollowedAtOnce) {
    buildBands();
    aviary.Browser();
    aviary.SetLodDistance(300);
    ASSERT_EQ(shown(), "-m-");
    INode* const level = nearMesh->GetParentNode()->GetParentNode();
    FltLod record;
    ASSERT_TRUE(fltGetRecord(level, record));
    const auto edit = [&](double farthest) {
        record.switchInDistance = farthest;
        ASSERT_TRUE(fltPutRecord(level, record));
        recordingBrowser().commands->levelEdited(&host);
    };
    edit(400);
    EXPECT_EQ(shown(), "nm-");
    edit(299);
    EXPECT_EQ(shown(), "-m-");
    EXPECT_EQ(aviary.GetLodDistance(), 300);
}

TEST_F(LodViewerTest, AShowsFromSwitchOutExclusiveToSwitchInInclusive) {
    buildBands();
    const std::map<double, const char*> kShown = {{0, "---"},   {50, "n--"},  {100, "n--"},
                                                  {101, "-m-"}, {500, "-m-"}, {2000, "--f"},
                                                  {2001, "---"}};
    for (const auto& [distance, wanted] : kShown) {
        aviary.SetLodDistance(distance);
        EXPECT_EQ(shown(), wanted) << distance;
    }
}

TEST_F(LodViewerTest, OneBandOnlyHasOneMiddle) {
    addMesh(addLod(nullptr, "l", 10, 30), "mesh");
    aviary.StoreLodDistance(7);
    EXPECT_TRUE(LodViewer(host).MostDetail());
    EXPECT_EQ(aviary.GetLodDistance(), 20);
    EXPECT_TRUE(LodViewer(host).LeastDetail());
    EXPECT_EQ(aviary.GetLodDistance(), 20);
    core.newScene();
    EXPECT_FALSE(LodViewer(host).MostDetail());
    EXPECT_EQ(aviary.GetLodDistance(), 20);
}

TEST_F(LodViewerTest, SwitchesWalkTheChildrenOfTheirCurrentMask) {
    INode* const lod = addLod(nullptr, "l", 0, 100);
    INode* const switchNode = add(lod, "s", kFltSwitch);
    std::vector<INode*> children;
    for (int i = 0; i < 40; ++i) {
        children.push_back(addMesh(switchNode, "child"));
        children.back()->Hide(true);
    }
    FltSwitch record;
    record.wordsPerMask = 2;
    record.currentMask = 1;
    for (const std::uint32_t word : {0u, 0u, 0x5u, 0x80u}) record.maskWords.append(word);
    ASSERT_TRUE(fltPutRecord(switchNode, record));
    aviary.SetLodDistance(50);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(children[static_cast<std::size_t>(i)]->IsHidden(), i != 0 && i != 2 && i != 39)
            << i;

    // A mask that the record does not have shows nothing, and hides nothing.
    for (INode* const child : children) child->Hide(true);
    for (const int missing : {2, -1, std::numeric_limits<int>::min()}) {
        record.currentMask = missing;
        ASSERT_TRUE(fltPutRecord(switchNode, record));
        aviary.SetLodDistance(50);
        for (INode* const child : children) EXPECT_TRUE(child->IsHidden()) << missing;
    }
}

TEST_F(LodViewerTest, ASwitchThatCannotBeReadEndsTheWalk) {
    INode* const lod = addLod(nullptr, "l", 0, 100);
    INode* const switches[] = {add(lod, "without a record", kFltSwitch),
                               add(lod, "damaged", kFltSwitch)};
    ASSERT_TRUE(fltPutRecord(switches[1], FltLod()));
    for (INode* const node : switches) addMesh(node, "mesh")->Hide(true);
    INode* const next = addMesh(lod, "next");
    next->Hide(true);
    aviary.SetLodDistance(50);
    for (INode* const node : switches) EXPECT_TRUE(node->GetChildNode(0)->IsHidden());
    EXPECT_FALSE(next->IsHidden()) << "there, not beside it";
}

TEST_F(LodViewerTest, ADamagedLevelOfDetailCountsAsPlainStructure) {
    addLod(nullptr, "good", 0, 10);
    INode* const damaged = add(nullptr, "damaged", kFltLod);
    INode* const mesh = addMesh(damaged, "mesh");
    mesh->Hide(true);
    INode* const unordered = addLod(nullptr, "nan", std::nan(""), 4);
    addMesh(unordered, "never");
    LodViewer viewer(host);
    viewer.Collect(host.GetRootNode());
    EXPECT_EQ(viewer.lodDistances(), (std::vector<double>{0, 4, 10}));
    viewer.Apply(5);
    EXPECT_TRUE(mesh->IsHidden());
}

// Neither has the middle of two distances a place where both steps would stay for ever.
TEST_F(LodViewerTest, StepsAreNotCaughtByDistancesThatAreNotFinite) {
    constexpr double kEndless = std::numeric_limits<double>::infinity();
    constexpr double kMost = std::numeric_limits<double>::max();
    addLod(nullptr, "near", 0, 100);
    INode* const mesh = addMesh(addLod(nullptr, "far", 100, kEndless), "mesh");
    addLod(nullptr, "all", -kEndless, kEndless);
    LodViewer viewer(host);
    viewer.Collect(host.GetRootNode());
    EXPECT_EQ(viewer.lodDistances(), (std::vector<double>{0, 100}));
    aviary.SetLodDistance(1e9);
    EXPECT_FALSE(mesh->IsHidden()) << "in range all the same";
    addLod(nullptr, "huge", kMost / 1.5, kMost);
    aviary.LodLeastDetail();
    EXPECT_TRUE(std::isfinite(aviary.GetLodDistance()));
    for (int step = 0; step < 3; ++step) aviary.LodMoreDetail();
    EXPECT_EQ(aviary.GetLodDistance(), 50);
}

TEST_F(LodViewerTest, ShowsWhatIsNoStructure) {
    INode* const lod = addLod(nullptr, "l", 0, 100);
    std::map<int, INode*> nodes;
    for (const int kind : {kFltHeader, kFltGroup, kFltObject, kFltFace, kFltDof, kFltBsp,
                           kFltInstanceRef, kFltInstanceDef, kFltExternalRef, kFltLod, kFltSwitch,
                           kFltClipRegion, kFltLightSource, kFltLightPoint})
        nodes[kind] = add(lod, "stored", kind);
    INode* const mesh = addMesh(lod, "derived face");
    INode* const light = host.CreateObjectNode(new GenLight(OMNI_LIGHT_CLASS_ID), "light");
    INode* const helper = add(lod, "no kind");
    INode* const head = add(lod, "derived group");
    head->SetGroupHead(true);
    lod->AttachChild(light, false);
    for (int i = 0; i < lod->NumberOfChildren(); ++i) lod->GetChildNode(i)->Hide(true);
    aviary.SetLodDistance(50);
    for (const auto& [kind, node] : nodes)
        EXPECT_EQ(node->IsHidden(), kind != 1 && kind != 5 && kind != 61 && kind != 101) << kind;
    EXPECT_FALSE(mesh->IsHidden());
    EXPECT_FALSE(light->IsHidden());
    EXPECT_TRUE(helper->IsHidden());
    EXPECT_TRUE(head->IsHidden());

    // Out of range the whole subtree is hidden, structure included.
    for (int i = 0; i < lod->NumberOfChildren(); ++i) lod->GetChildNode(i)->Hide(false);
    aviary.SetLodDistance(200);
    for (int i = 0; i < lod->NumberOfChildren(); ++i)
        EXPECT_TRUE(lod->GetChildNode(i)->IsHidden()) << i;
    EXPECT_FALSE(lod->IsHidden());
}

TEST_F(LodViewerTest, RedrawsOnlyWhenThereIsSomethingNew) {
    buildBands();
    NotingWindow window;
    core.setHostWindow(&window);
    core.setTime(480);
    aviary.StoreLodDistance(300);
    aviary.LodMostDetail();
    EXPECT_EQ(window.redraws, (std::vector<TimeValue>{0, 480}));
    EXPECT_EQ(window.invalidated, 2) << "two of the three meshes are hidden";
    window = {};
    aviary.LodMoreDetail();
    EXPECT_TRUE(window.redraws.empty()) << "it is the nearest band already";
    aviary.SetLodDistance(60);
    EXPECT_EQ(window.redraws.size(), 1u);
    EXPECT_EQ(window.invalidated, 0) << "the same meshes show from there";
    core.newScene();
    window = {};
    aviary.LodMostDetail();
    EXPECT_TRUE(window.redraws.empty()) << "without levels of detail there is nothing to show";
    core.setHostWindow(nullptr);
}

TEST_F(LodViewerTest, SurvivesScenesDeeperThanTheStack) {
    INode* node = addLod(nullptr, "l", 0, 10);
    for (int i = 0; i < 50000; ++i) node = add(node, "n");
    INode* const mesh = addMesh(node, "mesh");
    addLod(nullptr, "other", 10, 20);
    aviary.SetLodDistance(15);
    EXPECT_TRUE(mesh->IsHidden());
    aviary.SetLodDistance(5);
    EXPECT_FALSE(mesh->IsHidden());
}

}  // namespace
