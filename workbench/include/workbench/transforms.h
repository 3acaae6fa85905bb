// Moving, turning and scaling what is selected.
#pragma once

#include <kiln/geometry.h>
#include <kiln/interface.h>
#include <kiln/undo.h>

#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// The selected nodes that no other selected node carries along, in the order of selection.
std::vector<INode*> movedNodes(Interface& host);

/// The first of these; null without a selection.
INode* firstMovedNode(Interface& host);

/// Its world place; nothing without a selection.
std::optional<Point3> selectedPlace(Interface& host);

/// The directions of a node's axes, at `place`; those of the world where the node's are not at
/// right angles.
Matrix3 axesAt(const Matrix3& world, const Point3& place);

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

/// The grid that places are brought to, as the user has set it.
struct GridSnap {
    bool isOn = false;
    double step = 1;  ///< above 0, in scene units
};

/// What the mouse does to `movedNodes` while it has hold of them: one step of the history when it
/// is kept, and nothing when it is not. Nodes that go meanwhile are left alone.
class TransformDrag {
public:
    /// `step` names the step.
    TransformDrag(Interface& host, std::string step);

    /// Carries a change of the world out, instead of the one before.
    void show(const Matrix3& change);
    void keep();

private:
    struct Held {
        DWORD node;
        Matrix3 start;
    };

    Interface& host_;
    const std::string step_;
    std::vector<Held> held_;
    std::optional<UndoScope> scope_;
};

}  // namespace workbench
