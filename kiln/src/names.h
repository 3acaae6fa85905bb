// Who has which name, and the makers of new ones.
#pragma once

#include <kiln/namemaker.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kiln {

class Node;

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};
template <typename Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;
using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

/// A node's place among those of the same name, of which the first stands in the index.
struct NameLinks {
    Node* previous = nullptr;
    Node* next = nullptr;
    Node* last = nullptr;          ///< of the first: the last one of the same name
    Node* nextInBucket = nullptr;  ///< of the first: the first of another name
    std::size_t hash = 0;          ///< of the name
};

/// The nodes of a scene by name. Constant time, also for names that very many nodes share. The
/// chains go through the nodes, so that a node costs no more than its links.
class NameIndex {
public:
    /// Makes room for one more node; adding it then cannot fail.
    void reserve() {
        if (names_ == buckets_.size()) enlarge();
    }
    void add(Node* node);
    /// Takes `node` out, which has had its name since it was added; gives whether it was the last
    /// with that name.
    bool remove(Node* node) noexcept;
    /// The node that has had `name` longest, or null.
    Node* find(std::string_view name) const noexcept;
    bool contains(std::string_view name) const noexcept { return find(name) != nullptr; }

private:
    Node* find(std::string_view name, std::size_t hash) const noexcept;
    Node*& bucket(std::size_t hash) noexcept { return buckets_[hash & (buckets_.size() - 1)]; }
    void enlarge();

    std::vector<Node*> buckets_;  // a power of two, or none
    std::size_t names_ = 0;
};

class SceneNameMaker;

/// What all makers have in common. A plug-in keeps its maker while hosts come and go, so it belongs
/// to no host, and it lives as long as the last maker.
struct MakerRegistry {
    const NameIndex* sceneNames = nullptr;  ///< of the present scene; null without one
    std::vector<SceneNameMaker*> makers;

    /// The last node named `name` was renamed or deleted.
    void nameFreed(std::string_view name) noexcept;
    /// The scene was emptied or replaced, by one with `names`.
    void sceneReplaced(const NameIndex* names) noexcept;
};

class SceneNameMaker final : public NameMaker {
public:
    /// `registry` null makes a maker that knows no scene.
    explicit SceneNameMaker(std::shared_ptr<MakerRegistry> registry);
    ~SceneNameMaker() override;

    void MakeUniqueName(CStr& name) override;
    void AddName(const char* name) override;
    bool NameExists(const char* name) const override;

    /// `base` with the smallest number that makes it free.
    std::string numbered(const std::string& base);
    void nameFreed(std::string_view name) noexcept;
    void sceneReplaced() noexcept;

private:
    bool taken(std::string_view name) const noexcept;

    std::shared_ptr<MakerRegistry> registry_;
    TextSet added_;
    TextSet given_;
    TextMap<std::uint64_t> nextNumber_;  // by base: every smaller number is taken
};

}  // namespace kiln
