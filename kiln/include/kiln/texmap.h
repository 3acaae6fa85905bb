// Texture maps.
#pragma once

#include <kiln/animatable.h>
#include <kiln/cstr.h>

/// A texture map. It belongs to the scene once `Interface::AddTexmap` has taken it or a node of the
/// scene uses it, and is saved with it, custom attributes included.
class KILNAPI Texmap : public ReferenceTarget {
public:
    SClass_ID SuperClassID() const override { return TEXMAP_CLASS_ID; }

    /// The map's name, UTF-8; valid until it is changed.
    const char* GetName() const noexcept { return name_; }
    void SetName(const char* name);

private:
    CStr name_;
};

/// A picture from a file.
class KILNAPI BitmapTex final : public Texmap {
public:
    Class_ID ClassID() const override { return BMTEX_CLASS_ID; }

    /// The picture's path as it was given, UTF-8; valid until it is changed. Where it names no file
    /// the host looks for one of that name in its folders of scenes, imports and images.
    const char* GetMapName() const noexcept { return file_; }
    void SetMapName(const char* file);

private:
    CStr file_;
};
