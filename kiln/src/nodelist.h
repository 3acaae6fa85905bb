// An ordered list of nodes for parents with very many children.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kiln {

class Node;

/// A run of consecutive nodes of a list.
struct NodeBlock {
    NodeBlock* previous = nullptr;
    NodeBlock* next = nullptr;
    std::vector<Node*> nodes;
};

/// Nodes in the order they were appended, of which any may be taken out.
///
/// The nodes lie in blocks of bounded size, and each node knows its block through the member `Hook`
/// (null while it is in no list). Taking a node out and finding its index therefore do not shift or
/// search the whole list, and walking the indices in order costs constant time per step. The list
/// does not own the nodes.
template <auto Hook>
class NodeList {
public:
    NodeList() = default;
    ~NodeList() { freeBlocks(); }
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;

    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }

    /// Makes room for one more node, so that appending it, after taking out others but the last,
    /// cannot fail.
    void makeRoom() {
        if (!tail_ || tail_->nodes.size() == kBlockSize) linkBlock();
        auto& nodes = tail_->nodes;
        if (nodes.size() == nodes.capacity())
            nodes.reserve(std::clamp<std::size_t>(nodes.size() * 2, 1, kBlockSize));
    }

    void append(Node* node) {
        makeRoom();
        tail_->nodes.push_back(node);
        node->*Hook = tail_;
        ++count_;
    }

    /// Takes `node`, which is in this list, out.
    void remove(Node* node) noexcept {
        NodeBlock* const block = node->*Hook;
        block->nodes.erase(std::find(block->nodes.begin(), block->nodes.end(), node));
        node->*Hook = nullptr;
        --count_;
        if (block != cursor_) cursor_ = nullptr;
        if (block->nodes.empty())
            unlink(block);
        else
            mergeWithNext(block);
    }

    /// Takes all nodes out.
    void clear() noexcept {
        for (NodeBlock* block = head_; block; block = block->next)
            for (Node* const node : block->nodes) node->*Hook = nullptr;
        freeBlocks();
    }

    /// The node at `index`, which is below `size()`.
    Node* at(std::size_t index) const noexcept {
        seek(index);
        return cursor_->nodes[index - cursorStart_];
    }

    /// The index of `node`, which is in this list.
    std::size_t indexOf(const Node* node) const noexcept {
        const NodeBlock* const holder = node->*Hook;
        std::size_t start = 0;
        for (const NodeBlock* block = head_; block != holder; block = block->next)
            start += block->nodes.size();
        const auto& nodes = holder->nodes;
        return start + static_cast<std::size_t>(std::find(nodes.begin(), nodes.end(), node) -
                                                nodes.begin());
    }

    /// Calls `visit(Node*)` for each node in order; the list must not change meanwhile.
    template <typename Visit>
    void forEach(Visit&& visit) const {
        for (const NodeBlock* block = head_; block; block = block->next)
            for (Node* const node : block->nodes) visit(node);
    }

private:
    static constexpr std::size_t kBlockSize = 256;

    void freeBlocks() noexcept {
        for (const NodeBlock* block = head_; block;) {
            const NodeBlock* const done = block;
            block = block->next;
            delete done;
        }
        head_ = tail_ = cursor_ = nullptr;
        count_ = 0;
    }

    void linkBlock() {
        auto* const block = new NodeBlock;
        block->previous = tail_;
        (tail_ ? tail_->next : head_) = block;
        tail_ = block;
    }

    void unlink(NodeBlock* block) noexcept {
        (block->previous ? block->previous->next : head_) = block->next;
        (block->next ? block->next->previous : tail_) = block->previous;
        if (cursor_ == block) cursor_ = nullptr;
        delete block;
    }

    // Keeps the number of blocks in proportion to the number of nodes. The block's own room
    // suffices or the merge is left for later: taking a node out never fails.
    void mergeWithNext(NodeBlock* block) noexcept {
        NodeBlock* const next = block->next;
        if (!next || block->nodes.size() + next->nodes.size() > block->nodes.capacity() ||
            block->nodes.size() + next->nodes.size() > kBlockSize / 2)
            return;
        for (Node* const node : next->nodes) {
            block->nodes.push_back(node);
            node->*Hook = block;
        }
        unlink(next);
    }

    // Moves the cursor to the block that holds `index`, from where it is, or from the nearer end.
    void seek(std::size_t index) const noexcept {
        if (!cursor_ || index < cursorStart_ / 2) {
            cursor_ = head_;
            cursorStart_ = 0;
        }
        if (index > cursorStart_ && count_ - index < index - cursorStart_) {
            cursor_ = tail_;
            cursorStart_ = count_ - tail_->nodes.size();
        }
        while (index < cursorStart_) {
            cursor_ = cursor_->previous;
            cursorStart_ -= cursor_->nodes.size();
        }
        while (index >= cursorStart_ + cursor_->nodes.size()) {
            cursorStart_ += cursor_->nodes.size();
            cursor_ = cursor_->next;
        }
    }

    NodeBlock* head_ = nullptr;
    NodeBlock* tail_ = nullptr;
    std::size_t count_ = 0;
    mutable NodeBlock* cursor_ = nullptr;  // the block last looked into
    mutable std::size_t cursorStart_ = 0;  // the index of its first node
};

}  // namespace kiln
