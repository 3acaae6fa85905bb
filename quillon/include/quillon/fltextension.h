// Records of other programs' own.
#pragma once

#include <quillon/fltrecordof.h>

#include <vector>

/// Extension: bytes that only the site which defined them understands.
class FltExtension : public FltRecordOf<FltExtension, FltAncillaryRec, kFltExtensionAttr> {
public:
    char* id() override { return asciiId; }

    char asciiId[8] = {};  ///< NUL-padded
    char siteId[8] = {};   ///< NUL-padded
    std::uint8_t revision = 0;
    std::uint16_t recordCode = 0;
    std::vector<std::uint8_t> data;
};
