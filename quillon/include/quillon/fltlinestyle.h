// Entries of the line style palette.
#pragma once

#include <quillon/fltrecordof.h>

#include <cstdint>

/// How the lines of faces are drawn that name it.
class FltLineStyle : public FltRecordOf<FltLineStyle, FltPaletteRec, kFltLineStylePalette> {
public:
    std::int16_t index = 0;
    std::uint16_t pattern = 0xFFFF;  ///< a bit for each pixel along a line, again and again
    std::int32_t width = 1;          ///< pixels
};
