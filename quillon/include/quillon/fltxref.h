// The external reference record.
#pragma once

#include <quillon/fltrecordof.h>

#include <cstdint>

/// Which palettes of a referenced file give way to those of the file that refers to it: bits of the
/// reference's flags.
enum FltOverrideFlag : std::uint32_t {
    kFltOverrideColors = 0x80000000,
    kFltOverrideMaterials = 0x40000000,
    kFltOverrideTextures = 0x20000000,
    kFltOverrideLineStyles = 0x10000000,
    kFltOverrideLightSources = 0x04000000,
    kFltOverrideLightPoints = 0x02000000,
};

/// Reference to another file. It has no ID and is never named.
class FltXRef : public FltRecordOf<FltXRef, FltPrimaryRec, kFltExternalRef> {
public:
    char fileName[200] = {};  ///< NUL-padded; a full field has no terminator
    std::int32_t flags = 0;   ///< palette override bits
};
