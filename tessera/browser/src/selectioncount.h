// How many items are selected, above the tree.
#pragma once

#include "hierarchytree.h"

#include <framework/cwnd.h>

#include <cstddef>

namespace tessera {

/// A text on the upper edge of the tree's frame. It is there while several items are selected, or
/// one that lies in a closed branch: commands on what can be seen pass it over. After a search it
/// says how many were found, until the selection changes.
class SelectionCount {
public:
    SelectionCount(const framework::CWnd& form, HierarchyTree& tree) noexcept
        : form_(form), tree_(tree) {}

    /// A search has selected so many.
    void found(std::size_t count);
    /// The user has opened or closed a branch.
    void branchToggled() noexcept { known_ = false; }
    /// The tree is about to be painted: brings the text up to date.
    void update();
    /// The host speaks another language, or the frame has another place.
    void renew();

private:
    void show(const std::string& text);

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    framework::CWnd label_;
    bool known_ = false;     ///< the text is that of the marks and branches of now
    unsigned marks_ = 0;     ///< when the text was made
    unsigned branches_ = 0;  ///< the same, of the branches
    std::size_t found_ = 0;
    bool hasFound_ = false;  ///< the text is that of a search
};

}  // namespace tessera
