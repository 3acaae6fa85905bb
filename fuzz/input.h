// A fuzz target's input, taken apart piece by piece.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

/// Missing bytes are zeros.
class Input {
public:
    explicit Input(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    bool empty() const { return rest_.empty(); }
    std::uint8_t byte() { return bytes(1).empty() ? std::uint8_t{0} : taken_[0]; }
    std::size_t length() {
        const std::size_t high = byte();
        return high << 8 | byte();
    }
    std::span<const std::uint8_t> bytes(std::size_t count) {
        taken_ = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken_.size());
        return taken_;
    }
    std::span<const std::uint8_t> rest() { return bytes(rest_.size()); }

private:
    std::span<const std::uint8_t> rest_;
    std::span<const std::uint8_t> taken_;
};
