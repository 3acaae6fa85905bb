#include <gtest/gtest.h>
#include <kiln/kiln.h>

#include <random>
#include <vector>

namespace {

// Against a vector, through all that can be done to an array and from empty to large.
TEST(TabTest, HoldsWhatAVectorHolds) {
    std::mt19937 random(11);
    Tab<int> tab;
    std::vector<int> expected;
    const auto below = [&](std::size_t limit) { return static_cast<int>(random() % limit); };
    for (int step = 0; step < 5'000; ++step) {
        const int count = static_cast<int>(expected.size());
        const int at = below(expected.size() + 1);
        const int some[] = {step, -step, 3};
        switch (random() % 8) {
            case 0:
                tab.Append(3, some);
                expected.insert(expected.end(), some, some + 3);
                break;
            case 1:
                EXPECT_EQ(tab.Insert(at, 2, some), at);
                expected.insert(expected.begin() + at, some, some + 2);
                break;
            case 2: {
                const int gone = below(static_cast<std::size_t>(count - at + 1));
                tab.Delete(at, gone);
                expected.erase(expected.begin() + at, expected.begin() + at + gone);
                break;
            }
            case 3:
                if (below(20) > 0) break;
                tab.SetCount(at);
                expected.resize(static_cast<std::size_t>(at));
                break;
            case 4:
                tab.SetCount(count + 2);
                expected.resize(expected.size() + 2);
                break;
            case 5:
                tab = Tab<int>(tab);
                break;
            case 6:
                tab.Resize(count + below(40));
                break;
            default:
                // One of its own elements, which moves while the array grows.
                EXPECT_EQ(tab.Append(count > 0 ? tab[at % count] : step), count);
                expected.push_back(count > 0 ? expected[static_cast<std::size_t>(at % count)]
                                             : step);
        }
        ASSERT_EQ(std::vector<int>(tab.begin(), tab.end()), expected) << step;
    }
    const Tab<int> copy = tab;
    EXPECT_EQ(copy, tab);
    tab[0] = -1;
    EXPECT_FALSE(copy == tab);
    const Tab<int> moved = std::move(tab);
    EXPECT_EQ(moved.Count(), copy.Count());
    EXPECT_TRUE(tab.IsEmpty());  // NOLINT(bugprone-use-after-move)
}

}  // namespace
