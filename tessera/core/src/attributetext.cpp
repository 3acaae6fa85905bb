#include "attributetext.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

namespace tessera {

std::string quoted(std::string_view text) {
    std::string result = "\"";
    result += text;
    return result += '"';
}

namespace {

std::string printed(double number) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

/// The script's value as a text.
std::string textOf(const FPValue& value) {
    switch (value.type) {
        case TYPE_STRING:
            return value.s != nullptr ? value.s : "";
        case TYPE_BOOL:
            return value.i != 0 ? "true" : "false";
        case TYPE_INT:
            return std::to_string(value.i);
        case TYPE_FLOAT:
            return printed(double{value.f});
        case TYPE_DOUBLE:
            return printed(value.d);
        default:
            throw Refusal(std::string("an attribute takes no ") + ParamTypeName(value.type));
    }
}

/// The number that a text is, if it is one.
std::optional<double> numberIn(const std::string& text, bool whole) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    const bool isNumber = error == std::errc() && last == end && std::isfinite(value) &&
                          (!whole || text.find_first_of(".eE") == text.npos);
    return isNumber ? std::optional(value) : std::nullopt;
}

std::string numberFor(const FltAttrDesc& row, std::string text) {
    const bool whole = row.type == FltAttrType::Integer;
    const std::optional<double> number = numberIn(text, whole);
    if (!number) {
        throw Refusal(quoted(row.key) +
                      (whole ? " takes an integer, not " : " takes a number, not ") + quoted(text));
    }
    const FltAttrRange range = fltAttrRange(row.width);
    if (*number < range.least || *number > range.most) {
        throw Refusal(quoted(row.key) + " takes numbers from " + printed(range.least) + " to " +
                      printed(range.most) + ", not " + text);
    }
    return text;
}

[[noreturn]] void refuseChoice(const FltAttrDesc& row, const std::string& text) {
    std::string choices;
    for (const char* choice : row.choices)
        if (choice) choices += (choices.empty() ? "" : ", ") + quoted(choice);
    throw Refusal(quoted(text) + " is none of the values of " + quoted(row.key) + ": " + choices);
}

/// The choice that a script names by its text, by its number, or by yes and no.
std::string choiceFor(const FltAttrDesc& row, const FPValue& value) {
    const bool isNumber = value.type == TYPE_INT || (value.type == TYPE_BOOL && row.isYesNo());
    for (const FltAttrEnum* entry = row.enumeration; isNumber && entry->text; ++entry)
        if (entry->value == value.i) return entry->text;
    std::string text = textOf(value);
    std::int32_t ignored = 0;
    if (!fltAttrEnumValue(row.enumeration, text, ignored)) refuseChoice(row, text);
    return text;
}

}  // namespace

std::string attributeText(const FltAttrDesc& row, const FPValue& value) {
    switch (row.type) {
        case FltAttrType::Enumeration:
            return choiceFor(row, value);
        case FltAttrType::Integer:
        case FltAttrType::Float:
        case FltAttrType::Double:
            return numberFor(row, textOf(value));
        default:
            return textOf(value);
    }
}

}  // namespace tessera
