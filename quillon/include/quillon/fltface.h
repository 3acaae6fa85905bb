// The face record.
#pragma once

#include <quillon/fltpolygon.h>
#include <quillon/fltrecordof.h>

/// Face: 80 bytes from revision 1510 on, 64 with 16-bit color indices before. Named "f%d" on
/// output. Packed colors are kept as read; `writeToken` leaves zeros in their place.
class FltFace : public FltRecordOf<FltFace, FltPolygonRec, kFltFace> {
public:
    /// As `writeToken`, with the packed colors, for files: a flag that makes them count must not
    /// stand there without them.
    void writeFileToken(FltToken& token, std::uint32_t revision) const;
};
