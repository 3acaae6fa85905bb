#include "valuecomparison.h"

#include "attributestore.h"

#include <algorithm>

namespace tessera {
namespace {

constexpr ULONGLONG kStep = 15;  // milliseconds; the platform's count goes on about every 15

}  // namespace

void ValueComparison::begin(NodeHandle node, const FltAttrGroup* set) {
    node_ = node;
    set_ = set;
    marks_ = tree_.Model().marks();
    changes_ = tree_.Model().changes();
    next_ = 0;
    nodes_.clear();
    values_.clear();
    const std::size_t count = set ? fltAttrCount(*set) : 0;
    differing_.assign(count, false);
    if (!set || tree_.Selection().count() < 2) return;
    for (std::size_t i = 0; i < count; ++i) values_.emplace_back(set->descriptors[i].value.text());
    for (const TreeItem* item : tree_.Selection().visible())
        if (item->node && item->node != node) nodes_.push_back(item->node);
}

bool ValueComparison::isStale() const noexcept {
    return marks_ != tree_.Model().marks() || changes_ != tree_.Model().changes();
}

bool ValueComparison::compare(const FltAttrGroup& set) {
    bool found = false;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        if (differing_[i] || values_[i] == set.descriptors[i].value.text()) continue;
        differing_[i] = found = true;
    }
    return found;
}

bool ValueComparison::step() {
    bool found = false;
    const ULONGLONG end = ::GetTickCount64() + kStep;
    while (!isDone()) {
        const NodeHandle node = nodes_[next_++];
        if (isOfKind(node, set_->kind) && loadAttributes(node) == set_) found |= compare(*set_);
        if (std::find(differing_.begin(), differing_.end(), false) == differing_.end())
            next_ = nodes_.size();
        if (::GetTickCount64() >= end) break;
    }
    if (node_) loadAttributes(node_);
    return found;
}

}  // namespace tessera
