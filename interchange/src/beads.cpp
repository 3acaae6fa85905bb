#include "beads.h"

#include "bytes.h"
#include "layouts.h"

#include <diagnostics/assertion.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>

#include <algorithm>

namespace interchange {

namespace {

FileBytes bytesOf(const FltToken& token) {
    return {token.data(), token.length()};
}

/// A packed colour must not outlive an edit of the index that it goes with.
void dropStaleColors(std::span<std::uint8_t> bytes, const FltFace& face, const FltFace& base) {
    if (bytes.size() < kFacePackedEnd) return;
    if (face.primaryColorIndex != base.primaryColorIndex) {
        put32(&bytes[kFaceFlags], uint32At(bytes, kFaceFlags) & ~kFacePackedColor);
        put32(&bytes[kFacePackedPrimary], 0);
        put32(&bytes[kFacePackedAlternate], 0);
    } else if (face.alternateColorIndex != base.alternateColorIndex) {
        put32(&bytes[kFacePackedAlternate], 0);
    }
}

}  // namespace

FltRecord* RecordCache::of(std::uint16_t opcode) {
    if (opcode >= records_.size()) return nullptr;
    std::unique_ptr<FltRecord>& record = records_[opcode];
    if (!record) record = fltCreateRecord(opcode);
    return record.get();
}

FltRecord* RecordCache::fresh(std::uint16_t opcode) {
    if (opcode >= records_.size()) return nullptr;
    records_[opcode] = fltCreateRecord(opcode);
    return records_[opcode].get();
}

FltRecord* BeadMerger::base(FileBytes bead, std::uint32_t revision) {
    if (bead.empty()) return nullptr;
    FltRecord* const record = bases_.of(uint16At(bead, 0));
    if (record == nullptr) return nullptr;
    token_.attach(bead.data(), static_cast<std::int32_t>(bead.size()));
    try {
        record->readToken(token_, revision);
    } catch (const diagnostics::AviaryAssertion&) {
        return nullptr;
    }
    return record;
}

FileBytes BeadMerger::put(const FltRecord& record, std::uint32_t revision, FileBytes bead,
                          std::uint32_t beadRevision) {
    record.writeToken(now_, revision);
    const FileBytes now = bytesOf(now_);
    const FltRecord* const base = !bead.empty() && uint16At(bead, 0) == record.opcode()
                                      ? this->base(bead, beadRevision)
                                      : nullptr;
    merged_.assign(now.begin(), now.end());
    if (base != nullptr) {
        base->writeToken(then_, beadRevision);
        const bool sameLayout = then_.length() == now_.length();
        merge(bead, sameLayout);
        if (sameLayout && record.opcode() == FltFace::kOpcode) {
            dropStaleColors(merged_, static_cast<const FltFace&>(record),
                            static_cast<const FltFace&>(*base));
        }
    }
    diagnostics::check(merged_.size() <= 0xFFFF, "beads", 102);
    put16(&merged_[2], static_cast<std::uint16_t>(merged_.size()));
    return merged_;
}

void BeadMerger::merge(FileBytes bead, bool sameLayout) {
    const FileBytes then = bytesOf(then_);
    if (sameLayout) {
        for (std::size_t i = kRecordHeader; i < std::min(merged_.size(), bead.size()); ++i) {
            if (merged_[i] == then[i]) merged_[i] = bead[i];
        }
    }
    // In another layout the header has other fields where an older one ends.
    const bool hasTail = sameLayout || uint16At(bead, 0) != kFltHeader;
    if (hasTail && bead.size() > then.size()) {
        const FileBytes tail = bead.subspan(then.size());
        merged_.insert(merged_.end(), tail.begin(), tail.end());
    }
}

}  // namespace interchange
