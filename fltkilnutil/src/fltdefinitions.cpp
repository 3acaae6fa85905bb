#include <fltkilnutil/fltdefinitions.h>

#include <fltkilnutil/kilnflt.h>
#include <kiln/inode.h>
#include <quillon/fltinstance.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace {

/// A place in the walk, and the database that it lies in (null outside of any).
struct Place {
    INode* node;
    const INode* header;
};

struct Reference {
    const INode* node;
    const INode* header;
    std::int16_t number;
};

bool isOfKind(INode* node, FltNodeKind kind) {
    FltNodeKind stored;
    return fltGetKind(node, false, stored) && stored == kind;
}

}  // namespace

INode* FltDefinitions::of(INode* node) {
    if (!isOfKind(node, FltNodeKind::InstanceRef)) return nullptr;
    const auto found = found_.find(node);
    if (found != found_.end()) return found->second;
    INode* root = node;
    while (INode* const parent = root->GetParentNode()) root = parent;
    if (read_.contains(root)) return nullptr;
    read(root);
    read_.insert(root);
    const auto now = found_.find(node);
    return now == found_.end() ? nullptr : now->second;
}

void FltDefinitions::clear() noexcept {
    found_.clear();
    read_.clear();
}

void FltDefinitions::read(INode* root) {
    std::map<std::pair<const INode*, std::int16_t>, INode*> byDatabase;
    std::map<std::int16_t, INode*> anywhere;
    std::vector<Reference> references;
    // Scenes may be deeper than the call stack is, so the nodes to come are kept in a list.
    std::vector<Place> pending{{root, nullptr}};
    while (!pending.empty()) {
        Place at = pending.back();
        pending.pop_back();
        FltNodeKind kind{};
        fltGetKind(at.node, false, kind);
        if (kind == FltNodeKind::Header) {
            at.header = at.node;
        } else if (kind == FltNodeKind::InstanceDef) {
            FltInstanceDef record;
            if (fltGetRecord(at.node, record)) {
                byDatabase.try_emplace({at.header, record.instanceNumber}, at.node);
                anywhere.try_emplace(record.instanceNumber, at.node);
            }
        } else if (kind == FltNodeKind::InstanceRef) {
            FltInstanceRef record;
            if (fltGetRecord(at.node, record))
                references.push_back({at.node, at.header, record.instanceNumber});
        }
        for (int i = at.node->NumberOfChildren(); i-- > 0;)
            pending.push_back({at.node->GetChildNode(i), at.header});
    }
    for (const Reference& reference : references) {
        const auto own = byDatabase.find({reference.header, reference.number});
        if (own != byDatabase.end()) {
            found_.emplace(reference.node, own->second);
        } else if (const auto any = anywhere.find(reference.number); any != anywhere.end()) {
            found_.emplace(reference.node, any->second);
        }
    }
}

FltShownNodes::FltShownNodes(INode* top) {
    FltDefinitions definitions;
    std::vector<INode*> pending;
    const auto show = [&](INode* node) {
        if (node && tops_.insert(node).second) pending.push_back(node);
    };
    show(top);
    while (!pending.empty()) {
        INode* const node = pending.back();
        pending.pop_back();
        show(definitions.of(node));
        for (int i = node->NumberOfChildren(); i-- > 0;) pending.push_back(node->GetChildNode(i));
    }
}

bool FltShownNodes::contains(INode* node) const {
    while (node && !tops_.contains(node)) node = node->GetParentNode();
    return node != nullptr;
}
