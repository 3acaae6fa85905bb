// Plug-ins that read and write foreign scene files.
#pragma once

#include <kiln/cstr.h>
#include <kiln/tab.h>

class INode;
class Interface;

/// What an import or export came to.
inline constexpr int IMPEXP_FAIL = 0;
inline constexpr int IMPEXP_SUCCESS = 1;
inline constexpr int IMPEXP_CANCEL = 2;

/// Why an import or export failed, as far as the host has words of its own for it.
enum class ImpExpCause {
    kOther,
    kUnreadable,  ///< the file is not there or cannot be opened or read
    kTruncated,   ///< the file ends too early
    kDamaged,     ///< what the file says cannot be
    kVersion,     ///< a version of the format that is not known
    kUnwritable,  ///< the file cannot be made or written
    kOutOfMemory,
};

/// How an import or export tells the host about itself. All texts are UTF-8 and copied; one that
/// cannot be kept for want of memory throws `std::bad_alloc`.
class ImpExpReport {
public:
    virtual ~ImpExpReport() = default;

    /// Why it failed, in one sentence for the user. The last call counts.
    virtual void Error(const char* message) = 0;
    /// What kind of failure that is; the host then says it in its user's language too. The last
    /// call counts.
    virtual void Cause(ImpExpCause cause) { (void)cause; }
    /// One line on what was read or written. The last call counts.
    virtual void Summary(const char* line) = 0;
    /// How far it is, 0 to 1, and with what; returns false once the user wants to cancel. Cheap
    /// enough to be called per record.
    virtual bool Progress(double fraction, const char* what) = 0;
    /// Whether the user wants to cancel.
    virtual bool Cancelled() const = 0;
    /// Whether what is read is only looked at by way of a reference to it: then it is not what the
    /// user imported last.
    virtual bool IsReference() const { return false; }
};

/// An importer, of super class `SCENE_IMPORT_CLASS_ID`.
class SceneImport {
public:
    virtual ~SceneImport() = default;

    virtual int ExtCount() = 0;
    /// The file extension `index`, without a dot; compared without regard to case.
    virtual const char* Ext(int index) = 0;
    /// "OpenFlight scene": stands before the extensions in the file dialog.
    virtual const char* ShortDesc() = 0;
    virtual const char* LongDesc() { return ShortDesc(); }
    /// Reads the file at `path` (UTF-8) into the scene. Returns one of the `IMPEXP_` results; after
    /// anything but success the host takes back everything that has happened to the scene
    /// meanwhile.
    virtual int DoImport(const char* path, ImpExpReport& report, Interface* ip) = 0;
    virtual void DeleteThis() { delete this; }
};

/// Bits of `SceneExport::DoExport`'s `options`.
inline constexpr DWORD SCENE_EXPORT_SELECTED = 1;  ///< only what is selected
/// From this bit on: the version of the file format to write, a number as the format counts them;
/// 0 leaves it to the exporter.
inline constexpr int SCENE_EXPORT_VERSION_SHIFT = 16;

/// An exporter, of super class `SCENE_EXPORT_CLASS_ID`.
class SceneExport {
public:
    virtual ~SceneExport() = default;

    virtual int ExtCount() = 0;
    virtual const char* Ext(int index) = 0;
    virtual const char* ShortDesc() = 0;
    virtual const char* LongDesc() { return ShortDesc(); }
    /// The versions of the format that a user may choose from, newest first, as
    /// `SCENE_EXPORT_VERSION_SHIFT` takes them; none when there is no choice.
    virtual int VersionCount() { return 0; }
    virtual DWORD Version(int index) { return (void)index, 0; }
    /// "15.8": what the user calls it.
    virtual const char* VersionName(int index) { return (void)index, ""; }
    /// For a format of which one file holds one of several parts of a scene: adds the nodes at the
    /// tops of those that an export with `options` may mean, in the scene's order. With two or more
    /// of them the user is asked which. Neither this nor `PartFileName` throws.
    virtual void Parts(Interface* ip, DWORD options, Tab<INode*>& parts) {
        (void)ip, (void)options, (void)parts;
    }
    /// The name of the file that a part was read from, without its folder; empty for none.
    virtual CStr PartFileName(INode* part) { return (void)part, CStr(); }
    /// What `DoExport` would leave out of the file: each thing in words for the user, one a line
    /// ("3 hidden nodes"); empty when the scene comes back whole. Does not throw.
    virtual CStr LeftOut(Interface* ip, DWORD options, INode* part) {
        return (void)ip, (void)options, (void)part, CStr();
    }
    /// Writes the scene, or that `part` of it, to `path` (UTF-8). `part` is one of `Parts`, or null
    /// where these are not several. After anything but success a file that was there before must be
    /// as it was.
    virtual int DoExport(const char* path, ImpExpReport& report, Interface* ip, DWORD options,
                         INode* part) = 0;
    virtual void DeleteThis() { delete this; }
};
