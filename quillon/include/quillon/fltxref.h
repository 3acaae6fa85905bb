// The external reference record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// Reference to another file. It has no ID and is never named.
class FltXRef : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltExternalRef;

    std::uint16_t opcode() const override { return kOpcode; }
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    char fileName[200] = {};  ///< NUL-padded; a full field has no terminator
    std::int32_t flags = 0;   ///< palette override bits
};
