#include "ownedit.h"

#include <fltkilnutil/kilnflt.h>
#include <kiln/subtree.h>
#include <tessera/browserexports.h>

namespace tessera {

namespace {

/// While it is set, scene changes are our own, and the browser shows them already.
bool sceneChangesSuppressed = false;
/// Whether there were any.
bool hasChangedScene = false;

bool isOfKind(INode* node, FltNodeKind kind) {
    FltNodeKind stored;
    return fltGetKind(node, false, stored) && stored == kind;
}

}  // namespace

OwnEdit::OwnEdit(bool concernsOtherItems) noexcept : concernsOtherItems_(concernsOtherItems) {
    hasChangedScene = false;
    sceneChangesSuppressed = true;
}

OwnEdit::~OwnEdit() {
    sceneChangesSuppressed = false;
    if (concernsOtherItems_ && hasChangedScene) zufltguirefresh();
}

bool OwnEdit::takes() noexcept {
    if (sceneChangesSuppressed) hasChangedScene = true;
    return sceneChangesSuppressed;
}

void OwnEdit::reset() noexcept {
    sceneChangesSuppressed = false;
}

bool holdsDefinition(INode* top) {
    return !ForEachInSubtree(top, [](INode& node) {
        return isOfKind(&node, FltNodeKind::InstanceDef) ? WalkStep::kEnd : WalkStep::kOn;
    });
}

bool isReference(INode* node) {
    return isOfKind(node, FltNodeKind::InstanceRef);
}

}  // namespace tessera
