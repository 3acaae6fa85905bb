#include <diagnostics/assertion.h>
#include <quillon/fltopcode.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <new>

namespace {

constexpr std::uint32_t kAlignment = 8;
constexpr std::uint32_t kSmallestCapacity = 32;

std::uint16_t bigEndianWord(const std::uint8_t* bytes) {
    std::uint16_t word = 0;
    fltLoadBigEndian(bytes, word);
    return word;
}

}  // namespace

void FltToken::reset() noexcept {
    block_.reset();
    blockCapacity_ = 0;
    opcode_ = length_ = position_ = 0;
    owns_ = true;
    capacity_ = 0;
    buffer_ = nullptr;
}

void FltToken::attach(const void* bytes, std::int32_t size) noexcept {
    owns_ = false;
    buffer_ = static_cast<const std::uint8_t*>(bytes);
    capacity_ = std::max(size, 0);
    position_ = 0;
    opcode_ = capacity_ >= 2 ? bigEndianWord(buffer_) : std::uint16_t{0};
    const std::uint16_t stated = capacity_ >= 4 ? bigEndianWord(buffer_ + 2) : std::uint16_t{0};
    length_ = static_cast<std::uint16_t>(std::min<std::int32_t>(stated, capacity_));
}

std::uint32_t FltToken::readBytes(std::uint32_t n, void* destination) noexcept {
    if (n == 0) return 0;
    const std::uint32_t present = std::min(n, remaining());
    auto* bytes = static_cast<std::uint8_t*>(destination);
    if (present > 0) std::memcpy(bytes, take(present), present);
    std::memset(bytes + present, 0, n - present);
    return present;
}

void FltToken::writeBytes(std::uint32_t n, const void* source) {
    if (n > 0) std::memcpy(claim(n), source, n);
}

std::uint32_t FltToken::skip(std::uint32_t n) {
    const std::uint32_t present = std::min(n, remaining());
    position_ = static_cast<std::uint16_t>(position_ + present);
    if (n > present) std::memset(claim(n - present), 0, n - present);
    return n;
}

void FltToken::grow(std::uint32_t newLength) {
    diagnostics::check(newLength <= kLongestRecord, "flttoken", 133);
    if (newLength > static_cast<std::uint32_t>(capacity_)) {
        std::uint32_t capacity =
            capacity_ == 0 ? kSmallestCapacity : static_cast<std::uint32_t>(capacity_);
        while (capacity < newLength) capacity *= 2;
        moveToOwnBlock(capacity);
    }
    length_ = static_cast<std::uint16_t>(newLength);
}

// Continues in a block of at least `capacity` bytes of the token's own. The block is kept while
// outside bytes are attached, so a token that walks over many records allocates at most a few
// times.
void FltToken::moveToOwnBlock(std::uint32_t capacity) {
    if (capacity > static_cast<std::uint32_t>(blockCapacity_)) {
        std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[capacity]);
        diagnostics::check(block != nullptr, "flttoken", 133);
        if (length_ > 0) std::memcpy(block.get(), buffer_, length_);
        block_ = std::move(block);
        blockCapacity_ = static_cast<std::int32_t>(capacity);
    } else if (length_ > 0 && buffer_ != block_.get()) {
        std::memmove(block_.get(), buffer_, length_);
    }
    owns_ = true;
    buffer_ = block_.get();
    capacity_ = blockCapacity_;
}

// Makes the `n` bytes at the cursor part of the token's own block; the length stays.
void FltToken::makeRoom(std::uint64_t n) {
    diagnostics::check(n <= kLongestRecord - position_, "flttoken", 133);
    const auto end = static_cast<std::uint32_t>(position_ + n);
    const std::uint16_t length = length_;
    if (!owns_) moveToOwnBlock(std::max({end, std::uint32_t{length}, kSmallestCapacity}));
    if (end > length) grow(end);
    length_ = length;
}

void FltToken::finish() {
    diagnostics::check(length_ >= kHeaderSize, "flttoken", 171);
    position_ = length_;
    // A vertex list is as long as its vertices.
    const std::uint32_t beyond = length_ % kAlignment;
    if (beyond != 0 && opcode_ != kFltVertexList) skip(kAlignment - beyond);
    position_ = 2;
    writeInt16(length_);
}

void FltToken::writeTo(std::FILE* file) {
    finish();
    // What the disk refuses is on the file's error indicator, where closing it finds it.
    static_cast<void>(std::fwrite(buffer_, 1, length_, file));
}

void FltToken::readShort(void* destination, std::size_t size) noexcept {
    std::uint8_t scratch[8];
    readBytes(static_cast<std::uint32_t>(size), scratch);
    convertOrder(destination, scratch, size);
}

void FltToken::convertOrder(void* destination, const void* source, std::size_t size) {
    const auto convert = [&](auto word) {
        fltLoadBigEndian(source, word);
        std::memcpy(destination, &word, sizeof word);
    };
    switch (size) {
        case 1:
            return convert(std::uint8_t{});
        case 2:
            return convert(std::uint16_t{});
        case 4:
            return convert(std::uint32_t{});
        case 8:
            return convert(std::uint64_t{});
        default:
            throw diagnostics::AviaryAssertion("flttoken", 87);
    }
}
