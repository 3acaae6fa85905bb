// Texts by number.
#pragma once

#include <quillon/fltrecordof.h>

#include <string>

/// A text of the node before it; of a switch, the name of the mask with that index.
class FltIndexedString : public FltRecordOf<FltIndexedString, FltAncillaryRec, kFltIndexedString> {
public:
    std::uint32_t index = 0;
    /// As it stands in the file, up to the first NUL; written with a terminator.
    std::string text;
};
