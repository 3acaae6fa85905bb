// What a node shows: meshes, primitives, shapes, lights and helpers.
#pragma once

#include <kiln/animatable.h>
#include <kiln/geometry.h>
#include <kiln/mesh.h>
#include <kiln/timevalue.h>

/// The object that one or more nodes show, in object space. The setters of the host's own objects
/// tell the host of the change, and throw `std::bad_alloc` where it cannot be kept for an undo. Who
/// edits points or a mesh in place announces it with `AboutToChange`, and tells the host afterwards
/// with `INode::InvalidateWS`.
class KILNAPI Object : public ReferenceTarget {
public:
    /// The class's name as a user sees it ("Box"); new nodes are named after it. UTF-8.
    virtual const char* GetObjectName() const = 0;
    /// Whether `ConvertToType` would succeed.
    virtual bool CanConvertToType(const Class_ID& id) const { return id == ClassID(); }
    /// The object as one of class `id`, null when it cannot be. The result is this very object when
    /// it is of that class already; otherwise a new one that the caller frees with `DeleteThis`.
    virtual Object* ConvertToType(TimeValue t, const Class_ID& id) {
        (void)t;
        return id == ClassID() ? this : nullptr;
    }
    /// Whether it shows in a rendered picture (helpers and lights do not).
    virtual bool IsRenderable() const { return false; }
    /// The box around the object in its own space.
    virtual Box3 GetLocalBoundBox(TimeValue t) const = 0;
};

/// What stands at the end of a node's pipeline.
struct ObjectState {
    Object* obj = nullptr;  ///< owned by the node; null for the root and for nodes without object
};

class KILNAPI GeomObject : public Object {
public:
    SClass_ID SuperClassID() const override { return GEOMOBJECT_CLASS_ID; }
    bool IsRenderable() const override { return true; }
};

class KILNAPI HelperObject : public Object {
public:
    SClass_ID SuperClassID() const override { return HELPER_CLASS_ID; }
};

class KILNAPI ShapeObject : public Object {
public:
    SClass_ID SuperClassID() const override { return SHAPE_CLASS_ID; }
};

class KILNAPI LightObject : public Object {
public:
    SClass_ID SuperClassID() const override { return LIGHT_CLASS_ID; }
};

/// A helper that shows as a box of wires and has no surface: groups hang on it.
class KILNAPI DummyObject final : public HelperObject {
public:
    Class_ID ClassID() const override { return DUMMY_CLASS_ID; }
    const char* GetObjectName() const override { return "Dummy"; }
    Box3 GetLocalBoundBox(TimeValue t) const override;

    /// Edge length of the box, 10 at first.
    double GetSize() const noexcept { return size_; }
    void SetSize(double size);

private:
    double size_ = 10;
};

/// A triangle mesh.
class KILNAPI TriObject final : public GeomObject {
public:
    Class_ID ClassID() const override { return TRIOBJ_CLASS_ID; }
    const char* GetObjectName() const override { return "Mesh"; }
    Box3 GetLocalBoundBox(TimeValue t) const override;

    Mesh& GetMesh() noexcept { return mesh_; }
    const Mesh& GetMesh() const noexcept { return mesh_; }

private:
    Mesh mesh_;
};

/// A box standing on the ground plane: centred on the origin in x and y, from 0 to its height in z.
class KILNAPI BoxObject final : public GeomObject {
public:
    explicit BoxObject(double length = 10, double width = 10, double height = 10) noexcept
        : size_{length, width, height} {}

    Class_ID ClassID() const override { return BOXOBJ_CLASS_ID; }
    const char* GetObjectName() const override { return "Box"; }
    bool CanConvertToType(const Class_ID& id) const override;
    Object* ConvertToType(TimeValue t, const Class_ID& id) override;
    Box3 GetLocalBoundBox(TimeValue t) const override;

    void SetSize(double length, double width, double height);
    double GetLength() const noexcept { return size_.length; }  ///< along y
    double GetWidth() const noexcept { return size_.width; }    ///< along x
    double GetHeight() const noexcept { return size_.height; }  ///< along z

private:
    struct Size {
        double length, width, height;
        bool operator==(const Size&) const = default;
    };
    Size size_;
};

/// A polyline. A closed one of at least three points can become a mesh; it renders only when it has
/// been told to.
class KILNAPI SplineShape final : public ShapeObject {
public:
    Class_ID ClassID() const override { return SPLINESHAPE_CLASS_ID; }
    const char* GetObjectName() const override { return "Line"; }
    bool CanConvertToType(const Class_ID& id) const override;
    Object* ConvertToType(TimeValue t, const Class_ID& id) override;
    bool IsRenderable() const override { return renderable_; }
    Box3 GetLocalBoundBox(TimeValue t) const override;

    Tab<Point3>& GetPoints() noexcept { return points_; }
    const Tab<Point3>& GetPoints() const noexcept { return points_; }
    bool IsClosed() const noexcept { return closed_; }
    void SetClosed(bool closed);
    void SetRenderable(bool renderable);

private:
    Tab<Point3> points_;
    bool closed_ = false;
    bool renderable_ = false;
};

/// A light; its class id says which of the four kinds. It shines along its negative z axis.
class KILNAPI GenLight final : public LightObject {
public:
    /// `kind` is one of `OMNI_LIGHT_CLASS_ID`, `SPOT_LIGHT_CLASS_ID`, `DIR_LIGHT_CLASS_ID` and
    /// `FSPOT_LIGHT_CLASS_ID`.
    explicit GenLight(const Class_ID& kind) noexcept : kind_(kind) {}

    Class_ID ClassID() const override { return kind_; }
    const char* GetObjectName() const override;
    Box3 GetLocalBoundBox(TimeValue t) const override;

    COLORREF GetColor() const noexcept { return color_; }
    void SetColor(COLORREF color);
    double GetIntensity() const noexcept { return intensity_; }
    void SetIntensity(double intensity);
    bool GetUseLight() const noexcept { return on_; }
    void SetUseLight(bool on);

private:
    Class_ID kind_;
    COLORREF color_ = 0xFFFFFF;
    double intensity_ = 1;
    bool on_ = true;
};
