#include "filecursor.h"

#include <algorithm>

namespace interchange {

void refuseFile(std::size_t offset, const std::string& reason, FltFileError::Cause cause) {
    throw FltFileError("damaged at byte offset " + std::to_string(offset) + ": " + reason, offset,
                       cause);
}

std::size_t FileCursor::strayBytes() const noexcept {
    const FileBytes rest = bytes_.subspan(record_.end());
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return rest.size() < FltRecordView::kHeaderSize && !std::ranges::all_of(rest, isZero)
               ? rest.size()
               : 0;
}

void FileCursor::refuse() const {
    FltFileReader reader(bytes_);
    while (reader.next()) continue;
    refuseFile(record_.end(), "a record that cannot be read");
}

}  // namespace interchange
