// A growable byte array with a gap, so that repeated edits at one place are cheap.
#pragma once

#include <cstddef>
#include <cstdint>

/// Gap buffer. Logical byte i lives at physical index i before the gap, at i + gap size behind it.
///
/// All positions and counts are in bytes. Every broken precondition, negative numbers included,
/// throws `AviaryAssertion` and changes nothing. Pointers handed out stay valid until the next
/// operation that changes the contents or moves the gap.
class FltBytestring {
public:
    FltBytestring() noexcept = default;
    FltBytestring(const FltBytestring& other) { assign(other); }
    FltBytestring(FltBytestring&& other) noexcept;
    FltBytestring& operator=(const FltBytestring& other);
    FltBytestring& operator=(FltBytestring&& other) noexcept;
    ~FltBytestring();

    /// Makes room for `n` bytes in all: 16, doubled until it is enough. Never shrinks.
    void reserve(std::int32_t n);

    /// Moves the gap so that it starts at logical position `p` (0 to `size()`). What the string
    /// holds stays the same, so this is possible on a constant one.
    void moveGap(std::int32_t p) const;

    /// Where the bytes from logical position `p` on (p < size()) lie in one piece, up to `n` of
    /// them or to the end. Moves the gap out of the range where it must.
    std::uint8_t* address(std::int32_t p, std::int32_t n);
    const std::uint8_t* address(std::int32_t p, std::int32_t n) const;

    /// `address`, with a check of its own that tells its callers' mistakes apart.
    std::uint8_t* checkedAddress(std::int32_t p, std::int32_t n);
    const std::uint8_t* checkedAddress(std::int32_t p, std::int32_t n) const;

    /// Replaces the `n` bytes at `p` by those at `source`; the gap stays where it is.
    void overwrite(std::int32_t p, std::int32_t n, const void* source);

    /// Inserts `n` bytes at `p` (0 to `size()`), copied from `source`, or left as they are when
    /// `source` is null. Nothing for n <= 0. `source` must not lie in this string.
    void insert(std::int32_t p, std::int32_t n, const void* source);

    /// Removes the `n` bytes at `p`.
    void erase(std::int32_t p, std::int32_t n);

    /// Makes the length `n`, at the end; new bytes are not cleared.
    void resize(std::int32_t n);

    /// All bytes in one piece. Throws on an empty string, which has none.
    std::uint8_t* contiguous() { return address(0, length_); }
    const std::uint8_t* contiguous() const { return address(0, length_); }

    /// Bytes in use.
    std::int32_t size() const noexcept { return length_; }
    std::int32_t capacity() const noexcept { return capacity_; }
    std::int32_t gapStart() const noexcept { return gapStart_; }
    std::int32_t gapSize() const noexcept { return gapSize_; }

    /// Becomes a copy of `other`, its capacity and gap included.
    void assign(const FltBytestring& other);

private:
    std::int32_t physical(std::int32_t p) const noexcept {
        return p < gapStart_ ? p : p + gapSize_;
    }
    void swap(FltBytestring& other) noexcept;

    std::uint8_t* data_ = nullptr;  ///< owned
    std::int32_t capacity_ = 0;
    std::int32_t length_ = 0;
    mutable std::int32_t gapStart_ = 0;  ///< not part of the value
    std::int32_t gapSize_ = 0;           ///< capacity - length, always
};
