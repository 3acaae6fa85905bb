#include <base/text.h>
#include <kiln/fp.h>
#include <kiln/host/script.h>
#include <kiln/interface.h>
#include <kiln/memory.h>

#include <cstring>
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
        case TYPE_DOUBLE:
            to.d = from.d;
            break;
        case TYPE_STRING:
        case TYPE_STRING_TAB:
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
        case TYPE_VALUE:
        case TYPE_VOID:
            to.i = from.i;
            break;
    }
    to.type = from.type;
}

/// A copy of a list of strings with the empty one that ends it; null without memory.
char* copyOfList(const char* list) noexcept {
    const char* end = list;
    while (*end != '\0') end += std::strlen(end) + 1;
    const auto size = static_cast<std::size_t>(end - list) + 1;
    auto* const copy = static_cast<char*>(KILN_malloc(size));
    if (copy) std::memcpy(copy, list, size);
    return copy;
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
        case TYPE_DOUBLE:
            return "double";
        case TYPE_STRING_TAB:
            return "list of strings";
        case TYPE_VALUE:
            break;
    }
    return "value";
}

FPValue::FPValue(const FPValue& other) noexcept {
    copyMember(*this, other);
    if (!other.ownsString_) return;
    s = type == TYPE_STRING_TAB ? copyOfList(other.s) : KILN_strdup(other.s);
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

void FPValue::SetDouble(double value) noexcept {
    Clear();
    type = TYPE_DOUBLE;
    d = value;
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

void FPValue::SetStrings(std::span<const std::string> values) noexcept {
    Clear();
    std::size_t size = 1;
    for (const std::string& value : values) size += value.size() + 1;
    auto* const list = static_cast<char*>(KILN_malloc(size));
    if (!list) return;
    char* end = list;
    for (const std::string& value : values) {
        std::memcpy(end, value.c_str(), value.size() + 1);
        end += value.size() + 1;
    }
    *end = '\0';
    type = TYPE_STRING_TAB;
    s = list;
    ownsString_ = true;
}

std::vector<std::string_view> FPValue::Strings() const {
    std::vector<std::string_view> strings;
    if (type != TYPE_STRING_TAB || !s) return strings;
    for (const char* next = s; *next != '\0'; next += strings.back().size() + 1) {
        strings.emplace_back(next);
    }
    return strings;
}

FPValue FPValue::Float(float value) noexcept {
    FPValue made;
    made.SetFloat(value);
    return made;
}

FPValue FPValue::Double(double value) noexcept {
    FPValue made;
    made.SetDouble(value);
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

std::optional<PublishedVerb> findVerb(const std::string& name) {
    for (FPInterfaceDesc* const one : published()) {
        if ((one->Flags() & FP_VERBS) == 0) continue;
        if (const FPFunctionDesc* const function = one->FindFunction(name.c_str())) {
            return PublishedVerb{one, function};
        }
    }
    return std::nullopt;
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
