// What the plug-ins publish and do, all of them in one process.
#include <base/paths.h>
#include <gtest/gtest.h>
#include <job.h>
#include <kiln/host/diagnostics.h>
#include <kiln/host/script.h>
#include <plugins.h>

#include <random>

#include "../support/pluginactions.h"
#include "../support/temporaryfolder.h"

namespace {

class PluginsTest : public testing::Test {
protected:
    PluginsTest() : core_(kiln::Core::create()) { EXPECT_TRUE(kilnbatch::loadPlugins("").empty()); }
    ~PluginsTest() override { kiln::Core::destroy(); }

    kiln::Core& core_;
};

TEST_F(PluginsTest, PublishUnderIdsOfTheirOwn) {
    for (FPInterfaceDesc* const one : kiln::publishedInterfaces())
        EXPECT_EQ(GetCOREInterface(one->GetID()), one) << one->Name();
}

TEST_F(PluginsTest, AScriptIsToldOfAStepThatIsTooLargeToBeUndone) {
    kiln::History& history = core_.history();
    const std::size_t limit = history.limit();
    history.setLimit(100'000);
    std::string said;
    kilnbatch::Job job;
    job.scriptName = "big.ks";
    job.script =
        "a = createBox name:\"a\"; undo \"names\" (\n"
        "t = \"0123456789\"; for i = 1 to 12 do t = t + t\n"
        "for i = 1 to 9 do a.name = t + (i as string))";
    job.output = [&](std::string_view line) { said += line; };
    EXPECT_EQ(kilnbatch::runJob(core_, job), "");
    EXPECT_EQ(said, "too large to be undone: names");
    core_.newScene();
    job.mustBeUndoable = true;
    EXPECT_TRUE(kilnbatch::runJob(core_, job).starts_with("big.ks:3:"));
    EXPECT_NE(core_.hostInterface().GetINodeByName("a"), nullptr);
    history.setLimit(limit);
}

TEST_F(PluginsTest, WhateverTheyDoLeadsBackAndForth) {
    const TemporaryFolder folder;
    const std::string file = folder.file("change.flt");
    ASSERT_TRUE(samples::writeScene(databaseToChange(), file));
    std::size_t outOfMemory = 0;
    const std::size_t blocks = kiln::allocatedBlocks();
    for (unsigned seed = 1; seed <= 4; ++seed) {
        std::mt19937 random(seed);
        const auto choose = [&](unsigned below) { return random() % below; };
        PluginActions actions(core_, choose, file);
        HistoryModel model(core_, choose);
        model.further = [&] { return actions(); };
        actions.begin();
        for (int i = 0; i < 400; ++i) {
            const std::string wrong = model.step();
            ASSERT_EQ(wrong, "") << "seed " << seed << ", step " << i;
        }
        EXPECT_GT(model.undone, 30u);
        EXPECT_GT(actions.changed, 60u);
        EXPECT_GT(actions.refused, 10u);
        outOfMemory += model.outOfMemory;
        core_.newScene();
        EXPECT_EQ(kiln::allocatedBlocks(), blocks) << "blocks of the host allocator leaked";
    }
    EXPECT_GT(outOfMemory, 5u);
}

}  // namespace
