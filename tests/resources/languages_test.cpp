// Every text exists in both languages, read from the built files.
#include "builtfiles.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <vector>

namespace {

// What a text has places for: {0}, %s, and a line of its own each.
std::multiset<std::string> placesIn(const std::string& text) {
    static const std::regex place("\\{[0-9]\\}|%[a-z]|\n");
    return {std::sregex_token_iterator(text.begin(), text.end(), place),
            std::sregex_token_iterator()};
}

struct BuiltFile {
    const char* name;
    HMODULE (*file)();
};

class Texts : public testing::TestWithParam<BuiltFile> {};

TEST_P(Texts, ExistInBothLanguagesWithTheSamePlacesForValues) {
    const HMODULE file = GetParam().file();
    const std::set<unsigned> ids = stringIds(file, kChinese);
    EXPECT_FALSE(ids.empty());
    EXPECT_EQ(stringIds(file, kEnglish), ids);
    for (const unsigned id : ids) {
        const std::string english = stringResource(file, id, kEnglish);
        EXPECT_EQ(placesIn(english), placesIn(stringResource(file, id, kChinese))) << english;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, Texts,
    testing::Values(BuiltFile{"module", moduleFile}, BuiltFile{"captions", captionFile},
                    BuiltFile{"interchange", interchangeFile}, BuiltFile{"checks", checksFile},
                    BuiltFile{"palettes", palettesFile}, BuiltFile{"workbench", workbenchFile},
                    BuiltFile{"core", coreFile}, BuiltFile{"kilnbatch", kilnbatchFile}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
