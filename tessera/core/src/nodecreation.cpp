#include <tessera/nodecreation.h>

#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltfactory.h>

#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace tessera {

namespace {

std::unique_ptr<NameMaker> nameMaker;

/// One name maker serves the module from the first creation on. The bare prefixes are registered
/// with it first, so that no node is ever called by one.
NameMaker& names(Interface& host) {
    if (!nameMaker) {
        std::unique_ptr<NameMaker> maker(host.NewNameMaker(true));
        if (!maker) throw std::bad_alloc();
        for (const char* prefix : {"b", "c", "d", "l", "g", "o", "s", "x", "lp", "q"})
            maker->AddName(prefix);
        nameMaker = std::move(maker);
    }
    return *nameMaker;
}

/// Kinds without a prefix of their own get no record.
bool hasDefaultRecord(FltNodeKind kind) {
    return std::string_view(fltNamePrefix(kind)) != fltNamePrefix(FltNodeKind{});
}

/// Null when the host does not make it.
INode* newDummyNode(Interface& host) {
    OwnedPtr<DummyObject> dummy(new DummyObject);
    INode* const node = host.CreateObjectNode(dummy.get());
    if (node) static_cast<void>(dummy.release());  // the node's now
    return node;
}

/// Fails silently: without its data the node is a plain helper.
void storeData(INode* node, FltNodeKind kind, std::uint32_t revision) {
    fltEnsureKind(node, kind, revision);
    if (!hasDefaultRecord(kind)) return;
    if (const auto record = fltCreateRecord(static_cast<std::uint16_t>(kind)))
        fltPutRecord(node, *record);
}

void giveName(Interface& host, INode* node, FltNodeKind kind) {
    CStr name(fltNamePrefix(kind));
    names(host).MakeUniqueName(name);
    node->SetName(name);
}

}  // namespace

INode* createFltNode(Interface& host, std::uint16_t opcode, std::uint32_t revision, INode* parent) {
    fltkilnutil::ActionScope scope(fltkilnutil::Action::kCreate);
    INode* const node = newDummyNode(host);
    if (!node) return nullptr;
    node->SetNodeTM(host.GetTime(), Matrix3());
    if (parent && !parent->AttachChild(node, true)) return nullptr;
    storeData(node, FltNodeKind{opcode}, revision);
    giveName(host, node, FltNodeKind{opcode});
    scope.Commit();
    return node;
}

void releaseNameMaker() noexcept {
    nameMaker.reset();
}

}  // namespace tessera
