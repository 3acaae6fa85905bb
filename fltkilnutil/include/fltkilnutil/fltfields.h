// The fields of OpenFlight nodes by their keys: the attributes, and what no row of their table
// names.
//
// What faces and meshes look like, what only records of files hold (a group's loop, the significant
// size of a level of detail), texture layers above the first and the names of a switch's masks have
// rows of the same form as the attributes, in a table beside theirs. The attribute grid does not
// show them, and no key stands in both.
//
// One caller at a time, as in `fltattr.h`. No function throws but where it says so.
#pragma once

#include <fltkilnutil/fltattr.h>

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// A field of a node's kind; both are null for none.
struct FltField {
    FltAttrGroup* group = nullptr;  ///< where the values are worked on
    FltAttrDesc* row = nullptr;

    explicit operator bool() const noexcept { return row != nullptr; }
};

/// The field of that key. For a mask's name ("FltSwitchMaskName0") the switch must have the mask or
/// the name. Its row is valid until a field of another node is looked up.
FltField fltFieldFind(INode* node, std::string_view key) noexcept;

/// The keys of the node's fields, attributes first; empty for what is no OpenFlight node of a kind
/// with fields.
std::vector<std::string> fltFieldKeys(INode* node) noexcept;

/// The key of a field of any kind that is `key` but for the case of letters, as the tables have it;
/// null for none. Names of masks are not among them.
const char* fltFieldKey(std::string_view key) noexcept;

/// Fills the field's row with the node's value; `parameter` is as for `fltAttrLoad`. False when the
/// node's data is damaged. A field that cannot be set on this node is not `visible` afterwards.
bool fltFieldLoad(INode* node, const FltField& field, std::uint32_t parameter) noexcept;

/// Sets a field that was last loaded from this node to what `text` says, and changes no byte that
/// does not belong to it. The name of a mask is taken out by an empty text. False, with nothing
/// changed, where that fails.
bool fltFieldStore(INode* node, const FltField& field, const char* text) noexcept;

/// Looks a field up, and loads and stores it, for the same edit of many nodes: in less time than
/// one by one. False, with nothing changed, where one of them fails.
bool fltFieldSet(INode* node, std::string_view key, const char* text) noexcept;

/// The value of a field of one node.
struct FltFieldValue {
    std::string text;
    bool isThere = false;  ///< the node has the field, and its data can be read; else the rest
                           ///< means nothing
    bool canSet = false;
};

/// Calls `look` for each node, with the values that its fields of those keys have, in the order of
/// the keys, in less time than loading field by field. Throws what `look` throws, and
/// `std::bad_alloc`.
void fltFieldsRead(std::span<INode* const> nodes, std::span<const std::string> keys,
                   const std::function<void(INode&, std::span<const FltFieldValue>)>& look);
