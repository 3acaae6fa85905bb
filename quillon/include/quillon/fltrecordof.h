// What all records share whose bytes are their layout and nothing else.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

#include <cstdint>
#include <span>

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

    /// Reads the record from what follows its header. Unlike a record, that may be of any length:
    /// what one record cannot hold goes on in continuation records, whose bodies belong behind it.
    void readBody(std::span<const std::uint8_t> body);

    /// The length, header included, from which on a record holds `field`, which is one of this
    /// object's.
    std::uint16_t lengthThrough(const void* field) const noexcept;
};
