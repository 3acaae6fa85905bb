#include <script/attributeverbs.h>

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/inode.h>
#include <quillon/fltopcode.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace script {

namespace {

std::string quoted(std::string_view text) {
    std::string result = "\"";
    result += text;
    return result += '"';
}

// The group of the node's kind, filled with the node's values.
FltAttrGroup& loaded(INode* node) {
    FltNodeKind kind{};
    if (!fltGetKind(node, true, kind))
        throw Failure(quoted(node->GetName()) + " is no OpenFlight node");
    if (FltAttrGroup* const group = fltAttrLoad(node, kFltRevision)) return *group;
    throw Failure("the attributes of " + quoted(node->GetName()) + " cannot be read");
}

FltAttrDesc& rowOf(FltAttrGroup& group, const std::string& key) {
    if (FltAttrDesc* const row = fltAttrFindRow(group.kind, key)) return *row;
    throw Failure("a node of this kind has no attribute " + quoted(key) +
                  "; attrKeys lists those that it has");
}

std::string textOf(const FltAttrDesc& row) {
    const char* const text = row.value.text();
    return text ? std::string(text) : std::string();
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

/// What a row's field can hold.
struct Range {
    double least;
    double most;
};

template <typename Number>
constexpr Range rangeOf() {
    return {double{std::numeric_limits<Number>::lowest()},
            double{std::numeric_limits<Number>::max()}};
}

Range rangeOf(FltAttrWidth width) {
    switch (width) {
        case FltAttrWidth::Int8:
            return rangeOf<std::int8_t>();
        case FltAttrWidth::Uint8:
            return rangeOf<std::uint8_t>();
        case FltAttrWidth::Int16:
            return rangeOf<std::int16_t>();
        case FltAttrWidth::Uint16:
            return rangeOf<std::uint16_t>();
        case FltAttrWidth::Float32:
            return rangeOf<float>();
        case FltAttrWidth::Float64:
            return rangeOf<double>();
        default:
            return rangeOf<std::int32_t>();
    }
}

std::string numberFor(const FltAttrDesc& row, std::string text) {
    const bool whole = row.type == FltAttrType::Integer;
    const std::optional<double> number = numberIn(text, whole);
    if (!number) {
        throw Failure(quoted(row.key) +
                      (whole ? " takes an integer, not " : " takes a number, not ") + quoted(text));
    }
    const Range range = rangeOf(row.width);
    if (*number < range.least || *number > range.most) {
        const auto shown = [whole](double limit) {
            return (whole ? Value(static_cast<std::int32_t>(limit)) : Value(limit)).shown();
        };
        throw Failure(quoted(row.key) + " takes numbers from " + shown(range.least) + " to " +
                      shown(range.most) + ", not " + text);
    }
    return text;
}

[[noreturn]] void refuseChoice(const FltAttrDesc& row, const std::string& text) {
    std::string choices;
    for (const char* choice : row.choices)
        if (choice) choices += (choices.empty() ? "" : ", ") + quoted(choice);
    throw Failure(quoted(text) + " is none of the values of " + quoted(row.key) + ": " + choices);
}

// What the value is as a text of the row; refuses what the row would misread.
std::string textFor(const FltAttrDesc& row, const Value& value) {
    std::int32_t ignored = 0;
    switch (row.type) {
        case FltAttrType::Enumeration: {
            if (const auto* boolean = value.as<bool>(); boolean && row.isYesNo())
                for (const FltAttrEnum* entry = row.enumeration; entry->text; ++entry)
                    if ((entry->value != 0) == *boolean) return entry->text;
            std::string text = value.shown();
            if (!fltAttrEnumValue(row.enumeration, text, ignored)) refuseChoice(row, text);
            return text;
        }
        case FltAttrType::Integer:
        case FltAttrType::Float:
        case FltAttrType::Double:
            return numberFor(row, value.shown());
        default:
            return value.shown();
    }
}

Value getAttr(const Arguments& arguments) {
    FltAttrGroup& group = loaded(arguments.node(0));
    return Value(textOf(rowOf(group, arguments.text(1))));
}

Value setAttr(const Arguments& arguments) {
    INode* const node = arguments.node(0);
    FltAttrGroup& group = loaded(node);
    FltAttrDesc& row = rowOf(group, arguments.text(1));
    if (!row.visible) throw Failure(quoted(row.key) + " cannot be set for this node");
    const std::string text = textFor(row, arguments[2]);
    if (!fltAttrEdit(node, kFltRevision, group, row, text.c_str()))
        throw Failure("the attribute cannot be stored");
    return Value(Done{});
}

Value attrKeys(const Arguments& arguments) {
    const FltAttrGroup& group = loaded(arguments.node(0));
    std::vector<Value> keys;
    for (const FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
        if (*row->key) keys.emplace_back(row->key);
    return Value::ofArray(std::move(keys));
}

}  // namespace

void addAttributeVerbs(Engine& engine) {
    engine.addVerb("getAttr", "node key", getAttr);
    engine.addVerb("setAttr", "node key value", setAttr);
    engine.addVerb("attrKeys", "node", attrKeys);
    engine.addNodeProperty("kind", [](INode& node) {
        FltNodeKind kind{};
        if (!fltGetKind(&node, true, kind)) return Value();
        const std::string name(fltOpcodeName(static_cast<std::uint16_t>(kind)));
        return Value(name.starts_with("FLT_") ? name.substr(4) : name);
    });
}

}  // namespace script
