// A script as a tree.
#pragma once

#include <script/error.h>
#include <script/value.h>

#include <memory>
#include <string>
#include <vector>

namespace script {

enum class NodeKind {
    kLiteral,
    kName,
    kNodeName,  // text: the node's name
    kArray,     // children: elements
    kPoint,     // children: x, y, z
    kBlock,     // children: statements
    kCall,      // children: callee, arguments; keywords
    kMember,    // children: what; text: name
    kElement,   // children: array, index
    kNegate,    // children: operand
    kLogicalNot,
    kLogicalAnd,
    kLogicalOr,
    kBinary,    // children: left, right; text: operator
    kConvert,   // children: what; text: type
    kAssign,    // children: target, value; text: operator before "=", empty for none
    kDeclare,   // children: value or none; text: name; flag: global
    kIfThen,    // children: condition, then, else or none
    kWhileDo,   // children: condition, body
    kForEach,   // children: array, body, where or none; text: variable; flag: collect
    kForCount,  // children: from, to, step or null, body, where or none; text: variable
    kFunction,  // children: body, then defaults; keywords: parameters
    kExit,      // "exit", out of a loop
    kContinue,  // "continue"
    kReturn,    // "return"; children: value or none
    kUndo,      // children: body; text: the step's name
};

struct Node;
using NodePointer = std::shared_ptr<const Node>;

struct Node {
    NodeKind kind = NodeKind::kLiteral;
    Position position;
    std::string text;      // in small letters where it is a name
    std::string spelling;  // as the script's author wrote it
    Value literal;
    bool flag = false;
    std::vector<NodePointer> children;
    /// Of a call: the keyword of each argument, empty for one by position. Of a function: the
    /// names of its parameters, those with defaults last.
    std::vector<std::string> keywords;
    std::size_t depth = 1;  // of the tree below
};

}  // namespace script
