// The scenes that the browser is measured with.
#pragma once

#include <string>
#include <vector>

class INode;

namespace bench {

/// One node of a scene, as the browser's client knows it and as a plain user of a tree control
/// would.
struct SampleNode {
    INode* node;
    int parent;  ///< its place in the list, before this one; -1 for the root
    std::string name;
    std::wstring wideName;
    int image;
    bool hasChildren;
};
using SampleTree = std::vector<SampleNode>;

/// Groups with groups, objects and faces below them, `childCount` to each, `count` nodes in all.
/// Parents come before their children. The nodes belong to the core's scene.
SampleTree makeSampleTree(int count, int childCount);

/// A root with that many groups, each with that many objects and faces.
SampleTree makeBranches(int branchCount, int leafCount);

}  // namespace bench
