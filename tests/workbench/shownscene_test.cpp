#include <workbench/shownscene.h>

#include <kiln/host/host.h>
#include <kiln/undo.h>

#include <gtest/gtest.h>

#include <vector>

using namespace workbench;

namespace {

class ShownSceneTest : public testing::Test {
protected:
    ShownSceneTest() { scene_.model(); }
    ~ShownSceneTest() override { kiln::Core::destroy(); }

    INode* add(const char* name) { return host_.CreateObjectNode(new BoxObject, name); }
    render::Color firstColor() { return scene_.model().triangles().front().color; }

    Interface& host_ = kiln::Core::create().hostInterface();
    int outdated_ = 0;
    ShownScene scene_{host_, [this] { ++outdated_; }};
};

TEST_F(ShownSceneTest, FollowsTheSceneAndSaysSoOnce) {
    INode* const box = add("box");
    EXPECT_EQ(outdated_, 1);
    box->SetWireColor(0x0000FF);
    EXPECT_EQ(outdated_, 1) << "nobody has looked since";
    EXPECT_EQ(firstColor(), 0xFF0000u);
    box->SetWireColor(0x00FF00);
    EXPECT_EQ(outdated_, 2);
    EXPECT_EQ(firstColor(), 0x00FF00u);
    firstColor();
    EXPECT_EQ(outdated_, 2);
}

TEST_F(ShownSceneTest, ABulkOfEditsIsOneRedraw) {
    std::vector<INode*> boxes;
    for (int i = 0; i < 10'000; ++i) boxes.push_back(add("box"));
    scene_.model();
    outdated_ = 0;
    for (INode* const box : boxes) box->SetWireColor(0x0000FF);
    EXPECT_EQ(outdated_, 1);
    EXPECT_EQ(scene_.model().triangles().back().color, 0xFF0000u);
}

TEST_F(ShownSceneTest, NamesNoNodeThatMayHaveGone) {
    INode* const box = add("box");
    ASSERT_EQ(scene_.model().items().size(), 1u);
    EXPECT_EQ(scene_.nodeOf(0), box);
    host_.DeleteNode(box);
    EXPECT_EQ(scene_.nodeOf(0), nullptr);
    EXPECT_TRUE(scene_.nodes().empty());
}

TEST_F(ShownSceneTest, TakesOverTheSelectionWithoutReadingTheScene) {
    INode* const box = add("box");
    scene_.model();
    outdated_ = 0;
    for (int i = 0; i < 2; ++i) {
        host_.SelectNode(box);
        scene_.selectionChanged();
    }
    EXPECT_EQ(outdated_, 1);
    EXPECT_EQ(scene_.nodeOf(0), box) << "its items are the same";
    EXPECT_TRUE(scene_.model().items().front().selected);
    host_.ClearNodeSelection();
    scene_.selectionChanged();
    EXPECT_EQ(outdated_, 2);
    EXPECT_FALSE(scene_.model().items().front().selected);
}

// One of the two is followed, the other is taken over: neither may be forgotten for the other.
TEST_F(ShownSceneTest, AnEditAndASelectionAreShownTogether) {
    INode* const box = add("box");
    INode* const other = add("other");
    scene_.model();
    box->SetWireColor(0x0000FF);
    host_.SelectNode(other);
    scene_.selectionChanged();
    EXPECT_EQ(firstColor(), 0xFF0000u);
    EXPECT_TRUE(scene_.model().items().back().selected);
    // Drawing anew reads nothing, and what has changed before it is still read.
    box->SetWireColor(0x00FF00);
    host_.RedrawViews(0);
    EXPECT_EQ(firstColor(), 0x00FF00u);
    EXPECT_TRUE(scene_.model().items().back().selected);
    EXPECT_EQ(scene_.nodes().size(), 2u);
}

TEST_F(ShownSceneTest, ShowsADragAndItsUndo) {
    std::vector<INode*> boxes;
    for (int i = 0; i < 400; ++i) boxes.push_back(add("box"));
    kiln::Core::get()->history().endCommand();
    scene_.model();
    const auto moveAll = [&](double x) {
        UndoScope scope("drag");
        for (INode* const box : boxes) box->SetNodeTM(0, TransMatrix({x, 0, 0}));
        if (x < 900) scope.Commit();
    };
    const auto middle = [&] { return scene_.model().box().centre().x; };
    moveAll(100);
    EXPECT_EQ(middle(), 100);
    moveAll(950);
    EXPECT_EQ(middle(), 100) << "rolled back";
    kiln::Core::get()->history().undo();
    EXPECT_EQ(middle(), 0);
}

TEST_F(ShownSceneTest, ShowsWhatItHasWhileTheSceneIsHalfDone) {
    scene_.hold(true);
    INode* const box = add("box");
    EXPECT_EQ(outdated_, 1);
    EXPECT_TRUE(scene_.model().items().empty());
    host_.SelectNode(box);
    scene_.selectionChanged();
    scene_.hold(false);
    EXPECT_EQ(outdated_, 2) << "what was drawn meanwhile is old";
    ASSERT_EQ(scene_.model().items().size(), 1u);
    EXPECT_TRUE(scene_.model().items().front().selected);
    scene_.hold(true);
    scene_.hold(false);
    EXPECT_EQ(outdated_, 2) << "nothing has changed";
}

}  // namespace
