#include <checks/checkfunctions.h>

#include <base/replacefile.h>
#include <checks/check.h>
#include <checks/mends.h>
#include <checks/query.h>
#include <checks/scenesource.h>
#include <kiln/fptable.h>
#include <kiln/kiln.h>
#include <kiln/language.h>

#include <algorithm>
#include <stdexcept>

namespace checks {

namespace {

constexpr Interface_ID kCheckId(0x51D8A2C4, 0x7B30E61C);

/// Why a function does not do what it is asked to; the script is told.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What was found last, and for what.
struct LastRun {
    Target target;
    Report report;
};

LastRun& last() {
    static LastRun run;
    return run;
}

const Finding& findingAt(const FPValue& index) {
    const std::vector<Finding>& findings = last().report.findings;
    if (index.i < 1 || static_cast<std::size_t>(index.i) > findings.size())
        throw Refusal("there is no finding " + std::to_string(index.i) + " of " +
                      std::to_string(findings.size()));
    return findings[static_cast<std::size_t>(index.i) - 1];
}

int countOf(std::uint64_t number) {
    constexpr std::uint64_t kMost = 0x7FFFFFFF;
    return static_cast<int>(std::min(number, kMost));
}

std::string textOf(const FPValue& value) {
    return value.s != nullptr ? value.s : "";
}

void loadText(FPValue& result, const std::string& text) {
    result.SetOwnedString(KILN_strdup(text.c_str()));
}

Interface& host() {
    Interface* const core = GetCOREInterface();
    if (core == nullptr) throw Refusal("there is no scene");
    return *core;
}

// ---------------------------------------------------------------- the functions

void run(const FPParams& params, FPValue& result) {
    LastRun found;
    found.target = findTarget(textOf(params[0]));
    SceneSource source(host());
    // A batch checks before and after its script.
    static KnownReferences references;
    Check check(source, found.target, &references);
    check.finish();
    found.report = check.report();
    last() = std::move(found);
    result.SetInt(countOf(last().report.findings.size()));
}

void count(const FPParams&, FPValue& result) {
    result.SetInt(countOf(last().report.findings.size()));
}

/// Of all that was found, whether it is kept or not.
void total(const FPParams& params, FPValue& result) {
    const std::string name = textOf(params[0]);
    if (const auto severity = severityOf(name)) {
        result.SetInt(countOf(last().report.countOf(*severity, last().target)));
    } else if (const auto rule = ruleOf(name)) {
        result.SetInt(countOf(last().report.countOf(*rule)));
    } else {
        throw Refusal("\"" + name + "\" is neither a severity nor a rule");
    }
}

void code(const FPParams& params, FPValue& result) {
    result.SetString(infoOf(findingAt(params[0]).rule).code);
}

void severity(const FPParams& params, FPValue& result) {
    result.SetString(nameOf(findingAt(params[0]).severity));
}

void node(const FPParams& params, FPValue& result) {
    result.SetNode(host().GetINodeByHandle(static_cast<DWORD>(findingAt(params[0]).place)));
}

void text(const FPParams& params, FPValue& result) {
    loadText(result, findingAt(params[0]).text(base::Language{GetLanguage()}));
}

void mendFinding(const FPParams& params, FPValue& result) {
    result.SetBool(mend(host(), last().target, findingAt(params[0])));
}

void save(const FPParams& params, FPValue&) {
    const std::string json = toJson(last().report, last().target, "scene", "handle");
    base::replaceFile(textOf(params[0]), json);
}

void targets(const FPParams&, FPValue& result) {
    result.SetStrings(targetNames());
}

/// What the last query has found, by their handles: nodes may go meanwhile.
std::vector<DWORD>& lastFound() {
    static std::vector<DWORD> handles;
    return handles;
}

void findNodes(const FPParams& params, FPValue& result) {
    const std::vector<INode*> nodes = Query(textOf(params[0])).find(host());
    std::vector<DWORD> handles;
    handles.reserve(nodes.size());
    for (const INode* const node : nodes) handles.push_back(node->GetHandle());
    lastFound() = std::move(handles);
    result.SetInt(countOf(nodes.size()));
}

void foundNode(const FPParams& params, FPValue& result) {
    const std::vector<DWORD>& found = lastFound();
    if (params[0].i < 1 || static_cast<std::size_t>(params[0].i) > found.size())
        throw Refusal("there is no found node " + std::to_string(params[0].i) + " of " +
                      std::to_string(found.size()));
    result.SetNode(host().GetINodeByHandle(found[static_cast<std::size_t>(params[0].i) - 1]));
}

void selectFound(const FPParams&, FPValue& result) {
    host().ClearNodeSelection();
    for (const DWORD handle : lastFound())
        if (INode* const node = host().GetINodeByHandle(handle)) host().SelectNode(node, false);
    result.SetInt(host().GetSelNodeCount());
}

// ---------------------------------------------------------------- publishing

constexpr FPParamDesc kIndex{"index", TYPE_INT};

constexpr FPTableRow kRows[] = {
    {0, "run", TYPE_INT, run, {{"target", TYPE_STRING}}},
    {1, "count", TYPE_INT, count},
    {2, "total", TYPE_INT, total, {{"what", TYPE_STRING}}},
    {3, "code", TYPE_STRING, code, {kIndex}},
    {4, "severity", TYPE_STRING, severity, {kIndex}},
    {5, "node", TYPE_INODE, node, {kIndex}},
    {6, "text", TYPE_STRING, text, {kIndex}},
    {7, "mend", TYPE_BOOL, mendFinding, {kIndex}},
    {8, "save", TYPE_VOID, save, {{"file", TYPE_STRING}}},
    {9, "targets", TYPE_STRING_TAB, targets},
    {10, "findNodes", TYPE_INT, findNodes, {{"query", TYPE_STRING}}},
    {11, "foundNode", TYPE_INODE, foundNode, {kIndex}},
    {12, "selectFound", TYPE_INT, selectFound},
};

// Published when the module is loaded.
FPTableInterface theCheckFunctions(kCheckId, "FltCheck", FP_CORE, kRows);

}  // namespace

FPStaticInterface& checkFunctions() {
    return theCheckFunctions;
}

}  // namespace checks
