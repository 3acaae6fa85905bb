#include <checks/findinglist.h>

#include <algorithm>
#include <compare>
#include <numeric>
#include <utility>

namespace checks {

namespace {

char lowered(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

std::string lowered(std::string_view text) {
    std::string low(text);
    std::ranges::transform(low, low.begin(), [](char character) { return lowered(character); });
    return low;
}

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end != 0) words.push_back(lowered(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::weak_ordering compare(std::string_view a, std::string_view b) noexcept {
    return std::lexicographical_compare_three_way(
        a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) -> std::weak_ordering {
            return static_cast<unsigned char>(lowered(x)) <=>
                   static_cast<unsigned char>(lowered(y));
        });
}

}  // namespace

void FindingList::show(Report report, base::Language language) {
    report_ = std::move(report);
    speak(language);
}

void FindingList::speak(base::Language language) {
    language_ = language;
    templates_.clear();
    for (const RuleInfo& rule : catalogue()) templates_.push_back(sentenceOf(rule.rule, language));
    sought_.clear();
    passAndSort();
}

void FindingList::setFilter(Filter filter) {
    if (filter == filter_) return;
    filter_ = std::move(filter);
    passAndSort();
}

void FindingList::sortBy(Key key, bool descending) {
    key_ = key;
    descending_ = descending;
    passAndSort();
}

void FindingList::setGrouped(bool grouped) {
    grouped_ = grouped;
    passAndSort();
}

void FindingList::fold(Rule rule, bool folded) {
    folded_.set(static_cast<std::size_t>(rule), folded);
    layRows();
}

FindingList::Row FindingList::at(std::size_t row) const {
    Row shown;
    const std::uint32_t what = rows_.at(row);
    if ((what & kHeading) == 0) {
        shown.finding = &report_.findings[what];
        shown.index = what;
        shown.rule = shown.finding->rule;
    } else {
        shown.rule = static_cast<Rule>(what & 0xFF);
        shown.isFolded = folded_.test(what & 0xFF);
        shown.count = passedOf_[what & 0xFF];
    }
    return shown;
}

std::optional<std::size_t> FindingList::rowOf(std::size_t index) const {
    const auto found = std::ranges::find(rows_, index);
    if (found == rows_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - rows_.begin());
}

std::string FindingList::sentence(std::size_t index) const {
    const Finding& finding = report_.findings[index];
    if (finding.rule == kQueryFound) return finding.values.empty() ? "" : finding.values.front();
    return finding.filled(templates_[static_cast<std::size_t>(finding.rule)], language_);
}

std::size_t FindingList::removeIf(const std::function<bool(std::size_t)>& isGone) {
    std::vector<Finding>& findings = report_.findings;
    const bool isKept = !sought_.empty();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < findings.size(); ++i) {
        if (isGone(i)) {
            --report_.counts[static_cast<std::size_t>(findings[i].rule)];
            continue;
        }
        if (kept != i) {
            findings[kept] = std::move(findings[i]);
            if (isKept) sought_[kept] = std::move(sought_[i]);
        }
        ++kept;
    }
    const std::size_t removed = findings.size() - kept;
    if (removed == 0) return 0;
    findings.resize(kept);
    if (isKept) sought_.resize(kept);
    passAndSort();
    return removed;
}

bool FindingList::passes(std::uint32_t index, const std::vector<std::string>& words) {
    const Finding& finding = report_.findings[index];
    // What a query has found is of no severity.
    const bool isJudged = finding.rule != kQueryFound;
    if (isJudged && filter_.rule && finding.rule != *filter_.rule) return false;
    if (isJudged && (finding.severity == Severity::kError     ? !filter_.errors
                     : finding.severity == Severity::kWarning ? !filter_.warnings
                                                              : !filter_.hints))
        return false;
    return std::ranges::all_of(words, [&](const std::string& word) {
        return sought(index).find(word) != std::string::npos;
    });
}

const std::string& FindingList::sought(std::uint32_t index) {
    if (sought_.empty()) sought_.resize(report_.findings.size());
    std::string& text = sought_[index];
    if (text.empty()) {
        const Finding& finding = report_.findings[index];
        text = lowered(std::string(infoOf(finding.rule).code) + '\n' + finding.node + '\n' +
                       sentence(index));
    }
    return text;
}

void FindingList::passAndSort() {
    order_.clear();
    passedOf_.fill(0);
    const std::vector<std::string> words = wordsOf(filter_.words);
    for (std::uint32_t i = 0; i < report_.findings.size(); ++i) {
        if (!passes(i, words)) continue;
        order_.push_back(i);
        ++passedOf_[static_cast<std::size_t>(report_.findings[i].rule)];
    }
    const std::vector<Finding>& findings = report_.findings;
    const auto sort = [&](auto&& order) {
        std::ranges::stable_sort(order_, [&](std::uint32_t a, std::uint32_t b) {
            const std::weak_ordering ordering = order(a, b);
            return descending_ ? ordering > 0 : ordering < 0;
        });
    };
    switch (key_) {
        case Key::kPlace:
            if (descending_) std::ranges::reverse(order_);
            break;
        case Key::kSeverity:
            sort([&](std::uint32_t a, std::uint32_t b) -> std::weak_ordering {
                return findings[a].severity <=> findings[b].severity;
            });
            break;
        case Key::kCode:
            sort([&](std::uint32_t a, std::uint32_t b) {
                return compare(infoOf(findings[a].rule).code, infoOf(findings[b].rule).code);
            });
            break;
        case Key::kNode:
            sort([&](std::uint32_t a, std::uint32_t b) {
                return compare(findings[a].node, findings[b].node);
            });
            break;
        case Key::kText: {
            std::vector<std::string> sentences(findings.size());
            for (const std::uint32_t i : order_) sentences[i] = sentence(i);
            sort([&](std::uint32_t a, std::uint32_t b) {
                return compare(sentences[a], sentences[b]);
            });
            break;
        }
        case Key::kMend:
            sort([&](std::uint32_t a, std::uint32_t b) -> std::weak_ordering {
                return infoOf(findings[a].rule).mend <=> infoOf(findings[b].rule).mend;
            });
            break;
    }
    layRows();
}

// The gravest rules first, those of one severity in the order of the catalogue.
void FindingList::layRows() {
    rows_.clear();
    if (!grouped_) {
        rows_ = order_;
        return;
    }
    const auto ruleOfIndex = [&](std::uint32_t i) { return report_.findings[i].rule; };
    std::array<Severity, 256> severities{};
    for (const std::uint32_t i : order_)
        severities[static_cast<std::size_t>(ruleOfIndex(i))] = report_.findings[i].severity;
    std::vector<std::uint32_t> sorted = order_;
    std::ranges::stable_sort(sorted, [&](std::uint32_t a, std::uint32_t b) {
        const auto keyOf = [&](std::uint32_t i) {
            const auto rule = static_cast<std::size_t>(ruleOfIndex(i));
            return std::pair(-static_cast<int>(severities[rule]), rule);
        };
        return keyOf(a) < keyOf(b);
    });
    std::optional<Rule> below;
    for (const std::uint32_t i : sorted) {
        const Rule rule = ruleOfIndex(i);
        if (rule != below) rows_.push_back(kHeading | static_cast<std::uint32_t>(rule));
        below = rule;
        if (!folded_.test(static_cast<std::size_t>(rule))) rows_.push_back(i);
    }
    order_ = std::move(sorted);
}

std::string toCsv(const Report& report, base::Language language, const char* placeName) {
    const auto quoted = [](std::string_view text) {
        std::string cell = "\"";
        for (const char character : text) cell.append(character == '"' ? 2 : 1, character);
        return cell += '"';
    };
    std::string csv = std::string("code,severity,") + placeName + ",node,text\r\n";
    for (const Finding& finding : report.findings)
        csv += std::string(infoOf(finding.rule).code) + ',' + nameOf(finding.severity) + ',' +
               std::to_string(finding.place) + ',' + quoted(finding.node) + ',' +
               quoted(finding.text(language)) + "\r\n";
    return csv;
}

}  // namespace checks
