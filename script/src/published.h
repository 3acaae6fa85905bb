// Published interfaces as the language sees them. Everything here throws `Failure`.
#pragma once

#include <script/value.h>

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

/// "No interface is named ...", with those that there are.
std::string unknownInterface(const std::string& name);

/// The node, which must still be in the scene.
INode& livingNode(const NodeReference& node);

}  // namespace script
