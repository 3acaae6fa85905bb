// The comment record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>
#include <quillon/fltstring.h>

/// Text attached to the bead before it. Read, it is everything after the record header; in memory
/// it always ends with a terminator, whatever the file holds.
class FltComment : public FltAncillaryRec, public FltString {
public:
    static constexpr std::uint16_t kOpcode = kFltComment;

    FltComment() = default;
    /// A comment with a copy of `text`; empty for null.
    explicit FltComment(const char* text) : FltString(text) {}

    std::uint16_t opcode() const override { return kOpcode; }
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;
};
