#include "browserfill.h"

#include "treenodes.h"

#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltinstance.h>

namespace tessera {

namespace {

/// References within definitions multiply. A tree that has gained this many items from them is as
/// large as anyone can read, and further references list only what is their own.
constexpr int kMaxExpandedItems = 200'000;

}  // namespace

BrowserItem BrowserFill::add(BrowserItem parentItem, INode* node) {
    // Scenes may be deeper than the call stack is, so the nodes to come are kept in a list.
    const BrowserItem first = addItem({parentItem, node});
    while (!pending_.empty()) {
        const Pending next = pending_.back();
        pending_.pop_back();
        if (next.parentItem)
            addItem(next);
        else
            listed_.erase(next.node);
    }
    return first;
}

BrowserItem BrowserFill::addItem(const Pending& pending) {
    const BrowserItem item = addItemOf(pending.node, pending.parentItem);
    if (!item) return item;
    if (!listed_.empty()) ++expandedItems_;
    INode* above = pending.node;
    if (INode* const definition = definitionOf(pending.node); definition && mayList(definition)) {
        above = definition;
        pending_.push_back({nullptr, definition});  // reached when all below has been added
    }
    for (int i = above->NumberOfChildren(); i-- > 0;)
        pending_.push_back({item, above->GetChildNode(i)});
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

bool BrowserFill::mayList(INode* definition) {
    return expandedItems_ < kMaxExpandedItems && listed_.insert(definition).second;
}

}  // namespace tessera
