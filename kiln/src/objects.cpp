#include <kiln/object.h>

#include <memory>
#include <type_traits>
#include <utility>

#include "changes.h"
#include "scenehistory.h"

namespace {

// The icon of a light, in scene units.
constexpr double kLightRadius = 5;

template <typename T>
void change(Object& object, T& member, std::type_identity_t<T> value) {
    if (member == value) return;
    kiln::changeMember(object, member, value);
    kiln::noteSceneChanged();
}

Box3 cube(double halfEdge) {
    Box3 box;
    box += Point3{-halfEdge, -halfEdge, -halfEdge};
    box += Point3{halfEdge, halfEdge, halfEdge};
    return box;
}

}  // namespace

void DummyObject::SetSize(double size) {
    change(*this, size_, size);
}

Box3 DummyObject::GetLocalBoundBox(TimeValue) const {
    return cube(size_ / 2);
}

Box3 TriObject::GetLocalBoundBox(TimeValue) const {
    return mesh_.BoundingBox();
}

void BoxObject::SetSize(double length, double width, double height) {
    change(*this, size_, {length, width, height});
}

bool BoxObject::CanConvertToType(const Class_ID& id) const {
    return id == BOXOBJ_CLASS_ID || id == TRIOBJ_CLASS_ID;
}

Object* BoxObject::ConvertToType(TimeValue, const Class_ID& id) {
    if (id == BOXOBJ_CLASS_ID) return this;
    if (id != TRIOBJ_CLASS_ID) return nullptr;
    auto tri = std::make_unique<TriObject>();
    Mesh& mesh = tri->GetMesh();
    for (const double z : {0.0, size_.height})
        for (const double y : {-size_.length / 2, size_.length / 2})
            for (const double x : {-size_.width / 2, size_.width / 2})
                mesh.verts.Append(Point3{x, y, z});
    constexpr DWORD kSides[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                    {1, 3, 7, 5}, {3, 2, 6, 7}, {2, 0, 4, 6}};
    for (const auto& side : kSides) mesh.AppendPolygon(4, side);
    return tri.release();
}

Box3 BoxObject::GetLocalBoundBox(TimeValue) const {
    Box3 box;
    box += Point3{-size_.width / 2, -size_.length / 2, 0};
    box += Point3{size_.width / 2, size_.length / 2, size_.height};
    return box;
}

void SplineShape::SetClosed(bool closed) {
    change(*this, closed_, closed);
}

void SplineShape::SetRenderable(bool renderable) {
    change(*this, renderable_, renderable);
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

void GenLight::SetColor(COLORREF color) {
    change(*this, color_, color);
}

void GenLight::SetIntensity(double intensity) {
    change(*this, intensity_, intensity);
}

void GenLight::SetUseLight(bool on) {
    change(*this, on_, on);
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

namespace {

/// What a class of a plug-in's keeps in a scene file.
class StateChange final : public kiln::RecordedChange {
public:
    StateChange(ReferenceTarget& thing, std::vector<BYTE> state) noexcept
        : kept_(kiln::kept(thing)), thing_(thing), state_(std::move(state)) {}

    /// A plug-in that fails keeps the state that the thing has; the turn back is left out then,
    /// too.
    void turn() noexcept override {
        if (std::exchange(leftOut_, false)) return;
        try {
            std::vector<BYTE> now = thing_.SaveState();
            thing_.LoadState(state_.data(), state_.size());
            state_ = std::move(now);
        } catch (...) {
            leftOut_ = true;
        }
    }

private:
    kiln::KeptReference kept_;
    ReferenceTarget& thing_;
    std::vector<BYTE> state_;
    bool leftOut_ = false;
};

template <typename T>
std::size_t bytesOf(const Tab<T>& items) {
    return static_cast<std::size_t>(items.Count()) * sizeof(T);
}

std::size_t bytesOf(const Mesh& mesh) {
    return bytesOf(mesh.verts) + bytesOf(mesh.faces) + bytesOf(mesh.tVerts) +
           bytesOf(mesh.tvFaces) + bytesOf(mesh.normals) + bytesOf(mesh.colors);
}

/// Records what `member` is now, before it is changed in place.
template <typename T>
void keep(kiln::SceneHistory& history, Object& object, T& member) {
    if (!history.keeps(&member))
        history.add<kiln::MemberChange<T>>(bytesOf(member), 0, kiln::kept(object), member,
                                           T(member));
}

}  // namespace

bool ReferenceTarget::AboutToChange() noexcept {
    kiln::SceneHistory* const history = kiln::historyFor(*this);
    if (!history) return true;
    try {
        if (auto* const tri = dynamic_cast<TriObject*>(this)) {
            keep(*history, *tri, tri->GetMesh());
        } else if (auto* const spline = dynamic_cast<SplineShape*>(this)) {
            keep(*history, *spline, spline->GetPoints());
        } else {
            std::vector<BYTE> state = SaveState();
            history->add<StateChange>(state.size(), 0, *this, std::move(state));
        }
    } catch (...) {
        return false;
    }
    return true;
}
