// Records of nodes, with what was read and no class of ours holds.
#pragma once

#include <interchange/outline.h>

#include <quillon/flttoken.h>

#include <array>
#include <memory>
#include <vector>

class FltRecord;

namespace interchange {

/// Record objects by kind, each made once and used for many nodes.
class RecordCache {
public:
    /// The record object for `opcode`, as it was left; null for an opcode without a class.
    FltRecord* of(std::uint16_t opcode);
    /// The same with the defaults of the class.
    FltRecord* fresh(std::uint16_t opcode);

private:
    std::array<std::unique_ptr<FltRecord>, 128> records_;
};

/// Lays out records for files, bringing back what was read beside our fields.
class BeadMerger {
public:
    /// What `bead`, read at `revision`, says in the terms of its class; null for one without a
    /// class and for bytes that the class refuses. Valid until the next call for that class.
    FltRecord* base(FileBytes bead, std::uint32_t revision);

    /// `record` as bytes, laid out for `revision`. Fields that say the same as in `bead` (read at
    /// `beadRevision`; empty for none) come out as they stood there, reserved bytes and longer
    /// tails included; others as they are in `record`. Not padded. Valid until the next call.
    FileBytes put(const FltRecord& record, std::uint32_t revision, FileBytes bead,
                  std::uint32_t beadRevision);

private:
    void merge(FileBytes bead, bool sameLayout);

    RecordCache bases_;
    FltToken token_;
    FltToken then_;
    FltToken now_;
    std::vector<std::uint8_t> merged_;
};

}  // namespace interchange
