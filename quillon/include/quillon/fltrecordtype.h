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
    kFile,   ///< the database as a whole: the header, palettes and their entries
    kNode,   ///< it is a node of the hierarchy
    kPart,   ///< the node before it, or the face or mesh in whose level it stands
    kLevel,  ///< it opens or closes a level
};

/// The sorts of levels; each has a push and a pop of its own.
enum class FltLevelKind : std::uint8_t { kNone, kLevel, kSubface, kExtension, kAttribute };

/// What a push or a pop does.
struct FltLevelChange {
    FltLevelKind kind = FltLevelKind::kNone;
    std::int8_t by = 0;  ///< 1 opens a level of that kind, -1 closes one
};

/// Who speaks of a record; each includes those before it.
enum class FltVocabulary : std::uint8_t {
    kPublished,  ///< files alone
    kScenes,     ///< scenes too: `fltOpcodeName` names it
    kStored,     ///< scenes have such records: `fltCreateRecord` makes them
};

/// A row of the table of records.
struct FltRecordType {
    std::uint16_t opcode;
    const char* name;  ///< constant, NUL-terminated, "FLT_" and upper-case words
    FltOpcodeClass family;
    FltRecordPlace place;
    FltLevelChange level;
    /// Makes a record of the class that files have, with its defaults; null for one without a
    /// class.
    std::unique_ptr<FltRecord> (*create)();
    FltVocabulary vocabulary;

    bool isNamedInScenes() const noexcept { return vocabulary >= FltVocabulary::kScenes; }
    bool isStored() const noexcept { return vocabulary == FltVocabulary::kStored; }
};

/// The row of `opcode`; null for one that no published revision knows.
const FltRecordType* fltRecordType(std::uint16_t opcode) noexcept;

/// What a record of `opcode` does to the levels around it; the default for most.
inline FltLevelChange fltLevelChange(std::uint16_t opcode) noexcept {
    if (!fltMayNest(opcode)) [[likely]]
        return {};
    const FltRecordType* const type = fltRecordType(opcode);
    return type != nullptr ? type->level : FltLevelChange();
}

/// Whether levels of that kind, and all within them, are opaque: they hold no nodes.
constexpr bool fltIsOpaque(FltLevelKind kind) noexcept {
    return kind == FltLevelKind::kExtension || kind == FltLevelKind::kAttribute;
}

/// The name of `opcode` among all published ones; "UNDEFINED" for any other.
const char* fltRecordName(std::uint16_t opcode) noexcept;

/// The ID with which the records of nodes begin, 8 bytes or as many as the record has of them;
/// empty for references and instances, which have none.
std::span<const std::uint8_t> fltIdOf(const FltRecordView& record) noexcept;

/// All rows, in the order of the table, which is nearly that of the opcodes.
std::span<const FltRecordType> fltRecordTypes() noexcept;
