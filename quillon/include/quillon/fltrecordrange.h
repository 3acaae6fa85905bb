// Records that stand one behind the other in memory.
#pragma once

#include <quillon/fltbyteorder.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

/// One record among the bytes of others, which it refers to.
class FltRecordView {
public:
    /// Bytes of a record's opcode and length, ahead of everything that it holds.
    static constexpr std::size_t kHeaderSize = 4;

    FltRecordView() = default;

    /// The record at `offset` in `bytes`; an empty view where the bytes from there on do not begin
    /// with a whole record: with fewer than 4 bytes, a length below 4 or one beyond the end.
    static FltRecordView at(std::span<const std::uint8_t> bytes, std::size_t offset) noexcept {
        FltRecordView view;
        view.offset_ = offset;
        const std::uint16_t length = statedLength(bytes, offset);
        if (length >= kHeaderSize && length <= bytes.size() - offset)
            view.bytes_ = bytes.subspan(offset, length);
        return view;
    }

    /// The opcode that stands at `offset`, of a whole record or not; 0 where there are fewer than 2
    /// bytes.
    static std::uint16_t statedOpcode(std::span<const std::uint8_t> bytes,
                                      std::size_t offset) noexcept {
        return wordAt(bytes, offset);
    }
    /// The length that stands behind it; 0 where there are fewer than 4 bytes.
    static std::uint16_t statedLength(std::span<const std::uint8_t> bytes,
                                      std::size_t offset) noexcept {
        return offset <= bytes.size() ? wordAt(bytes, offset + kLengthOffset) : std::uint16_t{0};
    }

    /// States in the header of a record how many bytes it has: at least those of the header.
    static void stateLength(std::span<std::uint8_t> record) noexcept {
        fltStoreBigEndian(record.data() + kLengthOffset, static_cast<std::uint16_t>(record.size()));
    }

    bool empty() const noexcept { return bytes_.empty(); }
    /// Where the record begins among the bytes, and where what follows it does.
    std::size_t offset() const noexcept { return offset_; }
    std::size_t end() const noexcept { return offset_ + bytes_.size(); }
    /// The whole record, header included, and what follows its header. Of a view that is not empty.
    std::span<const std::uint8_t> bytes() const noexcept { return bytes_; }
    std::span<const std::uint8_t> body() const noexcept { return bytes_.subspan(kHeaderSize); }
    std::uint16_t length() const noexcept { return static_cast<std::uint16_t>(bytes_.size()); }
    std::uint16_t opcode() const noexcept {
        std::uint16_t code = 0;
        fltLoadBigEndian(bytes_.data(), code);
        return code;
    }

private:
    static constexpr std::size_t kLengthOffset = 2;

    static std::uint16_t wordAt(std::span<const std::uint8_t> bytes, std::size_t place) noexcept {
        std::uint16_t word = 0;
        if (place <= bytes.size() && bytes.size() - place >= sizeof word)
            fltLoadBigEndian(bytes.data() + place, word);
        return word;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t offset_ = 0;
};

/// The records in `bytes`, first to last, ending where no whole one follows.
///
///     for (const FltRecordView record : FltRecordRange(bytes)) ...
class FltRecordRange {
public:
    explicit FltRecordRange(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {}

    class Iterator {
    public:
        using difference_type = std::ptrdiff_t;
        using value_type = FltRecordView;

        Iterator() = default;
        explicit Iterator(std::span<const std::uint8_t> bytes) noexcept
            : bytes_(bytes), record_(FltRecordView::at(bytes, 0)) {}

        const FltRecordView& operator*() const noexcept { return record_; }
        const FltRecordView* operator->() const noexcept { return &record_; }
        Iterator& operator++() noexcept {
            record_ = FltRecordView::at(bytes_, record_.offset() + record_.length());
            return *this;
        }
        Iterator operator++(int) noexcept {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
            return a.record_.offset() == b.record_.offset();
        }
        friend bool operator==(const Iterator& a, std::default_sentinel_t) noexcept {
            return a.record_.empty();
        }

    private:
        std::span<const std::uint8_t> bytes_;
        FltRecordView record_;
    };

    Iterator begin() const noexcept { return Iterator(bytes_); }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    std::span<const std::uint8_t> bytes_;
};
