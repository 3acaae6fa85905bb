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
        merge(read.bytes(), record.opcode() == kFltHeader, then_.length() == now_.length());
    }
    fltStateLength(merged_);
    return merged_;
}

/// Works on whole records; their opcode is the same, and the length is put right afterwards.
void RecordMerger::merge(FileBytes read, bool isHeader, bool sameLayout) {
    const FileBytes then = bytesOf(then_);
    // A header has the same fields at each revision, as far as it goes.
    if (sameLayout || isHeader) {
        const std::size_t common = std::min({merged_.size(), then.size(), read.size()});
        for (std::size_t i = 0; i < common; ++i) {
            if (merged_[i] == then[i]) merged_[i] = read[i];
        }
    }
    // Where a header of another revision ends, this one has other fields.
    if (read.size() > then.size() && (sameLayout || !isHeader)) {
        const FileBytes tail = read.subspan(then.size());
        merged_.insert(merged_.end(), tail.begin(), tail.end());
    }
    if (sameLayout && read.size() < then.size() &&
        std::ranges::equal(FileBytes(merged_).subspan(read.size()), then.subspan(read.size()))) {
        merged_.resize(read.size());
    }
}

}  // namespace interchange
