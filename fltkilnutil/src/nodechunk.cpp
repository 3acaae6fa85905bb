#include "nodechunk.h"

#include <kiln/inode.h>
#include <kiln/memory.h>
#include <kiln/undo.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>

namespace fltkilnutil {

namespace {

constexpr Class_ID kChunkClass(0x6A3C1F07, 0x2E9D0001);
constexpr SClass_ID kChunkSuperClass = 0xA10;

AppDataChunk* hostChunk(INode* node, ChunkId id) noexcept {
    if (node == nullptr) return nullptr;
    return node->GetAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id));
}

/// A copy in a block of the host allocator, since the host will free it; null without memory.
void* hostCopy(std::span<const std::byte> bytes) noexcept {
    void* const block = KILN_malloc(bytes.size());
    if (block != nullptr && !bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
    return block;
}

bool holds(const AppDataChunk& chunk, std::span<const std::byte> bytes) noexcept {
    return chunk.data != nullptr && chunk.length == bytes.size() &&
           std::memcmp(chunk.data, bytes.data(), bytes.size()) == 0;
}

}  // namespace

bool isOurChunk(const AppDataChunk& chunk) noexcept {
    return chunk.clID == kChunkClass && chunk.sclID == kChunkSuperClass;
}

bool hasChunk(INode* node, ChunkId id) noexcept {
    return hostChunk(node, id) != nullptr;
}

Chunk findChunk(INode* node, ChunkId id) noexcept {
    AppDataChunk* const chunk = hostChunk(node, id);
    if (chunk == nullptr || chunk->data == nullptr) return {};
    return {static_cast<std::byte*>(chunk->data), chunk->length};
}

NodeChange::~NodeChange() {
    for (std::size_t i = 0; i < count_; ++i) {
        if (const auto* const added = std::get_if<Addition>(&steps_[i]))
            removeChunk(node_, added->id);
        if (const auto* const replaced = std::get_if<Replacement>(&steps_[i]))
            KILN_free(replaced->block);
    }
}

bool NodeChange::add(ChunkId id, std::span<const std::byte> bytes) noexcept {
    void* const block = hostCopy(bytes);
    if (block == nullptr) return false;
    if (node_->AddAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id),
                               static_cast<DWORD>(bytes.size()), block) == nullptr) {
        KILN_free(block);  // not attached, so still ours
        return false;
    }
    steps_[count_++] = Addition{id};
    return true;
}

bool NodeChange::prepare(ChunkId id, std::span<const std::byte> bytes) noexcept {
    if (node_ == nullptr) return false;
    AppDataChunk* const chunk = hostChunk(node_, id);
    if (chunk == nullptr) return add(id, bytes);
    if (holds(*chunk, bytes)) return true;
    if (chunk->data != nullptr && chunk->length == bytes.size()) {
        steps_[count_++] = Overwriting{chunk, bytes};
        return true;
    }
    void* const block = hostCopy(bytes);
    if (block != nullptr) steps_[count_++] = Replacement{chunk, block, bytes.size()};
    return block != nullptr;
}

bool NodeChange::commit() noexcept try {
    // Only what the history keeps can still fail, for want of memory.
    std::optional<UndoScope> scope;
    if (count_ > 1 && node_->IsRecorded()) scope.emplace(nullptr);
    bool told = true;  // the host sees what is added and replaced
    for (std::size_t i = 0; i < count_; ++i) {
        if (const auto* const overwritten = std::get_if<Overwriting>(&steps_[i])) {
            if (!overwrite(*overwritten->chunk, overwritten->bytes)) return false;
            told = false;
        } else if (auto* const replaced = std::get_if<Replacement>(&steps_[i])) {
            const AppDataChunk& chunk = *replaced->chunk;
            if (node_->AddAppDataChunk(chunk.clID, chunk.sclID, chunk.subID,
                                       static_cast<DWORD>(replaced->length),
                                       replaced->block) == nullptr)
                return false;
            replaced->block = nullptr;  // the host's now
        }
    }
    count_ = 0;
    if (!told) node_->NotifyAppDataChanged();
    if (scope) scope->Commit();
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool NodeChange::overwrite(const AppDataChunk& chunk, std::span<const std::byte> bytes) noexcept {
    // Only what differs is announced: that is what the history keeps.
    auto* const place = static_cast<std::byte*>(chunk.data);
    const auto first = std::mismatch(bytes.begin(), bytes.end(), place).first;
    const auto behind = std::mismatch(bytes.rbegin(), std::make_reverse_iterator(first),
                                      std::make_reverse_iterator(place + bytes.size()))
                            .first.base();
    const auto start = static_cast<std::size_t>(first - bytes.begin());
    const auto count = static_cast<std::size_t>(behind - first);
    if (!node_->AboutToChangeAppData(chunk, static_cast<DWORD>(start), static_cast<DWORD>(count)))
        return false;
    std::memmove(place + start, bytes.data() + start, count);
    return true;
}

bool NodeChange::overwrite(ChunkId id, std::span<const std::byte> bytes) noexcept {
    const AppDataChunk& chunk = *hostChunk(node_, id);
    if (std::memcmp(chunk.data, bytes.data(), bytes.size()) == 0) return true;
    if (!overwrite(chunk, bytes)) return false;
    node_->NotifyAppDataChanged();
    return true;
}

bool storeChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept {
    NodeChange change(node);
    return change.prepare(id, bytes) && change.commit();
}

bool removeChunk(INode* node, ChunkId id) noexcept {
    return node != nullptr &&
           node->RemoveAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id));
}

}  // namespace fltkilnutil
