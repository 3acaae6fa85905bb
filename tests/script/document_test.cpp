// Runs what docs/scripting.md shows, and the sample script, with the plug-ins linked in.
#include "document.h"
#include "enginefixture.h"

#include <plugins.h>

#include <set>
#include <vector>

namespace {

using DocumentTest = EngineTest;

TEST_F(DocumentTest, EveryExampleRunsAndPrintsWhatItSays) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    const std::vector<Example> all = documentedExamples();
    ASSERT_GT(all.size(), 10u);
    for (const Example& example : all) {
        SCOPED_TRACE("docs/scripting.md:" + std::to_string(example.line));
        core.newScene();
        good(all.front().text);
        printed.clear();
        if (&example != &all.front()) good(example.text);
        EXPECT_EQ(printed, example.printed);
    }
}

TEST_F(DocumentTest, EveryPublishedNameIsDocumentedAndShown) {
    kilnbatch::loadPlugins("");
    std::string code;
    for (const Example& example : documentedExamples()) code += example.text;
    FPInterfaceDesc* const aviary = kiln::findInterface("Aviary");
    ASSERT_NE(aviary, nullptr);
    for (const FPFunctionDesc& function : aviary->Functions())
        EXPECT_NE(code.find(std::string("Aviary.") + function.name), std::string::npos)
            << function.name;
    for (const FPPropertyDesc& property : aviary->Properties())
        EXPECT_NE(code.find(std::string("Aviary.") + property.name), std::string::npos)
            << property.name;
}

TEST_F(DocumentTest, TheSampleStepsThroughItsLevelsOfDetail) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    std::vector<std::string> pictures;
    engine.addVerb("viewAll", "", [](const script::Arguments&) { return script::Value(); });
    engine.addVerb("screenshot", "path", [&](const script::Arguments& arguments) {
        pictures.push_back(arguments.text(0));
        return script::Value();
    });
    engine.runFile(SAMPLE_SCRIPT);
    EXPECT_EQ(pictures.size(), 10u);
    EXPECT_THAT(printed,
                testing::EndsWith("29-lod-at-a-switch-distance 100.0 #(\"near shaft\")\n"));
}

TEST_F(DocumentTest, TenThousandCreatedNodesHaveNamesOfTheirOwn) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    good(
        "for i = 1 to 2500 do ( Aviary.CreateGroup(); Aviary.CreateLOD()\n"
        "Aviary.CreateLightPoint(); Aviary.CreateGroup() )");
    std::set<std::string> names;
    INode* const root = host.GetRootNode();
    for (int i = 0; i < root->NumberOfChildren(); ++i)
        names.insert(root->GetChildNode(i)->GetName());
    EXPECT_EQ(names.size(), 10'000u);
    EXPECT_TRUE(names.contains("g5000"));
    EXPECT_TRUE(names.contains("lp2500"));
}

TEST_F(DocumentTest, AttributesRefuseWhatTheyWouldMisread) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    good("Aviary.CreateLOD()\nobjects[1].name = \"near\"");
    EXPECT_THAT(bad("setAttr $near \"FltLodMin\" \"far\""), testing::HasSubstr("takes a number"));
    EXPECT_THAT(bad("setAttr $near \"FltLodSpecial1\" 1.5"),
                testing::HasSubstr("takes an integer"));
    EXPECT_THAT(bad("setAttr $near \"FltNothing\" 1"), testing::HasSubstr("no attribute"));
    EXPECT_THAT(bad("setAttr $near \"FltLodFrozen\" \"maybe\""), testing::HasSubstr("none of"));
    // Nothing is stored in part, and a boolean is no entry of a list of others.
    good("Aviary.CreateGroup()\nobjects[2].name = \"g\"");
    EXPECT_THAT(bad("\n  setAttr $g \"FltGrpLayer\" 128"),
                testing::AllOf(testing::HasSubstr(":2:3: "),
                               testing::HasSubstr("from -128 to 127, not 128")));
    EXPECT_EQ(good("setAttr $g \"FltGrpLayer\" -128; getAttr $g \"FltGrpLayer\""), "\"-128\"");
    EXPECT_THAT(bad("setAttr $g \"FltGrpSpecial1\" 32768"), testing::HasSubstr("to 32767"));
    EXPECT_THAT(bad("Aviary.CreateLightPoint(); $lp001.name = \"p\"; setAttr $p "
                    "\"FltLtPtIntensity\" 1e39"),
                testing::HasSubstr("takes numbers from"));
    EXPECT_THAT(bad("setAttr $p \"FltLtPtDisplayMode\" true"), testing::HasSubstr("none of"));
    EXPECT_THAT(bad("setAttr $p \"FltLtPtDisplayMode\" 9"), testing::HasSubstr("none of"));
    EXPECT_THAT(bad("setAttr $p \"FltLtPtIntensity\" [1, 2, 3]"), testing::HasSubstr("a point"));
    EXPECT_THAT(bad("setAttr $p \"FltLtPtIntensity\""), testing::HasSubstr("\"value\" is missing"));
    EXPECT_THAT(bad("setAttr $p \"FltLtPtDrawOrder\" 3e9"), testing::HasSubstr("an integer"));
    EXPECT_THAT(bad("getAttr objects[9] \"x\""), testing::HasSubstr("no element 9"));
    EXPECT_EQ(good("setAttr $near \"FltLodFrozen\" true; a = getAttr $near \"FltLodFrozen\"\n"
                   "setAttr $near \"FltLodFrozen\" false; a != getAttr($near, \"FltLodFrozen\")"),
              "true");
}

TEST_F(DocumentTest, AttributesAreGivenAndTakenAsTheyAreStored) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    good("Aviary.CreateLOD(); $l001.name = \"l\"; Aviary.CreateLightPoint(); $lp001.name = \"p\"");
    // More digits than the text shows.
    EXPECT_EQ(good("setAttr $l \"FltLodMin\" 0.123456789; getAttr $l \"FltLodMin\" raw:true"),
              "0.123456789");
    EXPECT_EQ(good("getAttr $l \"FltLodMin\""), "\"0.123457\"");
    // A choice by its number, in an order of its own.
    EXPECT_EQ(good("setAttr $p \"FltLtPtDisplayMode\" 1\n"
                   "getAttr $p \"FltLtPtDisplayMode\" raw:true"),
              "1");
    EXPECT_EQ(good("setAttr $l \"FltLodFrozen\" 1; getAttr $l \"FltLodFrozen\" raw:true"), "1");
    // Verbs of plug-ins are listed, are called by keyword, and say of a node what it is.
    EXPECT_THAT(engine.verbs(), testing::IsSupersetOf({"getAttr node key [raw:]", "kind node"}));
    EXPECT_EQ(good("GETATTR key:\"FltLodFrozen\" node:$l == getAttr($l, \"FltLodFrozen\")"),
              "true");
    EXPECT_EQ(good("$l.kind + kind $p"), "\"LODLIGHT_POINT\"");
    EXPECT_EQ(good("createDummy name:\"d\"; $d.kind"), "undefined");
    // Another plug-in's wrong arguments are refused, not read.
    FPInterfaceDesc* const verbs = kiln::findInterface("FltAttributes");
    for (FunctionID id = 0; id < 4; ++id) {
        FPValue result;
        FPParams wrong{FPValue::Int(1), FPValue::Int(1), FPValue::Int(1)};
        EXPECT_EQ(verbs->Invoke(id, 0, result, nullptr), FPS_FAIL);
        EXPECT_EQ(verbs->Invoke(id, 0, result, &wrong), FPS_FAIL);
    }
    EXPECT_THAT(bad("$l.getAttr"), testing::HasSubstr("no property"));
    EXPECT_THAT(bad("getAttr $d \"FltLodMin\""), testing::HasSubstr("is no OpenFlight node"));
}

}  // namespace
