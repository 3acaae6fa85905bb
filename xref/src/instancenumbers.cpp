#include "instancenumbers.h"

#include "texts.h"

#include <fltkilnutil/fltdefinitions.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltinstance.h>
#include <xref/refusal.h>

#include <limits>
#include <new>
#include <unordered_set>

namespace xref {

namespace {

/// Calls `visit(record)` with the instance record of a node that has one; true changes it.
template <typename Visit>
void visitInstance(INode& node, Visit&& visit) {
    FltNodeKind kind{};
    if (!fltGetKind(&node, false, kind)) return;
    const auto edit = [&](auto record) {
        if (!fltGetRecord(&node, record) || !visit(record)) return;
        if (!fltPutRecord(&node, record)) throw std::bad_alloc();
    };
    if (kind == FltNodeKind::InstanceDef) edit(FltInstanceDef());
    if (kind == FltNodeKind::InstanceRef) edit(FltInstanceRef());
}

}  // namespace

std::vector<INode*> neededDefinitions(INode& file, const std::vector<INode*>& tops) {
    FltDefinitions definitions;
    std::unordered_set<const INode*> within(tops.begin(), tops.end());
    const auto isWithin = [&](const INode* node) {
        while (node != nullptr && node != &file && !within.contains(node))
            node = node->GetParentNode();
        return node != &file;
    };
    std::vector<INode*> found, open = tops;
    while (!open.empty()) {
        INode* const top = open.back();
        open.pop_back();
        ForEachInSubtree(top, [&](INode& node) {
            INode* const definition = definitions.of(&node);
            if (definition == nullptr || isWithin(definition)) return;
            within.insert(definition);
            found.push_back(definition);
            open.push_back(definition);
        });
    }
    return found;
}

InstanceNumbers::InstanceNumbers(INode& database) {
    ForEachInSubtree(&database, [this](INode& node) {
        visitInstance(node, [this](const FltInstance& record) {
            used_.insert(record.instanceNumber);
            return false;
        });
    });
}

std::int16_t InstanceNumbers::freeNumber() {
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    while (next_ <= kMost && used_.contains(static_cast<std::int16_t>(next_))) ++next_;
    if (next_ > kMost) throw Refusal(textOf(TextId::kNoNumbers));
    return static_cast<std::int16_t>(next_++);
}

void InstanceNumbers::renumber(INode& top) {
    std::map<std::int16_t, std::int16_t> becomes;
    std::set<std::int16_t> theirs;
    ForEachInSubtree(&top, [&](INode& node) {
        visitInstance(node, [&](const FltInstance& record) {
            theirs.insert(record.instanceNumber);
            return false;
        });
    });
    const std::set<std::int16_t> ours = used_;
    used_.insert(theirs.begin(), theirs.end());
    for (const std::int16_t number : theirs)
        becomes[number] = ours.contains(number) ? freeNumber() : number;
    ForEachInSubtree(&top, [&](INode& node) {
        visitInstance(node, [&](FltInstance& record) {
            const std::int16_t before = record.instanceNumber;
            record.instanceNumber = becomes[before];
            return record.instanceNumber != before;
        });
    });
}

}  // namespace xref
