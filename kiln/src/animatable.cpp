#include <kiln/animatable.h>
#include <kiln/memory.h>
#include <kiln/undo.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "changes.h"
#include "chunks.h"
#include "counted.h"
#include "scenehistory.h"

namespace {

using kiln::historyFor;
using kiln::RecordedChange;
using kiln::SceneHistory;

void destroy(HeldChunk* held) noexcept {
    KILN_free(held->chunk.data);
    kiln::deallocateCounted(held, sizeof *held);
}

/// Frees the chunk that `link` leads to.
void removeAt(HeldChunk*& link) noexcept {
    HeldChunk* const held = link;
    link = held->next;
    destroy(held);
}

/// Null without memory; the chunk's block is then still the caller's.
HeldChunk* made(const AppDataChunk& chunk) noexcept {
    void* const memory = kiln::allocateCounted(sizeof(HeldChunk));
    return memory ? new (memory) HeldChunk{chunk, nullptr} : nullptr;
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

/// A chunk that comes to a thing or goes.
class ChunkPresence final : public RecordedChange {
public:
    /// For one that is to come, or that is in the list, behind `before` (null: the first).
    ChunkPresence(Animatable& thing, HeldChunk* held, HeldChunk* before, bool isThere) noexcept
        : kept_(kiln::kept(thing)),
          first_(HeldChunk::firstOf(thing)),
          held_(held),
          before_(before),
          isThere_(isThere) {}
    ~ChunkPresence() override {
        if (!isThere_) destroy(held_);
    }

    void turn() noexcept override {
        HeldChunk*& link = before_ ? before_->next : first_;
        if (isThere_) {
            link = held_->next;
        } else {
            held_->next = link;
            link = held_;
        }
        isThere_ = !isThere_;
    }

private:
    kiln::KeptReference kept_;
    HeldChunk*& first_;
    HeldChunk* const held_;
    HeldChunk* const before_;
    bool isThere_;
};

/// Another block of a chunk.
class ChunkBlock final : public RecordedChange {
public:
    ChunkBlock(Animatable& thing, AppDataChunk& chunk, DWORD length, void* data) noexcept
        : kept_(kiln::kept(thing)), chunk_(chunk), data_(data), length_(length) {}
    ~ChunkBlock() override { KILN_free(data_); }

    void turn() noexcept override {
        std::swap(chunk_.data, data_);
        std::swap(chunk_.length, length_);
    }

private:
    kiln::KeptReference kept_;
    AppDataChunk& chunk_;
    void* data_;
    DWORD length_;
};

/// Some bytes of a chunk, which stand behind this object.
class ChunkBytes final : public RecordedChange {
public:
    ChunkBytes(Animatable& thing, const AppDataChunk& chunk, DWORD offset, DWORD count) noexcept
        : kept_(kiln::kept(thing)), chunk_(chunk), offset_(offset), count_(count) {
        std::memcpy(bytes(), place(), count_);
    }

    void turn() noexcept override {
        // Who changed the block without a word may have made it shorter.
        if (chunk_.data && chunk_.length >= count_ && chunk_.length - count_ >= offset_)
            std::swap_ranges(bytes(), bytes() + count_, place());
    }

private:
    BYTE* bytes() noexcept { return reinterpret_cast<BYTE*>(this + 1); }
    BYTE* place() const noexcept { return static_cast<BYTE*>(chunk_.data) + offset_; }

    kiln::KeptReference kept_;
    const AppDataChunk& chunk_;
    const DWORD offset_;
    const DWORD count_;
};

}  // namespace

/// The container of a thing, or none.
class AttribContainerChange final : public RecordedChange {
public:
    AttribContainerChange(Animatable& thing, ICustAttribContainer* other) noexcept
        : kept_(kiln::kept(thing)), present_(thing.attribs_), other_(other) {}
    ~AttribContainerChange() override { destroy(other_); }

    void turn() noexcept override { std::swap(present_, other_); }

private:
    kiln::KeptReference kept_;
    ICustAttribContainer*& present_;
    ICustAttribContainer* other_;
};

/// A custom attribute that comes into a container or goes. The container has room for it.
class AttribPresence final : public RecordedChange {
public:
    AttribPresence(ICustAttribContainer& container, int index, CustAttrib& attrib,
                   bool isThere) noexcept
        : kept_(kiln::kept(container.owner_)),
          keptAttrib_(&attrib),
          attribs_(container.attribs_),
          index_(index),
          attrib_(attrib),
          isThere_(isThere) {}

    void turn() noexcept override {
        if (isThere_) {
            attribs_.erase(attribs_.begin() + index_);
            attrib_.ReleaseReference();
        } else {
            attribs_.insert(attribs_.begin() + index_, &attrib_);
            attrib_.AddReference();
        }
        isThere_ = !isThere_;
    }

private:
    kiln::KeptReference kept_, keptAttrib_;
    std::vector<CustAttrib*>& attribs_;
    const int index_;
    CustAttrib& attrib_;
    bool isThere_;
};

bool kiln::ChunkAppender::append(const AppDataChunk& chunk) noexcept {
    HeldChunk* const held = made(chunk);
    if (!held) return false;
    *link_ = held;
    link_ = &held->next;
    noteSceneChanged();
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
    HeldChunk* before = nullptr;
    HeldChunk* held = chunks_;
    for (; held && !held->has(cid, sid, subId); held = held->next) before = held;
    SceneHistory* const history = historyFor(*this);
    try {
        if (held && held->chunk.data == data) {
            if (history) history->noteUnrecorded();  // changed by hand, who knows when
            held->chunk.length = length;
        } else if (held) {
            if (history)
                history->add<ChunkBlock>(held->chunk.length, 0, *this, held->chunk, length, data)
                    .turn();
            else
                ChunkBlock(*this, held->chunk, length, data).turn();
        } else {
            held = made({cid, sid, subId, length, data});
            if (!held) return nullptr;
            if (history)
                history->add<ChunkPresence>(0, 0, *this, held, before, false).turn();
            else
                (before ? before->next : chunks_) = held;
        }
    } catch (const std::bad_alloc&) {
        if (held && held->chunk.data == data) kiln::deallocateCounted(held, sizeof *held);
        return nullptr;
    }
    kiln::noteSceneChanged(*this);
    return &held->chunk;
}

AppDataChunk* Animatable::GetAppDataChunk(const Class_ID& cid, SClass_ID sid,
                                          DWORD subId) const noexcept {
    for (HeldChunk* held = chunks_; held; held = held->next)
        if (held->has(cid, sid, subId)) return &held->chunk;
    return nullptr;
}

bool Animatable::RemoveAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId) noexcept {
    HeldChunk* before = nullptr;
    HeldChunk* held = chunks_;
    for (; held && !held->has(cid, sid, subId); held = held->next) before = held;
    if (!held) return false;
    if (SceneHistory* const history = historyFor(*this)) {
        try {
            const std::size_t bytes = sizeof *held + held->chunk.length;
            history->add<ChunkPresence>(bytes, 0, *this, held, before, true).turn();
        } catch (const std::bad_alloc&) {
            return false;
        }
    } else {
        removeAt(before ? before->next : chunks_);
    }
    kiln::noteSceneChanged(*this);
    return true;
}

bool Animatable::AboutToChangeAppData(const AppDataChunk& chunk, DWORD offset,
                                      DWORD count) noexcept {
    if (count > chunk.length || offset > chunk.length - count) return false;
    SceneHistory* const history = historyFor(*this);
    if (!history || count == 0) return true;
    try {
        history->add<ChunkBytes>(0, count, *this, chunk, offset, count);
    } catch (const std::bad_alloc&) {
        return false;
    }
    history->announced = this;
    return true;
}

void Animatable::NotifyAppDataChanged() noexcept {
    if (SceneHistory* const history = historyFor(*this)) {
        if (history->announced != this) history->noteUnrecorded();
        history->announced = nullptr;
    }
    kiln::noteSceneChanged(*this);
}

void Animatable::ClearAllAppData() noexcept try {
    UndoScope all(nullptr);
    while (chunks_) {
        const AppDataChunk& first = chunks_->chunk;
        if (!RemoveAppDataChunk(first.clID, first.sclID, first.subID)) return;
    }
    all.Commit();
} catch (const std::bad_alloc&) {
    // Without memory nothing goes.
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
    if (!memory) return nullptr;
    auto* const container = new (memory) ICustAttribContainer(*this);
    if (!exchangeContainer(container)) destroy(container);
    return attribs_;
}

void Animatable::DeleteCustAttribContainer() noexcept {
    if (attribs_ && exchangeContainer(nullptr)) kiln::noteSceneChanged();
}

/// Puts `other` in the place of the container, unless there is no memory to undo that.
bool Animatable::exchangeContainer(ICustAttribContainer* other) noexcept {
    SceneHistory* const history = historyFor(*this);
    if (!history) {
        AttribContainerChange(*this, other).turn();
        return true;
    }
    try {
        history->add<AttribContainerChange>(0, 0, *this, other).turn();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
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
        if (attribs_.size() == attribs_.capacity()) attribs_.reserve(2 * attribs_.size() + 1);
        if (SceneHistory* const history = historyFor(owner_))
            history->add<AttribPresence>(0, 0, *this, index, *attrib, false).turn();
        else
            AttribPresence(*this, index, *attrib, false).turn();
    } catch (const std::bad_alloc&) {
        return false;
    }
    kiln::noteSceneChanged();
    return true;
}

bool ICustAttribContainer::AppendCustAttrib(CustAttrib* attrib) noexcept {
    return InsertCustAttrib(GetNumCustAttribs(), attrib);
}

bool ICustAttribContainer::RemoveCustAttrib(int index) noexcept {
    CustAttrib* const attrib = GetCustAttrib(index);
    if (!attrib) return false;
    try {
        if (SceneHistory* const history = historyFor(owner_))
            history->add<AttribPresence>(sizeof *attrib, 0, *this, index, *attrib, true).turn();
        else
            AttribPresence(*this, index, *attrib, true).turn();
    } catch (const std::bad_alloc&) {
        return false;
    }
    kiln::noteSceneChanged();
    return true;
}
