#include "browserfill.h"

#include "treenodes.h"

#include <kiln/inode.h>

namespace tessera {

namespace {

/// References within definitions multiply. In a tree that has this many items from references, a
/// further reference lists only its own children.
constexpr int kMaxExpandedItems = 200'000;

bool hasGrandchildren(INode& node) {
    for (int i = 0; i < node.NumberOfChildren(); ++i)
        if (node.GetChildNode(i)->NumberOfChildren() > 0) return true;
    return false;
}

}  // namespace

BrowserItem BrowserFill::add(BrowserItem parentItem, INode* node) {
    references_.clear();
    const BrowserItem first = addScene({parentItem, node});
    for (const Reference& reference : references_) addBelow(reference);
    return first;
}

/// Adds the nodes level by level, and children that have none themselves after all others, so that
/// branches get their items before the many leaves: tree controls find an item sooner that was
/// added early, and most calls are about branches.
BrowserItem BrowserFill::addScene(const Pending& top) {
    std::vector<Pending> branches;  // whose children wait, with their own items
    std::vector<Pending> lowest;
    const auto addOne = [&](const Pending& one) {
        const BrowserItem item = addItemOf(one.node, one.parentItem);
        if (!item) return item;
        if (INode* const definition = definitions_.of(one.node))
            references_.push_back({item, one.node, definition});
        else
            (hasGrandchildren(*one.node) ? branches : lowest).push_back({item, one.node});
        return item;
    };
    const BrowserItem first = addOne(top);
    for (const std::vector<Pending>* const list : {&branches, &lowest})
        for (std::size_t i = 0; i < list->size(); ++i) {
            const Pending parent = (*list)[i];
            for (int child = 0; child < parent.node->NumberOfChildren(); ++child)
                addOne({parent.parentItem, parent.node->GetChildNode(child)});
        }
    return first;
}

/// Adds what a reference lists. That may be nested deeper than the call stack, so the nodes that
/// are still to be added are kept in a list.
void BrowserFill::addBelow(const Reference& reference) {
    pushChildren(reference);
    while (!pending_.empty()) {
        const Pending next = pending_.back();
        pending_.pop_back();
        if (!next.parentItem) {
            listed_.erase(next.node);
        } else if (const BrowserItem item = addItemOf(next.node, next.parentItem)) {
            ++expandedItems_;
            pushChildren({item, next.node, definitions_.of(next.node)});
        }
    }
}

void BrowserFill::pushChildren(const Reference& reference) {
    INode* above = reference.node;
    if (reference.definition && mayList(reference.definition)) {
        above = reference.definition;
        noteListed(above);
        pending_.push_back({nullptr, above});  // reached when all below has been added
    }
    for (int i = above->NumberOfChildren(); i-- > 0;)
        pending_.push_back({reference.item, above->GetChildNode(i)});
}

bool BrowserFill::mayList(INode* definition) {
    return expandedItems_ < kMaxExpandedItems && listed_.insert(definition).second;
}

}  // namespace tessera
