// What the built files offer and need, as their own headers say it.
#include "builtfiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::IsSubsetOf;

using Names = std::set<std::string>;

TEST(BuiltModule, ExportsExactlyWhatOthersCall) {
    const ProgramFile file = readProgramFile(modulePath());
    EXPECT_TRUE(file.isX64Library);
    EXPECT_EQ(
        file.exports,
        (Names{"LibDescription", "LibNumberClasses", "LibClassDesc", "LibVersion",
               // The constructor of VertexNormalsControl, as the compiler names it.
               "_ZN20VertexNormalsControlC1Ev", "qofltAboutShow", "_zufltguicreate",
               "_zufltguishow", "_zufltguidestroy", "_zufltguiaddnode", "_zufltguidelnode",
               "_zufltguidelchildren", "_zufltguinode2hdl", "_zufltguiselectnode",
               "zufltguirefresh", "zufltguiSceneChanged", "zufltguiresetpos", "zufltguisettitle"}));
}

// A user copies the module into the host's plug-in folder, and nothing else.
TEST(BuiltModule, NeedsNothingButTheSystemAndTheHost) {
    EXPECT_THAT(
        readProgramFile(modulePath()).imports,
        IsSubsetOf({"advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "kernel32.dll",
                    "kilncore.dll", "msimg32.dll", "msvcrt.dll", "ole32.dll", "oleacc.dll",
                    "oleaut32.dll", "user32.dll", "uxtheme.dll"}));
}

TEST(BuiltModule, HoldsItsResourcesAndNoOthers) {
    EXPECT_EQ(resourceNames(moduleFile(), RT_DIALOG), (Names{"#101", "#116", "#200", "#202"}));
    EXPECT_EQ(resourceNames(moduleFile(), RT_BITMAP).size(), 19u + 3u + 9u * 4u);
    EXPECT_EQ(resourceNames(moduleFile(), RT_VERSION), Names{"#1"});
    std::set<unsigned> ids;
    for (unsigned id = 30665; id <= 30700; ++id)
        if (id != 30675 && id != 30694) ids.insert(id);
    for (unsigned action = 5001; action <= 5014; ++action) ids.insert(action);
    for (unsigned action = 5031; action <= 5037; ++action) ids.insert(action);
    std::set<unsigned> found = stringIds(moduleFile(), kChinese);
    // Texts of what the form offers beside what it must.
    std::erase_if(found, [](unsigned id) { return id > 30700 && id < 30800; });
    EXPECT_EQ(found, ids);
}

TEST(BuiltCaptions, AreALibraryWithoutCode) {
    const ProgramFile file = readProgramFile(captionPath());
    EXPECT_TRUE(file.isX64Library);
    EXPECT_EQ(file.exports, Names());
    EXPECT_EQ(file.imports, Names());
    EXPECT_EQ(resourceNames(captionFile(), RT_VERSION), Names{"#1"});
}

// Loading stops at the first number without a text and cuts what is too long.
TEST(BuiltCaptions, StandUnderTheirNumbersWithoutAGap) {
    std::set<unsigned> ids;
    for (unsigned id = 101; id <= 411; ++id) ids.insert(id);
    for (const WORD language : {kChinese, kEnglish}) {
        EXPECT_EQ(stringIds(captionFile(), language), ids);
        for (const unsigned id : ids)
            EXPECT_LE(stringResource(captionFile(), id, language).size(), 256u) << id;
    }
}

}  // namespace
