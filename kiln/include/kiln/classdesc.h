// How a plug-in module describes its classes to the host.
#pragma once

#include <kiln/ids.h>
#include <kiln/platform.h>

class Animatable;

/// The SDK version that a module built with these headers reports from `LibVersion`: release 14000
/// in the upper half, interface 0x26 in bits 8 to 15, revision 0.
inline constexpr DWORD KILN_SDK_VERSION = 0x36B02600;

/// Describes one class of a plug-in. Descriptors are static objects of their module.
class ClassDesc {
public:
    virtual ~ClassDesc() = default;

    /// Whether users can choose it.
    virtual bool IsPublic() = 0;
    /// Makes an object of the class, one that derives from the class of `SuperClassID()`: an
    /// `Animatable` for things of a scene, else a `UtilityObj`, `SceneImport` or `SceneExport`,
    /// converted to `void*` from exactly that type. Null when it cannot.
    virtual void* Create(bool loading = false) = 0;
    /// UTF-8; valid until the module loads another string.
    virtual const char* ClassName() = 0;
    virtual SClass_ID SuperClassID() = 0;
    virtual Class_ID ClassID() = 0;
    virtual const char* Category() = 0;
};

/// A descriptor that also knows its module.
class ClassDesc2 : public ClassDesc {
public:
    /// The name that scripts use; null for none.
    virtual const char* InternalName() { return nullptr; }
    /// The module that holds the class's resources.
    virtual HINSTANCE HInstance() { return nullptr; }
    /// Whether the class has an about box, which the host then offers in its help menu.
    virtual bool HasAbout() { return false; }
    /// Shows the about box in front of the active window until the user closes it.
    virtual void ShowAbout() {}
};

/// Makes an object of a registered or built-in class of a scene (objects, texture maps, custom
/// attributes); null when there is no such class or it cannot. The caller owns it, without a
/// reference, until something of the scene takes it.
KILNAPI Animatable* CreateInstance(SClass_ID superClass, const Class_ID& id) noexcept;
/// The descriptor of a registered class, or null.
KILNAPI ClassDesc* FindClassDesc(SClass_ID superClass, const Class_ID& id) noexcept;
