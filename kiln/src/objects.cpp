#include <kiln/object.h>

#include <memory>

#include "changes.h"

namespace {

// The icon of a light, in scene units.
constexpr double kLightRadius = 5;

template <typename T>
void change(T& member, T value) noexcept {
    if (member == value) return;
    member = value;
    kiln::noteSceneChanged();
}

Box3 cube(double halfEdge) {
    Box3 box;
    box += Point3{-halfEdge, -halfEdge, -halfEdge};
    box += Point3{halfEdge, halfEdge, halfEdge};
    return box;
}

}  // namespace

void DummyObject::SetSize(double size) noexcept {
    change(size_, size);
}

Box3 DummyObject::GetLocalBoundBox(TimeValue) const {
    return cube(size_ / 2);
}

Box3 TriObject::GetLocalBoundBox(TimeValue) const {
    return mesh_.BoundingBox();
}

void BoxObject::SetSize(double length, double width, double height) noexcept {
    change(length_, length);
    change(width_, width);
    change(height_, height);
}

bool BoxObject::CanConvertToType(const Class_ID& id) const {
    return id == BOXOBJ_CLASS_ID || id == TRIOBJ_CLASS_ID;
}

Object* BoxObject::ConvertToType(TimeValue, const Class_ID& id) {
    if (id == BOXOBJ_CLASS_ID) return this;
    if (id != TRIOBJ_CLASS_ID) return nullptr;
    auto tri = std::make_unique<TriObject>();
    Mesh& mesh = tri->GetMesh();
    for (const double z : {0.0, height_})
        for (const double y : {-length_ / 2, length_ / 2})
            for (const double x : {-width_ / 2, width_ / 2}) mesh.verts.Append(Point3{x, y, z});
    constexpr DWORD kSides[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                    {1, 3, 7, 5}, {3, 2, 6, 7}, {2, 0, 4, 6}};
    for (const auto& side : kSides) mesh.AppendPolygon(4, side);
    return tri.release();
}

Box3 BoxObject::GetLocalBoundBox(TimeValue) const {
    Box3 box;
    box += Point3{-width_ / 2, -length_ / 2, 0};
    box += Point3{width_ / 2, length_ / 2, height_};
    return box;
}

void SplineShape::SetClosed(bool closed) noexcept {
    change(closed_, closed);
}

void SplineShape::SetRenderable(bool renderable) noexcept {
    change(renderable_, renderable);
}

bool SplineShape::CanConvertToType(const Class_ID& id) const {
    return id == SPLINESHAPE_CLASS_ID || (id == TRIOBJ_CLASS_ID && closed_ && points_.Count() >= 3);
}

Object* SplineShape::ConvertToType(TimeValue, const Class_ID& id) {
    if (id == SPLINESHAPE_CLASS_ID) return this;
    if (!CanConvertToType(id)) return nullptr;
    auto tri = std::make_unique<TriObject>();
    Mesh& mesh = tri->GetMesh();
    mesh.verts = points_;
    Tab<DWORD> corners;
    for (int i = 0; i < points_.Count(); ++i) corners.Append(static_cast<DWORD>(i));
    mesh.AppendPolygon(corners.Count(), corners.Addr(0));
    return tri.release();
}

Box3 SplineShape::GetLocalBoundBox(TimeValue) const {
    Box3 box;
    for (const Point3& point : points_) box += point;
    return box;
}

void GenLight::SetColor(COLORREF color) noexcept {
    change(color_, color);
}

void GenLight::SetIntensity(double intensity) noexcept {
    change(intensity_, intensity);
}

void GenLight::SetUseLight(bool on) noexcept {
    change(on_, on);
}

const char* GenLight::GetObjectName() const {
    if (kind_ == SPOT_LIGHT_CLASS_ID) return "Spot";
    if (kind_ == DIR_LIGHT_CLASS_ID) return "Direct";
    if (kind_ == FSPOT_LIGHT_CLASS_ID) return "FSpot";
    return "Omni";
}

Box3 GenLight::GetLocalBoundBox(TimeValue) const {
    return cube(kLightRadius);
}
