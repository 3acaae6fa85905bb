#include "nodechunk.h"

#include <kiln/inode.h>
#include <kiln/memory.h>

#include <cstring>

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

bool addChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept {
    void* const block = hostCopy(bytes);
    if (block == nullptr) return false;
    if (node->AddAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id),
                              static_cast<DWORD>(bytes.size()), block) != nullptr)
        return true;
    KILN_free(block);  // not attached, so still ours
    return false;
}

bool holds(const AppDataChunk& chunk, std::span<const std::byte> bytes) noexcept {
    return chunk.data != nullptr && chunk.length == bytes.size() &&
           std::memcmp(chunk.data, bytes.data(), bytes.size()) == 0;
}

bool replaceBytes(AppDataChunk& chunk, std::span<const std::byte> bytes) noexcept {
    void* const block = hostCopy(bytes);
    if (block == nullptr) return false;
    KILN_free(chunk.data);
    chunk.data = block;
    chunk.length = static_cast<DWORD>(bytes.size());
    return true;
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

bool storeChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept {
    if (node == nullptr) return false;
    AppDataChunk* const chunk = hostChunk(node, id);
    if (chunk == nullptr) return addChunk(node, id, bytes);
    if (holds(*chunk, bytes)) return true;  // a scene that stays the same is not asked to be saved
    if (chunk->data != nullptr && chunk->length == bytes.size())
        std::memmove(chunk->data, bytes.data(), bytes.size());  // they may overlap
    else if (!replaceBytes(*chunk, bytes))
        return false;
    node->NotifyAppDataChanged();
    return true;
}

bool removeChunk(INode* node, ChunkId id) noexcept {
    return node != nullptr &&
           node->RemoveAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id));
}

}  // namespace fltkilnutil
