// The options of a light source.
#pragma once

#include <fltkilnutil/nodeoptions.h>
#include <quillon/fltlightsourcepalette.h>

#include <cstdint>

/// The light source palette entry of a host light. Its form as a block is that of the entry.
class KilnLight : public FltNodeOptions {
public:
    void write(FltToken& token) const override;

    /// Throws what the palette entry throws for another opcode.
    void read(FltToken& token) override;

    std::uint32_t reserved = 0;  ///< not stored
    FltLightSourcePalette palette;
};
