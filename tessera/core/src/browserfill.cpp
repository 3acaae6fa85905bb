#include "browserfill.h"

#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltinstance.h>

namespace tessera {

namespace {

/// References within definitions multiply. A tree that has gained this many items from them is as
/// large as anyone can read, and further references list only what is their own.
constexpr int kMaxExpandedItems = 200'000;

NodeHandle handleOf(INode* node) {
    return reinterpret_cast<NodeHandle>(node);
}

}  // namespace

BrowserItem BrowserFill::add(BrowserItem parentItem, INode* node) {
    // Scenes may be deeper than the call stack is, so the nodes to come are kept in a list.
    const BrowserItem first = addItem({parentItem, node, -1});
    while (!pending_.empty()) {
        const Pending next = pending_.back();
        pending_.pop_back();
        addItem(next);
    }
    return first;
}

BrowserItem BrowserFill::addItem(const Pending& pending) {
    const BrowserItem item =
        _zufltguiaddnode(pending.parentItem, pending.node->GetName(), handleOf(pending.node));
    if (!item) return item;
    if (pending.expansion >= 0) ++expandedItems_;
    INode* listed = pending.node;
    int expansion = pending.expansion;
    if (INode* const definition = definitionOf(pending.node);
        definition && mayExpand(definition, expansion)) {
        expansions_.push_back({definition, expansion});
        expansion = static_cast<int>(expansions_.size()) - 1;
        listed = definition;
    }
    for (int i = listed->NumberOfChildren(); i-- > 0;)
        pending_.push_back({item, listed->GetChildNode(i), expansion});
    return item;
}

INode* BrowserFill::definitionOf(INode* node) {
    FltNodeKind kind;
    FltInstanceRef reference;
    if (!fltGetKind(node, false, kind) || kind != FltNodeKind::InstanceRef ||
        !fltGetRecord(node, reference))
        return nullptr;
    if (!definitions_) collectDefinitions();
    const auto found = definitions_->find(reference.instanceNumber);
    return found == definitions_->end() ? nullptr : found->second;
}

void BrowserFill::collectDefinitions() {
    definitions_.emplace();
    std::vector<INode*> nodes{host_.GetRootNode()};
    while (!nodes.empty()) {
        INode* const node = nodes.back();
        nodes.pop_back();
        if (!node) continue;
        FltNodeKind kind;
        FltInstanceDef definition;
        if (fltGetKind(node, false, kind) && kind == FltNodeKind::InstanceDef &&
            fltGetRecord(node, definition))
            definitions_->emplace(definition.instanceNumber, node);
        for (int i = node->NumberOfChildren(); i-- > 0;) nodes.push_back(node->GetChildNode(i));
    }
}

bool BrowserFill::mayExpand(INode* definition, int expansion) const {
    if (expandedItems_ >= kMaxExpandedItems) return false;
    for (; expansion >= 0; expansion = expansions_[static_cast<std::size_t>(expansion)].outer)
        if (expansions_[static_cast<std::size_t>(expansion)].definition == definition) return false;
    return true;
}

}  // namespace tessera
