#include <tessera/attributeverbs.h>

#include "attributetext.h"

#include <fltkilnutil/fltfields.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/fptable.h>
#include <kiln/kiln.h>
#include <quillon/fltopcode.h>

#include <vector>

namespace tessera {

namespace {

constexpr Interface_ID kAttributeVerbsId(0x6A3C1F07, 0x2E9D0006);

/// The node, if it is one of ours.
INode* ours(INode* node) {
    if (node == nullptr) throw Refusal("a node is needed");
    FltNodeKind kind{};
    if (!fltGetKind(node, true, kind))
        throw Refusal(quoted(node->GetName()) + " is no OpenFlight node");
    return node;
}

[[noreturn]] void refuseToRead(INode* node) {
    throw Refusal("the attributes of " + quoted(node->GetName()) + " cannot be read");
}

std::vector<std::string> keysOf(INode* node) {
    std::vector<std::string> keys = fltFieldKeys(ours(node));
    if (keys.empty() && fltAttrLoad(node, kFltRevision) == nullptr) refuseToRead(node);
    return keys;
}

/// The field of that key, filled with the node's value.
FltField loaded(INode* node, const char* key) {
    const std::string_view wanted = key != nullptr ? key : "";
    const FltField field = fltFieldFind(ours(node), wanted);
    if (!field && !keysOf(node).empty())
        throw Refusal("a node of this kind has no attribute " + quoted(wanted) +
                      "; attrKeys lists those that it has");
    if (!fltFieldLoad(node, field, kFltRevision)) refuseToRead(node);
    return field;
}

void loadText(FPValue& result, const FltAttrDesc& row) {
    const char* const text = row.value.text();
    result.SetOwnedString(KILN_strdup(text != nullptr ? text : ""));
}

/// The value as the node stores it: a number for all but texts.
void loadRaw(FPValue& result, FltAttrGroup& group, const FltAttrDesc& row) {
    if (row.width == FltAttrWidth::Text) return loadText(result, row);
    const FltAttrBlock block = row.target == FltAttrTarget::Options ? FltAttrBlock(*group.options)
                                                                    : FltAttrBlock(*group.record);
    const void* const field = row.field.address(block.base());
    switch (row.width) {
        case FltAttrWidth::Float32:
            return result.SetDouble(double{*static_cast<const float*>(field)});
        case FltAttrWidth::Float64:
            return result.SetDouble(*static_cast<const double*>(field));
        default:
            return result.SetInt(static_cast<int>(fltAttrGetField(block, row)));
    }
}

// ---------------------------------------------------------------- the verbs

void getAttr(const FPParams& params, FPValue& result) {
    const FltField field = loaded(params[0].n, params[1].s);
    const FPValue& raw = params[2];
    if (raw.type == TYPE_BOOL && raw.i != 0)
        loadRaw(result, *field.group, *field.row);
    else
        loadText(result, *field.row);
}

void setAttr(const FPParams& params, FPValue&) {
    INode* const node = params[0].n;
    const FltField field = loaded(node, params[1].s);
    const FltAttrDesc& row = *field.row;
    if (row.visible == 0) throw Refusal(quoted(row.key) + " cannot be set for this node");
    const std::string text = attributeText(row, params[2]);
    if (!fltFieldStore(node, field, text.c_str())) throw Refusal("the attribute cannot be stored");
}

void attrKeys(const FPParams& params, FPValue& result) {
    result.SetStrings(keysOf(params[0].n));
}

/// The opcode's name without its prefix; null for what is no OpenFlight node.
void kind(const FPParams& params, FPValue& result) {
    FltNodeKind found{};
    if (params[0].n == nullptr || !fltGetKind(params[0].n, true, found))
        return result.SetString(nullptr);
    constexpr std::string_view kPrefix = "FLT_";
    const std::string_view name = fltOpcodeName(static_cast<std::uint16_t>(found));
    result.SetString(name.data() + (name.starts_with(kPrefix) ? kPrefix.size() : 0));
}

// ---------------------------------------------------------------- publishing

constexpr FPParamDesc kNode{"node", TYPE_INODE};
constexpr FPParamDesc kKey{"key", TYPE_STRING};

constexpr FPTableRow kRows[] = {
    {0, "getAttr", TYPE_VALUE, getAttr, {kNode, kKey, {"raw", TYPE_BOOL, 0, FP_OPTIONAL}}},
    {1, "setAttr", TYPE_VOID, setAttr, {kNode, kKey, {"value", TYPE_VALUE}}},
    {2, "attrKeys", TYPE_STRING_TAB, attrKeys, {kNode}},
    {3, "kind", TYPE_STRING, kind, {kNode}},
};

// Published when the module is loaded.
FPTableInterface theAttributeVerbs(kAttributeVerbsId, "FltAttributes", FP_CORE | FP_VERBS, kRows);

}  // namespace

FPStaticInterface& attributeVerbs() {
    return theAttributeVerbs;
}

}  // namespace tessera
