// The color palette.
#pragma once

#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecordof.h>

#include <vector>

/// Color palette, which files of revision 1500 and later have in this layout. A color index names
/// an entry in its upper bits and one of 128 intensities, dark to full, in its lower 7.
class FltColorPalette : public FltRecordOf<FltColorPalette, FltPaletteRec, kFltColorPalette> {
public:
    static constexpr std::uint32_t kEntries = 1024;
    static constexpr std::uint32_t kIntensityBits = 7;
    static constexpr std::uint32_t kFullIntensity = 127;

    std::vector<FltPackedColor> colors;   ///< at most `kEntries`
    std::vector<std::uint8_t> nameTable;  ///< the bytes behind the colors; empty without names
};
