// A NUL-terminated string on a byte string.
#pragma once

#include <quillon/fltbytestring.h>

/// Text that always ends with a terminator, which its size counts; never without a byte.
class FltString : private FltBytestring {
public:
    /// The empty string.
    FltString();

    /// A copy of `text` with its terminator; the empty string for null.
    explicit FltString(const char* text);

    FltString(const FltString&) = default;
    FltString& operator=(const FltString&) = default;

    /// Makes the size `n` bytes, terminator included (0 is taken as 1), and puts a terminator in
    /// the last one. Bytes added before it are not cleared.
    void setSize(std::int32_t n);

    /// Becomes a copy of `text`; the empty string for null. `text` must not lie in this string.
    void setText(const char* text);

    /// The text, NUL-terminated; valid until the string changes.
    const char* text() const { return reinterpret_cast<const char*>(contiguous()); }
    char* text() { return reinterpret_cast<char*>(contiguous()); }

    /// Bytes held, terminator included; at least 1.
    using FltBytestring::size;
};
