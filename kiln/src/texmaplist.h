// The texture maps of a scene in their order.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

class Texmap;

namespace kiln {

/// A list that closes up behind what is taken out at the cheaper end. What was taken out can come
/// back without taking memory: its room stays.
class TexmapList {
public:
    using Iterator = std::vector<Texmap*>::const_iterator;

    std::size_t size() const noexcept { return slots_.size() - first_; }
    Texmap* operator[](std::size_t index) const noexcept { return slots_[first_ + index]; }
    Iterator begin() const noexcept { return slots_.begin() + offset(0); }
    Iterator end() const noexcept { return slots_.end(); }

    /// Makes room for one more.
    void makeRoom() {
        if (size() == slots_.capacity()) slots_.reserve(2 * size() + 1);
    }
    /// Inserts before `index`; there is room.
    void insert(std::size_t index, Texmap* map) noexcept {
        const bool isRoomBehind = slots_.size() < slots_.capacity();
        if (first_ > 0 && (!isRoomBehind || index < size() - index)) {
            std::move(slots_.begin() + offset(0), slots_.begin() + offset(index),
                      slots_.begin() + offset(0) - 1);
            --first_;
            slots_[first_ + index] = map;
        } else {
            slots_.insert(slots_.begin() + offset(index), map);
        }
    }
    void erase(std::size_t index) noexcept {
        if (index < size() - index) {
            std::move_backward(slots_.begin() + offset(0), slots_.begin() + offset(index),
                               slots_.begin() + offset(index) + 1);
            ++first_;
        } else {
            slots_.erase(slots_.begin() + offset(index));
        }
    }

private:
    std::ptrdiff_t offset(std::size_t index) const noexcept {
        return static_cast<std::ptrdiff_t>(first_ + index);
    }

    std::vector<Texmap*> slots_;
    std::size_t first_ = 0;  // the slots before are free
};

}  // namespace kiln
