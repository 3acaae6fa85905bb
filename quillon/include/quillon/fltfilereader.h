// The input side of an OpenFlight file.
#pragma once

#include <quillon/fltfileheader.h>
#include <quillon/fltnesting.h>
#include <quillon/fltrecordrange.h>
#include <quillon/flttoken.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

/// Bytes that are no OpenFlight file, or no longer one from some place on. `what()` says what is
/// wrong and names the byte offset.
class FltFileError : public std::runtime_error {
public:
    enum class Cause : std::uint8_t {
        kDamaged,
        kTruncated,            ///< it ends before what it says it has
        kUnsupportedRevision,  ///< of the format
    };

    FltFileError(const std::string& message, std::size_t offset, Cause cause = Cause::kDamaged)
        : std::runtime_error(message), offset_(offset), cause_(cause) {}

    /// Where the record that is wrong begins, from the start of the file.
    std::size_t offset() const noexcept { return offset_; }
    Cause cause() const noexcept { return cause_; }

private:
    std::size_t offset_;
    Cause cause_;
};

/// A token that belongs to an open file.
struct FltFileToken : FltToken {
    const FltHeader* header = nullptr;  ///< the file's header; null without a file
};

/// The bytes of a file, in memory.
class FltFileBytes {
public:
    /// Reads the whole file at `path` (UTF-8). Throws `std::system_error`, whose text names the
    /// path and the reason, when it cannot be opened or read.
    static FltFileBytes load(const std::string& path);

    std::span<const std::uint8_t> bytes() const noexcept { return {data_.get(), size_}; }

private:
    std::unique_ptr<std::uint8_t[]> data_;
    std::size_t size_ = 0;
};

/// Walks the bytes of a file record by record, without copying them.
///
///     FltFileReader reader(bytes);
///     while (reader.next())
///         if (reader.opcode() == FltGroup::kOpcode) group.readToken(reader.token(), ...);
///
/// Only the framing is interpreted: lengths, nesting, and the header, whose revision the other
/// records need. Any bytes at all are either walked or refused.
class FltFileReader {
public:
    /// The bytes stay the caller's and must outlive the reader.
    explicit FltFileReader(std::span<const std::uint8_t> bytes) noexcept;

    FltFileReader(const FltFileReader&) = delete;
    FltFileReader& operator=(const FltFileReader&) = delete;

    /// Moves to the next record; the first call to the first one. Returns false at the end, and
    /// ahead of stray bytes (see there). Throws `FltFileError` when a record's length is below 4 or
    /// leads beyond the end; every further call throws the same.
    bool next();

    /// After the last record, how many bytes follow it: some programs leave up to three, too few
    /// for any record, behind a file whose levels are all closed.
    std::size_t strayBytes() const noexcept {
        return length_ == 0 && offset_ != 0 ? bytes_.size() - offset_ : 0;
    }

    /// The current record, its cursor at the body. Valid until the next call of `next`.
    FltFileToken& token() noexcept { return token_; }

    /// Byte offset of the current record from the start of the file.
    std::size_t offset() const noexcept { return offset_; }
    std::uint16_t opcode() const noexcept { return token_.opcode(); }
    /// Record length in bytes, header included.
    std::uint16_t length() const noexcept { return length_; }
    /// The bytes of the current record, and those behind its header.
    std::span<const std::uint8_t> bytes() const noexcept {
        return bytes_.subspan(offset_, length_);
    }
    std::span<const std::uint8_t> body() const noexcept {
        return bytes().subspan(FltRecordView::kHeaderSize);
    }

    /// The nesting in which the current record stands. A push and its pop stand outside what they
    /// enclose.
    const FltNesting& nesting() const noexcept { return nesting_; }
    std::int32_t level() const noexcept { return nesting_.total(); }

    /// Whether a header record was met, and what the first one says (defaults before that).
    bool hasHeader() const noexcept { return hasHeader_; }
    const FltHeader& header() const noexcept { return header_; }

    /// The header's revision, for `readToken`.
    std::uint32_t revision() const noexcept { return header_.revision(); }

private:
    void enter();
    void attach();
    [[noreturn]] void refuseRecord() const;

    std::span<const std::uint8_t> bytes_;
    std::size_t offset_ = 0;
    std::uint16_t length_ = 0;  ///< 0 before the first record
    FltNesting nesting_;
    FltFileToken token_;
    FltFileHeader header_;
    bool hasHeader_ = false;
    bool opensLevel_ = false;  ///< the current record, which is then outside of its level
};
