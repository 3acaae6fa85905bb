// Fills the browser's tree from the scene.
#pragma once

#include <tessera/browserexports.h>

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_set>
#include <vector>

class INode;
class Interface;

namespace tessera {

/// One filling. A reference to an instance lists the children of the node that holds the
/// definition; where that would never end, or grow beyond measure, it lists its own.
class BrowserFill {
public:
    explicit BrowserFill(Interface& host) : host_(host) {}

    /// Adds `node` and everything below it under `parentItem` and gives its item, null when the
    /// browser takes none.
    BrowserItem add(BrowserItem parentItem, INode* node);

private:
    /// A node to add below an item, or, without an item, a definition that has been listed.
    struct Pending {
        BrowserItem parentItem;
        INode* node;
    };

    BrowserItem addItem(const Pending& pending);
    INode* definitionOf(INode* node);
    void collectDefinitions();
    bool mayList(INode* definition);

    Interface& host_;
    std::optional<std::map<std::int16_t, INode*>> definitions_;  // collected when first needed
    std::unordered_set<INode*> listed_;  // the definitions being listed, one within the other
    std::vector<Pending> pending_;       // nodes to add, the next one last
    int expandedItems_ = 0;
};

}  // namespace tessera
