#include "fltfile.h"

#include <diagnostics/assertion.h>
#include <quillon/fltopcode.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <new>

namespace {

constexpr std::uint32_t kSmallestCapacity = 32;

}  // namespace

void FltToken::reset() noexcept {
    block_.reset();
    blockCapacity_ = 0;
    room_ = 0;
    words_[kLength] = words_[kOpcode] = words_[kPosition] = words_[kComplete] = 0;
    buffer_ = nullptr;
}

// Bytes that end before the record does, perhaps even before its header does.
void FltToken::attachCut(const void* bytes, std::int32_t size) noexcept {
    buffer_ = static_cast<const std::uint8_t*>(bytes);
    room_ = 0;
    words_[kOpcode] = 0;
    if (size >= 2) fltLoadBigEndian(buffer_, words_[kOpcode]);
    words_[kLength] = size < kHeaderSize ? std::uint16_t{0} : static_cast<std::uint16_t>(size);
    words_[kPosition] = words_[kComplete] = 0;
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
    words_[kPosition] = static_cast<std::uint16_t>(words_[kPosition] + present);
    if (n > present) std::memset(claim(n - present), 0, n - present);
    return n;
}

void FltToken::grow(std::uint32_t newLength) {
    diagnostics::check(newLength <= kLongestRecord, "flttoken", 133);
    if (newLength > static_cast<std::uint32_t>(capacity())) {
        std::uint32_t wanted =
            capacity() == 0 ? kSmallestCapacity : static_cast<std::uint32_t>(capacity());
        while (wanted < newLength) wanted *= 2;
        moveToOwnBlock(wanted);
    }
    words_[kLength] = static_cast<std::uint16_t>(newLength);
    words_[kPosition] = std::min(words_[kPosition], words_[kLength]);
    words_[kComplete] = 0;
}

// Continues in a block of at least `capacity` bytes of the token's own. The block is kept while
// outside bytes are attached, so a token that walks over many records allocates at most a few
// times.
void FltToken::moveToOwnBlock(std::uint32_t capacity) {
    if (capacity > static_cast<std::uint32_t>(blockCapacity_)) {
        // A word more, so that padding can be cleared a whole word at a time.
        std::unique_ptr<std::uint8_t[]> block(new (std::nothrow)
                                                  std::uint8_t[capacity + kFltAlignment]);
        diagnostics::check(block != nullptr, "flttoken", 133);
        if (words_[kLength] > 0) std::memcpy(block.get(), buffer_, words_[kLength]);
        block_ = std::move(block);
        blockCapacity_ = static_cast<std::int32_t>(capacity);
    } else if (words_[kLength] > 0 && buffer_ != block_.get()) {
        std::memmove(block_.get(), buffer_, words_[kLength]);
    }
    buffer_ = block_.get();
    room_ = std::min(static_cast<std::uint32_t>(blockCapacity_), kLongestRecord);
}

// Makes the `n` bytes at the cursor part of the token's own block; the length stays.
void FltToken::makeRoom(std::uint64_t n) {
    diagnostics::check(n <= kLongestRecord - words_[kPosition], "flttoken", 133);
    const auto end = static_cast<std::uint32_t>(words_[kPosition] + n);
    const std::uint16_t kept = words_[kLength];
    if (!ownsBuffer()) moveToOwnBlock(std::max({end, std::uint32_t{kept}, kSmallestCapacity}));
    if (end > kept) grow(end);
    words_[kLength] = kept;
}

// For a record that was put together piece by piece, or is attached.
void FltToken::finishSlowly() {
    diagnostics::check(words_[kLength] >= kHeaderSize, "flttoken", 171);
    words_[kPosition] = words_[kLength];
    const std::uint32_t beyond = words_[kLength] % kFltAlignment;
    if (beyond != 0 && words_[kOpcode] != kFltVertexList) skip(kFltAlignment - beyond);
    words_[kPosition] = 2;
    writeInt16(words_[kLength]);
}

void FltToken::writeTo(std::FILE* file) {
    finish();
    quillon::writeBytes(file, buffer_, words_[kLength]);
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
