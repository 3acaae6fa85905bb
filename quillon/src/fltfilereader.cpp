#include <base/file.h>
#include <base/paths.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecordrange.h>

#include <cerrno>
#include <limits>
#include <new>
#include <system_error>

namespace {

[[noreturn]] void refuse(const std::string& path, std::error_code reason) {
    throw std::system_error(reason, "cannot read " + path);
}

using Cause = FltFileError::Cause;

[[noreturn]] void refuse(std::size_t offset, const std::string& what, Cause cause) {
    throw FltFileError("damaged at byte offset " + std::to_string(offset) + ": " + what, offset,
                       cause);
}

}  // namespace

FltFileBytes FltFileBytes::load(const std::string& path) {
    const std::filesystem::path native = base::pathFrom(path);
    std::error_code reason;
    const std::uintmax_t size = std::filesystem::file_size(native, reason);
    if (reason) refuse(path, reason);
    if (size > std::numeric_limits<std::size_t>::max())
        refuse(path, std::make_error_code(std::errc::file_too_large));
    const base::File file = base::openFile(native, false);
    if (!file) refuse(path, std::error_code(errno, std::generic_category()));

    FltFileBytes result;
    result.size_ = static_cast<std::size_t>(size);
    result.data_.reset(new (std::nothrow) std::uint8_t[result.size_]);
    if (!result.data_) refuse(path, std::make_error_code(std::errc::not_enough_memory));
    result.size_ = std::fread(result.data_.get(), 1, result.size_, file.get());
    if (std::ferror(file.get())) refuse(path, std::make_error_code(std::errc::io_error));
    return result;
}

FltFileReader::FltFileReader(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {
    token_.header = &header_;
}

bool FltFileReader::next() {
    if (length_ > 0) {
        // A push encloses what follows it; a pop was counted when it was met.
        if (opensLevel_) nesting_.count(opcode());
        offset_ += length_;
        length_ = 0;
    }
    const std::size_t left = bytes_.size() - offset_;
    const bool isComplete = offset_ != 0 && nesting_ == FltNesting{};
    if (left == 0 || (left < FltRecordView::kHeaderSize && isComplete)) return false;
    enter();
    return true;
}

void FltFileReader::enter() {
    const FltRecordView record = FltRecordView::at(bytes_, offset_);
    if (record.empty()) refuseRecord();
    length_ = record.length();
    attach();
    opensLevel_ = fltLevelChange(opcode()).by > 0;
    if (!opensLevel_) nesting_.count(opcode());
    if (opcode() == kFltHeader && !hasHeader_) {
        header_.readToken(token_, 0);
        hasHeader_ = true;
        attach();  // a short one was read in a block of the token's own
    }
}

void FltFileReader::attach() {
    token_.attach(bytes_.data() + offset_, length_);
    token_.rewind();
}

void FltFileReader::refuseRecord() const {
    const std::size_t left = bytes_.size() - offset_;
    if (left < FltRecordView::kHeaderSize)
        refuse(offset_, "the file ends within a record header", Cause::kTruncated);
    const std::string length = std::to_string(FltRecordView::statedLength(bytes_, offset_));
    if (FltRecordView::statedLength(bytes_, offset_) < FltRecordView::kHeaderSize)
        refuse(offset_, "a record says that it is " + length + " bytes long", Cause::kDamaged);
    refuse(offset_,
           "a record of " + length + " bytes, of which the file has " + std::to_string(left),
           Cause::kTruncated);
}
