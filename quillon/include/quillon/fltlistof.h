// An array of fixed-size elements on a byte string.
#pragma once

#include <diagnostics/assertion.h>
#include <quillon/fltbytestring.h>

#include <bit>
#include <limits>
#include <type_traits>

/// List of plain elements, packed. Element addresses stay valid until the list changes.
template <typename T>
class FltListOf : private FltBytestring {
    static_assert(std::is_trivially_copyable_v<T>);
    // The gap's edges then fall between elements, and an element behind the gap is aligned.
    static_assert(std::has_single_bit(sizeof(T)) && sizeof(T) <= 16);
    static constexpr std::int32_t kElementSize = static_cast<std::int32_t>(sizeof(T));

public:
    std::int32_t count() const noexcept { return size() / kElementSize; }

    /// Where element `i` lives. Throws `AviaryAssertion` unless 0 <= i < count().
    T* at(std::int32_t i) {
        checkIndex(i);
        return reinterpret_cast<T*>(address(i * kElementSize, kElementSize));
    }
    const T* at(std::int32_t i) const {
        checkIndex(i);
        return reinterpret_cast<const T*>(address(i * kElementSize, kElementSize));
    }

    /// All elements side by side; null for an empty list.
    T* data() { return count() == 0 ? nullptr : reinterpret_cast<T*>(contiguous()); }
    const T* data() const {
        return count() == 0 ? nullptr : reinterpret_cast<const T*>(contiguous());
    }

    /// Inserts a copy of `element` before element `i`. Throws unless 0 <= i <= count().
    void insertAt(std::int32_t i, const T& element) {
        diagnostics::check(i >= 0, "fltlistof", 326);
        diagnostics::check(i <= count(), "fltlistof", 327);
        const T copy = element;  // `element` may lie in this list
        insert(i * kElementSize, kElementSize, &copy);
    }
    void append(const T& element) { insertAt(count(), element); }

    /// Removes element `i`. Throws unless 0 <= i < count().
    void eraseAt(std::int32_t i) {
        checkIndex(i);
        erase(i * kElementSize, kElementSize);
    }

    /// Makes the count `n`; new elements are not set.
    void resize(std::int32_t n) {
        diagnostics::check(n >= 0 && n <= std::numeric_limits<std::int32_t>::max() / kElementSize,
                           "fltlistof", 338);
        FltBytestring::resize(n * kElementSize);
    }

    /// Empties the list and keeps its memory.
    void clear() { FltBytestring::resize(0); }

private:
    void checkIndex(std::int32_t i) const {
        diagnostics::check(i >= 0, "fltlistof", 314);
        diagnostics::check(i < count(), "fltlistof", 315);
    }
};
