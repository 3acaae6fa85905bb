#include <diagnostics/assertion.h>
#include <quillon/fltbytestring.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr std::int32_t kSmallestCapacity = 16;

void check(bool holds, int line) {
    diagnostics::check(holds, "fltbytestring", line);
}

// The capacity for `n` bytes; one that no longer fits 32 bits comes out negative.
std::int32_t capacityFor(std::int32_t n) {
    std::uint32_t capacity = kSmallestCapacity;
    while (capacity < static_cast<std::uint32_t>(n)) capacity *= 2;
    return static_cast<std::int32_t>(capacity);
}

void copyBytes(void* destination, const void* source, std::int32_t n) {
    if (n > 0) std::memcpy(destination, source, static_cast<std::size_t>(n));
}

void moveBytes(void* destination, const void* source, std::int32_t n) {
    if (n > 0) std::memmove(destination, source, static_cast<std::size_t>(n));
}

}  // namespace

FltBytestring::FltBytestring(FltBytestring&& other) noexcept {
    swap(other);
}

FltBytestring& FltBytestring::operator=(const FltBytestring& other) {
    if (this != &other) assign(other);
    return *this;
}

FltBytestring& FltBytestring::operator=(FltBytestring&& other) noexcept {
    FltBytestring taken(std::move(other));
    swap(taken);
    return *this;
}

FltBytestring::~FltBytestring() {
    delete[] data_;
}

void FltBytestring::swap(FltBytestring& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(capacity_, other.capacity_);
    std::swap(length_, other.length_);
    std::swap(gapStart_, other.gapStart_);
    std::swap(gapSize_, other.gapSize_);
}

void FltBytestring::reserve(std::int32_t n) {
    check(length_ <= capacity_, 80);
    if (n > capacity_) {
        const std::int32_t capacity = capacityFor(n);
        check(capacity >= kSmallestCapacity, 90);
        auto* block = new (std::nothrow) std::uint8_t[static_cast<std::size_t>(capacity)];
        check(block != nullptr, 119);
        const std::int32_t behindGap = length_ - gapStart_;
        copyBytes(block, data_, gapStart_);
        if (behindGap > 0)
            copyBytes(block + capacity - behindGap, data_ + gapStart_ + gapSize_, behindGap);
        delete[] data_;
        data_ = block;
        capacity_ = capacity;
        gapSize_ = capacity - length_;
    }
    check(gapSize_ == capacity_ - length_, 122);
}

void FltBytestring::moveGap(std::int32_t p) const {
    check(p >= 0 && p <= length_, 149);
    if (p < gapStart_)
        moveBytes(data_ + p + gapSize_, data_ + p, gapStart_ - p);
    else if (p > gapStart_)
        moveBytes(data_ + gapStart_, data_ + gapStart_ + gapSize_, p - gapStart_);
    gapStart_ = p;
    check(gapSize_ == capacity_ - length_, 149);
}

const std::uint8_t* FltBytestring::address(std::int32_t p, std::int32_t n) const {
    check(p >= 0 && p < length_, 156);
    if (gapStart_ > p && gapStart_ - p < n) moveGap(p);
    return data_ + physical(p);
}

std::uint8_t* FltBytestring::address(std::int32_t p, std::int32_t n) {
    return const_cast<std::uint8_t*>(std::as_const(*this).address(p, n));
}

const std::uint8_t* FltBytestring::checkedAddress(std::int32_t p, std::int32_t n) const {
    check(p >= 0 && p < length_, 185);
    return address(p, n);
}

std::uint8_t* FltBytestring::checkedAddress(std::int32_t p, std::int32_t n) {
    return const_cast<std::uint8_t*>(std::as_const(*this).checkedAddress(p, n));
}

void FltBytestring::overwrite(std::int32_t p, std::int32_t n, const void* source) {
    check(p >= 0 && n >= 0 && n <= length_ - p, 199);
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    const std::int32_t beforeGap = p < gapStart_ ? std::min(n, gapStart_ - p) : 0;
    if (beforeGap > 0) copyBytes(data_ + p, bytes, beforeGap);
    if (n > beforeGap) copyBytes(data_ + physical(p + beforeGap), bytes + beforeGap, n - beforeGap);
}

void FltBytestring::insert(std::int32_t p, std::int32_t n, const void* source) {
    if (n <= 0) return;
    check(p >= 0 && p <= length_, 229);
    check(length_ <= capacity_, 230);
    // A sum beyond 32 bits is refused as the overflowing capacity that it would need.
    check(n <= std::numeric_limits<std::int32_t>::max() - length_, 90);
    reserve(length_ + n);
    moveGap(p);
    length_ += n;
    gapStart_ += n;
    gapSize_ -= n;
    if (source != nullptr) copyBytes(data_ + p, source, n);
}

void FltBytestring::resize(std::int32_t n) {
    check(n >= 0 && length_ <= capacity_, 254);
    if (n >= length_) {
        moveGap(length_);
        reserve(n);
        length_ = gapStart_ = n;
        gapSize_ = capacity_ - n;
    } else {
        erase(n, length_ - n);
    }
    check(length_ <= capacity_, 266);
}

void FltBytestring::erase(std::int32_t p, std::int32_t n) {
    if (n == 0) return;
    check(length_ <= capacity_, 280);
    check(p >= 0 && n >= 0 && n <= length_ - p, 281);
    if (p + n == gapStart_)
        gapStart_ -= n;
    else if (n == length_)
        gapStart_ = 0;
    else
        moveGap(p);
    length_ -= n;
    gapSize_ += n;
    check(gapSize_ == capacity_ - length_, 293);
}

void FltBytestring::assign(const FltBytestring& other) {
    if (this == &other) return;
    FltBytestring copy;
    if (other.capacity_ > 0) {
        copy.data_ = new (std::nothrow) std::uint8_t[static_cast<std::size_t>(other.capacity_)];
        check(copy.data_ != nullptr, 119);
        copyBytes(copy.data_, other.data_, other.gapStart_);
        const std::int32_t behindGap = other.gapStart_ + other.gapSize_;
        copyBytes(copy.data_ + behindGap, other.data_ + behindGap, other.capacity_ - behindGap);
        copy.capacity_ = other.capacity_;
        copy.length_ = other.length_;
        copy.gapStart_ = other.gapStart_;
        copy.gapSize_ = other.gapSize_;
    }
    swap(copy);
}
