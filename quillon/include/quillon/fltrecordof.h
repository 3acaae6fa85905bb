// What all records share whose bytes are their layout and nothing else.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

#include <cstdint>

/// The base of such a record class: opcode, writing, reading and showing in one layout that is the
/// same at every revision. The class itself has the fields, its source file the layout.
///
/// Reading takes what the record has: fields behind its end become zero, and lists at its end hold
/// as many whole items as are there. It throws `AviaryAssertion` for another opcode.
template <typename Record, typename Family, std::uint16_t code>
class FltRecordOf : public Family {
public:
    static constexpr std::uint16_t kOpcode = code;

    std::uint16_t opcode() const override { return code; }
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;
};
