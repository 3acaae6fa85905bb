// What the nodes that go into a file say.
#pragma once

#include "../recordcache.h"
#include "../sourcerecords.h"
#include "plan.h"

#include <quillon/fltfactory.h>
#include <quillon/fltvertexlist.h>

#include <string>

namespace interchange {

/// Reads nodes of a plan, many with one object.
class NodeReader {
public:
    /// What is kept on the node as the kind that it is now. Valid until the next call.
    const SourceRecords& kept(const PlanNode& node);

    /// The node's record, or a new one; null for a kind without a class. Valid until the next call
    /// for that kind.
    FltRecord* record(const PlanNode& node);
    /// The same for a kind whose class is known.
    template <typename Record>
    Record& recordAs(const PlanNode& node) {
        return static_cast<Record&>(*record(node));
    }

    /// Whether records of that kind have a class.
    bool hasClass(FltNodeKind kind) {
        return records_.of(static_cast<std::uint16_t>(kind)) != nullptr;
    }

private:
    SourceRecordsReader kept_;
    RecordCache records_{fltCreateRecord};
};

/// Whether a node of that kind is one polygon or string of points, whose vertex list is its own.
constexpr bool hasOwnList(FltNodeKind kind) noexcept {
    return kind == FltNodeKind::Face || fltIsLightPoint(static_cast<std::uint16_t>(kind));
}

/// What the record calls its node, as UTF-8.
std::string idOf(FltRecord& record);

}  // namespace interchange
