#include "nodechunk.h"

#include <kiln/inode.h>
#include <kiln/memory.h>

#include <cstring>
#include <utility>

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

bool hasChunk(INode* node, ChunkId id) noexcept {
    return hostChunk(node, id) != nullptr;
}

Chunk findChunk(INode* node, ChunkId id) noexcept {
    AppDataChunk* const chunk = hostChunk(node, id);
    if (chunk == nullptr || chunk->data == nullptr) return {};
    return {static_cast<std::byte*>(chunk->data), chunk->length};
}

ChunkChange::~ChunkChange() {
    if (change_ == Change::Add) removeChunk(node_, id_);
    if (change_ == Change::Replace) KILN_free(block_);
}

bool ChunkChange::prepare(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept {
    if (node == nullptr) return false;
    node_ = node;
    id_ = id;
    bytes_ = bytes;
    AppDataChunk* const chunk = hostChunk(node, id);
    if (chunk != nullptr && holds(*chunk, bytes))
        return true;  // a scene that stays the same is not asked to be saved
    if (chunk != nullptr && chunk->data != nullptr && chunk->length == bytes.size()) {
        change_ = Change::Overwrite;
        return true;
    }
    block_ = hostCopy(bytes);
    if (block_ == nullptr) return false;
    if (chunk != nullptr) {
        change_ = Change::Replace;
        return true;
    }
    if (node->AddAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id),
                              static_cast<DWORD>(bytes.size()), block_) == nullptr) {
        KILN_free(block_);  // not attached, so still ours
        return false;
    }
    change_ = Change::Add;
    return true;
}

void ChunkChange::commit() noexcept {
    const Change change = std::exchange(change_, Change::None);
    if (change != Change::Replace && change != Change::Overwrite) return;
    AppDataChunk& chunk = *hostChunk(node_, id_);
    if (change == Change::Overwrite) {
        std::memmove(chunk.data, bytes_.data(), bytes_.size());  // they may overlap
    } else {
        KILN_free(chunk.data);
        chunk.data = block_;
        chunk.length = static_cast<DWORD>(bytes_.size());
    }
    node_->NotifyAppDataChanged();
}

bool storeChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept {
    ChunkChange change;
    if (!change.prepare(node, id, bytes)) return false;
    change.commit();
    return true;
}

bool removeChunk(INode* node, ChunkId id) noexcept {
    return node != nullptr &&
           node->RemoveAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id));
}

}  // namespace fltkilnutil
