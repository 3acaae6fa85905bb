// The fields of OpenFlight nodes by their keys: the attributes, and what no row of their table
// names.
//
// What faces and meshes look like, what only records of files hold (a group's loop, the significant
// size of a level of detail) and the names of a switch's masks have rows of the same form as the
// attributes, in a table beside theirs. No grid shows them, and no key stands in both.
//
// One caller at a time, as in `fltattr.h`. No function throws.
#pragma once

#include <fltkilnutil/fltattr.h>

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

/// Fills the field's group with the node's values; `parameter` is as for `fltAttrLoad`. False when
/// the node's data is damaged. A field that cannot be set on this node is not `visible` afterwards.
bool fltFieldLoad(INode* node, const FltField& field, std::uint32_t parameter) noexcept;

/// Sets a field that was last loaded from this node to what `text` says, and changes no byte that
/// does not belong to it. The name of a mask is taken out by an empty text. False, with nothing
/// changed, where that fails.
bool fltFieldStore(INode* node, const FltField& field, const char* text) noexcept;
