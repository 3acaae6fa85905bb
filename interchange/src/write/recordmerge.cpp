#include "recordmerge.h"

#include <diagnostics/assertion.h>
#include <quillon/fltface.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltrecordbytes.h>

#include <algorithm>

namespace interchange {

namespace {

FileBytes bytesOf(const FltToken& token) {
    return {token.data(), token.length()};
}

/// Whether the body of `read` is that of the record `written`, maybe with more behind it.
bool beginsWith(const FltRecordView& read, FileBytes written) {
    const FileBytes body = written.subspan(FltRecordView::kHeaderSize);
    return read.body().size() >= body.size() &&
           std::ranges::equal(read.body().first(body.size()), body);
}

/// Lays `record` out as files have it.
void layOut(const FltRecord& record, FltToken& token, std::uint32_t revision) {
    if (record.opcode() == kFltHeader) {
        FltFileHeader(static_cast<const FltHeader&>(record)).writeToken(token, revision);
    } else if (record.opcode() == kFltFace) {
        static_cast<const FltFace&>(record).writeFileToken(token, revision);
    } else {
        record.writeToken(token, revision);
    }
}

}  // namespace

void settlePackedColors(FltFace& face, const FltFace* read) {
    bool counts = false;
    if (read != nullptr) {
        face.packedPrimaryColor = read->packedPrimaryColor;
        face.packedAlternateColor = face.alternateColorIndex == read->alternateColorIndex
                                        ? read->packedAlternateColor
                                        : FltPackedColor();
        counts = face.primaryColorIndex == read->primaryColorIndex;
    } else {
        counts = (face.flags & kFltSurfacePackedColors) != 0 &&
                 face.packedPrimaryColor != FltPackedColor();
    }
    if (counts) return;
    face.flags &= ~kFltSurfacePackedColors;
    face.packedPrimaryColor = face.packedAlternateColor = {};
}

FltRecord* RecordMerger::base(const FltRecordView& read, std::uint32_t revision) {
    if (read.empty()) return nullptr;
    FltRecord* const record = bases_.of(read.opcode());
    if (record == nullptr) return nullptr;
    token_.attach(read.bytes().data(), read.length());
    try {
        record->readToken(token_, revision);
    } catch (const diagnostics::AviaryAssertion&) {
        return nullptr;
    }
    return record;
}

FileBytes RecordMerger::put(const FltRecord& record, std::uint32_t revision,
                            const FltRecordView& read, std::uint32_t readRevision) {
    const FltRecord* const base = !read.empty() && read.opcode() == record.opcode()
                                      ? this->base(read, readRevision)
                                      : nullptr;
    if (record.opcode() == kFltFace) {
        FltFace face = static_cast<const FltFace&>(record);
        settlePackedColors(face, static_cast<const FltFace*>(base));
        layOut(face, now_, revision);
    } else {
        layOut(record, now_, revision);
    }
    const FileBytes now = bytesOf(now_);
    if (base != nullptr && readRevision == revision && beginsWith(read, now)) return read.bytes();
    merged_.assign(now.begin(), now.end());
    if (base != nullptr) {
        layOut(*base, then_, readRevision);
        const FileBytes then = bytesOf(then_), stood = read.bytes();
        const std::size_t length = std::min(stood.size(), then.size());
        if (then.size() == now.size()) {
            merged_ = fltPatchedRecord(stood, then, now);
        } else if (record.opcode() == kFltHeader) {
            // It has the same fields at each revision, as far as it goes; what stands behind those
            // of one revision are fields of another.
            merged_ = fltPatchedRecord(stood.first(length), then, now);
        } else {
            // The fields have other places.
            const FileBytes tail = stood.subspan(length);
            merged_.insert(merged_.end(), tail.begin(), tail.end());
        }
    }
    fltStateLength(merged_);
    return merged_;
}

}  // namespace interchange
