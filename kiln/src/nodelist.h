// An ordered list of nodes for parents with very many children.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace kiln {

class Node;

/// A run of consecutive nodes of a list.
struct NodeBlock {
    NodeBlock* previous = nullptr;
    NodeBlock* next = nullptr;
    std::size_t expected = 0;  ///< nodes that were taken out and may come back to their places
    std::vector<Node*> nodes;
};

/// A node's place in a list.
struct PlaceInList {
    NodeBlock* block = nullptr;
    std::size_t index = 0;  ///< in the block
};

/// Nodes in the order they were appended, of which any may be taken out.
///
/// The nodes lie in blocks of bounded size, and each node knows its block through the member `Hook`
/// (null while it is in no list). Taking a node out and finding its index therefore do not shift or
/// search the whole list, and walking the indices in order costs constant time per step. The list
/// does not own the nodes. An empty one is a single null: most nodes have no children.
///
/// A node may also be taken out so that it can come back to its place, without taking memory, once
/// everything else in the list is as it was then. The blocks of such places stay.
template <auto Hook>
class NodeList {
public:
    NodeList() = default;
    ~NodeList() { freeBlocks(); }
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;

    std::size_t size() const noexcept { return blocks_ ? blocks_->count : 0; }
    bool empty() const noexcept { return size() == 0; }

    /// Makes room for one more node, so that appending it, after taking out others but the last,
    /// cannot fail.
    void makeRoom() {
        if (!blocks_) blocks_ = std::make_unique<Blocks>();
        if (!blocks_->tail || blocks_->tail->nodes.size() == kBlockSize) linkBlock();
        auto& nodes = blocks_->tail->nodes;
        if (nodes.size() == nodes.capacity())
            nodes.reserve(std::clamp<std::size_t>(nodes.size() * 2, 1, kBlockSize));
    }

    void append(Node* node) {
        makeRoom();
        blocks_->tail->nodes.push_back(node);
        node->*Hook = blocks_->tail;
        ++blocks_->count;
    }

    /// Takes `node`, which is in this list, out.
    void remove(Node* node) noexcept {
        NodeBlock* const block = node->*Hook;
        takeOut(node);
        if (block->expected > 0) return;
        if (block->nodes.empty())
            unlink(block);
        else
            mergeWithNext(block);
    }

    /// Takes `node`, which is in this list, out of its place, which is kept for it.
    PlaceInList leave(Node* node) noexcept {
        NodeBlock* const block = node->*Hook;
        ++block->expected;
        return {block, takeOut(node)};
    }
    /// Puts `node` into the place that is kept for it.
    void comeBack(Node* node, const PlaceInList& place) noexcept {
        place.block->nodes.insert(
            place.block->nodes.begin() + static_cast<std::ptrdiff_t>(place.index), node);
        node->*Hook = place.block;
        --place.block->expected;
        ++blocks_->count;
        if (place.block != blocks_->cursor) blocks_->cursor = nullptr;
    }
    /// Keeps a place no longer.
    void giveUp(const PlaceInList& place) noexcept {
        if (--place.block->expected == 0 && place.block->nodes.empty()) unlink(place.block);
    }

    /// Takes all nodes out.
    void clear() noexcept {
        forEach([](Node* node) { node->*Hook = nullptr; });
        freeBlocks();
    }

    /// The node at `index`, which is below `size()`.
    Node* at(std::size_t index) const noexcept {
        blocks_->seek(index);
        return blocks_->cursor->nodes[index - blocks_->cursorStart];
    }
    /// The last node of a list that is not empty.
    Node* back() const noexcept {
        const NodeBlock* block = blocks_->tail;
        while (block->nodes.empty()) block = block->previous;
        return block->nodes.back();
    }

    /// The index of `node`, which is in this list.
    std::size_t indexOf(const Node* node) const noexcept {
        const NodeBlock* const holder = node->*Hook;
        std::size_t start = 0;
        for (const NodeBlock* block = blocks_->head; block != holder; block = block->next)
            start += block->nodes.size();
        const auto& nodes = holder->nodes;
        return start + static_cast<std::size_t>(std::find(nodes.begin(), nodes.end(), node) -
                                                nodes.begin());
    }

    /// Calls `visit(Node*)` for each node in order; the list must not change meanwhile.
    template <typename Visit>
    void forEach(Visit&& visit) const {
        for (const NodeBlock* block = blocks_ ? blocks_->head : nullptr; block; block = block->next)
            for (Node* const node : block->nodes) visit(node);
    }

private:
    static constexpr std::size_t kBlockSize = 256;

    struct Blocks {
        NodeBlock* head = nullptr;
        NodeBlock* tail = nullptr;
        std::size_t count = 0;        // of nodes
        NodeBlock* cursor = nullptr;  // the block last looked into
        std::size_t cursorStart = 0;  // the index of its first node

        // Moves the cursor to the block that holds `index`, from where it is, or from the nearer
        // end.
        void seek(std::size_t index) noexcept {
            if (!cursor || index < cursorStart / 2) {
                cursor = head;
                cursorStart = 0;
            }
            if (index > cursorStart && count - index < index - cursorStart) {
                cursor = tail;
                cursorStart = count - tail->nodes.size();
            }
            while (index < cursorStart) {
                cursor = cursor->previous;
                cursorStart -= cursor->nodes.size();
            }
            while (index >= cursorStart + cursor->nodes.size()) {
                cursorStart += cursor->nodes.size();
                cursor = cursor->next;
            }
        }
    };

    /// Returns the index that the node had in its block.
    std::size_t takeOut(Node* node) noexcept {
        NodeBlock* const block = node->*Hook;
        const auto found = std::find(block->nodes.begin(), block->nodes.end(), node);
        const auto index = static_cast<std::size_t>(found - block->nodes.begin());
        block->nodes.erase(found);
        node->*Hook = nullptr;
        --blocks_->count;
        if (block != blocks_->cursor) blocks_->cursor = nullptr;
        return index;
    }

    void freeBlocks() noexcept {
        for (const NodeBlock* block = blocks_ ? blocks_->head : nullptr; block;) {
            const NodeBlock* const done = block;
            block = block->next;
            delete done;
        }
        blocks_.reset();
    }

    void linkBlock() {
        auto* const block = new NodeBlock;
        block->previous = blocks_->tail;
        (blocks_->tail ? blocks_->tail->next : blocks_->head) = block;
        blocks_->tail = block;
    }

    void unlink(NodeBlock* block) noexcept {
        (block->previous ? block->previous->next : blocks_->head) = block->next;
        (block->next ? block->next->previous : blocks_->tail) = block->previous;
        if (blocks_->cursor == block) blocks_->cursor = nullptr;
        delete block;
    }

    // Keeps the number of blocks in proportion to the number of nodes. The block's own room
    // suffices or the merge is left for later: taking a node out never fails.
    void mergeWithNext(NodeBlock* block) noexcept {
        NodeBlock* const next = block->next;
        if (!next || next->expected > 0 ||
            block->nodes.size() + next->nodes.size() > block->nodes.capacity() ||
            block->nodes.size() + next->nodes.size() > kBlockSize / 2)
            return;
        for (Node* const node : next->nodes) {
            block->nodes.push_back(node);
            node->*Hook = block;
        }
        unlink(next);
    }

    std::unique_ptr<Blocks> blocks_;  // null: empty, though an empty list may keep them
};

}  // namespace kiln
