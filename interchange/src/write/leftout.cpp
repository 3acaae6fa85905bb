// What the host's scene says that a file has no place for.
#include "../sourcerecords.h"
#include "../texts.h"
#include "plan.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/export.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltheader.h>
#include <quillon/fltrevision.h>

#include <algorithm>
#include <string>
#include <unordered_set>

namespace interchange {

namespace {

/// Nodes of one sort, of which the user reads how many there are and what the first ones are
/// called.
class NodeList {
public:
    void add(const INode& node) {
        constexpr std::size_t kNamed = 3;
        if (count_ < kNamed) enumerate(names_, node.GetName());
        if (count_++ == kNamed) names_ = text(TextId::kAndMore, {names_});
    }

    /// Appends a line, worded by `one` or the text behind it; none for no nodes.
    void tell(TextId one, std::string& lines) const {
        if (count_ > 0) appendLine(lines, counted(count_, one, names_));
    }

    static void appendLine(std::string& lines, const std::string& line) {
        if (!lines.empty()) lines += '\n';
        lines += line;
    }

private:
    std::size_t count_ = 0;
    std::string names_;
};

bool hasForeignData(INode& node) {
    const ICustAttribContainer* const attributes = node.GetCustAttribContainer();
    if (attributes != nullptr && attributes->GetNumCustAttribs() > 0) return true;
    for (int i = 0; i < node.NumAppDataChunks(); ++i) {
        const AppDataChunk& chunk = *node.GetAppDataChunk(i);
        if (!fltIsData(chunk) && !isSourceChunk(chunk)) return true;
    }
    return false;
}

/// A face may say itself that it is hidden; for no other kind is there a place for that.
bool isHiddenInSceneOnly(const PlanNode& planned) {
    if (!planned.node->IsHidden()) return false;
    FltFace face;
    return planned.kind != FltNodeKind::Face || !fltGetRecord(planned.node, face) ||
           (face.flags & kFltSurfaceHidden) == 0;
}

std::string nameOf(std::uint32_t revision) {
    return std::to_string(revision / 100) + '.' + std::to_string(revision / 10 % 10);
}

void tellRevision(INode* database, const ExportOptions& options, std::string& lines) {
    FltHeader header;
    if (options.revision != 0 || database == nullptr || !fltGetRecord(database, header)) return;
    const std::uint32_t revision = header.revision(), written = fltNearestWritable(revision);
    if (revision == written) return;
    NodeList::appendLine(lines, text(TextId::kRevisionChange, {nameOf(revision), nameOf(written)}));
}

}  // namespace

std::string leftOutOf(const ExportOptions& options, Interface& host) {
    const Plan plan = planExport(options, host);
    NodeList hidden, foreign, passedOver;
    std::unordered_set<const INode*> written;
    written.reserve(plan.nodes.size());
    for (const PlanNode& planned : plan.nodes) {
        if (planned.node == nullptr) continue;
        written.insert(planned.node);
        if (isHiddenInSceneOnly(planned)) hidden.add(*planned.node);
        if (hasForeignData(*planned.node)) foreign.add(*planned.node);
    }
    // Nodes of another database are told of as a whole, those that were not chosen not at all.
    if (!options.selectedOnly) {
        ForEachInSubtree(host.GetRootNode(), [&](INode& node) {
            if (node.IsRootNode() || written.contains(&node)) return WalkStep::kOn;
            FltNodeKind kind{};
            if (fltGetKind(&node, false, kind) && kind == FltNodeKind::Header)
                return WalkStep::kPastThis;
            passedOver.add(node);
            return WalkStep::kOn;
        });
    }
    std::string lines;
    passedOver.tell(TextId::kNoKindNode, lines);
    if (plan.otherDatabases > 0)
        NodeList::appendLine(lines, counted(plan.otherDatabases, TextId::kOtherDatabase));
    hidden.tell(TextId::kHiddenNode, lines);
    foreign.tell(TextId::kForeignData, lines);
    tellRevision(plan.nodes.front().node, options, lines);
    return lines;
}

}  // namespace interchange
