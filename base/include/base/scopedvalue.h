// A value that holds for the length of a scope.
#pragma once

#include <utility>

namespace base {

/// Sets `variable` for as long as this object lives, then puts back what was there. Objects may
/// nest; they end in the reverse order of their creation. The variable must outlive the object.
template <typename T>
class ScopedValue {
public:
    ScopedValue(T& variable, T value) noexcept
        : variable_(variable), former_(std::exchange(variable, std::move(value))) {}
    ~ScopedValue() { variable_ = std::move(former_); }
    ScopedValue(const ScopedValue&) = delete;
    ScopedValue& operator=(const ScopedValue&) = delete;

private:
    T& variable_;
    T former_;
};

}  // namespace base
