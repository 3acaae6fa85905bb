#include "published.h"

#include <script/error.h>

#include <kiln/host/script.h>
#include <kiln/interface.h>
#include <kiln/texmap.h>

#include <cmath>
#include <limits>

namespace script {

namespace {

FPValue published(const Value& value) {
    if (const auto* integer = value.as<std::int32_t>()) return FPValue::Int(*integer);
    if (const auto* boolean = value.as<bool>()) return FPValue::Bool(*boolean);
    if (const std::string* text = value.text()) return FPValue::StringCopy(text->c_str());
    if (const auto* node = value.as<NodeReference>()) return FPValue::Node(&livingNode(*node));
    if (const auto* map = value.as<Value::Map>()) return FPValue::Map(map->get());
    if (value.isUndefined()) return {};
    if (const auto* real = value.as<double>()) {
        if (std::abs(*real) > std::numeric_limits<float>::max())
            throw Failure(value.shown() + " is too large for a float");
        return FPValue::Float(static_cast<float>(*real));
    }
    throw Failure(value.described() + " cannot be an argument of a published function");
}

Value fromPublished(const FPValue& value) {
    switch (value.type) {
        case TYPE_FLOAT:
            return Value(static_cast<double>(value.f));
        case TYPE_INT:
            return Value(std::int32_t{value.i});
        case TYPE_BOOL:
            return Value(value.i != 0);
        case TYPE_STRING:
            return value.s ? Value(value.s) : Value();
        case TYPE_TEXMAP:
            return Value::ofMap(value.tex);
        case TYPE_INODE:
            return Value::ofNode(value.n);
        case TYPE_VOID:
            break;
    }
    return Value(Done{});
}

void require(const kiln::Status& status) {
    if (!status.ok()) throw Failure(status.message());
}

}  // namespace

Value publishedMember(FPInterfaceDesc& interface, const std::string& name) {
    if (!interface.FindProperty(name.c_str())) return publishedCall(interface, name, {});
    FPValue result;
    require(kiln::getProperty(interface, name, result));
    return fromPublished(result);
}

Value publishedCall(FPInterfaceDesc& interface, const std::string& name,
                    const std::vector<Argument>& arguments) {
    if (!interface.FindFunction(name.c_str()))
        throw Failure(interface.FindProperty(name.c_str())
                          ? std::string(interface.Name()) + "." + name +
                                " is a property and takes no arguments"
                          : std::string(interface.Name()) + " has nothing named \"" + name + "\"");
    std::vector<kiln::ScriptArgument> given;
    given.reserve(arguments.size());
    for (const auto& [keyword, value] : arguments) given.push_back({keyword, published(value)});
    FPValue result;
    require(kiln::callFunction(interface, name, given, result));
    return fromPublished(result);
}

void setPublished(FPInterfaceDesc& interface, const std::string& name, const Value& value) {
    require(kiln::setProperty(interface, name, published(value)));
}

std::string unknownInterface(const std::string& name) {
    std::string known;
    for (const FPInterfaceDesc* one : kiln::publishedInterfaces())
        known += (known.empty() ? ". Published are: " : ", ") + std::string(one->Name());
    return "no interface is named \"" + name + "\"" + known;
}

INode& livingNode(const NodeReference& node) {
    Interface* const host = GetCOREInterface();
    INode* found = host ? host->GetINodeByHandle(node.handle) : nullptr;
    if (host && host->GetRootNode()->GetHandle() == node.handle) found = host->GetRootNode();
    if (!found) throw Failure("this node has been deleted");
    return *found;
}

}  // namespace script
