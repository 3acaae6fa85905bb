// What the format says of each sort of record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>
#include <quillon/fltrecordrange.h>

#include <cstdint>
#include <memory>
#include <span>

/// What a record belongs to.
enum class FltRecordPlace : std::uint8_t {
    file,   ///< the database as a whole: the header, palettes and their entries
    node,   ///< it is a node of the hierarchy
    part,   ///< the node before it, or the face or mesh in whose level it stands
    level,  ///< it opens or closes a level
};

/// A row of the table of records.
struct FltRecordType {
    std::uint16_t opcode;
    const char* name;  ///< constant, NUL-terminated, "FLT_" and upper-case words
    FltOpcodeClass family;
    FltRecordPlace place;
    std::uint16_t closer;  ///< of a push, the opcode of its pop; 0 for all others
    /// Makes a record of the class that files have, with its defaults; null for one without a
    /// class.
    std::unique_ptr<FltRecord> (*create)();
    /// Whether it is in the vocabulary of `fltOpcodeName`, which is that of scenes.
    bool isNamedInScenes;
};

/// The row of `opcode`; null for one that no published revision knows.
const FltRecordType* fltRecordType(std::uint16_t opcode) noexcept;

/// The name of `opcode` among all published ones; "UNDEFINED" for any other.
const char* fltRecordName(std::uint16_t opcode) noexcept;

/// The ID with which the records of nodes begin, 8 bytes or as many as the record has of them;
/// empty for references and instances, which have none.
std::span<const std::uint8_t> fltIdOf(const FltRecordView& record) noexcept;

/// All rows, in the order of the table, which is nearly that of the opcodes.
std::span<const FltRecordType> fltRecordTypes() noexcept;
