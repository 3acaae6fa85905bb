// Repetition of a node.
#pragma once

#include <quillon/fltrecordof.h>

/// How many times the node before it is repeated, each time with its transform once more.
class FltReplicate : public FltRecordOf<FltReplicate, FltAncillaryRec, kFltReplicate> {
public:
    std::int16_t copies = 0;
};
