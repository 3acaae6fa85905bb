// Records by opcode.
#pragma once

#include <quillon/fltrecord.h>

#include <cstdint>
#include <memory>

/// A record with its defaults, of the class that scenes store under `opcode`; null for one that
/// they do not store.
std::unique_ptr<FltRecord> fltCreateRecord(std::uint16_t opcode);

/// The same for a record of a file, where the header is laid out in another way: an
/// `FltFileHeader`. `fltRecordType` has the classes of all records.
std::unique_ptr<FltRecord> fltCreateFileRecord(std::uint16_t opcode);
