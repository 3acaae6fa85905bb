// The options of a light point.
#pragma once

#include <fltkilnutil/nodeoptions.h>

#include <cstdint>

class KilnLightPoint : public FltNodeOptions {
public:
    /// Stored as opcode 111.
    void write(FltToken& token) const override;

    /// Throws `AviaryAssertion` (`kilnflt` line 121) for another opcode.
    void read(FltToken& token) override;

    std::uint32_t reserved = 0;       ///< kept as read
    std::uint32_t mode = 0;           ///< 1: `modeParameter` counts and is shown
    std::uint32_t modeParameter = 0;  ///< edited as a signed 16-bit number
};
