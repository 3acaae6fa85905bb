// What is kept on imported nodes, by the names that import and export use.
#pragma once

#include <fltkilnutil/sourcerecords.h>
#include <interchange/fileindex.h>

namespace interchange {

using fltkilnutil::isSourceChunk;
using fltkilnutil::isVertexList;
using fltkilnutil::sourceChunk;
using fltkilnutil::SourceChunk;
using fltkilnutil::SourceRecord;
using fltkilnutil::SourceRecords;
using fltkilnutil::sourceRecordsOf;
using fltkilnutil::SourceRecordsReader;
using fltkilnutil::SourceRecordsWriter;
using fltkilnutil::storeSourceChunk;

}  // namespace interchange
