// The findings of a report as a list shows them.
#pragma once

#include <checks/report.h>

#include <bitset>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace checks {

/// A report's findings in rows: those that pass a filter, sorted, and on request below a heading
/// for each rule, which can be folded. Made for 100,000 findings and more: a row costs nothing
/// until it is asked for.
class FindingList {
public:
    /// What rows are sorted by. `kPlace` is the order of the nodes.
    enum class Key { kPlace, kSeverity, kCode, kNode, kText, kMend };

    struct Filter {
        bool errors = true;
        bool warnings = true;
        bool hints = true;
        std::optional<Rule> rule;
        /// Words, all of which are to stand in code, name of the node or sentence; upper and lower
        /// case of ASCII are the same.
        std::string words;

        bool operator==(const Filter&) const = default;
    };

    struct Row {
        Rule rule{};
        const Finding* finding = nullptr;  ///< null for a heading
        std::size_t index = 0;             ///< of the finding, in the report
        bool isFolded = false;             ///< of a heading
        std::size_t count = 0;             ///< of a heading: the findings below it, folded or not
    };

    /// Shows another report, with sentences in `language`. Filter, order and folding stay.
    void show(Report report, base::Language language);
    void speak(base::Language language);
    const Report& report() const noexcept { return report_; }

    void setFilter(Filter filter);
    const Filter& filter() const noexcept { return filter_; }
    void sortBy(Key key, bool descending);
    Key key() const noexcept { return key_; }
    bool isDescending() const noexcept { return descending_; }
    void setGrouped(bool grouped);
    bool isGrouped() const noexcept { return grouped_; }
    void fold(Rule rule, bool folded);

    std::size_t rows() const noexcept { return rows_.size(); }
    /// `row` must be one of them.
    Row at(std::size_t row) const;
    /// The row of the finding with that index; nothing where it is not shown.
    std::optional<std::size_t> rowOf(std::size_t index) const;
    /// The sentence of a finding, by its index.
    std::string sentence(std::size_t index) const;
    /// How many findings pass the filter, below folded headings too.
    std::size_t passed() const noexcept { return order_.size(); }
    /// Their indices, in the order of the rows.
    const std::vector<std::uint32_t>& order() const noexcept { return order_; }

    /// Takes the findings out for whose index `isGone` says so; the report counts them no longer.
    /// Returns their number.
    std::size_t removeIf(const std::function<bool(std::size_t)>& isGone);

private:
    void passAndSort();
    void layRows();
    bool passes(std::uint32_t index, const std::vector<std::string>& words);
    const std::string& sought(std::uint32_t index);

    static constexpr std::uint32_t kHeading = 0x80000000;  ///< with the rule

    Report report_;
    base::Language language_{};
    std::vector<std::string> templates_;  ///< sentences without their values, by rule
    Filter filter_;
    Key key_ = Key::kSeverity;
    bool descending_ = true;
    bool grouped_ = false;
    std::bitset<256> folded_;
    std::vector<std::string> sought_;   ///< what words are looked for in; empty until needed
    std::vector<std::uint32_t> order_;  ///< indices of findings
    std::vector<std::uint32_t> rows_;   ///< of findings, or headings
    std::array<std::size_t, 256> passedOf_{};
};

/// The report as comma-separated values, one line for each finding below one with the names of the
/// columns, in `language`; what a place is called is as in `toJson`.
std::string toCsv(const Report& report, base::Language language, const char* placeName);

}  // namespace checks
