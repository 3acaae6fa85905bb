// The bytes of one OpenFlight record, with a cursor and big-endian conversion.
#pragma once

#include <quillon/fltbyteorder.h>

#include <cstdint>
#include <cstdio>
#include <memory>

/// The buffer of one record: 16-bit opcode, 16-bit length (header included), body.
///
/// A token is made to be reused: its block only grows, so a warm token allocates nothing. Numbers
/// are big-endian in the bytes and in host order outside. Reading past the record's end gives
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
    void attach(const void* bytes, std::int32_t size) noexcept;

    /// Starts a new record: opcode, placeholder length 4, cursor behind them.
    void begin(std::uint16_t opcode) { begin(opcode, 0); }

    /// Starts a new record with a body of `size` bytes, which the caller fills in at the place
    /// that this gives; the cursor is behind them. For writers that know their layout.
    std::uint8_t* begin(std::uint16_t opcode, std::uint32_t size) {
        length_ = position_ = 0;
        const std::uint64_t end = std::uint64_t{size} + kHeaderSize;
        if (!owns_ || end > kLongestRecord || end > static_cast<std::uint64_t>(capacity_))
            [[unlikely]]
            makeRoom(end);
        opcode_ = opcode;
        length_ = position_ = static_cast<std::uint16_t>(end);
        std::uint8_t* place = block_.get();
        fltStoreBigEndian(place, opcode);
        fltStoreBigEndian(place + 2, kHeaderSize);
        return place + kHeaderSize;
    }

    /// Puts the cursor at the start of the body.
    void rewind() noexcept { position_ = length_ < kHeaderSize ? length_ : kHeaderSize; }

    /// Copies up to `n` bytes to `destination`, fills the rest with zeros, gives the number copied.
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

    /// Writes one number at the cursor. The type says the width: `writeInt16<std::int16_t>(5)`.
    template <FltNumberOf<1> T>
    void writeInt8(T value) {
        writeNumber(value);
    }
    template <FltNumberOf<2> T>
    void writeInt16(T value) {
        writeNumber(value);
    }
    template <FltNumberOf<4> T>
    void writeInt32(T value) {
        writeNumber(value);
    }
    template <FltNumberOf<8> T>
    void writeInt64(T value) {
        writeNumber(value);
    }

    /// Passes `n` reserved bytes, in both directions: moves the cursor over those that exist and
    /// appends zeros for the rest. Gives `n`.
    std::uint32_t skip(std::uint32_t n);

    /// Makes the length `newLength`, enlarging the block where needed: 32 bytes at first, doubled
    /// until it is enough. Bytes gained are not cleared.
    void grow(std::uint32_t newLength);

    /// Completes a written record: pads it with zeros to a multiple of 8, except a vertex list, and
    /// stores the final length in bytes 2 and 3. The cursor ends at the body.
    /// Throws `AviaryAssertion` when no record was begun.
    void finish();

    /// `finish()`, then the record's bytes to `file` in one write call. A write error is left in
    /// the file's own error indicator.
    void writeTo(std::FILE* file);

    /// Moves the cursor over `n` bytes to be written and gives their place; they are not cleared.
    std::uint8_t* claim(std::uint32_t n) {
        const std::uint64_t end = std::uint64_t{position_} + n;
        if (!owns_ || end > kLongestRecord || end > static_cast<std::uint64_t>(capacity_))
            [[unlikely]]
            makeRoom(n);
        const std::uint32_t place = position_;
        position_ = static_cast<std::uint16_t>(end);
        if (position_ > length_) length_ = position_;
        return block_.get() + place;
    }

    /// Moves the cursor over `n` bytes to be read, of which at least `n` must be left
    /// (`remaining()`), and gives their place.
    const std::uint8_t* take(std::uint32_t n) noexcept {
        const std::uint8_t* place = buffer_ + position_;
        position_ = static_cast<std::uint16_t>(position_ + n);
        return place;
    }

    std::uint16_t opcode() const noexcept { return opcode_; }
    /// Valid bytes: the furthest one written, or the record's length when reading.
    std::uint16_t length() const noexcept { return length_; }
    std::uint16_t position() const noexcept { return position_; }
    std::uint32_t remaining() const noexcept {
        return static_cast<std::uint32_t>(length_ - position_);
    }
    std::int32_t capacity() const noexcept { return capacity_; }
    /// The record's bytes, `length()` of them; null for a fresh token.
    const std::uint8_t* data() const noexcept { return buffer_; }
    /// Whether the bytes are the token's own, rather than attached.
    bool ownsBuffer() const noexcept { return owns_; }

    /// Copies a number of 1, 2, 4 or 8 bytes between host and big-endian order, for sizes known
    /// only at run time. Throws `AviaryAssertion` for any other size.
    static void convertOrder(void* destination, const void* source, std::size_t size);

private:
    static constexpr std::uint16_t kHeaderSize = 4;
    static constexpr std::uint32_t kLongestRecord = 0xFFFF;

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
    void makeRoom(std::uint64_t n);
    void readShort(void* destination, std::size_t size) noexcept;
    void moveToOwnBlock(std::uint32_t capacity);

    std::uint16_t opcode_ = 0;
    std::uint16_t length_ = 0;
    std::uint16_t position_ = 0;
    bool owns_ = true;
    std::int32_t capacity_ = 0;
    const std::uint8_t* buffer_ = nullptr;   ///< the own block or the attached bytes
    std::unique_ptr<std::uint8_t[]> block_;  ///< kept through attachments, to be reused
    std::int32_t blockCapacity_ = 0;
};
