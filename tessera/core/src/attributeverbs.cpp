#include <tessera/attributeverbs.h>

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltopcode.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tessera {

namespace {

constexpr Interface_ID kAttributeVerbsId(0x6A3C1F07, 0x2E9D0006);

constexpr int kNoDescription = -1;

enum Function : FunctionID { kGetAttr = 0, kSetAttr = 1, kAttrKeys = 2, kKind = 3 };

constexpr FPFunctionDesc kFunctions[] = {
    {kGetAttr,
     "getAttr",
     kNoDescription,
     TYPE_VALUE,
     0,
     {{"node", TYPE_INODE}, {"key", TYPE_STRING}, {"raw", TYPE_BOOL, 0, FP_OPTIONAL}}},
    {kSetAttr,
     "setAttr",
     kNoDescription,
     TYPE_VOID,
     0,
     {{"node", TYPE_INODE}, {"key", TYPE_STRING}, {"value", TYPE_VALUE}}},
    {kAttrKeys, "attrKeys", kNoDescription, TYPE_STRING_TAB, 0, {{"node", TYPE_INODE}}},
    {kKind, "kind", kNoDescription, TYPE_STRING, 0, {{"node", TYPE_INODE}}},
};

/// A refusal: one sentence for the script's author.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string quoted(std::string_view text) {
    std::string result = "\"";
    result += text;
    return result += '"';
}

/// The group of the node's kind, filled with the node's values.
FltAttrGroup& loaded(INode* node) {
    if (node == nullptr) throw Refusal("a node is needed");
    FltNodeKind kind{};
    if (!fltGetKind(node, true, kind))
        throw Refusal(quoted(node->GetName()) + " is no OpenFlight node");
    if (FltAttrGroup* const group = fltAttrLoad(node, kFltRevision)) return *group;
    throw Refusal("the attributes of " + quoted(node->GetName()) + " cannot be read");
}

FltAttrDesc& rowOf(FltAttrGroup& group, const char* key) {
    const std::string_view wanted = key != nullptr ? key : "";
    if (FltAttrDesc* const row = fltAttrFindRow(group.kind, wanted)) return *row;
    throw Refusal("a node of this kind has no attribute " + quoted(wanted) +
                  "; attrKeys lists those that it has");
}

std::string printed(double number) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

/// What a script gave for an attribute, as a text.
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
        throw Refusal(quoted(row.key) +
                      (whole ? " takes an integer, not " : " takes a number, not ") + quoted(text));
    }
    const Range range = rangeOf(row.width);
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

/// What the value is as a text of the row; refuses what the row would misread.
std::string textFor(const FltAttrDesc& row, const FPValue& value) {
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

const char* textOf(const FltAttrDesc& row) {
    return row.value.text() != nullptr ? row.value.text() : "";
}

FltAttrBlock blockOf(FltAttrGroup& group, const FltAttrDesc& row) {
    if (row.target == FltAttrTarget::Options) return FltAttrBlock(*group.options);
    return FltAttrBlock(*group.record);
}

/// The value as the node stores it: a number for all but texts.
void getRaw(FltAttrGroup& group, const FltAttrDesc& row, FPValue& result) {
    const FltAttrBlock block = blockOf(group, row);
    const void* const field = row.field.address(block.base());
    switch (row.width) {
        case FltAttrWidth::Text:
            return result.SetOwnedString(KILN_strdup(textOf(row)));
        case FltAttrWidth::Float32:
            return result.SetDouble(double{*static_cast<const float*>(field)});
        case FltAttrWidth::Float64:
            return result.SetDouble(*static_cast<const double*>(field));
        default:
            return result.SetInt(static_cast<int>(fltAttrGetField(block, row)));
    }
}

void setAttr(INode* node, const char* key, const FPValue& value) {
    FltAttrGroup& group = loaded(node);
    FltAttrDesc& row = rowOf(group, key);
    if (row.visible == 0) throw Refusal(quoted(row.key) + " cannot be set for this node");
    const std::string text = textFor(row, value);
    if (!fltAttrEdit(node, kFltRevision, group, row, text.c_str()))
        throw Refusal("the attribute cannot be stored");
}

std::vector<std::string> attrKeys(INode* node) {
    std::vector<std::string> keys;
    for (const FltAttrDesc* row = loaded(node).descriptors; !row->isTerminator(); ++row)
        if (*row->key) keys.emplace_back(row->key);
    return keys;
}

/// The opcode's name without its prefix; null for what is no OpenFlight node.
const char* kindName(INode* node) {
    FltNodeKind kind{};
    if (node == nullptr || !fltGetKind(node, true, kind)) return nullptr;
    constexpr std::string_view kPrefix = "FLT_";
    const std::string_view name = fltOpcodeName(static_cast<std::uint16_t>(kind));
    return name.data() + (name.starts_with(kPrefix) ? kPrefix.size() : 0);
}

/// Whether the arguments are of the function's types: plug-ins may call without the script engine.
bool fits(FunctionID id, const FPParams* params) {
    const auto* const function = std::ranges::find(kFunctions, id, &FPFunctionDesc::id);
    if (function == std::end(kFunctions)) return true;  // the dispatcher answers that
    const auto wanted = function->params();
    if (params == nullptr || params->size() != wanted.size()) return false;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const ParamType2 given = (*params)[i].type;
        const bool isLeftOut = given == TYPE_VOID && (wanted[i].options & FP_OPTIONAL) != 0;
        if (given != wanted[i].type && wanted[i].type != TYPE_VALUE && !isLeftOut) return false;
    }
    return true;
}

class AttributeVerbs final : public FPStaticInterface {
public:
    AttributeVerbs()
        : FPStaticInterface(kAttributeVerbsId, "FltAttributes", 0, nullptr, FP_CORE | FP_VERBS,
                            kFunctions) {}

protected:
    FPStatus _dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams* params) override {
        if (!fits(id, params)) return FPS_FAIL;
        try {
            static const FPParams kNone;
            return dispatch(id, result, params != nullptr ? *params : kNone);
        } catch (const Refusal& refusal) {
            result.SetOwnedString(KILN_strdup(refusal.what()));
            return FPS_FAIL;
        }
    }

private:
    static FPStatus dispatch(FunctionID id, FPValue& result, const FPParams& params) {
        switch (id) {
            case kGetAttr: {
                FltAttrGroup& group = loaded(params[0].n);
                const FltAttrDesc& row = rowOf(group, params[1].s);
                if (params[2].type == TYPE_BOOL && params[2].i != 0) {
                    getRaw(group, row, result);
                } else {
                    result.SetOwnedString(KILN_strdup(textOf(row)));
                }
                return FPS_OK;
            }
            case kSetAttr:
                setAttr(params[0].n, params[1].s, params[2]);
                return FPS_OK;
            case kAttrKeys:
                result.SetStrings(attrKeys(params[0].n));
                return FPS_OK;
            case kKind:
                result.SetString(kindName(params[0].n));
                return FPS_OK;
            default:
                return FPS_NO_SUCH_FUNCTION;
        }
    }
};

// Published when the module is loaded.
AttributeVerbs theAttributeVerbs;

}  // namespace

FPStaticInterface& attributeVerbs() {
    return theAttributeVerbs;
}

}  // namespace tessera
