#include <base/scopedvalue.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

TEST(ScopedValue, HoldsForItsScopeAndNests) {
    bool flag = false;
    {
        const base::ScopedValue outer(flag, true);
        EXPECT_TRUE(flag);
        {
            const base::ScopedValue inner(flag, true);
            EXPECT_TRUE(flag);
        }
        EXPECT_TRUE(flag) << "the outer one still holds";
    }
    EXPECT_FALSE(flag);
}

TEST(ScopedValue, PutsBackWhatWasThereAlsoAfterAnException) {
    std::string text = "before";
    try {
        const base::ScopedValue within(text, std::string("within"));
        text += ", changed";
        throw std::runtime_error("");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(text, "before");
}

TEST(ScopedValue, CountsHowDeeplyItIsNested) {
    int depth = 0;
    const base::ScopedValue first(depth, depth + 1);
    {
        const base::ScopedValue second(depth, depth + 1);
        EXPECT_EQ(depth, 2);
    }
    EXPECT_EQ(depth, 1);
}

}  // namespace
