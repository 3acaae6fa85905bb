// Records of nodes, with what was read and no class of ours holds.
#pragma once

#include "../recordcache.h"

#include <interchange/fileindex.h>

#include <quillon/fltfactory.h>
#include <quillon/fltrecordrange.h>
#include <quillon/flttoken.h>

#include <vector>

class FltFace;
class FltRecord;

namespace interchange {

/// Gives `face` the packed colors that it has in a file: those of `read`, the face as it was read
/// (null for none), as long as the indices that they stand for are the same; otherwise its own,
/// which it lacks when it comes from a scene. Without any it loses the flag that makes them count.
void settlePackedColors(FltFace& face, const FltFace* read);

/// Lays out records for files, bringing back what was read beside our fields.
class RecordMerger {
public:
    /// What `read`, a record in file form read at `revision`, says in the terms of its class; null
    /// for one without a class and for bytes that the class refuses. Valid until the next call for
    /// that class.
    FltRecord* base(const FltRecordView& read, std::uint32_t revision);

    /// `record` as bytes of a file, laid out for `revision`. Fields that say the same as in `read`
    /// (read at `readRevision`; empty for none) come out as they stood there, reserved bytes and
    /// longer tails included; others as they are in `record`. A shorter record stays as short. Not
    /// padded. Valid until the next call.
    FileBytes put(const FltRecord& record, std::uint32_t revision, const FltRecordView& read,
                  std::uint32_t readRevision);

private:
    RecordCache bases_{fltCreateFileRecord};
    FltToken token_;
    FltToken then_;
    FltToken now_;
    std::vector<std::uint8_t> merged_;
};

}  // namespace interchange
