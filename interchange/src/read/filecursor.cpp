#include "filecursor.h"

#include "../texts.h"

#include <algorithm>

namespace interchange {

void refuseFile(std::size_t offset, const std::string& reason, FltFileError::Cause cause) {
    throw FltFileError(text(TextId::kDamaged, {std::to_string(offset), reason}), offset, cause);
}

std::size_t FileCursor::strayBytes() const noexcept {
    const FileBytes rest = bytes_.subspan(record_.end());
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return rest.size() < FltRecordView::kHeaderSize && !std::ranges::all_of(rest, isZero)
               ? rest.size()
               : 0;
}

void FileCursor::refuse() const {
    using Cause = FltFileError::Cause;
    const std::size_t offset = record_.end();
    if (left() < FltRecordView::kHeaderSize)
        refuseFile(offset, text(TextId::kEndInHead), Cause::kTruncated);
    const std::size_t stated = FltRecordView::statedLength(bytes_, offset);
    const std::string length = std::to_string(stated);
    if (stated < FltRecordView::kHeaderSize)
        refuseFile(offset, text(TextId::kShortRecord, {length}), Cause::kDamaged);
    refuseFile(offset, text(TextId::kCutRecord, {length, std::to_string(left())}),
               Cause::kTruncated);
}

}  // namespace interchange
