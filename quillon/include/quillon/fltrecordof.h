// What all record classes share whose bytes are their layout.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

#include <cstdint>
#include <span>

/// The base of such a record class: opcode, writing, reading and showing from one layout. The class
/// itself has the fields. Its source file has the layout and says what is special about the record:
/// its default name, whether another opcode is refused, what changed with a revision.
///
/// Reading takes what the record has: fields behind its end become zero, and lists at its end hold
/// as many whole items as are there. It throws `AviaryAssertion` for another opcode, where the
/// class checks it, and for counts that no record can hold.
template <typename Record, typename Family, std::uint16_t code>
class FltRecordOf : public Family {
public:
    static constexpr std::uint16_t kOpcode = code;

    std::uint16_t opcode() const override { return code; }
    void write(FltStream& stream) override;
    /// Gives a record without a name the default one of its class, if there is one, as `write`
    /// does.
    void nameFor(FltStream& stream);
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    /// Reads the record from what follows its header, at the newest revision. Unlike a record, that
    /// may be of any length: what one record cannot hold goes on in continuation records, whose
    /// bodies belong behind it.
    void readBody(std::span<const std::uint8_t> body);

    /// The length, header included, from which on a record holds `field`, which is one of this
    /// object's.
    std::uint16_t lengthThrough(const void* field) const noexcept;
};
