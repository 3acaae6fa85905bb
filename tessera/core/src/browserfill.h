// Fills the browser's tree from the scene.
#pragma once

#include <fltkilnutil/fltdefinitions.h>
#include <tessera/browserexports.h>

#include <unordered_set>
#include <vector>

class INode;

namespace tessera {

/// Fills the tree once. A reference to an instance lists the children of the node that holds the
/// definition; where that would never end, or the tree would become too large, it lists its own.
class BrowserFill {
public:
    /// Adds `node` and everything below it under `parentItem` and returns its item, null when the
    /// browser adds none.
    BrowserItem add(BrowserItem parentItem, INode* node);

private:
    /// A node to add below an item, or, without an item, a definition that has been listed.
    struct Pending {
        BrowserItem parentItem;
        INode* node;
    };

    /// A reference that has its item, and the definition that it names.
    struct Reference {
        BrowserItem item;
        INode* node;
        INode* definition;
    };

    BrowserItem addScene(const Pending& top);
    void addBelow(const Reference& reference);
    void pushChildren(const Reference& reference);
    bool mayList(INode* definition);

    FltDefinitions definitions_;
    std::unordered_set<INode*> listed_;  // the definitions being listed, one within the other
    std::vector<Reference> references_;  // whose children wait for those of the scene
    std::vector<Pending> pending_;       // nodes to add below a reference, the next one last
    int expandedItems_ = 0;
};

}  // namespace tessera
