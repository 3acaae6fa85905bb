#include <kiln/host/host.h>
#include <kiln/kiln.h>
#include <kiln/nodelook.h>
#include <workbench/levelbands.h>

#include <gtest/gtest.h>

#include <limits>
#include <map>

using workbench::LevelBand, workbench::bandAt, workbench::levelBands;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class Ranges final : public NodeLookSource {
public:
    bool GetBranch(INode* node, NodeBranch& branch) noexcept override {
        const auto found = of.find(node);
        if (found == of.end()) return false;
        branch.range = found->second;
        return true;
    }

    std::map<INode*, ViewRange> of;
};

class LevelBandsTest : public testing::Test {
protected:
    ~LevelBandsTest() override { kiln::Core::destroy(); }

    INode* add(INode* parent) {
        INode* const node = host.CreateObjectNode(nullptr, "x");
        if (parent) parent->AttachChild(node, false);
        return node;
    }

    Interface& host = kiln::Core::create().hostInterface();
};

TEST_F(LevelBandsTest, AreOfAllLevelsOfTheSceneWithoutGaps) {
    EXPECT_TRUE(levelBands(host).empty()) << "nobody knows of levels";
    Ranges ranges;
    EXPECT_TRUE(levelBands(host).empty());
    INode* const top = add(nullptr);
    ranges.of[add(top)] = {100, 500, {}};
    ranges.of[add(add(top))] = {0, 100, {}};
    ranges.of[add(nullptr)] = {500, 1e300 * 1e300, {}};
    ranges.of[add(nullptr)] = {-20, 40, {}};
    const std::vector<LevelBand> bands = levelBands(host);
    EXPECT_EQ(bands, (std::vector<LevelBand>{{0, 40}, {40, 100}, {100, 500}, {500, kInfinity}}));
    for (std::size_t i = 0; i < bands.size(); ++i) EXPECT_EQ(bandAt(bands, bands[i].middle()), i);
    EXPECT_EQ(bandAt(bands, 100), 1u) << "the farther end belongs to a band";
    EXPECT_EQ(bandAt(bands, 0), 0u);
    EXPECT_EQ(bandAt({}, 5), std::nullopt);
}

}  // namespace
