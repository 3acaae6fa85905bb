#include "texts.h"

#include <base/texttable.h>
#include <quillon/fltrecordtype.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

namespace checks {

namespace {

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include "texts.inc"
#undef TEXT_ROW
};

struct RecordWord {
    std::string_view record;
    base::TextRow text;
};
constexpr RecordWord kRecordWords[] = {
#define TEXT_ROW(name, id, chinese, english) {#name, {id, chinese, english}},
#include <checks/recordwords.inc>
#undef TEXT_ROW
};

using Values = std::array<std::string_view, 2>;

/// What stands in `text` where `pattern` has {0} and {1}, in that order; nothing where the rest
/// differs.
std::optional<Values> matched(std::string_view text, std::string_view pattern) {
    Values values;
    for (std::string_view& value : values) {
        const std::size_t place = std::min(pattern.find('{'), pattern.size());
        if (!text.starts_with(pattern.substr(0, place))) return std::nullopt;
        text.remove_prefix(place);
        pattern.remove_prefix(place);
        if (pattern.empty()) break;
        pattern.remove_prefix(3);
        const std::string_view next = pattern.substr(0, pattern.find('{'));
        const std::size_t end = next.empty() ? text.size() : text.find(next);
        if (end == std::string_view::npos) return std::nullopt;
        value = text.substr(0, end);
        text.remove_prefix(end);
    }
    if (text != pattern) return std::nullopt;
    return values;
}

}  // namespace

std::string textOf(TextNumber text, base::Language language,
                   std::initializer_list<std::string_view> values) {
    return base::filledText(kTexts, static_cast<unsigned>(text),
                            static_cast<std::uint16_t>(language), values);
}

std::string recordWord(std::uint16_t opcode) {
    const std::string_view name = fltRecordName(opcode);
    const auto* const found = std::ranges::find(kRecordWords, name, &RecordWord::record);
    return std::string(found == std::end(kRecordWords) ? name : found->text.english);
}

std::string wordOf(const std::string& english, base::Language language) {
    if (language == base::Language::kEnglish) return english;
    for (const RecordWord& word : kRecordWords)
        if (english == word.text.english)
            return base::tableText({&word.text, 1}, word.text.id, language);
    for (const base::TextRow& row : kTexts) {
        if (row.id >= static_cast<unsigned>(TextNumber::kTargetLine)) break;
        if (const auto values = matched(english, row.english))
            return textOf(TextNumber{row.id}, language, {(*values)[0], (*values)[1]});
    }
    return english;
}

}  // namespace checks
