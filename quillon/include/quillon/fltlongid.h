// Names longer than a record's ID.
#pragma once

#include <quillon/fltrecordof.h>

#include <string>

/// The whole name of the node before it.
class FltLongId : public FltRecordOf<FltLongId, FltAncillaryRec, kFltLongId> {
public:
    /// As it stands in the file, up to the first NUL; written with a terminator.
    std::string name;
};
