#include <xref/xreffunctions.h>

#include "texts.h"

#include <kiln/fptable.h>
#include <kiln/inode.h>
#include <xref/references.h>

namespace xref {

namespace {

constexpr Interface_ID kReferencesId(0x51D8A2C4, 0x7B30E61F);

INode& nodeIn(const FPValue& value) {
    if (value.n == nullptr) throw Refusal(textOf(TextId::kNoNode));
    return *value.n;
}

void referencedFile(const FPParams& params, FPValue& result) {
    const std::optional<std::string> path = fileOf(nodeIn(params[0]));
    result.SetOwnedString(path ? KILN_strdup(path->c_str()) : nullptr);
}

void makeLocalFunction(const FPParams& params, FPValue& result) {
    makeLocal(nodeIn(params[0]));
    result.SetNode(params[0].n);
}

void collapseFunction(const FPParams& params, FPValue& result) {
    const bool replaces = params[2].type == TYPE_BOOL && params[2].i != 0;
    const std::string path = params[1].s != nullptr ? params[1].s : "";
    result.SetOwnedString(KILN_strdup(collapse(nodeIn(params[0]), path, replaces).c_str()));
}

constexpr FPParamDesc kNode{"node", TYPE_INODE};

constexpr FPTableRow kRows[] = {
    {0, "referencedFile", TYPE_STRING, referencedFile, {kNode}},
    {1, "makeLocal", TYPE_INODE, makeLocalFunction, {kNode}},
    {2,
     "collapse",
     TYPE_STRING,
     collapseFunction,
     {kNode, {"file", TYPE_STRING}, {"replace", TYPE_BOOL, 0, FP_OPTIONAL}}},
};

// Published when the module is loaded.
FPTableInterface theXrefFunctions(kReferencesId, "FltReferences", FP_CORE | FP_VERBS, kRows);

}  // namespace

FPStaticInterface& xrefFunctions() {
    return theXrefFunctions;
}

}  // namespace xref
