// The records of a file that may be damaged.
#pragma once

#include <interchange/fileindex.h>

#include <quillon/fltfilereader.h>

#include <string>

namespace interchange {

/// Refuses the file as damaged at that place, for a reason in the host's language.
[[noreturn]] void refuseFile(std::size_t offset, const std::string& reason,
                             FltFileError::Cause cause = FltFileError::Cause::kDamaged);

/// Goes through a file record by record.
class FileCursor {
public:
    explicit FileCursor(FileBytes bytes) noexcept : bytes_(bytes) {}

    /// Moves to the next record; false at the end of the file, and ahead of bytes that are too few
    /// for a record. Throws `FltFileError` for a record that cannot be read.
    bool next() {
        // Some programs fill the last block with zeros, which are this opcode too.
        if (left() < FltRecordView::kHeaderSize ||
            FltRecordView::statedOpcode(bytes_, record_.end()) == kFltEndOfFile) {
            return false;
        }
        const FltRecordView record = following();
        if (record.empty()) refuse();
        record_ = record;
        return true;
    }
    /// Moves to `record`, one of those that follow.
    void moveTo(const FltRecordView& record) noexcept { record_ = record; }

    const FltRecordView& record() const noexcept { return record_; }
    std::uint16_t opcode() const noexcept { return record_.opcode(); }
    std::uint32_t offset() const noexcept { return static_cast<std::uint32_t>(record_.offset()); }
    /// Offset behind the record.
    std::uint32_t end() const noexcept { return static_cast<std::uint32_t>(record_.end()); }
    /// What follows the record, or `record`; empty where no whole record does.
    FltRecordView following() const noexcept { return after(record_); }
    FltRecordView after(const FltRecordView& record) const noexcept {
        return FltRecordView::at(bytes_, record.end());
    }

    /// Bytes behind the record.
    std::size_t left() const noexcept { return bytes_.size() - record_.end(); }
    /// After the last record: how many bytes follow it that are no filling, too few for another.
    std::size_t strayBytes() const noexcept;
    /// Refuses the file, in which something follows that is no record.
    [[noreturn]] void refuse() const;

private:
    FileBytes bytes_;
    FltRecordView record_;
};

}  // namespace interchange
