// Records of nodes, with what was read and no class of ours holds.
#pragma once

#include <interchange/outline.h>

#include <quillon/fltfactory.h>
#include <quillon/fltrecordrange.h>
#include <quillon/flttoken.h>

#include <array>
#include <memory>
#include <vector>

class FltFace;
class FltRecord;

namespace interchange {

/// Record objects by kind, each made once and used for many nodes.
class RecordCache {
public:
    using Create = std::unique_ptr<FltRecord>(std::uint16_t opcode);

    /// Of the classes that `create` makes: those of scenes, or those of files.
    explicit RecordCache(Create& create) : create_(create) {}

    /// The record object for `opcode`, as it was left; null for an opcode without a class.
    FltRecord* of(std::uint16_t opcode);
    /// The same with the defaults of the class.
    FltRecord* fresh(std::uint16_t opcode);

private:
    Create& create_;
    std::array<std::unique_ptr<FltRecord>, 128> records_;
};

/// Gives `face` the packed colours that it has in a file: those of `read`, the face as it was read
/// (null for none), as long as the indices that they stand for are the same; otherwise its own,
/// which it lacks when it comes from a scene. Without any it loses the flag that makes them count.
void settlePackedColors(FltFace& face, const FltFace* read);

/// Lays out records for files, bringing back what was read beside our fields.
class BeadMerger {
public:
    /// What `bead`, a record in file form read at `revision`, says in the terms of its class; null
    /// for one without a class and for bytes that the class refuses. Valid until the next call for
    /// that class.
    FltRecord* base(const FltRecordView& bead, std::uint32_t revision);

    /// `record` as bytes of a file, laid out for `revision`. Fields that say the same as in `bead`
    /// (read at `beadRevision`; empty for none) come out as they stood there, reserved bytes and
    /// longer tails included; others as they are in `record`. A shorter record stays as short. Not
    /// padded. Valid until the next call.
    FileBytes put(const FltRecord& record, std::uint32_t revision, const FltRecordView& bead,
                  std::uint32_t beadRevision);

private:
    void merge(FileBytes bead, bool isHeader, bool sameLayout);

    RecordCache bases_{fltCreateFileRecord};
    FltToken token_;
    FltToken then_;
    FltToken now_;
    std::vector<std::uint8_t> merged_;
};

}  // namespace interchange
