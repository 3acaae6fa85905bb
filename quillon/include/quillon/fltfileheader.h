// The header record of a `.flt` file.
#pragma once

#include <quillon/fltheader.h>

/// A database header laid out as the published format has it, which is how it stands in files.
///
/// `FltHeader` holds the same fields for what scenes keep: there the light source counter stands
/// twice, and what follows it two bytes later. Both are laid out by their own format revision and
/// hold the same fields at each; assigning one to the other translates between them.
class FltFileHeader final : public FltRecordOf<FltFileHeader, FltHeader, kFltHeader> {
public:
    FltFileHeader() = default;
    explicit FltFileHeader(const FltHeader& header) { FltHeader::operator=(header); }
};
