#include "recordpatch.h"

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/flttoken.h>

#include <algorithm>

namespace palettes {

using fltkilnutil::FileBytes, fltkilnutil::SourceRecord, fltkilnutil::SourceRecordsEdit;

std::vector<std::uint8_t> patched(const FltRecordView& read, const FltRecord& before,
                                  const FltRecord& after, std::uint32_t revision) {
    FltToken then, now;
    before.writeToken(then, revision);
    after.writeToken(now, revision);
    return fltPatchedRecord(read.bytes(), {then.data(), then.length()}, {now.data(), now.length()});
}

std::vector<std::uint8_t> recordBytes(const FltRecord& record, std::uint32_t revision) {
    FltToken token;
    record.writeToken(token, revision);
    token.finish();
    return {token.data(), token.data() + token.length()};
}

void insertRecord(SourceRecordsEdit& edit, FileBytes record) {
    const std::vector<SourceRecord>& attached = edit.kept().attached;
    const std::uint16_t opcode = fltRecordHead(record).opcode;
    auto place = attached.end();
    for (auto i = attached.begin(); i != attached.end(); ++i)
        if (!i->isOpaque && i->record.opcode() == opcode) place = i;
    if (place != attached.end()) {
        ++place;
        while (place != attached.end() && place->isOpaque) ++place;
    } else {
        place = std::ranges::find_if(attached, [](const SourceRecord& one) {
            return !one.isOpaque && (one.record.opcode() == kFltVertexPalette ||
                                     one.record.opcode() == kFltPushLevel);
        });
    }
    if (place == attached.end()) {
        edit.append(record);
    } else {
        edit.insertBefore(place->record, record);
    }
}

}  // namespace palettes
