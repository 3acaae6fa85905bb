#include "nodereader.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/textencoding.h>
#include <kiln/inode.h>
#include <quillon/fltheader.h>

namespace interchange {

const SourceRecords& NodeReader::kept(const PlanNode& node) {
    static const SourceRecords kNothing;
    if (node.node == nullptr) return kNothing;
    const SourceRecords& kept = kept_.read(*node.node);
    const bool isOther =
        !kept.record.empty() && kept.record.opcode() != static_cast<std::uint16_t>(node.kind);
    return isOther ? kNothing : kept;
}

FltRecord* NodeReader::record(const PlanNode& node) {
    const auto opcode = static_cast<std::uint16_t>(node.kind);
    FltRecord* const record = records_.of(opcode);
    if (record == nullptr || (node.node != nullptr && fltGetRecord(node.node, *record))) {
        return record;
    }
    return records_.fresh(opcode);
}

std::string idOf(FltRecord& record) {
    const char* const id = record.id();
    if (id == nullptr) return {};
    return textOf({reinterpret_cast<const std::uint8_t*>(id), sizeof FltHeader::asciiId});
}

}  // namespace interchange
