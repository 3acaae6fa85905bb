#include "published.h"

#include "function.h"
#include "texts.h"

#include <base/text.h>
#include <script/error.h>

#include <kiln/host/script.h>
#include <kiln/interface.h>
#include <kiln/texmap.h>

#include <algorithm>
#include <utility>

namespace script {

namespace {

FPValue published(const Value& value) {
    if (const auto* integer = value.as<std::int32_t>()) return FPValue::Int(*integer);
    if (const auto* boolean = value.as<bool>()) return FPValue::Bool(*boolean);
    if (const std::string* text = value.text()) return FPValue::StringCopy(text->c_str());
    if (const auto* node = value.as<NodeReference>()) return FPValue::Node(&livingNode(*node));
    if (const auto* map = value.as<Value::Map>()) return FPValue::Map(map->get());
    if (value.isUndefined()) return {};
    if (const auto* real = value.as<double>()) return FPValue::Double(*real);
    throw Failure(value.described() + " cannot be an argument of a published function");
}

Value fromPublished(const FPValue& value) {
    switch (value.type) {
        case TYPE_FLOAT:
            return Value(static_cast<double>(value.f));
        case TYPE_DOUBLE:
            return Value(value.d);
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
        case TYPE_STRING_TAB: {
            std::vector<Value> strings;
            for (const std::string_view one : value.Strings())
                strings.emplace_back(std::string(one));
            return Value::ofArray(std::move(strings));
        }
        case TYPE_VALUE:
        case TYPE_VOID:
            break;
    }
    return Value(Done{});
}

void require(const kiln::Status& status) {
    if (!status.ok()) throw Failure(status.message());
}

/// What the language calls for a verb. It holds the interface, which must outlive the script.
std::shared_ptr<const Function> functionOf(const kiln::PublishedVerb& verb) {
    auto function = std::make_shared<Function>();
    function->name = verb.function->name;
    for (const FPParamDesc& param : verb.function->params()) {
        function->parameters.push_back(base::smallLetters(param.name));
        if ((param.options & FP_OPTIONAL) == 0) {
            function->required = function->parameters.size();
        }
    }
    function->verb = [verb](const script::Arguments& arguments) {
        std::vector<Argument> given;
        for (std::size_t i = 0; i < arguments.all().size(); ++i) {
            if (arguments.has(i)) given.emplace_back(verb.function->params()[i].name, arguments[i]);
        }
        return publishedCall(*verb.target, verb.function->name, given);
    };
    return function;
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

std::shared_ptr<const Function> publishedVerb(const std::string& name) {
    const std::optional<kiln::PublishedVerb> found = kiln::findVerb(name);
    return found ? functionOf(*found) : nullptr;
}

std::vector<std::shared_ptr<const Function>> publishedVerbs() {
    std::vector<std::shared_ptr<const Function>> verbs;
    for (FPInterfaceDesc* const one : kiln::publishedInterfaces()) {
        if ((one->Flags() & FP_VERBS) == 0) continue;
        for (const FPFunctionDesc& function : one->Functions())
            verbs.push_back(functionOf({one, &function}));
    }
    return verbs;
}

std::optional<Value> publishedNodeProperty(INode& node, const std::string& name) {
    const std::optional<kiln::PublishedVerb> found = kiln::findVerb(name);
    if (!found) return std::nullopt;
    const auto params = found->function->params();
    const bool needsNodeOnly = !params.empty() && params.front().type == TYPE_INODE &&
                               std::ranges::all_of(params.subspan(1), [](const FPParamDesc& param) {
                                   return (param.options & FP_OPTIONAL) != 0;
                               });
    if (!needsNodeOnly) return std::nullopt;
    return publishedCall(*found->target, found->function->name, {{"", Value::ofNode(&node)}});
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
    if (!found) throw Failure(textOf(TextId::kNodeDeleted));
    return *found;
}

}  // namespace script
