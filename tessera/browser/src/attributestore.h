// The browser's view of its nodes: what the attribute store says about a handle.
#pragma once

#include <fltkilnutil/fltattr.h>
#include <tessera/browserexports.h>

#include <optional>
#include <string>
#include <string_view>

namespace tessera {

/// The node that a handle names to the attribute store.
inline INode* nodeOf(NodeHandle handle) noexcept {
    return reinterpret_cast<INode*>(handle);
}

/// The node's OpenFlight kind, derived from its host object where nothing is stored; empty for a
/// node without a record and for no node.
std::optional<FltNodeKind> recordKind(NodeHandle handle) noexcept;

/// Whether the node is of that kind.
bool isOfKind(NodeHandle handle, FltNodeKind kind) noexcept;

/// The position of the node's icon among the tree's images, -1 for a light source of a type that
/// has none and for a record of a kind that has none.
int iconOf(NodeHandle handle) noexcept;

/// Loads the node's values into the shared attribute set of its kind and returns the set; null when
/// there is none. Every later load of a node of the same kind replaces the values.
FltAttrGroup* loadAttributes(NodeHandle handle) noexcept;

/// Stores a value for one attribute of the node that the set was last loaded from. The set holds
/// the node's values afterwards. False, with the node unchanged, when it has become one of another
/// kind and where storing fails; the set must then be loaded again.
bool storeAttribute(NodeHandle handle, FltAttrGroup& set, FltAttrDesc& attribute,
                    const std::string& value) noexcept;

/// Loads a node of the set's kind and stores a value for one of its attributes, in less time than
/// `loadAttributes` and `storeAttribute` take: for the same edit of many nodes. False, with nothing
/// changed, for a node of another kind and where that fails. The set must be loaded again before
/// its values are used.
bool editAttribute(NodeHandle handle, FltAttrGroup& set, FltAttrDesc& attribute,
                   const std::string& value) noexcept;

/// The row-th attribute of a set, null beyond the last.
FltAttrDesc* attributeAt(const FltAttrGroup& set, int row) noexcept;

bool equalIgnoringCase(std::string_view a, std::string_view b);

/// Whether two values are equal as far as a search is concerned: texts and choices without regard
/// to case, numbers by value. Values of different types are not.
bool sameValue(const FltAttrDesc& a, FltAttrType typeOfB, const char* textOfB);

}  // namespace tessera
