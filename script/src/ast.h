// A script as a tree.
#pragma once

#include <script/error.h>
#include <script/value.h>

#include <memory>
#include <string>
#include <vector>

namespace script {

enum class NodeKind {
    literal,
    name,
    nodeName,  // text: the node's name
    array,     // children: elements
    point,     // children: x, y, z
    block,     // children: statements
    call,      // children: callee, arguments; keywords
    member,    // children: what; text: name
    element,   // children: array, index
    negate,    // children: operand
    logicalNot,
    logicalAnd,
    logicalOr,
    binary,    // children: left, right; text: operator
    convert,   // children: what; text: type
    assign,    // children: target, value; text: operator before "=", empty for none
    declare,   // children: value or none; text: name; flag: global
    ifThen,    // children: condition, then, else or none
    whileDo,   // children: condition, body
    forEach,   // children: array, body, where or none; text: variable; flag: collect
    forCount,  // children: from, to, step or null, body, where or none; text: variable
    function,  // children: body, then defaults; keywords: parameters
    leave,     // "exit", out of a loop
    next,      // "continue"
    giveBack,  // "return"; children: value or none
};

struct Node;
using NodePointer = std::shared_ptr<const Node>;

struct Node {
    NodeKind kind = NodeKind::literal;
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
