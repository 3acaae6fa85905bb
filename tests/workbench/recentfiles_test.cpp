#include <workbench/recentfiles.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

using namespace workbench;
using testing::ElementsAre;

namespace {

TEST(RecentFiles, AreKeptNewestFirstAndWithoutDoubles) {
    const std::string list =
        (std::filesystem::temp_directory_path() / "recent_files_test" / "list.txt").string();
    std::filesystem::remove(list);
    {
        RecentFiles files(list);
        EXPECT_TRUE(files.paths().empty());
        files.add("C:\\scenes\\机场.flt");
        files.add("C:\\scenes\\tower.kiln");
        files.add("c:\\Scenes\\机场.flt");
    }
    RecentFiles files(list);
    EXPECT_THAT(files.paths(), ElementsAre("c:\\Scenes\\机场.flt", "C:\\scenes\\tower.kiln"));
    // Adding or removing a path that lies in the list itself.
    files.add(files.paths()[1]);
    EXPECT_EQ(files.paths()[0], "C:\\scenes\\tower.kiln");
    files.remove(files.paths()[0]);
    EXPECT_EQ(RecentFiles(list).paths().size(), 1u);
    for (int i = 0; i < 20; ++i) files.add(std::to_string(i));
    EXPECT_EQ(RecentFiles(list).paths().size(), RecentFiles::kMost);
    EXPECT_EQ(RecentFiles(list).paths().front(), "19");

    std::ofstream(list, std::ios::binary) << "\r\n\nonly\n";
    EXPECT_THAT(RecentFiles(list).paths(), ElementsAre("only"));
    std::filesystem::remove_all(std::filesystem::path(list).parent_path());
}

TEST(RecentFiles, LastAsLongAsTheProgramWhereTheyCannotBeKept) {
    RecentFiles files("");
    files.add("one");
    EXPECT_THAT(files.paths(), ElementsAre("one"));
}

}  // namespace
