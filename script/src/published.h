// Published interfaces as the language sees them. Everything here throws `Failure`.
#pragma once

#include <script/value.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace script {

/// An argument with its keyword, empty for one by position.
using Argument = std::pair<std::string, Value>;

/// Reads a property, or calls a function that takes nothing.
Value publishedMember(FPInterfaceDesc& interface, const std::string& name);
Value publishedCall(FPInterfaceDesc& interface, const std::string& name,
                    const std::vector<Argument>& arguments);
void setPublished(FPInterfaceDesc& interface, const std::string& name, const Value& value);

/// What a plug-in offers by its bare name; null for none.
std::shared_ptr<const Function> publishedVerb(const std::string& name);
/// All that plug-ins offer so.
std::vector<std::shared_ptr<const Function>> publishedVerbs();
/// What such a verb says of a node when it needs nothing else; nothing when there is none.
std::optional<Value> publishedNodeProperty(INode& node, const std::string& name);

/// "No interface is named ...", with those that there are.
std::string unknownInterface(const std::string& name);

/// The node, which must still be in the scene.
INode& livingNode(const NodeReference& node);

}  // namespace script
