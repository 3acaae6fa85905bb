#include <base/text.h>
#include <kiln/fp.h>
#include <kiln/host/script.h>
#include <kiln/interface.h>
#include <kiln/memory.h>

#include <utility>

namespace {

// Made on first use: modules publish from their static initialisers.
std::vector<FPInterfaceDesc*>& published() {
    static std::vector<FPInterfaceDesc*> interfaces;
    return interfaces;
}

template <typename Item>
const Item* findNamed(const std::vector<Item>& items, const char* name) noexcept {
    if (!name) return nullptr;
    const Item* alike = nullptr;
    for (const Item& item : items) {
        if (std::string_view(item.name) == name) return &item;
        if (!alike && base::sameTextIgnoringCase(item.name, name)) alike = &item;
    }
    return alike;
}

// Copies the member that `type` names.
void copyMember(FPValue& to, const FPValue& from) noexcept {
    switch (from.type) {
        case TYPE_FLOAT:
            to.f = from.f;
            break;
        case TYPE_STRING:
            to.s = from.s;
            break;
        case TYPE_INODE:
            to.n = from.n;
            break;
        case TYPE_TEXMAP:
            to.tex = from.tex;
            break;
        case TYPE_INT:
        case TYPE_BOOL:
        case TYPE_VOID:
            to.i = from.i;
            break;
    }
    to.type = from.type;
}

}  // namespace

const char* ParamTypeName(ParamType2 type) noexcept {
    switch (type) {
        case TYPE_FLOAT:
            return "float";
        case TYPE_INT:
            return "integer";
        case TYPE_BOOL:
            return "boolean";
        case TYPE_STRING:
            return "string";
        case TYPE_TEXMAP:
            return "texture map";
        case TYPE_INODE:
            return "node";
        case TYPE_VOID:
            return "void";
    }
    return "value";
}

FPValue::FPValue(const FPValue& other) noexcept {
    copyMember(*this, other);
    if (!other.ownsString_) return;
    s = KILN_strdup(other.s);
    ownsString_ = s != nullptr;
}

FPValue::FPValue(FPValue&& other) noexcept : ownsString_(std::exchange(other.ownsString_, false)) {
    copyMember(*this, other);
    other.type = TYPE_VOID;
}

FPValue& FPValue::operator=(FPValue other) noexcept {
    Clear();
    copyMember(*this, other);
    ownsString_ = std::exchange(other.ownsString_, false);
    return *this;
}

void FPValue::Clear() noexcept {
    if (ownsString_) KILN_free(const_cast<char*>(s));
    ownsString_ = false;
    type = TYPE_VOID;
    i = 0;
}

void FPValue::SetFloat(float value) noexcept {
    Clear();
    type = TYPE_FLOAT;
    f = value;
}

void FPValue::SetInt(int value) noexcept {
    Clear();
    type = TYPE_INT;
    i = value;
}

void FPValue::SetBool(bool value) noexcept {
    Clear();
    type = TYPE_BOOL;
    i = value ? 1 : 0;
}

void FPValue::SetNode(INode* value) noexcept {
    Clear();
    type = TYPE_INODE;
    n = value;
}

void FPValue::SetTexmap(Texmap* value) noexcept {
    Clear();
    type = TYPE_TEXMAP;
    tex = value;
}

void FPValue::SetString(const char* value) noexcept {
    Clear();
    type = TYPE_STRING;
    s = value;
}

void FPValue::SetOwnedString(char* value) noexcept {
    SetString(value);
    ownsString_ = value != nullptr;
}

FPValue FPValue::Float(float value) noexcept {
    FPValue made;
    made.SetFloat(value);
    return made;
}

FPValue FPValue::Int(int value) noexcept {
    FPValue made;
    made.SetInt(value);
    return made;
}

FPValue FPValue::Bool(bool value) noexcept {
    FPValue made;
    made.SetBool(value);
    return made;
}

FPValue FPValue::Node(INode* value) noexcept {
    FPValue made;
    made.SetNode(value);
    return made;
}

FPValue FPValue::Map(Texmap* value) noexcept {
    FPValue made;
    made.SetTexmap(value);
    return made;
}

FPValue FPValue::String(const char* value) noexcept {
    FPValue made;
    made.SetString(value);
    return made;
}

FPValue FPValue::StringCopy(const char* value) noexcept {
    FPValue made;
    made.SetOwnedString(KILN_strdup(value));
    return made;
}

FPStatus FPInterface::Invoke(FunctionID id, TimeValue t, FPValue& result,
                             FPParams* params) noexcept {
    result.Clear();
    try {
        return _dispatch_fn(id, t, result, params);
    } catch (...) {
        result.Clear();
        return FPS_FAIL;
    }
}

FPInterfaceDesc::FPInterfaceDesc(const Interface_ID& id, const char* name, int description,
                                 ClassDesc* owner, unsigned flags,
                                 std::span<const FPFunctionDesc> functions,
                                 std::span<const FPPropertyDesc> properties)
    : id_(id),
      name_(name),
      description_(description),
      owner_(owner),
      flags_(flags),
      functions_(functions.begin(), functions.end()),
      properties_(properties.begin(), properties.end()) {}

const FPFunctionDesc* FPInterfaceDesc::FindFunction(const char* name) const noexcept {
    return findNamed(functions_, name);
}

const FPPropertyDesc* FPInterfaceDesc::FindProperty(const char* name) const noexcept {
    return findNamed(properties_, name);
}

FPStaticInterface::FPStaticInterface(const Interface_ID& id, const char* name, int description,
                                     ClassDesc* owner, unsigned flags,
                                     std::span<const FPFunctionDesc> functions,
                                     std::span<const FPPropertyDesc> properties)
    : FPInterfaceDesc(id, name, description, owner, flags, functions, properties) {
    if (flags & FP_CORE) published().push_back(this);
}

FPStaticInterface::~FPStaticInterface() {
    std::erase(published(), this);
}

FPInterface* GetCOREInterface(const Interface_ID& id) noexcept {
    for (FPInterfaceDesc* const one : published())
        if (one->GetID() == id) return one;
    return nullptr;
}

namespace kiln {

std::vector<FPInterfaceDesc*> publishedInterfaces() {
    return published();
}

FPInterfaceDesc* findInterface(const std::string& name) {
    FPInterfaceDesc* alike = nullptr;
    for (FPInterfaceDesc* const one : published()) {
        if (name == one->Name()) return one;
        if (!alike && base::sameTextIgnoringCase(one->Name(), name)) alike = one;
    }
    return alike;
}

}  // namespace kiln
