// What can be done with external references beside showing them.
//
// What all of them have in common: an action is one step of the history; it throws `Refusal` where
// it is not done, and `std::bad_alloc`, and nothing is changed then.
#pragma once

#include <xref/refusal.h>

#include <optional>
#include <string>

class INode;

namespace xref {

/// The path (UTF-8) of the file that a reference names, where there is one: found as its picture
/// in a viewport is. Throws `Refusal` for a node that is no reference.
std::optional<std::string> fileOf(INode& reference);

/// Has what a reference shows stand in the scene in its place: the reference becomes a group (an
/// object for a face) of the same name and place, and below it hang the nodes of the file, or the
/// one that the reference names, with the instance definitions that these need. Palettes that the
/// reference has taken over count for them as they are; of the others what the nodes use is found
/// or added. The names of pictures and of files that they refer to lead to where they did.
/// References among them stay references.
void makeLocal(INode& reference);

/// Writes a node and what lies below it to a file of its own and has a reference to that stand in
/// its place, which is then no longer in the file: a model is written about its own origin. The
/// file has the palettes of the database. Undoing leaves the file as it is. A file that is there
/// already is only replaced with `replaces`. Gives the name that the reference has for it, relative
/// to the database's folder.
std::string collapse(INode& node, const std::string& path, bool replaces);

}  // namespace xref
