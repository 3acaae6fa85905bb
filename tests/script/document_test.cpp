// Runs what docs/scripting.md shows.
#include "enginefixture.h"

#include <plugins.h>
#include <script/attributeverbs.h>

#include <fstream>
#include <vector>

namespace {

struct Example {
    int line = 0;  // of its first line in the document
    std::string text;
    std::string printed;      // what it says that it prints
    bool printsMore = false;  // has a print whose line says nothing
};

void addLine(Example& example, const std::string& line) {
    example.text += line + "\n";
    const std::size_t arrow = line.find("--> ");
    if (arrow != std::string::npos)
        example.printed += line.substr(arrow + 4) + "\n";
    else
        example.printsMore = example.printsMore || line.find("print ") != std::string::npos;
}

std::vector<Example> examples() {
    std::ifstream document(SCRIPTING_DOCUMENT);
    std::vector<Example> all;
    int number = 0;
    bool inside = false;
    for (std::string line; std::getline(document, line);) {
        ++number;
        if (line == "```ks") {
            inside = true;
            all.push_back({number + 1, "", "", false});
        } else if (line == "```") {
            inside = false;
        } else if (inside) {
            addLine(all.back(), line);
        }
    }
    return all;
}

using DocumentTest = EngineTest;

TEST_F(DocumentTest, EveryExampleRunsAndPrintsWhatItSays) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    script::addAttributeVerbs(engine);
    const std::vector<Example> all = examples();
    ASSERT_GT(all.size(), 10u);
    for (const Example& example : all) {
        SCOPED_TRACE("docs/scripting.md:" + std::to_string(example.line));
        core.newScene();
        good(all.front().text);
        printed.clear();
        if (&example != &all.front()) good(example.text);
        if (!example.printsMore) {
            EXPECT_EQ(printed, example.printed);
        }
    }
}

TEST_F(DocumentTest, EveryPublishedNameIsDocumentedAndShown) {
    kilnbatch::loadPlugins("");
    std::string code;
    for (const Example& example : examples()) code += example.text;
    FPInterfaceDesc* const aviary = kiln::findInterface("Aviary");
    ASSERT_NE(aviary, nullptr);
    for (const FPFunctionDesc& function : aviary->Functions())
        EXPECT_NE(code.find(std::string("Aviary.") + function.name), std::string::npos)
            << function.name;
    for (const FPPropertyDesc& property : aviary->Properties())
        EXPECT_NE(code.find(std::string("Aviary.") + property.name), std::string::npos)
            << property.name;
}

TEST_F(DocumentTest, AttributesRefuseWhatTheyWouldMisread) {
    ASSERT_TRUE(kilnbatch::loadPlugins("").empty());
    script::addAttributeVerbs(engine);
    good("Aviary.CreateLOD()\nobjects[1].name = \"near\"");
    EXPECT_THAT(bad("setAttr $near \"FltLodMin\" \"far\""), testing::HasSubstr("takes a number"));
    EXPECT_THAT(bad("setAttr $near \"FltLodSpecial1\" 1.5"),
                testing::HasSubstr("takes an integer"));
    EXPECT_THAT(bad("setAttr $near \"FltNothing\" 1"), testing::HasSubstr("no attribute"));
    EXPECT_THAT(bad("setAttr $near \"FltLodFrozen\" \"maybe\""), testing::HasSubstr("none of"));
    EXPECT_THAT(bad("getAttr objects[9] \"x\""), testing::HasSubstr("no element 9"));
    EXPECT_EQ(good("setAttr $near \"FltLodFrozen\" true; a = getAttr $near \"FltLodFrozen\"\n"
                   "setAttr $near \"FltLodFrozen\" false; a != getAttr($near, \"FltLodFrozen\")"),
              "true");
}

}  // namespace
