#include "../support/temporaryfolder.h"
#include "enginefixture.h"

#include <kiln/host/largesteps.h>

using testing::HasSubstr;

namespace {

using HostVerbsTest = EngineTest;

TEST_F(HostVerbsTest, MakesNodes) {
    good(
        "createDummy name:\"base\" position:[1, 2, 3] size:4\n"
        "createBox \"house\" [5, 0, 0] parent:$base height:20\n"
        "createLight name:\"lamp\" kind:\"spot\"");
    EXPECT_EQ(good("for o in objects collect o.name"), "#(\"base\", \"house\", \"lamp\")");
    EXPECT_EQ(good("$house.parent"), "$base");
    EXPECT_EQ(good("$house.position"), "[5,0,0]");
    EXPECT_EQ(good("$lamp.object"), good("\"Spot\"")) << "named by the host";
    const auto* const box = static_cast<BoxObject*>(host.GetINodeByName("house")->GetObjectRef());
    EXPECT_EQ(box->GetHeight(), 20);
    EXPECT_THAT(bad("createLight kind:\"candle\""), HasSubstr("the kind of a light is"));
    EXPECT_THAT(bad("createBox position:5"), HasSubstr("must be a point"));
    EXPECT_EQ(host.GetNodeCount(), 3) << "a refused creation leaves nothing behind";
}

TEST_F(HostVerbsTest, LinksAndUnlinks) {
    good("a = createDummy \"a\"; b = createDummy \"b\" [0, 0, 5]; c = createDummy \"c\"");
    good("link #(b, c) a");
    EXPECT_EQ(good("a.children"), "#($b, $c)");
    EXPECT_EQ(good("b.parent = c; c.children"), "#($b)");
    EXPECT_EQ(good("b.position"), "[0,0,5]");
    EXPECT_THAT(bad("link a b"), HasSubstr("lies below it"));
    good("unlink b");
    EXPECT_EQ(good("#(b.parent, rootNode.children)"), "#(undefined, #($a, $b))");
    EXPECT_EQ(good("g = group #(a, b) name:\"all\"; g.children"), "#($a, $b)");
    good("ungroup g");
    EXPECT_THAT(bad("g.name"), HasSubstr("this node has been deleted"));
}

TEST_F(HostVerbsTest, SelectsHidesNamesAndMoves) {
    good("a = createDummy \"a\"; b = createDummy \"my node\"");
    good("select #(b, a)");
    EXPECT_EQ(good("#(selection, $, a.selected)"), "#(#($my node, $a), $my node, true)");
    good("deselect a; $'my node'.hidden = true; a.name = \"塔\"");
    EXPECT_EQ(good("#(selection.count, b.hidden, $塔)"), "#(1, true, $塔)");
    good("unhide b; clearSelection(); move #(a, b) [1, 0, 0]; move a [0, 2, 0]");
    EXPECT_EQ(good("#(a.position, b.position, b.hidden, selection)"),
              "#([1,2,0], [1,0,0], false, #())");
    good("c = createDummy \"c\" [3, 2, 0] parent:a; rotate a [0, 0, 1] 90");
    EXPECT_EQ(good("d = c.position - [1, 4, 0]; #(abs d.x + (abs d.y) < 1e-9, a.position)"),
              "#(true, [1,2,0])");
    good("scale a 2; delete #(a, c)");
    EXPECT_EQ(good("objects"), "#($my node)");
    EXPECT_THAT(bad("b.position = 5"), HasSubstr("a position is a point"));
    EXPECT_THAT(bad("b.children = #()"), HasSubstr("read-only"));
    EXPECT_THAT(bad("b.color"), HasSubstr("a node has no property \"color\""));
}

TEST_F(HostVerbsTest, AScriptIsOneStepAndItsBlocksAreSteps) {
    kiln::History& history = core.history();
    good("a = createDummy \"a\"; a.hidden = true; b = createDummy \"b\"");
    ASSERT_EQ(history.stepCount(), 1u);
    EXPECT_EQ(history.stepName(0), "test.ks");
    good(
        "hide b\n"
        "x = undo \"Verschieben\" (\n"
        "  undo \"within\" (move a [1, 0, 0])\n"
        "  move b [2, 0, 0]\n"
        "  5\n"
        ")\n"
        "b.name = \"c\"");
    EXPECT_EQ(good("x"), "5");
    ASSERT_EQ(history.stepCount(), 4u);
    EXPECT_EQ(history.stepName(2), "Verschieben");
    EXPECT_EQ(good("undo(); #(undo(), b.name, b.position)"), "#(true, \"b\", [0,0,0])");
    EXPECT_EQ(good("redo(); redo(); #(redo(), b.name, b.position)"), "#(false, \"c\", [2,0,0])");

    EXPECT_THAT(bad("unhide b; undo \"fails\" (delete a; throw \"no\")"), HasSubstr("no"));
    EXPECT_EQ(good("#(objects.count, b.hidden)"), "#(2, false)") << "only the block is taken back";
    EXPECT_EQ(history.stepCount(), 5u);
    EXPECT_THAT(bad("undo \"block\" (undo())"), HasSubstr("within an \"undo\" block"));
    EXPECT_EQ(good("fn f = (undo \"g\" (return 3)); f()"), "3");
    EXPECT_EQ(good("createBox(); undo(); objects.count"), "2");
    const std::size_t limit = history.limit();
    history.setLimit(100'000);
    kiln::setLargeStepQuestion([](const std::string&) { return false; });
    const std::string large =
        "t = \"0123456789\"; for i = 1 to 12 do t = t + t; for i = 1 to 9 do b.name = t + (i as "
        "string)";
    EXPECT_THAT(bad(large), HasSubstr("too large to be undone"));
    EXPECT_EQ(good("#(b.name, objects.count)"), "#(\"c\", 2)");
    EXPECT_THAT(bad("createBox(); undo \"renames\" (" + large + ")"), HasSubstr("too large"));
    EXPECT_EQ(good("#(b.name, objects.count)"), "#(\"c\", 3)");
    kiln::setLargeStepQuestion({});
    history.setLimit(limit);
    EXPECT_EQ(good("undo(); objects.count"), "2");
    good("createBox(); newScene(); createBox()");
    EXPECT_EQ(good("undo(); objects.count"), "0");
}

TEST_F(HostVerbsTest, SavesAndOpensScenes) {
    const TemporaryFolder folder;
    const std::string file = folder.file(u8"塔.kiln");
    engine.setVariable("file", script::Value(file));
    good("createDummy \"kept\"; saveScene file; newScene()");
    EXPECT_EQ(good("objects.count"), "0");
    EXPECT_EQ(good("openScene file; objects"), "#($kept)");
    engine.setVariable("pattern", script::Value(folder.file("*.kiln")));
    EXPECT_EQ(good("getFiles pattern"), "#(\"" + file + "\")");
    EXPECT_THAT(bad("openScene \"no such file.kiln\""), HasSubstr("no such file.kiln"));
    EXPECT_THAT(bad("importFile \"scene.unknown\""), HasSubstr("test.ks:1:1: importFile: "));
    EXPECT_EQ(good("objects"), "#($kept)");
}

TEST_F(HostVerbsTest, RunsScriptFiles) {
    const TemporaryFolder folder;
    const std::string file = folder.file(u8"塔.ks");
    const auto write = [&](std::string_view text) {
        folder.write(u8"塔.ks", {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    };
    engine.setVariable("file", script::Value(file));
    write(
        "\xEF\xBB\xBF"
        "fn twice x = x * 2\r\nn = twice 21\r\nprint n\r\nn + 1\r\n");
    EXPECT_EQ(good("runScript file"), "43");
    EXPECT_EQ(printed, "42\n");
    EXPECT_EQ(engine.runFile(file).printed(), "43");
    write("fn fails x = 1 / x\n  fails 0\n");
    EXPECT_EQ(bad("1\nrunScript file"), file + ":1:16: division by zero");
    write("fn fails x = 1 / x");
    EXPECT_EQ(bad("runScript file\nfails 0"), file + ":1:16: division by zero")
        << "a function stays of its file";
    write("print (");
    EXPECT_THAT(bad("runScript file"), testing::StartsWith(file + ":1:7: "));
    write("runScript file");
    EXPECT_EQ(bad("runScript file"), file + ":1:1: runScript: scripts run each other too deep");
    EXPECT_EQ(bad("runScript \"none.ks\""),
              "test.ks:1:1: runScript: none.ks: this script cannot be read");
    EXPECT_EQ(good("1 + 1"), "2");
    // Steps are counted over all the scripts of one run.
    script::Limits limits;
    limits.steps = 1000;
    engine.setLimits(limits);
    write("for i = 1 to 100 do i");
    good("runScript file");
    EXPECT_THAT(bad("for j = 1 to 100 do runScript file"), HasSubstr("stopped after 1000 steps"));
}

}  // namespace
