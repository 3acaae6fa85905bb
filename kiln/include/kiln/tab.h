// The SDK's growable array.
#pragma once

#include <kiln/memory.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <stdexcept>
#include <type_traits>
#include <utility>

/// An array of `T` that grows on demand. Indices are not checked; counts are signed, as everywhere
/// in the SDK. Iterators and addresses are valid until the count changes.
template <typename T>
class Tab {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
    static_assert(alignof(T) <= 8, "which is what pieces of memory have");

public:
    Tab() = default;
    Tab(std::initializer_list<T> items) { Append(static_cast<int>(items.size()), items.begin()); }
    Tab(const Tab& other) { Append(other.count_, other.items_); }
    Tab(Tab&& other) noexcept { swap(other); }
    Tab& operator=(Tab other) noexcept {
        swap(other);
        return *this;
    }
    ~Tab() { free(); }

    int Count() const noexcept { return count_; }
    bool IsEmpty() const noexcept { return count_ == 0; }

    /// Makes room for `count` elements without changing the count.
    void Resize(int count) {
        if (count > capacity_) changeCapacity(count);
    }
    /// Changes the count; new elements are value-initialised.
    void SetCount(int count) {
        Resize(count);
        for (int i = count_; i < count; ++i) new (items_ + i) T();
        count_ = count;
    }
    void ZeroCount() noexcept { count_ = 0; }

    /// Appends `count` elements copied from `items`; returns the index of the first. `items` must
    /// not lie inside this array.
    int Append(int count, const T* items) { return Insert(count_, count, items); }
    /// Appends one element; returns its index.
    int Append(const T& item) {
        const T copy = item;  // which may lie inside this array
        makeRoom(1);
        new (items_ + count_) T(copy);
        return count_++;
    }
    /// Inserts `count` elements before index `at`; returns `at`. `items` must not lie inside this
    /// array.
    int Insert(int at, int count, const T* items) {
        if (count <= 0) return at;
        makeRoom(count);
        std::copy_backward(items_ + at, items_ + count_, items_ + count_ + count);
        std::copy(items, items + count, items_ + at);
        count_ += count;
        return at;
    }
    /// Removes `count` elements from index `start`.
    void Delete(int start, int count) {
        std::copy(items_ + start + count, items_ + count_, items_ + start);
        count_ -= count;
    }

    T& operator[](int index) { return items_[index]; }
    const T& operator[](int index) const { return items_[index]; }

    /// The address of an element; `Addr(0)` of an empty array may be null.
    T* Addr(int index) noexcept { return items_ + index; }
    const T* Addr(int index) const noexcept { return items_ + index; }

    T* begin() noexcept { return items_; }
    T* end() noexcept { return items_ + count_; }
    const T* begin() const noexcept { return items_; }
    const T* end() const noexcept { return items_ + count_; }

    bool operator==(const Tab& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }

private:
    static std::size_t bytes(int count) noexcept {
        // T may well be a pointer.
        return static_cast<std::size_t>(count) * sizeof(T);  // NOLINT(bugprone-sizeof-expression)
    }

    void swap(Tab& other) noexcept {
        std::swap(items_, other.items_);
        std::swap(count_, other.count_);
        std::swap(capacity_, other.capacity_);
    }

    void makeRoom(int more) {
        if (more > kMost - count_) throw std::length_error("too many elements");
        if (count_ + more > capacity_) {
            changeCapacity(std::max(count_ + more, capacity_ > kMost / 2 ? kMost : 2 * capacity_));
        }
    }

    void changeCapacity(int capacity) {
        auto* const items = static_cast<T*>(KILN_newPiece(bytes(capacity)));
        std::copy(begin(), end(), items);
        free();
        items_ = items;
        capacity_ = capacity;
    }

    void free() noexcept { KILN_deletePiece(items_, bytes(capacity_)); }

    static constexpr int kMost = 0x7FFFFFFF;

    T* items_ = nullptr;
    int count_ = 0;
    int capacity_ = 0;
};
