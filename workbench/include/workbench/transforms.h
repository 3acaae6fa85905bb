// Moving, turning and scaling what is selected, by numbers.
#pragma once

#include <kiln/geometry.h>
#include <kiln/interface.h>

#include <optional>
#include <vector>

namespace workbench {

/// The selected nodes that no other selected node carries along, in the order of selection.
std::vector<INode*> movedNodes(Interface& host);

/// The world place of the first of these; nothing without a selection.
std::optional<Point3> selectedPlace(Interface& host);

// Each acts on `movedNodes`, in the world. The caller opens the scope of the step.

/// Brings the first one to `place`, and the others along by the same way.
void moveSelectedTo(Interface& host, const Point3& place);
void moveSelected(Interface& host, const Point3& offset);
/// Turns each about its own place: about the world's x axis, then y, then z, in degrees.
void rotateSelected(Interface& host, const Point3& degrees);
/// Along each one's own axes. Factors other than 0.
void scaleSelected(Interface& host, const Point3& factors);

/// The nearest point of a grid with that step; the point itself for a step that is not above 0.
Point3 onGrid(const Point3& point, double step);

}  // namespace workbench
