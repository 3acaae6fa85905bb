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

}  // namespace

/// A chunk in the list of those of one thing, in the order they were added.
struct HeldChunk {
    AppDataChunk chunk;
    HeldChunk* next;
};

struct AnimatableData {
    AnimatableData() = default;
    ~AnimatableData() { clearChunks(); }
    AnimatableData(const AnimatableData&) = delete;
    AnimatableData& operator=(const AnimatableData&) = delete;

    void clearChunks() noexcept {
        while (chunks) removeAt(chunks);
    }
    /// Frees the chunk that `link` leads to.
    static void removeAt(HeldChunk*& link) noexcept {
        HeldChunk* const held = link;
        link = held->next;
        KILN_free(held->chunk.data);
        KILN_free(held);
    }

    HeldChunk* chunks = nullptr;
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
    void* const memory = KILN_malloc(sizeof(HeldChunk));
    if (!memory) return nullptr;
    try {
        if (!data_) data_ = std::make_unique<AnimatableData>();
    } catch (const std::bad_alloc&) {
        KILN_free(memory);
        return nullptr;
    }
    HeldChunk** end = &data_->chunks;
    while (*end) end = &(*end)->next;
    *end = new (memory) HeldChunk{{cid, sid, subId, length, data}, nullptr};
    kiln::setSceneModified(true);
    return &(*end)->chunk;
}

AppDataChunk* Animatable::GetAppDataChunk(const Class_ID& cid, SClass_ID sid,
                                          DWORD subId) const noexcept {
    if (!data_) return nullptr;
    for (HeldChunk* held = data_->chunks; held; held = held->next)
        if (held->chunk.subID == subId && held->chunk.clID == cid && held->chunk.sclID == sid)
            return &held->chunk;
    return nullptr;
}

bool Animatable::RemoveAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId) noexcept {
    const AppDataChunk* const chunk = GetAppDataChunk(cid, sid, subId);
    if (!chunk) return false;
    HeldChunk** link = &data_->chunks;
    while (&(*link)->chunk != chunk) link = &(*link)->next;
    AnimatableData::removeAt(*link);
    kiln::setSceneModified(true);
    return true;
}

void Animatable::NotifyAppDataChanged() noexcept {
    kiln::setSceneModified(true);
}

void Animatable::ClearAllAppData() noexcept {
    if (!data_ || !data_->chunks) return;
    data_->clearChunks();
    kiln::setSceneModified(true);
}

int Animatable::NumAppDataChunks() const noexcept {
    int count = 0;
    for (const HeldChunk* held = data_ ? data_->chunks : nullptr; held; held = held->next) ++count;
    return count;
}

AppDataChunk* Animatable::GetAppDataChunk(int index) const noexcept {
    if (index < 0) return nullptr;
    HeldChunk* held = data_ ? data_->chunks : nullptr;
    for (; held && index > 0; --index) held = held->next;
    return held ? &held->chunk : nullptr;
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
