#include <kiln/animatable.h>
#include <kiln/memory.h>

#include <new>
#include <utility>

#include "changes.h"
#include "chunks.h"
#include "counted.h"

namespace {

/// Frees the chunk that `link` leads to.
void removeAt(HeldChunk*& link) noexcept {
    HeldChunk* const held = link;
    link = held->next;
    KILN_free(held->chunk.data);
    kiln::deallocateCounted(held, sizeof *held);
}

/// Adds a chunk where the list ends; false without memory.
bool append(HeldChunk** end, const AppDataChunk& chunk) noexcept {
    void* const memory = kiln::allocateCounted(sizeof(HeldChunk));
    if (!memory) return false;
    *end = new (memory) HeldChunk{chunk, nullptr};
    kiln::noteSceneChanged();
    return true;
}

void destroy(ICustAttribContainer* container) noexcept {
    if (!container) return;
    container->~ICustAttribContainer();
    kiln::deallocateCounted(container, sizeof *container);
}

/// What memory a thing takes: pieces of such a size have the alignment that any class may need.
std::size_t thingSize(std::size_t size) noexcept {
    return (size + 15) & ~std::size_t{15};
}

}  // namespace

bool kiln::ChunkAppender::append(const AppDataChunk& chunk) noexcept {
    if (!::append(link_, chunk)) return false;
    link_ = &(*link_)->next;
    return true;
}

Animatable::Animatable() = default;

Animatable::~Animatable() {
    while (chunks_) removeAt(chunks_);
    destroy(attribs_);
}

void* Animatable::operator new(std::size_t size) {
    return KILN_newPiece(thingSize(size));
}

void* Animatable::operator new(std::size_t size, const std::nothrow_t&) noexcept try {
    return KILN_newPiece(thingSize(size));
} catch (const std::bad_alloc&) {
    return nullptr;
}

void Animatable::operator delete(void* thing, std::size_t size) noexcept {
    KILN_deletePiece(thing, thingSize(size));
}

AppDataChunk* Animatable::AddAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId,
                                          DWORD length, void* data) noexcept {
    if (!data && length > 0) return nullptr;
    HeldChunk** link = &chunks_;
    while (*link && !(*link)->has(cid, sid, subId)) link = &(*link)->next;
    if (*link) {
        AppDataChunk& present = (*link)->chunk;
        if (present.data != data) KILN_free(present.data);
        present.data = data;
        present.length = length;
        kiln::noteSceneChanged();
        return &present;
    }
    return append(link, {cid, sid, subId, length, data}) ? &(*link)->chunk : nullptr;
}

AppDataChunk* Animatable::GetAppDataChunk(const Class_ID& cid, SClass_ID sid,
                                          DWORD subId) const noexcept {
    for (HeldChunk* held = chunks_; held; held = held->next)
        if (held->has(cid, sid, subId)) return &held->chunk;
    return nullptr;
}

bool Animatable::RemoveAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId) noexcept {
    const AppDataChunk* const chunk = GetAppDataChunk(cid, sid, subId);
    if (!chunk) return false;
    HeldChunk** link = &chunks_;
    while (&(*link)->chunk != chunk) link = &(*link)->next;
    removeAt(*link);
    kiln::noteSceneChanged();
    return true;
}

void Animatable::NotifyAppDataChanged() noexcept {
    kiln::noteSceneChanged();
}

void Animatable::ClearAllAppData() noexcept {
    if (!chunks_) return;
    while (chunks_) removeAt(chunks_);
    kiln::noteSceneChanged();
}

int Animatable::NumAppDataChunks() const noexcept {
    int count = 0;
    for (const HeldChunk* held = chunks_; held; held = held->next) ++count;
    return count;
}

AppDataChunk* Animatable::GetAppDataChunk(int index) const noexcept {
    if (index < 0) return nullptr;
    HeldChunk* held = chunks_;
    for (; held && index > 0; --index) held = held->next;
    return held ? &held->chunk : nullptr;
}

ICustAttribContainer* Animatable::GetCustAttribContainer() const noexcept {
    return attribs_;
}

ICustAttribContainer* Animatable::AllocCustAttribContainer() noexcept {
    if (attribs_) return attribs_;
    void* const memory = kiln::allocateCounted(sizeof(ICustAttribContainer));
    if (memory) attribs_ = new (memory) ICustAttribContainer;
    return attribs_;
}

void Animatable::DeleteCustAttribContainer() noexcept {
    if (!attribs_) return;
    destroy(std::exchange(attribs_, nullptr));
    kiln::noteSceneChanged();
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
    kiln::noteSceneChanged();
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
    kiln::noteSceneChanged();
    return true;
}
