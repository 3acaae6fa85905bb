// The base of all OpenFlight records and of their families.
#pragma once

#include <cstdint>
#include <span>

class FltStream;
class FltToken;
class FltFieldVisitor;
struct FltFileToken;

/// One OpenFlight record: fields by value, and the way to bytes and back.
class FltRecord {
public:
    virtual ~FltRecord() = default;

    /// The class's opcode.
    virtual std::uint16_t opcode() const = 0;

    /// The record's 8-byte ID: ASCII, NUL-padded, without a terminator when full; a first byte of 0
    /// means that the record has no name yet. Null for classes without one.
    virtual char* id() { return nullptr; }

    /// Writes the record to `stream`. Classes with a default name give themselves one first, from
    /// the counters of the stream's header, when they have none. Throws as `FltStream::writeToken`.
    virtual void write(FltStream& stream);

    /// Puts the record into `token`, replacing what it held, laid out for `revision` (OpenFlight
    /// revision x 100). Not yet padded: that is `FltToken::finish`.
    /// Throws `AviaryAssertion` when the record would exceed 65,535 bytes.
    virtual void writeToken(FltToken& token, std::uint32_t revision) const = 0;

    /// Reads the record from the stream's working token at the stream's revision.
    virtual void read(FltStream& stream);

    /// Reads the record from `token`, laid out for `revision`. Fields past the record's end become
    /// zero. Throws `AviaryAssertion` where the class checks its opcode or its counts.
    virtual void readToken(FltToken& token, std::uint32_t revision) = 0;

    /// Reads the record from `bytes`, those of one whole record. Throws as `readToken`.
    void readBytes(std::span<const std::uint8_t> bytes, std::uint32_t revision);

    /// Reads the record from a token that belongs to an open file, at that file's revision. Does
    /// nothing for null or a token without a file.
    virtual void readFromFile(FltFileToken* token);

    /// Shows every field to `visitor`, by name, in file order.
    virtual void visitFields(FltFieldVisitor& visitor) const = 0;

protected:
    FltRecord() = default;
    FltRecord(const FltRecord&) = default;
    FltRecord& operator=(const FltRecord&) = default;
};

/// Bytes that `record` has in a file of `revision`, padding included.
std::uint16_t fltWrittenLength(const FltRecord& record, std::uint32_t revision);

/// Beads of the hierarchy.
class FltPrimaryRec : public FltRecord {};

/// Beads with an ID of their own.
class FltNamedRec : public FltPrimaryRec {
public:
    char* id() override { return asciiId; }

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
};

/// Records that add to the bead before them.
class FltAncillaryRec : public FltRecord {};

/// Records that give the file its structure.
class FltControlRec : public FltRecord {};

/// Records of the file as a whole. The header counts as one of them.
class FltPaletteRec : public FltRecord {};
