#include "classes.h"

#include <kiln/host/module.h>

#include <algorithm>
#include <new>

namespace kiln {

namespace {

struct BuiltIn {
    SClass_ID superClass;
    Class_ID id;
    Animatable* (*create)(const Class_ID& id);
};

template <typename T>
Animatable* made(const Class_ID&) {
    return new T;
}
Animatable* madeLight(const Class_ID& id) {
    return new GenLight(id);
}

constexpr BuiltIn kBuiltIns[] = {
    {HELPER_CLASS_ID, DUMMY_CLASS_ID, made<DummyObject>},
    {GEOMOBJECT_CLASS_ID, TRIOBJ_CLASS_ID, made<TriObject>},
    {GEOMOBJECT_CLASS_ID, BOXOBJ_CLASS_ID, made<BoxObject>},
    {SHAPE_CLASS_ID, SPLINESHAPE_CLASS_ID, made<SplineShape>},
    {LIGHT_CLASS_ID, OMNI_LIGHT_CLASS_ID, madeLight},
    {LIGHT_CLASS_ID, SPOT_LIGHT_CLASS_ID, madeLight},
    {LIGHT_CLASS_ID, DIR_LIGHT_CLASS_ID, madeLight},
    {LIGHT_CLASS_ID, FSPOT_LIGHT_CLASS_ID, madeLight},
    {TEXMAP_CLASS_ID, BMTEX_CLASS_ID, made<BitmapTex>},
};

/// Stands in for a class whose plug-in is not there.
template <typename Base>
class StandIn final : public Base {
public:
    StandIn(SClass_ID superClass, const Class_ID& id) : superClass_(superClass), id_(id) {}

    SClass_ID SuperClassID() const override { return superClass_; }
    Class_ID ClassID() const override { return id_; }
    std::vector<BYTE> SaveState() const override { return state_; }
    bool LoadState(const BYTE* bytes, std::size_t length) override {
        state_.assign(bytes, bytes + length);
        return true;
    }

private:
    SClass_ID superClass_;
    Class_ID id_;
    std::vector<BYTE> state_;
};

class UnknownObject : public Object {
public:
    const char* GetObjectName() const override { return "Unknown"; }
    Box3 GetLocalBoundBox(TimeValue) const override { return {}; }
};

bool isBuiltInObject(const Class_ID& id) noexcept {
    return std::ranges::any_of(kBuiltIns, [&](const BuiltIn& one) {
        return isObjectSuperClass(one.superClass) && one.id == id;
    });
}

bool isOfScene(SClass_ID superClass) noexcept {
    return isObjectSuperClass(superClass) || superClass == TEXMAP_CLASS_ID ||
           superClass == CUST_ATTRIB_CLASS_ID;
}

}  // namespace

bool isBuiltIn(SClass_ID superClass, const Class_ID& id) noexcept {
    return std::ranges::any_of(kBuiltIns, [&](const BuiltIn& one) {
        return one.superClass == superClass && one.id == id;
    });
}

bool isObjectSuperClass(SClass_ID superClass) noexcept {
    return superClass == GEOMOBJECT_CLASS_ID || superClass == SHAPE_CLASS_ID ||
           superClass == LIGHT_CLASS_ID || superClass == HELPER_CLASS_ID;
}

OwnedPtr<Animatable> createOrStandIn(SClass_ID superClass, const Class_ID& id) {
    if (isObjectSuperClass(superClass) && !isBuiltIn(superClass, id) && isBuiltInObject(id))
        return nullptr;
    if (Animatable* const thing = CreateInstance(superClass, id))
        return OwnedPtr<Animatable>(thing);
    if (isBuiltIn(superClass, id)) throw std::bad_alloc();  // there is nothing else it can lack
    Animatable* standIn = nullptr;
    if (isObjectSuperClass(superClass))
        standIn = new StandIn<UnknownObject>(superClass, id);
    else if (superClass == TEXMAP_CLASS_ID)
        standIn = new StandIn<Texmap>(superClass, id);
    else if (superClass == CUST_ATTRIB_CLASS_ID)
        standIn = new StandIn<CustAttrib>(superClass, id);
    return OwnedPtr<Animatable>(standIn);
}

}  // namespace kiln

Animatable* CreateInstance(SClass_ID superClass, const Class_ID& id) noexcept {
    if (!kiln::isOfScene(superClass)) return nullptr;
    try {
        for (const kiln::BuiltIn& one : kiln::kBuiltIns)
            if (one.superClass == superClass && one.id == id) return one.create(id);
        ClassDesc* const registered = FindClassDesc(superClass, id);
        return registered ? static_cast<Animatable*>(registered->Create(false)) : nullptr;
    } catch (...) {
        return nullptr;  // a plug-in's failure to make one is the same as not having it
    }
}
