#include <kiln/host/history.h>
#include <kiln/host/host.h>
#include <kiln/kiln.h>
#include <kiln/nodelook.h>
#include <workbench/joints.h>
#include <workbench/numbers.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

using namespace workbench;

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kX = 0, kPitch = 3, kYaw = 5, kScaleX = 6;

class Joints final : public NodeLookSource {
public:
    bool GetJoint(INode* node, NodeJoint& joint) noexcept override {
        ++asked;
        const auto found = of.find(node);
        if (found == of.end()) return false;
        joint = found->second;
        return true;
    }
    bool SetJoint(INode* node, const NodeJoint::Values& values) noexcept override {
        if (values[kX] == refused) return false;
        of[node].values = values;
        return true;
    }

    std::map<INode*, NodeJoint> of;
    double refused = kNoNumber;
    int asked = 0;
};

class JointsTest : public testing::Test {
protected:
    ~JointsTest() override { kiln::Core::destroy(); }

    INode* add(INode* parent, const char* name) {
        INode* const node = host.CreateObjectNode(nullptr, name);
        if (parent) parent->AttachChild(node, false);
        return node;
    }
    NodeJoint& makeJoint(INode* node) {
        return source.of[node] = {{0, 0, 0, 0, 0, 0, 1, 1, 1}, {}};
    }

    Interface& host = kiln::Core::create().hostInterface();
    Joints source;
};

TEST_F(JointsTest, AreThoseSelectedOrTheNearestAboveEachOnce) {
    INode* const arm = add(nullptr, "arm");
    INode* const hand = add(add(arm, "group"), "hand");
    INode* const palm = add(hand, "palm");
    INode* const other = add(nullptr, "other");
    makeJoint(arm);
    makeJoint(hand);
    const auto names = [&] {
        std::string all;
        for (const KnownJoint& joint : selectedJoints(host)) all += joint.name + " ";
        return all;
    };
    EXPECT_EQ(names(), "");
    host.SelectNode(palm);
    EXPECT_EQ(names(), "hand ");
    host.SelectNode(other, false);
    host.SelectNode(arm, false);
    host.SelectNode(hand, false);
    EXPECT_EQ(names(), "hand arm ");
    for (int i = 0; i < 500; ++i) host.SelectNode(add(palm, "face"), false);
    source.asked = 0;
    selectedJoints(host);
    EXPECT_LT(source.asked, 520) << "what is above many is asked once";
    EXPECT_EQ(allJoints(host).size(), 2u);
}

TEST_F(JointsTest, GoBetweenTheirLimitsOrAsFarAsMakesSense) {
    NodeJoint joint = makeJoint(add(nullptr, "x"));
    const auto limited = [&](double least, double greatest) {
        joint.motions[kYaw] = {true, least, greatest, 0};
        return rangeOf(joint, kYaw, 1);
    };
    EXPECT_EQ(limited(-30, 400), (MotionRange{-30, 400}));
    EXPECT_EQ(limited(5, 5), std::nullopt) << "it cannot move";
    EXPECT_EQ(limited(5, -5), std::nullopt);
    EXPECT_EQ(limited(kNoNumber, 5), std::nullopt);
    EXPECT_EQ(limited(-1e308, 1.7e308), std::nullopt);
    EXPECT_EQ(rangeOf(joint, kPitch, 1), (MotionRange{-180, 180}));
    EXPECT_EQ(rangeOf(joint, kScaleX, 1), (MotionRange{0.1, 3}));
    EXPECT_EQ(rangeOf(joint, kX, 37), (MotionRange{-50, 50}));
    EXPECT_EQ(rangeOf(joint, kX, 0), (MotionRange{-1, 1}));
    joint.values = {700, 0, 0, -200, 0, 0, 8, 1, 1};
    const auto narrow = rangeOf(joint, kX, 0.03);
    ASSERT_TRUE(narrow);
    EXPECT_DOUBLE_EQ(narrow->least, -0.05);  // a power of ten differs in its last bit by library
    EXPECT_EQ(narrow->greatest, 700);
    EXPECT_EQ(rangeOf(joint, kPitch, 1), (MotionRange{-200, 180}));
    EXPECT_EQ(rangeOf(joint, kScaleX, 1), (MotionRange{0.1, 8}));
    joint.values[kX] = kInfinity;
    EXPECT_EQ(rangeOf(joint, kX, 1), (MotionRange{-1, 1}));
    EXPECT_EQ((MotionRange{-1, 2}).clamp(kNoNumber), -1);
    EXPECT_EQ((MotionRange{-1, 2}).clamp(9), 2);
}

TEST_F(JointsTest, PlayFromWhereTheyStandToBothEndsAndBack) {
    INode *const door = add(nullptr, "door"), *const wheel = add(nullptr, "wheel"),
                 *const fixed = add(nullptr, "fixed");
    makeJoint(door).motions[kYaw] = {true, 10, 90, 0};
    source.of[door].values[kYaw] = 30;
    for (auto& motion : makeJoint(wheel).motions) motion = {true, 0, 0, 0};
    source.of[wheel].motions[kPitch].isLimited = false;
    for (auto& motion : makeJoint(fixed).motions) motion = {true, 0, 0, 0};
    NodeJoint::Values moved = source.of[wheel].values;
    moved[kPitch] = 45;
    const JointPlay play(allJoints(host), {{wheel->GetHandle(), moved}}, 1);
    EXPECT_NEAR(play.at(0).at(door->GetHandle())[kYaw], 30, 1e-9);
    EXPECT_NEAR(play.at(0).at(wheel->GetHandle())[kPitch], 45, 1e-9) << "as it is shown";
    EXPECT_NEAR(play.at(JointPlay::kPeriod).at(door->GetHandle())[kYaw], 30, 1e-9);
    EXPECT_FALSE(play.at(1).contains(fixed->GetHandle()));
    double least = 1e9, greatest = -1e9;
    for (double t = 0; t < JointPlay::kPeriod; t += JointPlay::kPeriod / 1000) {
        const NodeJoint::Values values = play.at(t).at(door->GetHandle());
        least = std::min(least, values[kYaw]);
        greatest = std::max(greatest, values[kYaw]);
        EXPECT_EQ(values[kPitch], 0) << "with limits on one, the others stay";
    }
    EXPECT_NEAR(least, 10, 0.01);
    EXPECT_NEAR(greatest, 90, 0.01);
    EXPECT_EQ(source.of[door].values[kYaw], 30) << "nothing of the scene has changed";
}

// A file may be shown whole and in part; a node of it may have the handle of one of the scene.
TEST_F(JointsTest, ThoseInFilesPlayTooEachOnce) {
    INode* const door = add(nullptr, "door");
    INode *const file = add(nullptr, "file"), *const wheel = add(file, "wheel");
    makeJoint(door).motions[kYaw] = makeJoint(wheel).motions[kYaw] = {true, 10, 90, 0};
    source.of[door].values[kYaw] = source.of[wheel].values[kYaw] = 30;
    INode* const tops[] = {file, wheel};
    const std::vector<KnownJoint> joints = allJoints(host, tops);
    ASSERT_EQ(joints.size(), 3u) << "as the scene has it, and as a file";
    NodeJoint::Values moved = source.of[wheel].values;
    moved[kYaw] = 70;
    const JointPlay play(joints, {{wheel->GetHandle(), moved}}, 1);
    EXPECT_EQ(play.at(0).size(), 2u);
    ASSERT_EQ(play.inFilesAt(0).size(), 1u);
    EXPECT_NEAR(play.inFilesAt(0).at(wheel)[kYaw], 30, 1e-9) << "the pose is the scene's node's";
    EXPECT_NE(play.inFilesAt(1).at(wheel)[kYaw], play.inFilesAt(0).at(wheel)[kYaw]);
}

TEST_F(JointsTest, AreKeptAllOrRefused) {
    INode *const one = add(nullptr, "one"), *const two = add(nullptr, "two");
    makeJoint(one);
    makeJoint(two);
    const NodeJoint::Values values{4, 0, 0, 0, 0, 0, 1, 1, 1};
    EXPECT_TRUE(keepPoses(host, {{one->GetHandle(), values}, {987'654, values}}));
    EXPECT_EQ(source.of[one].values, values);
    source.refused = 4;
    EXPECT_FALSE(keepPoses(host, {{two->GetHandle(), values}}));
}

TEST(NumbersTest, AreReadWholeOrNotAtAll) {
    EXPECT_EQ(numberOf(" +2.5e1 "), 25);
    EXPECT_EQ(numberOf("-.5"), -0.5);
    for (const char* const text : {"", "  ", "1 2", "1,5", "12°", "inf", "nan", "1e999", "+"})
        EXPECT_EQ(numberOf(text), std::nullopt) << text;
    EXPECT_EQ(shortNumber(-0.0), "0");
    EXPECT_EQ(shortNumber(1.0 / 3, 4), "0.3333");
}

}  // namespace
