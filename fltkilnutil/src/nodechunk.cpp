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

void NodeChange::commit() noexcept {
    bool told = true;  // the host saw what was added
    for (std::size_t i = 0; i < count_; ++i) {
        if (const auto* const overwritten = std::get_if<Overwriting>(&steps_[i])) {
            // Chunk and bytes may overlap.
            std::memmove(overwritten->chunk->data, overwritten->bytes.data(),
                         overwritten->bytes.size());
            told = false;
        } else if (const auto* const replaced = std::get_if<Replacement>(&steps_[i])) {
            KILN_free(replaced->chunk->data);
            replaced->chunk->data = replaced->block;
            replaced->chunk->length = static_cast<DWORD>(replaced->length);
            told = false;
        }
    }
    count_ = 0;
    if (!told) node_->NotifyAppDataChanged();
}

bool storeChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept {
    NodeChange change(node);
    if (!change.prepare(id, bytes)) return false;
    change.commit();
    return true;
}

void overwriteChunk(INode* node, std::byte* place, std::span<const std::byte> bytes) noexcept {
    if (std::memcmp(place, bytes.data(), bytes.size()) == 0) return;
    std::memcpy(place, bytes.data(), bytes.size());
    node->NotifyAppDataChanged();
}

bool removeChunk(INode* node, ChunkId id) noexcept {
    return node != nullptr &&
           node->RemoveAppDataChunk(kChunkClass, kChunkSuperClass, static_cast<DWORD>(id));
}

}  // namespace fltkilnutil
