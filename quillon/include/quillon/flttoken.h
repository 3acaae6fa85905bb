// The bytes of one OpenFlight record, with a cursor and big-endian conversion.
#pragma once

#include <quillon/fltbyteorder.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecordbytes.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

/// The buffer of one record: 16-bit opcode, 16-bit length (header included), body.
///
/// A token is made to be reused: its block only grows, so a warm token allocates nothing. Numbers
/// are big-endian in the bytes and in host order outside. Reading past the record's end returns
/// zeros. A record cannot exceed 65,535 bytes; growing past that throws `AviaryAssertion`.
class FltToken {
public:
    FltToken() noexcept = default;
    FltToken(const FltToken&) = delete;
    FltToken& operator=(const FltToken&) = delete;

    /// Puts the token in its fresh state without a buffer, freeing the block that it owns.
    void reset() noexcept;

    /// Uses the `size` outside bytes at `bytes` for reading. They stay the caller's, must outlive
    /// the use, and are never written to: a token that must change or outgrow them continues in a
    /// block of its own. Opcode and length come from the first four bytes (missing ones count as
    /// zero), the length bounded by `size`; the cursor is at 0.
    void attach(const void* bytes, std::int32_t size) noexcept {
        if (size < kHeaderSize) [[unlikely]]
            return attachCut(bytes, size);
        buffer_ = static_cast<const std::uint8_t*>(bytes);
        room_ = 0;
        std::uint32_t head = 0;
        fltLoadBigEndian(buffer_, head);
        if (static_cast<std::uint16_t>(head) > size) [[unlikely]]
            return attachCut(bytes, size);
        // All four words in one store.
        const std::uint64_t words =
            kLittleEndianHost ? std::rotl(head, 16) : std::uint64_t{head} << 32;
        std::memcpy(words_, &words, sizeof words);
    }

    /// Starts a new record: opcode, placeholder length 4, cursor behind them.
    void begin(std::uint16_t opcode) {
        words_[kLength] = words_[kPosition] = 0;
        std::uint8_t* place = claim(kHeaderSize);
        words_[kOpcode] = opcode;
        fltStoreBigEndian(place, opcode);
        fltStoreBigEndian(place + 2, kHeaderSize);
    }

    /// Starts a new record with a body of `size` bytes, which the caller fills in at the place
    /// that this returns; the cursor is behind them. For writers that know their layout: the
    /// header's length and the padding stand at once, so that finishing has nothing left to do
    /// when nothing else is written.
    std::uint8_t* begin(std::uint16_t opcode, std::uint32_t size) {
        const std::uint64_t end = std::uint64_t{size} + kHeaderSize;
        const std::uint64_t padded = paddedLength(opcode, end);
        if (lacksRoomFor(padded)) [[unlikely]] {
            words_[kLength] = words_[kPosition] = 0;
            makeRoom(end);
        }
        words_[kLength] = words_[kPosition] = static_cast<std::uint16_t>(end);
        words_[kOpcode] = opcode;
        // A padding that leads beyond the longest record is left for `finish` to refuse.
        words_[kComplete] =
            padded > kLongestRecord ? std::uint16_t{0} : static_cast<std::uint16_t>(padded);
        std::uint8_t* place = block_.get();
        fltStoreBigEndian(place, std::uint32_t{opcode} << 16 | words_[kComplete]);
        if (padded != end) std::memset(place + end, 0, kFltAlignment);
        return place + kHeaderSize;
    }

    /// Whether a body of `size` bytes needs another block than the token has at hand.
    bool lacksRoomForBody(std::uint16_t opcode, std::uint32_t size) const noexcept {
        return lacksRoomFor(paddedLength(opcode, std::uint64_t{size} + kHeaderSize));
    }

    /// Puts the cursor at the body's byte `offset`, or at the record's end where that is earlier.
    void rewind(std::uint16_t offset = 0) noexcept {
        const int target = kHeaderSize + offset;
        words_[kPosition] =
            target < words_[kLength] ? static_cast<std::uint16_t>(target) : words_[kLength];
    }

    /// Copies up to `n` bytes to `destination`, fills the rest with zeros, returns the number
    /// copied.
    std::uint32_t readBytes(std::uint32_t n, void* destination) noexcept;

    /// Writes `n` bytes at the cursor.
    void writeBytes(std::uint32_t n, const void* source);

    /// Reads one number. With fewer bytes left than it needs, those that are there become its most
    /// significant ones and the rest is zero. 32- and 64-bit floats travel as the integers do.
    template <FltNumberOf<1> T>
    void readInt8(T& destination) noexcept {
        readNumber(destination);
    }
    template <FltNumberOf<2> T>
    void readInt16(T& destination) noexcept {
        readNumber(destination);
    }
    template <FltNumberOf<4> T>
    void readInt32(T& destination) noexcept {
        readNumber(destination);
    }
    template <FltNumberOf<8> T>
    void readInt64(T& destination) noexcept {
        readNumber(destination);
    }

    /// Writes one whole number at the cursor. The type says the width:
    /// `writeInt16<std::int16_t>(5)`. A floating-point value does not compile here, and a whole
    /// number given to its writers below becomes one.
    template <FltIntegerOf<1> T>
    void writeInt8(T value) {
        writeNumber(value);
    }
    template <FltIntegerOf<2> T>
    void writeInt16(T value) {
        writeNumber(value);
    }
    template <FltIntegerOf<4> T>
    void writeInt32(T value) {
        writeNumber(value);
    }
    template <FltIntegerOf<8> T>
    void writeInt64(T value) {
        writeNumber(value);
    }
    void writeFloat(float value) { writeNumber(value); }
    void writeDouble(double value) { writeNumber(value); }

    /// Passes `n` reserved bytes, in both directions: moves the cursor over those that exist and
    /// appends zeros for the rest. Returns `n`.
    std::uint32_t skip(std::uint32_t n);

    /// Makes the length `newLength`, enlarging the block where needed: 32 bytes at first, doubled
    /// until it is enough. Bytes gained are not cleared; a cursor behind the new length moves
    /// there.
    void grow(std::uint32_t newLength);

    /// Completes a written record: pads it with zeros to a multiple of 8, except a vertex list, and
    /// stores the final length in bytes 2 and 3. The cursor ends at the body.
    /// Throws `AviaryAssertion` when no record was begun.
    void finish() {
        const std::uint32_t length = words_[kComplete];
        if (length == 0) [[unlikely]]
            return finishSlowly();
        // Length and cursor in one store.
        constexpr std::uint32_t kCursor = kHeaderSize;
        const std::uint32_t words =
            kLittleEndianHost ? kCursor << 16 | length : length << 16 | kCursor;
        std::memcpy(words_ + kLength, &words, sizeof words);
    }

    /// `finish()`, then the record's bytes to `file` in one write call. A write error is left in
    /// the file's own error indicator.
    void writeTo(std::FILE* file);

    /// Moves the cursor over `n` bytes to be written and returns their place; they are not cleared.
    std::uint8_t* claim(std::uint32_t n) {
        const std::uint64_t end = std::uint64_t{words_[kPosition]} + n;
        if (lacksRoomFor(end)) [[unlikely]]
            makeRoom(n);
        const std::uint32_t place = words_[kPosition];
        words_[kComplete] = 0;
        words_[kPosition] = static_cast<std::uint16_t>(end);
        if (words_[kPosition] > words_[kLength]) words_[kLength] = words_[kPosition];
        return block_.get() + place;
    }

    /// Moves the cursor over `n` bytes to be read, of which at least `n` must be left
    /// (`remaining()`), and returns their place.
    const std::uint8_t* take(std::uint32_t n) noexcept {
        const std::uint8_t* place = buffer_ + words_[kPosition];
        words_[kPosition] = static_cast<std::uint16_t>(words_[kPosition] + n);
        return place;
    }

    /// Where `n` bytes at the body's byte `offset` are; null when the body is too short for them.
    /// The cursor stays.
    const std::uint8_t* body(std::uint32_t n, std::uint32_t offset = 0) const noexcept {
        return words_[kLength] < kHeaderSize + offset + n ? nullptr
                                                          : buffer_ + kHeaderSize + offset;
    }

    std::uint16_t opcode() const noexcept { return words_[kOpcode]; }
    /// Valid bytes: the furthest one written, or the record's length when reading.
    std::uint16_t length() const noexcept { return words_[kLength]; }
    std::uint16_t position() const noexcept { return words_[kPosition]; }
    std::uint32_t remaining() const noexcept {
        return static_cast<std::uint32_t>(words_[kLength] - words_[kPosition]);
    }
    /// Bytes that a record can have without another block: the own block's, or the attached
    /// record's.
    std::int32_t capacity() const noexcept {
        return ownsBuffer() ? blockCapacity_ : words_[kLength];
    }
    /// The record's bytes, `length()` of them; null for a fresh token.
    const std::uint8_t* data() const noexcept { return buffer_; }
    /// Whether the bytes are the token's own, rather than attached.
    bool ownsBuffer() const noexcept { return buffer_ == block_.get(); }

    /// Copies a number of 1, 2, 4 or 8 bytes between host and big-endian order, for sizes known
    /// only at run time. Throws `AviaryAssertion` for any other size.
    static void convertOrder(void* destination, const void* source, std::size_t size);

private:
    static constexpr bool kLittleEndianHost = std::endian::native == std::endian::little;
    static constexpr std::uint16_t kHeaderSize = 4;
    static constexpr std::uint32_t kLongestRecord = 0xFFFF;
    /// The length of a finished record; a vertex list is as long as its vertices.
    static constexpr std::uint64_t paddedLength(std::uint16_t opcode, std::uint64_t n) noexcept {
        return opcode == kFltVertexList ? n : fltPaddedLength(n);
    }
    /// Whether a record of `size` bytes needs another block than the token has at hand.
    bool lacksRoomFor(std::uint64_t size) const noexcept { return size > room_; }

    template <FltNumber T>
    void readNumber(T& destination) noexcept {
        if (remaining() >= sizeof(T)) [[likely]]
            fltLoadBigEndian(take(sizeof(T)), destination);
        else
            readShort(&destination, sizeof(T));
    }
    template <FltNumber T>
    void writeNumber(T value) {
        fltStoreBigEndian(claim(sizeof(T)), value);
    }
    void attachCut(const void* bytes, std::int32_t size) noexcept;
    void finishSlowly();
    void makeRoom(std::uint64_t n);
    void readShort(void* destination, std::size_t size) noexcept;
    void moveToOwnBlock(std::uint32_t capacity);

    // What each record changes, side by side so that it takes one or two stores: they are most of
    // what a small record costs.
    enum : std::size_t {
        kOpcode,
        kLength,
        kPosition,
        kComplete,  ///< length when finishing has nothing else left to do, or 0
        kWords
    };
    std::uint16_t words_[kWords] = {};
    const std::uint8_t* buffer_ = nullptr;   ///< the own block or the attached bytes
    std::unique_ptr<std::uint8_t[]> block_;  ///< kept through attachments, to be reused
    std::int32_t blockCapacity_ = 0;         ///< without the word of padding behind it
    /// The longest record that the block can hold; 0 while it is not in use, so that room and
    /// ownership are one condition.
    std::uint32_t room_ = 0;
};
