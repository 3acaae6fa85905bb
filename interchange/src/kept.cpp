#include "kept.h"

#include "layouts.h"

#include <kiln/kiln.h>
#include <quillon/fltopcode.h>

#include <array>
#include <cstring>
#include <new>
#include <optional>

namespace interchange {

namespace {

// In users' scene files.
constexpr Class_ID kKeptClass{0x51D8A2C4, 0x7B30E61A};
constexpr std::uint16_t kVersion = 1;
constexpr std::uint16_t kHasBead = 1;
constexpr std::uint16_t kHasGivenName = 2;
constexpr std::size_t kHeadSize = 8;

/// The whole record at the start of `bytes`; empty when there is none.
FileBytes firstRecord(FileBytes bytes) noexcept {
    if (bytes.size() < kRecordHeader) return {};
    const std::size_t length = uint16At(bytes, 2);
    if (length < kRecordHeader || length > bytes.size()) return {};
    return bytes.first(length);
}

/// Follows the nesting of records that may say anything.
class NestingCheck {
public:
    bool take(FileBytes record) {
        const std::uint16_t opcode = uint16At(record, 0);
        if (const std::uint16_t closer = fltClosingOpcode(opcode); closer != 0) {
            if (depth_ == closers_.size()) return false;
            closers_[depth_++] = closer;
            if (opaque_ == 0 && beginsOpaque(opcode)) opaque_ = depth_;
        } else if (fltIsPop(opcode)) {
            if (depth_ == 0 || closers_[depth_ - 1] != opcode) return false;
            constexpr std::size_t kPopWithCount = 8;
            if (opaque_ == 0 && record.size() < kPopWithCount) return false;
            if (opaque_ == depth_) opaque_ = 0;
            --depth_;
        }
        return true;
    }
    bool atEnd() const { return depth_ == 0; }

private:
    std::array<std::uint16_t, kDeepestLevel> closers_;
    std::size_t depth_ = 0;
    std::size_t opaque_ = 0;  ///< depth of the outermost level without nodes, 0 outside of any
};

bool isWellFormed(FileBytes pieces) {
    NestingCheck nesting;
    while (!pieces.empty()) {
        const FileBytes record = firstRecord(pieces);
        if (record.empty() || !nesting.take(record)) return false;
        pieces = pieces.subspan(record.size());
    }
    return nesting.atEnd();
}

std::optional<Kept> read(FileBytes bytes) {
    if (bytes.size() < kHeadSize || uint16At(bytes, 0) != kVersion) return std::nullopt;
    const std::uint16_t flags = uint16At(bytes, 2);
    Kept kept;
    kept.revision = uint32At(bytes, 4);
    bytes = bytes.subspan(kHeadSize);
    if (flags & kHasBead) {
        kept.bead = firstRecord(bytes);
        if (kept.bead.empty()) return std::nullopt;
        bytes = bytes.subspan(kept.bead.size());
    }
    if (flags & kHasGivenName) {
        if (bytes.size() < 2 || bytes.size() - 2 < uint16At(bytes, 0)) return std::nullopt;
        const FileBytes name = bytes.subspan(2, uint16At(bytes, 0));
        kept.givenName = {reinterpret_cast<const char*>(name.data()), name.size()};
        bytes = bytes.subspan(2 + name.size());
    }
    if (!isWellFormed(bytes)) return std::nullopt;
    kept.pieces = bytes;
    return kept;
}

}  // namespace

FileBytes keptChunk(const Animatable& thing, KeptChunk id) noexcept {
    const AppDataChunk* const chunk =
        thing.GetAppDataChunk(kKeptClass, SCENE_IMPORT_CLASS_ID, static_cast<DWORD>(id));
    if (chunk == nullptr || chunk->data == nullptr) return {};
    return {static_cast<const std::uint8_t*>(chunk->data), chunk->length};
}

void keepChunk(Animatable& thing, KeptChunk id, FileBytes bytes) {
    void* const block = KILN_malloc(bytes.size());
    if (block == nullptr) throw std::bad_alloc();
    std::memcpy(block, bytes.data(), bytes.size());
    if (thing.AddAppDataChunk(kKeptClass, SCENE_IMPORT_CLASS_ID, static_cast<DWORD>(id),
                              static_cast<DWORD>(bytes.size()), block) == nullptr) {
        KILN_free(block);
        throw std::bad_alloc();
    }
}

Kept keptOn(const Animatable& node) noexcept {
    return read(keptChunk(node, KeptChunk::records)).value_or(Kept());
}

void KeptWriter::begin(std::uint32_t revision) {
    bytes_.clear();
    append16(kVersion);
    append16(0);
    append32(revision);
}

void KeptWriter::bead(FileBytes record) {
    bytes_[3] |= kHasBead;
    append(record);
}

void KeptWriter::givenName(std::string_view name) {
    bytes_[3] |= kHasGivenName;
    name = name.substr(0, 0xFFFF);
    append16(static_cast<std::uint32_t>(name.size()));
    append({reinterpret_cast<const std::uint8_t*>(name.data()), name.size()});
}

void KeptWriter::record(FileBytes record) {
    append(record);
}

void KeptWriter::record(FileBytes record, std::size_t longest) {
    if (record.size() <= longest) return append(record);
    append16(uint16At(record, 0));
    append16(static_cast<std::uint32_t>(longest));
    append(record.first(longest).subspan(kRecordHeader));
}

void KeptWriter::marker(std::uint16_t opcode) {
    append16(opcode);
    append16(kRecordHeader);
}

void KeptWriter::marker(std::uint16_t opcode, std::uint32_t value) {
    append16(opcode);
    append16(kRecordHeader + 4);
    append32(value);
}

void KeptWriter::numbers(std::uint16_t opcode, std::uint32_t count) {
    append16(opcode);
    append16(static_cast<std::uint32_t>(kRecordHeader + std::size_t{4} * count));
    for (std::uint32_t i = 0; i < count; ++i) append32(i);
}

void KeptWriter::append16(std::uint32_t value) {
    bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes_.push_back(static_cast<std::uint8_t>(value));
}

void KeptWriter::append32(std::uint32_t value) {
    append16(value >> 16);
    append16(value);
}

void KeptWriter::append(FileBytes bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

bool beginsOpaque(std::uint16_t opcode) noexcept {
    return opcode == kFltPushExtension || opcode == kFltPushAttribute;
}

bool isVertex(std::uint16_t opcode) noexcept {
    return opcode >= kFltVertexWithColor && opcode <= kFltVertexWithTexture;
}

bool isVertexList(std::uint16_t opcode) noexcept {
    return opcode == kFltVertexList || opcode == kFltMorphVertexList;
}

}  // namespace interchange
