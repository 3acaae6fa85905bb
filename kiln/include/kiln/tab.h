// The SDK's growable array.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

/// An array of `T` that grows on demand. Indices are not checked; counts are signed, as everywhere
/// in the SDK. Iterators and addresses are valid until the count changes.
template <typename T>
class Tab {
public:
    Tab() = default;
    Tab(std::initializer_list<T> items) : items_(items) {}

    int Count() const noexcept { return static_cast<int>(items_.size()); }
    bool IsEmpty() const noexcept { return items_.empty(); }

    /// Makes room for `count` elements without changing the count.
    void Resize(int count) { items_.reserve(static_cast<std::size_t>(count)); }
    /// Changes the count; new elements are value-initialised.
    void SetCount(int count) { items_.resize(static_cast<std::size_t>(count)); }
    void ZeroCount() noexcept { items_.clear(); }

    /// Appends `count` elements copied from `items`; gives the index of the first. `items` must not
    /// lie inside this array.
    int Append(int count, const T* items) {
        const int first = Count();
        items_.insert(items_.end(), items, items + count);
        return first;
    }
    /// Appends one element; gives its index.
    int Append(const T& item) {
        items_.push_back(item);
        return Count() - 1;
    }
    /// Inserts `count` elements before index `at`; gives `at`. `items` must not lie inside this
    /// array.
    int Insert(int at, int count, const T* items) {
        items_.insert(items_.begin() + at, items, items + count);
        return at;
    }
    /// Removes `count` elements from index `start`.
    void Delete(int start, int count) {
        items_.erase(items_.begin() + start, items_.begin() + start + count);
    }

    T& operator[](int index) { return items_[static_cast<std::size_t>(index)]; }
    const T& operator[](int index) const { return items_[static_cast<std::size_t>(index)]; }

    /// The address of an element; `Addr(0)` of an empty array may be null.
    T* Addr(int index) noexcept { return items_.data() + index; }
    const T* Addr(int index) const noexcept { return items_.data() + index; }

    auto begin() noexcept { return items_.begin(); }
    auto end() noexcept { return items_.end(); }
    auto begin() const noexcept { return items_.begin(); }
    auto end() const noexcept { return items_.end(); }

    bool operator==(const Tab&) const = default;

private:
    std::vector<T> items_;
};
