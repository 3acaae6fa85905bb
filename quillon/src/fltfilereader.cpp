#include <base/file.h>
#include <base/paths.h>
#include <quillon/fltbyteorder.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>

#include <cerrno>
#include <limits>
#include <new>
#include <system_error>

namespace {

constexpr std::size_t kRecordHeaderSize = 4;

[[noreturn]] void refuse(const std::string& path, std::error_code reason) {
    throw std::system_error(reason, "cannot read " + path);
}

using Cause = FltFileError::Cause;

[[noreturn]] void refuse(std::size_t offset, const std::string& what, Cause cause) {
    throw FltFileError("damaged at byte offset " + std::to_string(offset) + ": " + what, offset,
                       cause);
}

bool opens(std::uint16_t opcode) {
    return opcode == kFltPushLevel || opcode == kFltPushSubface || opcode == kFltPushExtension ||
           opcode == kFltPushAttribute;
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
        if (opens(opcode())) nesting_.count(opcode());
        offset_ += length_;
        length_ = 0;
    }
    const std::size_t left = bytes_.size() - offset_;
    if (left == 0 || (left < kRecordHeaderSize && offset_ != 0 && nesting_ == FltNesting{})) {
        return false;
    }
    enter();
    return true;
}

void FltFileReader::enter() {
    const std::size_t left = bytes_.size() - offset_;
    if (left < kRecordHeaderSize)
        refuse(offset_, "the file ends within a record header", Cause::kTruncated);
    std::uint16_t length = 0;
    fltLoadBigEndian(bytes_.data() + offset_ + 2, length);
    if (length < kRecordHeaderSize)
        refuse(offset_, "a record says that it is " + std::to_string(length) + " bytes long",
               Cause::kDamaged);
    if (length > left)
        refuse(offset_,
               "a record of " + std::to_string(length) + " bytes, of which the file has " +
                   std::to_string(left),
               Cause::kTruncated);

    length_ = length;
    token_.attach(bytes_.data() + offset_, length);
    token_.rewind();
    if (!opens(opcode())) nesting_.count(opcode());
    if (opcode() == kFltHeader && !hasHeader_) {
        header_.readToken(token_, 0);
        hasHeader_ = true;
        token_.attach(bytes_.data() + offset_, length);
        token_.rewind();
    }
}
