#include <workbench/historytexts.h>

#include <kiln/host/host.h>
#include <kiln/kiln.h>
#include <kiln/language.h>

#include <gmock/gmock.h>

using testing::EndsWith;
using workbench::redoEntry, workbench::stepText, workbench::undoEntry;

namespace {

class HistoryTexts : public testing::Test {
protected:
    ~HistoryTexts() override {
        kiln::Core::destroy();
        kiln::Core::setLanguage(KILN_LANGUAGE_CHINESE);
    }

    void make(const char* step) {
        RunUndoable(step, [this] { return core_.hostInterface().CreateObjectNode(nullptr, "x"); });
    }

    kiln::Core& core_ = kiln::Core::create();
    kiln::History& history_ = core_.history();
};

TEST_F(HistoryTexts, NameWhatIsUndoneAndRedoneInTheLanguageOfNow) {
    EXPECT_EQ(undoEntry(history_), "撤销(&O)\tCtrl+Z");
    EXPECT_EQ(redoEntry(history_), "重做(&R)\tCtrl+Y");
    make("编辑属性");
    EXPECT_EQ(undoEntry(history_), "撤销 编辑属性(&O)\tCtrl+Z");
    EXPECT_EQ(redoEntry(history_), "重做(&R)\tCtrl+Y");
    make("Edit Attribute");
    make("later");
    ASSERT_TRUE(history_.undo());
    kiln::Core::setLanguage(KILN_LANGUAGE_ENGLISH);
    EXPECT_EQ(undoEntry(history_), "Und&o Edit Attribute\tCtrl+Z");
    EXPECT_EQ(redoEntry(history_), "&Redo later\tCtrl+Y");
    ASSERT_TRUE(history_.goTo(0));
    EXPECT_EQ(undoEntry(history_), "Und&o\tCtrl+Z");
    EXPECT_EQ(redoEntry(history_), "&Redo 编辑属性\tCtrl+Y");
}

// An "&" would mark a key, a long name would make the menu as wide as the screen, and a step
// without a name is undone like any other.
TEST_F(HistoryTexts, StandAnyName) {
    make("Import R&D.flt");
    EXPECT_EQ(undoEntry(history_), "撤销 Import R&&D.flt(&O)\tCtrl+Z");
    std::string longName = "x";
    for (int i = 0; i < 200; ++i) longName += "塔";
    make(longName.c_str());
    EXPECT_LT(undoEntry(history_).size(), 110u);
    EXPECT_THAT(undoEntry(history_), EndsWith("塔(&O)\tCtrl+Z"));
    core_.hostInterface().CreateObjectNode(nullptr, "y");
    EXPECT_EQ(undoEntry(history_), "撤销 更改(&O)\tCtrl+Z");
    EXPECT_EQ(stepText(history_, 2), "更改");
    EXPECT_EQ(stepText(history_, 0), "Import R&D.flt");
}

}  // namespace
