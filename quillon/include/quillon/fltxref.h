// The external reference record.
#pragma once

#include <quillon/fltrecordof.h>

/// Reference to another file. It has no ID and is never named.
class FltXRef : public FltRecordOf<FltXRef, FltPrimaryRec, kFltExternalRef> {
public:
    char fileName[200] = {};  ///< NUL-padded; a full field has no terminator
    std::int32_t flags = 0;   ///< palette override bits
};
