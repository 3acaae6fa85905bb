// Which files a batch does.
#include <base/paths.h>
#include <filetree.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../support/temporaryfolder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(PatternTest, StandsForNamesAndFolders) {
    const struct {
        const char *path, *pattern;
        bool fits;
    } cases[] = {
        {"a.flt", "*.flt", true},         {"t/a.flt", "*.flt", false},
        {"t/a.flt", "*/*.flt", true},     {"t/a.flt", "?/a.flt", true},
        {"t/a.flt", "t?a.flt", false},    {"a.flt", "**/*.flt", true},
        {"t/u/a.flt", "**/*.flt", true},  {"t/u/a.flt", "t/**", true},
        {"t/u/a.flt", "**/b.flt", false}, {"t/u/a.flt", "t/*a.flt", false},
        {"塔/a.flt", "*/a.flt", true},    {"a.flt", "", false},
        {"t/ua.flt", "**/a.flt", false},  {"t/a.flt", "t/a.flt?", false},
        {"aab.flt", "*ab.flt", true},     {"t/a.flt", "***/a.flt", true},
    };
    for (const auto& [path, pattern, fits] : cases)
        EXPECT_EQ(kilnbatch::fitsPattern(path, pattern), fits) << path << ' ' << pattern;
}

class FileTreeTest : public testing::Test {
protected:
    FileTreeTest() {
        for (const char* name : {"b.flt", "a/z.FLT", "a/b/c.flt", "a.flt", "note.txt", "a/x.kiln"})
            touch(name);
    }
    void touch(const std::string& name, const std::string& text = "") const {
        fs::create_directories((folder_.path() / name).parent_path());
        std::ofstream(folder_.path() / name) << text;
    }
    std::vector<std::string> filesOf(const std::string& in, const std::string& list = {}) const {
        kilnbatch::FileTree tree(folder_.file(in.c_str()), list);
        return filesOf(tree);
    }
    static std::vector<std::string> filesOf(kilnbatch::FileTree& tree) {
        std::vector<std::string> names;
        while (const auto path = tree.next()) names.push_back(base::genericTextOf(*path));
        return names;
    }
    std::string refusalOf(const std::string& in, const std::string& list = {}) const {
        try {
            filesOf(in, list);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    const TemporaryFolder folder_;
};

TEST_F(FileTreeTest, NamesModelsInOrder) {
    EXPECT_THAT(filesOf(""), ElementsAre("a/b/c.flt", "a/z.FLT", "a.flt", "b.flt"));
    EXPECT_THAT(filesOf("a"), ElementsAre("b/c.flt", "z.FLT"));
    EXPECT_THAT(filesOf("*.flt"), ElementsAre("a.flt", "b.flt"));
    EXPECT_THAT(filesOf("a/**"), ElementsAre("b/c.flt", "z.FLT"));
    EXPECT_THAT(filesOf("b.flt"), ElementsAre("b.flt"));
    EXPECT_THAT(filesOf("x*"), IsEmpty());
    EXPECT_THAT(refusalOf("none"), HasSubstr("cannot read"));
}

TEST_F(FileTreeTest, GoesRoundResultsAndLinks) {
    touch("out/a.flt");
    touch("a/.kilnbatch/run-1/0/half.flt");
    fs::create_directory_symlink(folder_.path(), folder_.path() / "a/loop");
    fs::create_symlink(folder_.path() / "b.flt", folder_.path() / "linked.flt");
    kilnbatch::FileTree tree(folder_.file(""));
    tree.leaveOut(folder_.path() / "out");
    const std::vector<std::string> files = filesOf(tree);
    EXPECT_THAT(files, ElementsAre("a/b/c.flt", "a/z.FLT", "a.flt", "b.flt", "linked.flt"));
    tree.rewind();
    EXPECT_EQ(filesOf(tree), files);
}

TEST_F(FileTreeTest, TakesLists) {
    touch("shard", "b.flt\r\n\na/./z.FLT\nb.flt\nmissing.flt");
    const auto all = ElementsAre("b.flt", "a/z.FLT", "missing.flt");
    EXPECT_THAT(filesOf("shard"), all);
    EXPECT_THAT(filesOf("", folder_.file("shard")), all);
    EXPECT_THAT(refusalOf("b.flt", folder_.file("shard")), HasSubstr("needs a folder"));
    EXPECT_THAT(refusalOf("", folder_.file("nolist")), HasSubstr("cannot read"));
    for (const char* line : {"../x.flt", "/x.flt", "a/../../x.flt", "note.txt"}) {
        touch("bad", std::string("b.flt\n") + line);
        EXPECT_THAT(refusalOf("bad"), HasSubstr("bad:2: ")) << line;
    }
}

}  // namespace
