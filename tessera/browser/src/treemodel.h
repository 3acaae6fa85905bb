// What the browser knows of its tree without asking the control.
#pragma once

#include <tessera/browserexports.h>

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tessera {

/// One item of the tree. The links are null where there is no such item.
struct TreeItem {
    BrowserItem handle = nullptr;
    NodeHandle node = 0;
    TreeItem* parent = nullptr;
    TreeItem* firstChild = nullptr;
    TreeItem* lastChild = nullptr;
    TreeItem* next = nullptr;
    TreeItem* previous = nullptr;
    bool selected = false;
    bool found = false;         ///< by the search of the form
    int image = kUnknownImage;  ///< what the control shows, where it is known
    std::string text;
    /// The first of the children that it had before the tree was emptied and that still wait.
    TreeItem* firstWaiting = nullptr;
    unsigned generation = 0;
    std::size_t madeBehind = 0;  ///< how many items there were when it was inserted

    static constexpr int kUnknownImage = -1;
};

/// The items of a tree control with their order, node handles and selected marks.
///
/// The platform's control looks an item up at every call, in time that may grow with the size of
/// the tree; walking or counting 100,000 items through it takes seconds. The control's window
/// procedure keeps this copy up to date.
class TreeModel {
public:
    /// Adds an item as a child of `parent` (null: top level), after its sibling `after`; without
    /// one as the last child, or the first.
    TreeItem& insert(BrowserItem handle, TreeItem* parent, TreeItem* after, bool first,
                     NodeHandle node);

    /// Removes an item with everything below it.
    void remove(TreeItem& item);
    void clear();

    /// Empties the tree, but keeps its items to be put back: each waits below the parent that it
    /// had, in their order. An item that waits cannot be found.
    void keepWaiting();
    /// The first item that waits below `parent` (null: top level), or null.
    TreeItem*& firstWaiting(TreeItem* parent) { return orTop(parent)->firstWaiting; }
    /// Puts the first item that waits below `parent` back as its last child. What was below it now
    /// waits below it.
    TreeItem& putBack(TreeItem* parent);
    /// Deletes the first item that waits below `parent`, with everything below it.
    void dropWaiting(TreeItem* parent) noexcept;

    /// Null for a handle that is not in the tree.
    TreeItem* find(BrowserItem handle);

    /// The first top-level item, or null.
    TreeItem* first() { return top_.firstChild; }
    /// The last child of `parent` (null: top level), or null.
    TreeItem* last(TreeItem* parent) { return orTop(parent)->lastChild; }
    std::size_t size() const noexcept { return size_; }
    /// Another number after items have come, gone or got another text or image.
    unsigned changes() const noexcept { return changes_; }
    void noteChange() noexcept { ++changes_; }
    bool hasWaiting() const noexcept { return items_.size() > size_; }
    /// How many items wait, and how many there are with those that do.
    std::size_t waiting() const noexcept { return items_.size() - size_; }
    std::size_t allItems() const noexcept { return items_.size(); }
    /// All items, also those that wait, children before their parents. The model is empty
    /// afterwards.
    std::vector<BrowserItem> release();

    void setSelected(TreeItem& item, bool selected);
    /// Another number after selected items have become others.
    unsigned marks() const noexcept { return marks_; }
    std::size_t selectedCount() const noexcept { return selected_.size(); }
    /// The selected items, in no particular order.
    std::vector<TreeItem*> selected() const { return {selected_.begin(), selected_.end()}; }

    /// The item after `item` when parents come before their children; null at the end. Within
    /// `below` only, when given: null once everything below it has been seen.
    static TreeItem* following(const TreeItem& item, const TreeItem* below = nullptr);

    /// The same, leaving out what is below `item`.
    static TreeItem* skipping(const TreeItem& item, const TreeItem* below = nullptr);

    /// How many items `item` and everything below it are.
    static std::size_t sizeOf(const TreeItem& item);

    /// `item` and everything below it, children before their parents.
    static std::vector<TreeItem*> bottomUp(TreeItem& item);

    /// Whether `item` is `ancestor` or lies below it.
    static bool isWithin(const TreeItem& item, const TreeItem& ancestor);

    /// Every item above one of `items`, each once, children before their parents.
    static std::vector<TreeItem*> ancestorsBottomUp(const std::vector<TreeItem*>& items);

private:
    TreeItem* orTop(TreeItem* parent) { return parent ? parent : &top_; }
    void link(TreeItem& item, TreeItem* parent, TreeItem* previous);

    TreeItem top_;  ///< the parent of the top level; no caller sees it
    std::unordered_map<BrowserItem, TreeItem> items_;
    std::size_t size_ = 0;  ///< without those that wait
    unsigned generation_ = 0;
    unsigned changes_ = 0;
    unsigned marks_ = 0;
    std::unordered_set<TreeItem*> selected_;
};

}  // namespace tessera
