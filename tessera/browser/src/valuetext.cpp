#include "valuetext.h"

#include "attributestore.h"

#include <fltkilnutil/attrtext.h>

namespace tessera {
namespace {

struct Word {
    std::string_view text;
    bool yes;
};
constexpr Word kWords[] = {{"No", false}, {"否", false}, {"False", false}, {"0", false},
                           {"Yes", true}, {"是", true},  {"True", true},   {"1", true}};

bool isYes(const FltAttrDesc& row, std::string_view entered) {
    for (const int value : {0, 1})
        if (equalIgnoringCase(entered, row.enumeration[value].text)) return value != 0;
    for (const Word& word : kWords)
        if (equalIgnoringCase(entered, word.text)) return word.yes;
    return entered.empty() || std::string_view("fF0").find(entered[0]) == std::string_view::npos;
}

}  // namespace

std::string normalisedValue(const FltAttrDesc& row, std::string_view entered) {
    if (row.isYesNo()) return row.enumeration[isYes(row, entered) ? 1 : 0].text;
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

int yesNoBegunBy(std::string_view typed) {
    for (const Word& word : kWords)
        if (equalIgnoringCase(typed, word.text.substr(0, typed.size()))) return word.yes ? 1 : 0;
    return -1;
}

bool isNormalised(const FltAttrDesc& row) noexcept {
    return row.isYesNo() || (row.type != FltAttrType::Text && row.type != FltAttrType::Enumeration);
}

}  // namespace tessera
