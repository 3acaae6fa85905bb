#include "vertexpalette.h"

#include "plan.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace interchange {

namespace {

// The palette record itself, before its vertices.
constexpr std::uint32_t kFirstVertex = 8;
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

std::uint64_t VertexPalette::hashOf(FileBytes bytes) const noexcept {
    std::uint64_t hash = bytes.size();
    for (; bytes.size() > 8; bytes = bytes.subspan(std::min<std::size_t>(16, bytes.size()))) {
        hash = fold(wordAt(bytes) ^ secret_[0] ^ hash, wordAt(bytes.subspan(8)) ^ secret_[1]);
    }
    return fold(wordAt(bytes) ^ secret_[0] ^ hash, secret_[1]);
}

std::uint32_t VertexPalette::add(FileBytes vertex) {
    const std::uint64_t hash = hashOf(vertex);
    std::uint32_t& recent = recent_[hash % recent_.size()];
    if (recent == 0 || !std::ranges::equal(recordAt(bytes_, recent - 1), vertex)) {
        recent = find(vertex, hash) + 1;
    }
    return recent - 1 + kFirstVertex;
}

/// The place of the vertex in the palette, which is its end for a new one.
std::uint32_t VertexPalette::find(FileBytes vertex, std::uint64_t hash) {
    if (2 * (count_ + 1) > table_.size()) enlargeTable();
    const std::size_t mask = table_.size() - 1;
    std::size_t slot = hash & mask;
    for (; table_[slot] != 0; slot = (slot + 1) & mask) {
        const std::uint32_t place = table_[slot] - 1;
        if (std::ranges::equal(recordAt(bytes_, place), vertex)) return place;
    }
    if (bytes_.size() + vertex.size() > kLargestPalette) {
        throw ExportError("there are more vertices than one OpenFlight file can hold");
    }
    const auto place = static_cast<std::uint32_t>(bytes_.size());
    bytes_.insert(bytes_.end(), vertex.begin(), vertex.end());
    table_[slot] = place + 1;
    ++count_;
    return place;
}

void VertexPalette::enlargeTable() {
    constexpr std::size_t kSmallest = 1024;
    table_.assign(std::max(kSmallest, 2 * table_.size()), 0);
    const std::size_t mask = table_.size() - 1;
    for (std::size_t place = 0; place < bytes_.size();) {
        const FileBytes vertex = recordAt(bytes_, static_cast<std::uint32_t>(place));
        std::size_t slot = hashOf(vertex) & mask;
        while (table_[slot] != 0) slot = (slot + 1) & mask;
        table_[slot] = static_cast<std::uint32_t>(place + 1);
        place += vertex.size();
    }
}

}  // namespace interchange
