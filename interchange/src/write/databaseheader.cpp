#include "databaseheader.h"

#include <quillon/fltrecordbytes.h>
#include <quillon/fltrevision.h>

namespace interchange {

DatabaseHeader::DatabaseHeader(const Plan& plan, std::uint32_t revision) {
    NodeReader nodes;
    const PlanNode& database = plan.nodes.front();
    const SourceRecords& kept = nodes.kept(database);
    read_ = kept.record;
    readRevision_ = kept.revision;
    header_ = nodes.recordAs<FltHeader>(database);
    sourceRevision_ = header_.revision();
    if (revision == 0) revision = fltNearestWritable(sourceRevision_);
    header_.formatRevision = static_cast<std::int32_t>(revision);
}

FileBytes DatabaseHeader::layOutHeader(const FltHeader& header) {
    const FileBytes bytes = merger_.put(header, header.revision(), read_, readRevision_);
    std::size_t length = bytes_.size();
    if (length == 0) length = bytes.size();
    if (length != read_.length()) length = fltPaddedLength(length);
    bytes_.assign(bytes.begin(), bytes.end());
    bytes_.resize(length);
    fltStateLength(bytes_);
    return bytes_;
}

}  // namespace interchange
