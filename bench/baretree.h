// The measure: a plain tree control with the same contents, used as well as a plain user can.
#pragma once

#include "measure.h"
#include "sampletree.h"

#include <memory>
#include <vector>

namespace bench {

class BareTree {
public:
    /// A control with the size, styles and images of `model`.
    explicit BareTree(HWND model);
    ~BareTree();
    BareTree(const BareTree&) = delete;
    BareTree& operator=(const BareTree&) = delete;

    Cost fill(const SampleTree& nodes);
    /// Every branch, children before their parents, which is the fast order.
    Cost expandAll(const SampleTree& nodes);
    Cost collapseAll(const SampleTree& nodes);
    Cost clear();
    Cost deleteChildren();

private:
    Cost measure(const std::function<void()>& work);
    void sendBottomUp(const SampleTree& nodes, WPARAM code);

    HWND frame_;
    HWND tree_;
    std::vector<HTREEITEM> items_;
    std::unique_ptr<PaintCounter> paints_;
};

}  // namespace bench
