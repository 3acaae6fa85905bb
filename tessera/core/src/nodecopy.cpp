#include "nodecopy.h"

#include <kiln/kiln.h>
#include <kiln/memory.h>
#include <kiln/ownedptr.h>
#include <kiln/subtree.h>

#include <cstring>
#include <memory>
#include <vector>

namespace tessera {

namespace {

OwnedPtr<Object> copyOfSpline(const SplineShape& shape) {
    auto copy = OwnedPtr<SplineShape>(new SplineShape);
    copy->GetPoints() = shape.GetPoints();
    copy->SetClosed(shape.IsClosed());
    copy->SetRenderable(shape.IsRenderable());
    return copy;
}

OwnedPtr<Object> copyOfLight(const GenLight& light) {
    auto copy = OwnedPtr<GenLight>(new GenLight(light.ClassID()));
    copy->SetColor(light.GetColor());
    copy->SetIntensity(light.GetIntensity());
    copy->SetUseLight(light.GetUseLight());
    return copy;
}

/// Null for an object of a class that the host has not made: nobody else can copy it.
OwnedPtr<Object> copyOf(const Object& object) {
    const Class_ID id = object.ClassID();
    if (id == DUMMY_CLASS_ID) {
        auto copy = OwnedPtr<DummyObject>(new DummyObject);
        copy->SetSize(static_cast<const DummyObject&>(object).GetSize());
        return copy;
    }
    if (id == TRIOBJ_CLASS_ID) {
        auto copy = OwnedPtr<TriObject>(new TriObject);
        copy->GetMesh() = static_cast<const TriObject&>(object).GetMesh();
        return copy;
    }
    if (id == BOXOBJ_CLASS_ID) {
        const auto& box = static_cast<const BoxObject&>(object);
        return OwnedPtr<Object>(new BoxObject(box.GetLength(), box.GetWidth(), box.GetHeight()));
    }
    if (id == SPLINESHAPE_CLASS_ID) return copyOfSpline(static_cast<const SplineShape&>(object));
    if (id == OMNI_LIGHT_CLASS_ID || id == SPOT_LIGHT_CLASS_ID || id == DIR_LIGHT_CLASS_ID ||
        id == FSPOT_LIGHT_CLASS_ID)
        return copyOfLight(static_cast<const GenLight&>(object));
    return nullptr;
}

void copyChunks(const Animatable& from, Animatable& to) {
    for (int i = 0; i < from.NumAppDataChunks(); ++i) {
        const AppDataChunk& chunk = *from.GetAppDataChunk(i);
        void* const bytes = chunk.length ? KILN_malloc(chunk.length) : nullptr;
        if (chunk.length && !bytes) throw std::bad_alloc();
        if (chunk.length) std::memcpy(bytes, chunk.data, chunk.length);
        if (to.AddAppDataChunk(chunk.clID, chunk.sclID, chunk.subID, chunk.length, bytes)) continue;
        KILN_free(bytes);
        throw std::bad_alloc();
    }
}

INode* newNode(Interface& host, const INode& original, const char* name) {
    Object* const object = original.GetObjectRef();
    OwnedPtr<Object> copy = object ? copyOf(*object) : nullptr;
    if (copy) copyChunks(*object, *copy);
    INode* const node = host.CreateObjectNode(copy ? copy.get() : object, name);
    if (node) static_cast<void>(copy.release());  // the node's now
    return node;
}

void copyState(Interface& host, const INode& from, INode& to) {
    to.SetLocalTM(host.GetTime(), from.GetLocalTM(host.GetTime()));
    to.SetTexmap(from.GetTexmap());
    to.SetWireColor(from.GetWireColor());
    to.Hide(from.IsHidden());
    to.SetGroupHead(from.IsGroupHead());
    to.SetGroupMember(from.IsGroupMember());
    copyChunks(from, to);
}

}  // namespace

INode* copySubtree(Interface& host, INode& top, INode& parent) {
    // All of them first: the parent may be among them.
    std::vector<INode*> originals;
    ForEachInSubtree(&top, [&](INode& node) { originals.push_back(&node); });
    const std::unique_ptr<NameMaker> names(host.NewNameMaker(true));
    if (!names) throw std::bad_alloc();
    struct Copied {
        const INode* original;
        INode* copy;
    };
    std::vector<Copied> way;  // from the top to the node copied last
    for (INode* original : originals) {
        while (!way.empty() && way.back().original != original->GetParentNode()) way.pop_back();
        CStr name(original->GetName());
        names->MakeUniqueName(name);
        INode* const copy = newNode(host, *original, name);
        INode* const above = way.empty() ? &parent : way.back().copy;
        if (!copy || !above->AttachChild(copy, false)) return nullptr;
        copyState(host, *original, *copy);
        way.push_back({original, copy});
    }
    const TimeValue now = host.GetTime();
    INode* const copy = way.front().copy;
    if (top.GetParentNode() != &parent) copy->SetNodeTM(now, top.GetNodeTM(now));
    copy->SetGroupMember(parent.IsGroupHead());
    return copy;
}

}  // namespace tessera
