// What the edit menu does to the scene. Redrawing is the caller's.
#pragma once

#include <kiln/interface.h>

#include <span>

namespace workbench {

/// Adds all of `shown` to the selection.
void selectAll(Interface& host, std::span<INode* const> shown);
/// Selects those of `shown` that are not selected, and the other way round.
void invertSelection(Interface& host, std::span<INode* const> shown);
/// Hides what is selected, and selects nothing.
void hideSelected(Interface& host);
/// Hides all of `shown` but lights, what is selected, and what is above and below that.
void isolateSelected(Interface& host, std::span<INode* const> shown);
void unhideAll(Interface& host);
/// Makes a group of what is selected, and selects its head.
void groupSelected(Interface& host);
/// Dissolves the groups whose heads are selected.
void ungroupSelected(Interface& host);
/// Deletes the nodes and all below them; one may stand below another.
void deleteNodes(Interface& host, std::span<INode* const> nodes);

}  // namespace workbench
