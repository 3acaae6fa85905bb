#include "vertexpalette.h"
#include "../texts.h"

#include "plan.h"

#include <quillon/fltvertexlist.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

namespace interchange {

namespace {

constexpr std::size_t kLargestPalette = 0x7FFFFFFF;

std::uint64_t randomWord() {
    std::random_device random;
    return std::uint64_t{random()} << 32 | random();
}

/// The halves of the product of `a` and `b`, folded together.
std::uint64_t fold(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// The first up to 8 bytes.
std::uint64_t wordAt(FileBytes bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), std::min<std::size_t>(8, bytes.size()));
    return word;
}

}  // namespace

VertexPalette::VertexPalette() : secret_{randomWord(), randomWord()} {}

std::uint32_t VertexPalette::hashOf(FileBytes bytes) const noexcept {
    std::uint64_t hash = bytes.size();
    for (; bytes.size() > 8; bytes = bytes.subspan(std::min<std::size_t>(16, bytes.size()))) {
        hash = fold(wordAt(bytes) ^ secret_[0] ^ hash, wordAt(bytes.subspan(8)) ^ secret_[1]);
    }
    return static_cast<std::uint32_t>(fold(wordAt(bytes) ^ secret_[0] ^ hash, secret_[1]));
}

VertexPalette::Candidate VertexPalette::consider(FileBytes vertex) const noexcept {
    const std::uint32_t hash = hashOf(vertex);
    if (!table_.empty()) __builtin_prefetch(&table_[hash & (table_.size() - 1)]);
    return {vertex, hash};
}

std::uint32_t VertexPalette::add(const Candidate& candidate) {
    std::uint32_t& recent = recent_[candidate.hash % recent_.size()];
    if (recent == 0 || !isAt(recent - 1, candidate.vertex)) recent = find(candidate) + 1;
    return FltVertexPalette().length + offsetOf(recent - 1);
}

bool VertexPalette::isAt(std::uint32_t place, FileBytes vertex) const noexcept {
    const Block& block = blocks_[place / kBlockSize];
    const FileBytes record = FileBytes(block.bytes.get(), block.used).subspan(place % kBlockSize);
    // Records begin with their lengths, so no other one of that length is equal.
    return record.size() >= vertex.size() &&
           std::memcmp(record.data(), vertex.data(), vertex.size()) == 0;
}

std::uint32_t VertexPalette::offsetOf(std::uint32_t place) const noexcept {
    return blocks_[place / kBlockSize].start + static_cast<std::uint32_t>(place % kBlockSize);
}

/// The place of the vertex, which is put at the end when it is new.
std::uint32_t VertexPalette::find(const Candidate& candidate) {
    if (4 * (count_ + 1) > 3 * table_.size()) enlargeTable();
    const std::size_t mask = table_.size() - 1;
    std::size_t slot = candidate.hash & mask;
    for (; table_[slot].place != 0; slot = (slot + 1) & mask) {
        const std::uint32_t place = table_[slot].place - 1;
        if (table_[slot].hash == candidate.hash && isAt(place, candidate.vertex)) return place;
    }
    const std::uint32_t place = append(candidate.vertex);
    table_[slot] = {candidate.hash, place + 1};
    ++count_;
    return place;
}

std::uint32_t VertexPalette::append(FileBytes vertex) {
    if (size_ + vertex.size() > kLargestPalette) {
        throw ExportError(text(TextId::kManyVertices));
    }
    if (blocks_.empty() || kBlockSize - blocks_.back().used < vertex.size()) {
        Block block;
        block.bytes.reset(new std::uint8_t[kBlockSize]);
        block.start = static_cast<std::uint32_t>(size_);
        blocks_.push_back(std::move(block));
    }
    Block& block = blocks_.back();
    const std::size_t place = (blocks_.size() - 1) * kBlockSize + block.used;
    std::ranges::copy(vertex, &block.bytes[block.used]);
    block.used += static_cast<std::uint32_t>(vertex.size());
    size_ += vertex.size();
    return static_cast<std::uint32_t>(place);
}

void VertexPalette::enlargeTable() {
    constexpr std::size_t kSmallest = 1024;
    std::vector<Slot> before(std::max(kSmallest, 2 * table_.size()));
    before.swap(table_);
    const std::size_t mask = table_.size() - 1;
    for (const Slot& moved : before) {
        if (moved.place == 0) continue;
        std::size_t slot = moved.hash & mask;
        while (table_[slot].place != 0) slot = (slot + 1) & mask;
        table_[slot] = moved;
    }
}

}  // namespace interchange
