#include <kiln/animatable.h>
#include <kiln/memory.h>

#include <algorithm>
#include <new>

#include "modified.h"

namespace {

// Chunks and containers come from the host allocator, so that running out of it is one condition.
template <typename T>
struct HostDelete {
    void operator()(T* object) const noexcept {
        object->~T();
        KILN_free(object);
    }
};

struct ChunkDelete {
    void operator()(AppDataChunk* chunk) const noexcept {
        KILN_free(chunk->data);
        KILN_free(chunk);
    }
};

}  // namespace

struct AnimatableData {
    std::vector<std::unique_ptr<AppDataChunk, ChunkDelete>> chunks;
    std::unique_ptr<ICustAttribContainer, HostDelete<ICustAttribContainer>> attribs;
};

Animatable::Animatable() = default;
Animatable::~Animatable() = default;

AppDataChunk* Animatable::AddAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId,
                                          DWORD length, void* data) noexcept {
    if (!data && length > 0) return nullptr;
    if (AppDataChunk* const present = GetAppDataChunk(cid, sid, subId)) {
        if (present->data != data) KILN_free(present->data);
        present->data = data;
        present->length = length;
        kiln::setSceneModified(true);
        return present;
    }
    void* const memory = KILN_malloc(sizeof(AppDataChunk));
    if (!memory) return nullptr;
    auto* const chunk = new (memory) AppDataChunk{cid, sid, subId, 0, nullptr};
    std::unique_ptr<AppDataChunk, ChunkDelete> owner(chunk);
    try {
        if (!data_) data_ = std::make_unique<AnimatableData>();
        data_->chunks.push_back(std::move(owner));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    chunk->data = data;
    chunk->length = length;
    kiln::setSceneModified(true);
    return chunk;
}

AppDataChunk* Animatable::GetAppDataChunk(const Class_ID& cid, SClass_ID sid,
                                          DWORD subId) const noexcept {
    if (!data_) return nullptr;
    for (const auto& chunk : data_->chunks)
        if (chunk->subID == subId && chunk->clID == cid && chunk->sclID == sid) return chunk.get();
    return nullptr;
}

bool Animatable::RemoveAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId) noexcept {
    const AppDataChunk* const chunk = GetAppDataChunk(cid, sid, subId);
    if (!chunk) return false;
    std::erase_if(data_->chunks, [&](const auto& held) { return held.get() == chunk; });
    kiln::setSceneModified(true);
    return true;
}

void Animatable::NotifyAppDataChanged() noexcept {
    kiln::setSceneModified(true);
}

void Animatable::ClearAllAppData() noexcept {
    if (!data_ || data_->chunks.empty()) return;
    data_->chunks.clear();
    kiln::setSceneModified(true);
}

int Animatable::NumAppDataChunks() const noexcept {
    return data_ ? static_cast<int>(data_->chunks.size()) : 0;
}

AppDataChunk* Animatable::GetAppDataChunk(int index) const noexcept {
    if (index < 0 || index >= NumAppDataChunks()) return nullptr;
    return data_->chunks[static_cast<std::size_t>(index)].get();
}

ICustAttribContainer* Animatable::GetCustAttribContainer() const noexcept {
    return data_ ? data_->attribs.get() : nullptr;
}

ICustAttribContainer* Animatable::AllocCustAttribContainer() noexcept {
    if (ICustAttribContainer* const present = GetCustAttribContainer()) return present;
    void* const memory = KILN_malloc(sizeof(ICustAttribContainer));
    if (!memory) return nullptr;
    try {
        if (!data_) data_ = std::make_unique<AnimatableData>();
    } catch (const std::bad_alloc&) {
        KILN_free(memory);
        return nullptr;
    }
    data_->attribs.reset(new (memory) ICustAttribContainer);
    return data_->attribs.get();
}

void Animatable::DeleteCustAttribContainer() noexcept {
    if (!GetCustAttribContainer()) return;
    data_->attribs.reset();
    kiln::setSceneModified(true);
}

void ReferenceTarget::ReleaseReference() noexcept {
    if (--references_ <= 0) DeleteThis();
}

bool ReferenceTarget::LoadState(const BYTE*, std::size_t length) {
    return length == 0;
}

ICustAttribContainer::~ICustAttribContainer() {
    for (CustAttrib* const attrib : attribs_) attrib->ReleaseReference();
}

CustAttrib* ICustAttribContainer::GetCustAttrib(int index) const noexcept {
    if (index < 0 || index >= GetNumCustAttribs()) return nullptr;
    return attribs_[static_cast<std::size_t>(index)];
}

bool ICustAttribContainer::InsertCustAttrib(int index, CustAttrib* attrib) noexcept {
    if (!attrib || index < 0 || index > GetNumCustAttribs()) return false;
    try {
        attribs_.insert(attribs_.begin() + index, attrib);
    } catch (const std::bad_alloc&) {
        return false;
    }
    attrib->AddReference();
    kiln::setSceneModified(true);
    return true;
}

bool ICustAttribContainer::AppendCustAttrib(CustAttrib* attrib) noexcept {
    return InsertCustAttrib(GetNumCustAttribs(), attrib);
}

bool ICustAttribContainer::RemoveCustAttrib(int index) noexcept {
    CustAttrib* const attrib = GetCustAttrib(index);
    if (!attrib) return false;
    attribs_.erase(attribs_.begin() + index);
    attrib->ReleaseReference();
    kiln::setSceneModified(true);
    return true;
}
