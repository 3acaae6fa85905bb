#include <tessera/nodecreation.h>

#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltfactory.h>

#include <memory>
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

}  // namespace

INode* createFltNode(Interface& host, std::uint16_t opcode, std::uint32_t revision, INode* parent) {
    auto* const dummy = new DummyObject;
    dummy->AddReference();
    INode* const node = host.CreateObjectNode(dummy);
    dummy->ReleaseReference();
    if (!node) return nullptr;
    const FltNodeKind kind{opcode};
    node->SetNodeTM(host.GetTime(), Matrix3());
    if (parent && !parent->AttachChild(node, true)) {
        host.DeleteNode(node);
        return nullptr;
    }
    // From here on nothing fails visibly: without its data the node is a plain helper.
    fltEnsureKind(node, kind, revision);
    if (hasDefaultRecord(kind))
        if (const auto record = fltCreateRecord(opcode)) fltPutRecord(node, *record);
    CStr name(fltNamePrefix(kind));
    names(host).MakeUniqueName(name);
    node->SetName(name);
    return node;
}

void releaseNameMaker() noexcept {
    nameMaker.reset();
}

}  // namespace tessera
