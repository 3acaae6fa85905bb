// How the steps of the history are called.
#pragma once

#include <kiln/host/history.h>

#include <cstddef>
#include <string>

namespace workbench {

/// The name of a step, also of one that nobody has named.
std::string stepText(const kiln::History& history, std::size_t step);
/// The menu's entries with their keys: "Undo Edit Attribute", or only "Undo" when there is nothing
/// to undo.
std::string undoEntry(const kiln::History& history);
std::string redoEntry(const kiln::History& history);

}  // namespace workbench
