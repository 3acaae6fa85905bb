#include "captionstore.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using base::Language;
using fltkilnutil::CaptionStore;

TEST(CaptionStoreTest, EndsAtTheFirstMissingCaptionAndAtTheLastCell) {
    const CaptionStore gap([](Language, std::uint32_t id, std::string& text) {
        text = "caption";
        return id != 103;
    });
    EXPECT_STREQ(gap.text(102), "caption");
    EXPECT_STREQ(gap.text(103), "");
    EXPECT_STREQ(gap.text(104), "") << "behind the gap";

    std::uint32_t last = 0;
    const CaptionStore full([&](Language, std::uint32_t id, std::string& text) {
        last = id;
        text = std::to_string(id);
        return true;
    });
    EXPECT_EQ(last, 612U);
    EXPECT_STREQ(full.text(101), "101");
    EXPECT_STREQ(full.text(612), "612");
    for (const std::uint32_t id : {0U, 100U, 613U}) EXPECT_STREQ(full.text(id), "") << id;
}

TEST(CaptionStoreTest, CutsCaptionsAt256BytesAndAtACharacter) {
    const std::string a(255, 'a');
    const CaptionStore store([&](Language, std::uint32_t id, std::string& text) {
        if (id == 101) text = a + "bcd";
        if (id == 102) text = a + "\u5854";
        return id <= 102;
    });
    EXPECT_EQ(store.text(101), a + "b");
    EXPECT_EQ(store.text(102), a);
}

TEST(CaptionStoreTest, PutsTheOtherLanguageIntoTheSameCells) {
    CaptionStore store([](Language language, std::uint32_t id, std::string& text) {
        text = (language == Language::kChinese ? "层" : "level") + std::to_string(id);
        return id <= 102;
    });
    const char* const text = store.text(102);
    const char* const other = store.otherText(102);
    EXPECT_STREQ(text, "层102");
    EXPECT_STREQ(other, "level102");
    for (int times = 0; times < 2; ++times) {
        store.show(Language::kEnglish);
        EXPECT_STREQ(text, "level102");
        EXPECT_STREQ(other, "层102");
    }
    store.show(Language::kChinese);
    EXPECT_STREQ(text, "层102");
    EXPECT_STREQ(store.otherText(103), "");
}

}  // namespace
