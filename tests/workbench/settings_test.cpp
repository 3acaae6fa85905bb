#include "../support/temporaryfolder.h"

#include <base/paths.h>
#include <workbench/settings.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace workbench;

namespace {

TEST(Settings, AreKeptFromOneRunToTheNext) {
    const TemporaryFolder folder;
    const std::string path = base::textOf(folder.path() / "Workbench" / "settings.txt");
    {
        Settings settings(path);
        EXPECT_EQ(settings.value("language"), "");
        settings.set("language", "en");
        settings.set("other", "a=b");
        settings.set("language", "zh");
    }
    const Settings settings(path);
    EXPECT_EQ(settings.value("language"), "zh");
    EXPECT_EQ(settings.value("other"), "a=b");
    std::ofstream(base::pathFrom(path), std::ios::binary) << "nothing\n=\nlanguage=en\n";
    EXPECT_EQ(Settings(path).value("language"), "en");
    EXPECT_EQ(Settings(path).value("nothing"), "");
}

TEST(Settings, LastAsLongAsTheProgramWhereTheyCannotBeKept) {
    Settings settings("");
    settings.set("language", "en");
    EXPECT_EQ(settings.value("language"), "en");
}

}  // namespace
