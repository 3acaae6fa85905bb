#include "valuetext.h"

#include "attributestore.h"

#include <fltkilnutil/attrtext.h>

#include <array>

namespace tessera {
namespace {

/// The words for no (0) or yes (1): the row's own in both languages, and those of every language.
std::array<std::string_view, 4> wordsFor(const FltAttrDesc& row, int value) {
    const FltAttrEnum& choice = row.enumeration[value];
    if (value == 0) return {choice.text, choice.otherText, "False", "0"};
    return {choice.text, choice.otherText, "True", "1"};
}

/// Which of no and yes has a word of which `matches` holds; -1 for neither.
template <typename Matches>
int yesNo(const FltAttrDesc& row, Matches matches) {
    for (const int value : {0, 1})
        for (const std::string_view word : wordsFor(row, value))
            if (matches(word)) return value;
    return -1;
}

int yesNoOf(const FltAttrDesc& row, std::string_view entered) {
    const int said =
        yesNo(row, [entered](std::string_view word) { return equalIgnoringCase(entered, word); });
    if (said >= 0) return said;
    return !entered.empty() && std::string_view("fF0").find(entered[0]) != std::string_view::npos
               ? 0
               : 1;
}

}  // namespace

std::string normalisedValue(const FltAttrDesc& row, std::string_view entered) {
    if (row.isYesNo()) return row.enumeration[yesNoOf(row, entered)].text;
    char text[kFltNumberTextSize];
    switch (row.type) {
        case FltAttrType::Integer:
            return {text, fltFormatInteger(fltParseInteger(entered), text)};
        case FltAttrType::Float:
        case FltAttrType::Double:
            return {text, fltFormatReal(fltParseReal(entered), text)};
        default:
            return std::string(entered);
    }
}

int yesNoBegunBy(const FltAttrDesc& row, std::string_view typed) {
    return yesNo(row, [typed](std::string_view word) {
        return equalIgnoringCase(typed, word.substr(0, typed.size()));
    });
}

bool isNormalised(const FltAttrDesc& row) noexcept {
    return row.isYesNo() || (row.type != FltAttrType::Text && row.type != FltAttrType::Enumeration);
}

}  // namespace tessera
