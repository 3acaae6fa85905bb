// The published interface "Aviary" as other plug-ins see it.
#pragma once

#include <kiln/kiln.h>

/// Identity of "Aviary" for `GetCOREInterface`. It is on purpose the same pair of words as the
/// class id of the utility plug-in, so that one number finds both.
inline constexpr Interface_ID kAviaryInterfaceId(0x6A3C1F07, 0x2E9D0002);

/// What "Aviary" offers: the functions scripts call, and `SetLastImport`, which only another
/// plug-in can reach. There is one object of this class in the process. Get it with
///
///     static_cast<IAviaryUtil*>(GetCOREInterface(kAviaryInterfaceId))
///
/// Other plug-ins are compiled against the order of these functions: append, do not reorder.
/// None of them throws. Texts are UTF-8. Failure is false, 0 or an empty text, and changes nothing
/// (for one exception see `CopyData`).
class IAviaryUtil : public FPStaticInterface {
public:
    /// Opens the hierarchy browser, fills it from the scene and follows scene changes.
    virtual void Browser() = 0;
    /// Has the open browser rebuild its tree.
    virtual void RefreshBrowser() = 0;
    /// Moves the browser to the corner of the screen. No script can name it.
    virtual void ResetBrowserPosition() = 0;

    /// Remembers the level-of-detail display distance and that there is one; nothing else.
    virtual void StoreLodDistance(double distance) = 0;
    /// Remembers the distance and shows the scene as from there. In scene units.
    virtual void SetLodDistance(double distance) = 0;
    /// The display distance in scene units, 0 before the first one.
    virtual double GetLodDistance() = 0;
    /// Whether a distance was ever stored. Nothing clears this.
    virtual bool IsLodDistanceSet() = 0;
    /// Shows the farthest band of levels of detail.
    virtual void LodLeastDetail() = 0;
    /// Steps one band farther.
    virtual void LodLessDetail() = 0;
    /// Steps one band nearer.
    virtual void LodMoreDetail() = 0;
    /// Shows the nearest band of levels of detail.
    virtual void LodMostDetail() = 0;

    // Each makes a node with a default record of the kind, below the one selected node if exactly
    // one is selected. True when a node was made.
    virtual bool CreateGroup() = 0;
    virtual bool CreateObject() = 0;
    virtual bool CreateSwitch() = 0;
    virtual bool CreateLOD() = 0;
    virtual bool CreateDOF() = 0;
    virtual bool CreateBSP() = 0;
    virtual bool CreateClipRegion() = 0;
    virtual bool CreateExternalRef() = 0;
    virtual bool CreateLightPoint() = 0;
    /// The same for any opcode; one without a default record gets none.
    virtual bool CreateNode(unsigned short opcode) = 0;

    /// A copy of the comment of a node that has OpenFlight data, empty when it has no comment, from
    /// `KILN_strdup`, for the caller to free with `KILN_free`. For any other node, and when memory
    /// is short, `EmptyString()`, which is never freed.
    virtual const char* GetComment(INode* node) = 0;
    /// Stores the comment of a node that has OpenFlight data.
    virtual bool PutComment(INode* node, const char* text) = 0;
    /// A copy of an external reference's file name, to be freed like a comment; for any other node
    /// `EmptyString()` too.
    virtual const char* GetExternalRefFilename(INode* node) = 0;
    /// Replaces an external reference's file name, cut to the 200 bytes its field holds.
    virtual bool PutExternalRefFilename(INode* node, const char* text) = 0;
    /// An external reference's flags word, whole.
    virtual int GetExternalRefFlags(INode* node) = 0;
    /// Replaces an external reference's flags word, whole.
    virtual bool PutExternalRefFlags(INode* node, int flags) = 0;

    /// Whether the node is an OpenFlight node.
    virtual bool HasData(INode* node) = 0;
    /// Copies the OpenFlight data of `source` onto `destination`: kind and record, which it must
    /// have, comment and options where it has them. From a source with a kind and no record it
    /// fails, and `destination` has got the kind by then.
    virtual bool CopyData(INode* source, INode* destination) = 0;
    /// Makes the node an ordinary host node again.
    virtual bool RemoveData(INode* node) = 0;

    /// Tells which OpenFlight file was read last; shows it in the browser's title. For importers.
    virtual void SetLastImport(const char* name) = 0;
    /// The argument of the last `SetLastImport`; owned by the interface, valid until its next call.
    virtual const char* GetLastImport() = 0;

    /// Whether the node's stored kind has this name, "GROUP" or "LOD" for example.
    virtual bool IsOfType(INode* node, const char* name) = 0;
    /// Marks a mesh node to be exported as triangles. Makes it an OpenFlight face.
    virtual bool SetKeepTriangles(INode* node, int flag) = 0;
    virtual bool GetKeepTriangles(INode* node) = 0;
    /// Marks a bitmap texture for OpenFlight export; a second time changes nothing and is true.
    virtual bool AddTextureAttr(Texmap* texmap) = 0;
    virtual bool RemoveTextureAttr(Texmap* texmap) = 0;

    // The override bits of an external reference's flags word.
    virtual int GetOverrideColors() = 0;
    virtual int GetOverrideMaterials() = 0;
    virtual int GetOverrideTextures() = 0;
    virtual int GetOverrideLineStyles() = 0;
    virtual int GetOverrideSounds() = 0;
    virtual int GetOverrideLightSources() = 0;
    virtual int GetOverrideLightPoints() = 0;

    /// The one empty text that `GetComment` and `GetExternalRefFilename` answer with where they
    /// have nothing to copy: a result that is this very pointer is not to be freed. It belongs to
    /// the module.
    virtual const char* EmptyString() const = 0;

protected:
    using FPStaticInterface::FPStaticInterface;
    ~IAviaryUtil() override = default;
};
