// What every thing of a scene has: application data chunks and custom attributes.
#pragma once

#include <kiln/ids.h>
#include <kiln/platform.h>

#include <cstddef>
#include <new>
#include <vector>

class CustAttrib;
class ICustAttribContainer;
class ReferenceTarget;
struct HeldChunk;

/// One block of bytes that a plug-in keeps on a thing of the scene, saved with the scene.
///
/// The owner may change bytes in place: it announces that with `Animatable::AboutToChangeAppData`,
/// writes, and tells the host with `Animatable::NotifyAppDataChanged`. Another block, or another
/// length, it gives the chunk with `Animatable::AddAppDataChunk`.
///
/// Who changes `data` and `length` by hand instead frees the block it replaced (or has it from
/// `KILN_realloc`) and tells the host afterwards. What was not announced cannot be undone: an undo
/// of earlier changes leaves the chunk's bytes alone where the length is another one, and may
/// otherwise put bytes from before into it. The scene counts as changed until it is saved.
/// The block that `data` names when the chunk goes is freed by the host with `KILN_free`.
struct AppDataChunk {
    Class_ID clID;    ///< class of the plug-in that owns the chunk
    SClass_ID sclID;  ///< its super class
    DWORD subID;      ///< which of the owner's chunks
    DWORD length;     ///< bytes in `data`
    void* data;       ///< a block of the host allocator; null only when `length` is 0
};

/// Base of everything that a scene is made of.
class KILNAPI Animatable {
public:
    Animatable();
    virtual ~Animatable();
    Animatable(const Animatable&) = delete;
    Animatable& operator=(const Animatable&) = delete;

    virtual SClass_ID SuperClassID() const = 0;
    virtual Class_ID ClassID() const = 0;
    /// Has the module that made the object delete it.
    virtual void DeleteThis() { delete this; }

    /// Attaches `data` (a block of `KILN_malloc` of `length` bytes; null only for length 0) and
    /// takes it over. A chunk with the same three ids is kept and gets the new block; its old one
    /// is freed, or kept for an undo. Returns the chunk as the host now holds it; null when there
    /// is no memory or `data` is null for a length above 0, and `data` then stays the caller's.
    AppDataChunk* AddAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId, DWORD length,
                                  void* data) noexcept;
    /// The chunk with these ids, or null. Valid until it is removed or this object goes.
    AppDataChunk* GetAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId) const noexcept;
    /// Takes the chunk with these ids away; false when there is none, and when there is no memory
    /// to keep it for an undo.
    bool RemoveAppDataChunk(const Class_ID& cid, SClass_ID sid, DWORD subId) noexcept;
    /// Tells the host that `count` bytes from `offset` on of `chunk`, one of this thing's, are
    /// about to be changed in place, so that it can undo that. False without memory, or for a range
    /// that is not within the chunk; the caller then leaves them alone.
    bool AboutToChangeAppData(const AppDataChunk& chunk, DWORD offset, DWORD count) noexcept;
    /// Tells the host that a chunk's bytes were changed in place, which it cannot see: the scene
    /// then counts as modified, and whoever watches it is told (`SceneWatch`).
    void NotifyAppDataChanged() noexcept;
    /// Takes all chunks away; none when there is no memory to keep one of them for an undo.
    void ClearAllAppData() noexcept;
    /// Chunks in the order they were first added.
    int NumAppDataChunks() const noexcept;
    AppDataChunk* GetAppDataChunk(int index) const noexcept;

    /// The custom attributes, or null while there is no container.
    ICustAttribContainer* GetCustAttribContainer() const noexcept;
    /// Makes the container unless there is one already, and returns it. Null without memory.
    ICustAttribContainer* AllocCustAttribContainer() noexcept;
    /// Deletes the container and every attribute in it, unless there is no memory to keep it for an
    /// undo.
    void DeleteCustAttribContainer() noexcept;

    /// The host's own: whether a change of this thing would be a change of the scene that the
    /// history keeps.
    virtual bool IsRecorded() const noexcept { return false; }
    /// This, as what references keep alive; null when it is not.
    virtual ReferenceTarget* AsReferenceTarget() noexcept { return nullptr; }

    /// Things of the scene are made of the host's memory (`KILN_newPiece`), whichever module makes
    /// them. The first throws `std::bad_alloc`, the second returns null.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void operator delete(void* thing, std::size_t size) noexcept;

private:
    friend HeldChunk;
    friend class AttribContainerChange;

    bool exchangeContainer(ICustAttribContainer* other) noexcept;

    HeldChunk* chunks_ = nullptr;
    ICustAttribContainer* attribs_ = nullptr;
};

/// Something that several others may refer to. It lives until the last reference is released.
/// A new one has no references: whoever keeps it adds the first.
class KILNAPI ReferenceTarget : public Animatable {
public:
    void AddReference() noexcept { ++references_; }
    /// Calls `DeleteThis` when this was the last reference.
    void ReleaseReference() noexcept;
    /// How many there are. The history adds its own to things whose changes it keeps.
    int NumReferences() const noexcept { return references_; }

    /// Tells the host that what this consists of (the mesh, the points, what `SaveState` returns)
    /// is about to be changed in place, so that it can undo that. False without memory; the caller
    /// then leaves it alone. Nothing to announce is what goes through functions that change it, and
    /// anything at all while nobody refers to it.
    bool AboutToChange() noexcept;

    /// What this keeps in a scene file, as bytes of its own layout. The host's own classes are
    /// written out by the host and leave this empty. Must not throw.
    virtual std::vector<BYTE> SaveState() const { return {}; }
    /// Takes back what `SaveState` returned, which may have been damaged; false refuses it, and
    /// with it the scene file. Must not throw.
    virtual bool LoadState(const BYTE* bytes, std::size_t length);

    bool IsRecorded() const noexcept override { return references_ > 0; }
    ReferenceTarget* AsReferenceTarget() noexcept override { return this; }

private:
    int references_ = 0;
};

/// A custom attribute: data of a plug-in's class that hangs on a thing of the scene.
class KILNAPI CustAttrib : public ReferenceTarget {
public:
    SClass_ID SuperClassID() const override { return CUST_ATTRIB_CLASS_ID; }
    /// The name that a user sees, UTF-8.
    virtual const char* GetName() const { return ""; }
};

/// The custom attributes of one thing, in order. It holds a reference to each.
class KILNAPI ICustAttribContainer {
public:
    explicit ICustAttribContainer(Animatable& owner) noexcept : owner_(owner) {}
    ~ICustAttribContainer();
    ICustAttribContainer(const ICustAttribContainer&) = delete;
    ICustAttribContainer& operator=(const ICustAttribContainer&) = delete;

    int GetNumCustAttribs() const noexcept { return static_cast<int>(attribs_.size()); }
    /// Null when `index` is out of range.
    CustAttrib* GetCustAttrib(int index) const noexcept;
    /// Inserts before `index` (0 to the number of attributes); false, and nothing happens, when the
    /// index is out of range, `attrib` is null or there is no memory.
    bool InsertCustAttrib(int index, CustAttrib* attrib) noexcept;
    bool AppendCustAttrib(CustAttrib* attrib) noexcept;
    /// Takes the attribute out and releases it; false when `index` is out of range, and when there
    /// is no memory to keep it for an undo.
    bool RemoveCustAttrib(int index) noexcept;

private:
    friend class AttribPresence;

    Animatable& owner_;
    std::vector<CustAttrib*> attribs_;
};
