// A scene of three levels of detail.
#pragma once

#include "scene.h"

#include <quillon/fltopcode.h>
#include <string>

class LodViewerTest : public SceneTest {
protected:
    /// Three bands, 0 to 100 to 500 to 2000, each with one mesh below a group.
    void buildBands() {
        INode* const tower = add(nullptr, "tower", kFltGroup);
        nearMesh = addMesh(add(addLod(tower, "l1", 0, 100), "g1", 2), "near");
        middleMesh = addMesh(addLod(tower, "l2", 100, 500), "middle");
        farMesh = addMesh(addLod(tower, "l3", 500, 2000), "far");
        outsideMesh = addMesh(tower, "outside");
    }

    /// Which of the three meshes show, as "nmf".
    std::string shown() const {
        return std::string(nearMesh->IsHidden() ? "-" : "n") +
               (middleMesh->IsHidden() ? "-" : "m") + (farMesh->IsHidden() ? "-" : "f");
    }

    INode* nearMesh = nullptr;
    INode* middleMesh = nullptr;
    INode* farMesh = nullptr;
    INode* outsideMesh = nullptr;
};
