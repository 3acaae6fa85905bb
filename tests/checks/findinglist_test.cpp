#include <checks/findinglist.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace checks;
using testing::ElementsAre, testing::IsEmpty;
using Key = FindingList::Key;

namespace {

Finding finding(Rule rule, const char* node, std::vector<std::string> values = {}) {
    Finding made;
    made.rule = rule;
    made.severity = infoOf(rule).severity;
    made.node = node;
    made.values = std::move(values);
    return made;
}

FindingList::Filter withWords(const char* words) {
    FindingList::Filter filter;
    filter.words = words;
    return filter;
}

class FindingListTest : public testing::Test {
protected:
    FindingListTest() {
        Report report;
        report.findings = {finding(Rule::GROUP_EMPTY, "north"),
                           finding(Rule::LOD_REVERSED, "Tower", {"1", "20"}),
                           finding(Rule::NAME_LONG, "hangars8", {"hangars8"}),
                           finding(Rule::LOD_REVERSED, "east", {"3", "4"}),
                           finding(Rule::LOD_GAP, "east", {"20", "30"})};
        for (const Finding& one : report.findings)
            ++report.counts[static_cast<std::size_t>(one.rule)];
        list.show(std::move(report), base::Language::kEnglish);
    }

    /// The nodes of the rows, "CODE count" for a heading.
    std::vector<std::string> rows() const {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < list.rows(); ++i) {
            const FindingList::Row row = list.at(i);
            all.push_back(row.finding ? row.finding->node
                                      : infoOf(row.rule).code + (' ' + std::to_string(row.count)));
        }
        return all;
    }
    std::vector<std::string> passing(FindingList::Filter filter) {
        list.setFilter(std::move(filter));
        return rows();
    }

    FindingList list;
};

TEST_F(FindingListTest, SortsByEachColumnAndKeepsTheOrderOfEquals) {
    EXPECT_THAT(rows(), ElementsAre("Tower", "east", "east", "north", "hangars8"));
    const struct {
        Key key;
        bool descending;
        std::vector<std::string> rows;
    } kCases[] = {{Key::kPlace, false, {"north", "Tower", "hangars8", "east", "east"}},
                  {Key::kPlace, true, {"east", "east", "hangars8", "Tower", "north"}},
                  {Key::kSeverity, false, {"north", "hangars8", "east", "Tower", "east"}},
                  {Key::kCode, false, {"north", "east", "Tower", "east", "hangars8"}},
                  {Key::kNode, false, {"east", "east", "hangars8", "north", "Tower"}},
                  {Key::kText, false, {"north", "east", "hangars8", "Tower", "east"}},
                  {Key::kMend, false, {"hangars8", "north", "Tower", "east", "east"}}};
    for (const auto& test : kCases) {
        list.sortBy(test.key, test.descending);
        EXPECT_EQ(rows(), test.rows) << static_cast<int>(test.key) << test.descending;
    }
}

TEST_F(FindingListTest, PassesWhatHasAllWords) {
    list.sortBy(Key::kPlace, false);
    EXPECT_THAT(passing(withWords("LOD")), ElementsAre("Tower", "east", "east"));
    EXPECT_THAT(passing(withWords(" lod_r  EAST ")), ElementsAre("east"));
    EXPECT_THAT(passing(withWords("distance 20")), ElementsAre("Tower"));
    EXPECT_THAT(passing(withWords("lodgap")), IsEmpty()) << "words end with what they stand in";
    FindingList::Filter warnings;
    warnings.errors = warnings.hints = false;
    EXPECT_THAT(passing(warnings), ElementsAre("east"));
    FindingList::Filter ofRule = withWords("e");
    ofRule.rule = Rule::LOD_REVERSED;
    EXPECT_THAT(passing(ofRule), ElementsAre("Tower", "east"));
    list.setFilter({});
    list.speak(base::Language::kChinese);
    EXPECT_THAT(passing(withWords("没有子节点")), ElementsAre("north"));
}

TEST_F(FindingListTest, GroupsByRuleTheGravestFirst) {
    list.setGrouped(true);
    list.sortBy(Key::kNode, false);
    EXPECT_THAT(rows(), ElementsAre("LOD_REVERSED 2", "east", "Tower", "LOD_GAP 1", "east",
                                    "NAME_LONG 1", "hangars8", "GROUP_EMPTY 1", "north"));
    list.fold(Rule::LOD_REVERSED, true);
    FindingList::Filter grave;
    grave.hints = false;
    EXPECT_THAT(passing(grave), ElementsAre("LOD_REVERSED 2", "LOD_GAP 1", "east"));
    EXPECT_TRUE(list.at(0).isFolded);
    EXPECT_EQ(list.rowOf(1), std::nullopt) << "folded away";
    EXPECT_EQ(list.rowOf(4), 2u);
    EXPECT_EQ(list.passed(), 3u);
    list.setGrouped(false);
    EXPECT_THAT(rows(), ElementsAre("east", "east", "Tower"));
}

TEST_F(FindingListTest, TakesOutWhatHasGoneAndCountsItNoLonger) {
    list.sortBy(Key::kPlace, false);
    EXPECT_EQ(passing(withWords("e")).size(), 5u);
    EXPECT_EQ(list.removeIf([](std::size_t i) { return i == 0 || i == 3; }), 2u);
    EXPECT_THAT(rows(), ElementsAre("Tower", "hangars8", "east"));
    EXPECT_EQ(list.report().countOf(Rule::LOD_REVERSED), 1u);
    EXPECT_THAT(passing(withWords("gap")), ElementsAre("east"))
        << "what words are looked for in moves along";
    EXPECT_THAT(passing(withWords("north")), IsEmpty());
}

TEST_F(FindingListTest, QuotesTheCellsOfATable) {
    Report report;
    report.findings = {finding(Rule::NAME_DUPLICATE, "a \"b\", c", {"a \"b\", c"})};
    report.findings[0].place = 7;
    EXPECT_EQ(toCsv(report, base::Language::kEnglish, "handle"),
              "code,severity,handle,node,text\r\n"
              "NAME_DUPLICATE,hint,7,\"a \"\"b\"\", c\","
              "\"another node of the database is named a \"\"b\"\", c too\"\r\n");
}

}  // namespace
