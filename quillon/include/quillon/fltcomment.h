// The comment record.
#pragma once

#include <quillon/fltrecordof.h>
#include <quillon/fltstring.h>

/// Text attached to the bead before it. Read, it is everything after the record header; in memory
/// it always ends with a terminator, whatever the file holds.
class FltComment : public FltRecordOf<FltComment, FltAncillaryRec, kFltComment>, public FltString {
public:
    FltComment() = default;
    /// A comment with a copy of `text`; empty for null.
    explicit FltComment(const char* text) : FltString(text) {}
};
