#include <tessera/nodecreation.h>

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

/// A node on trial: deleted again unless it is kept.
class NewNode {
public:
    explicit NewNode(Interface& host) : host_(host) {
        // A host that does not keep the object has it deleted by this last reference.
        auto* const dummy = new DummyObject;
        dummy->AddReference();
        try {
            node_ = host.CreateObjectNode(dummy);
        } catch (...) {
            dummy->ReleaseReference();
            throw;
        }
        dummy->ReleaseReference();
    }
    ~NewNode() {
        try {
            if (node_) host_.DeleteNode(node_);
        } catch (...) {
            // The exception that is being handled is the one to report.
        }
    }
    NewNode(const NewNode&) = delete;
    NewNode& operator=(const NewNode&) = delete;

    INode* get() const { return node_; }
    INode* keep() { return std::exchange(node_, nullptr); }

private:
    Interface& host_;
    INode* node_ = nullptr;
};

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
    NewNode node(host);
    if (!node.get()) return nullptr;
    node.get()->SetNodeTM(host.GetTime(), Matrix3());
    if (parent && !parent->AttachChild(node.get(), true)) return nullptr;
    storeData(node.get(), FltNodeKind{opcode}, revision);
    giveName(host, node.get(), FltNodeKind{opcode});
    return node.keep();
}

void releaseNameMaker() noexcept {
    nameMaker.reset();
}

}  // namespace tessera
