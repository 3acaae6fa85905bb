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

#include "nodetables.h"

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
    Node* previous = nullptr;  ///< of the first: the last one
    Node* next = nullptr;      ///< null for the last
};

/// The nodes of a scene by name. Constant time, also for names that very many nodes share. The
/// index knows nodes by hash and handle, so that a look for a name that nobody has touches no node.
class NameIndex {
public:
    /// `nodes` has every node of the index while it is in it, and outlives the index.
    explicit NameIndex(const HandleTable& nodes) noexcept : nodes_(nodes) {}

    /// Makes room for one more node; adding it then cannot fail.
    void reserve() {
        if (2 * (names_ + 1) > slots_.size()) enlarge();
    }
    void add(Node* node);
    /// Adds `node` again, before `behind` (null: as the last) of those that have its name, when the
    /// index was at least as large before.
    void insert(Node* node, Node* behind) noexcept;
    /// Takes `node` out, which has had its name since it was added; returns whether it was the last
    /// with that name. The next of those with the same name stays in its links.
    bool remove(Node* node) noexcept;
    /// The node that has had `name` longest, or null.
    Node* find(std::string_view name) const noexcept { return find(name, hashOf(name)); }
    bool contains(std::string_view name) const noexcept { return find(name) != nullptr; }

private:
    /// What the index knows of the first node of a name; handle 0 is nobody's.
    struct Slot {
        std::uint32_t hash = 0;
        DWORD handle = 0;
    };
    // Open addressing, with one place tried after the other. Neighbouring places are not
    // neighbours in memory: the slots lie in groups, and places are counted through the first slots
    // of all groups, then through the second ones, and so on. Names that differ in nothing but
    // their last two characters begin in the same group. Most names of a scene are numbered and
    // come one after the other, so that their group is mostly at hand.
    static constexpr std::uint32_t kGroup = 128;

    static std::uint32_t hashOf(std::string_view name) noexcept;
    std::size_t groups() const noexcept { return slots_.size() / kGroup; }
    std::size_t firstPlace(std::uint32_t hash) const noexcept {
        return hash % kGroup * groups() + (hash / kGroup & (groups() - 1));
    }
    std::size_t next(std::size_t place) const noexcept { return (place + 1) & (slots_.size() - 1); }
    std::size_t slotOf(std::size_t place) const noexcept {
        return (place & (groups() - 1)) * kGroup + (place >> groupBits_);
    }
    Slot& at(std::size_t place) noexcept { return slots_[slotOf(place)]; }
    const Slot& at(std::size_t place) const noexcept { return slots_[slotOf(place)]; }

    Node* find(std::string_view name, std::uint32_t hash) const noexcept;
    std::size_t placeOf(const Node* first) const noexcept;
    void put(Slot slot) noexcept;
    void empty(std::size_t place) noexcept;
    void enlarge();

    const HandleTable& nodes_;
    std::vector<Slot> slots_;  // a power of two, or none
    std::size_t names_ = 0;
    int groupBits_ = 0;  // the number of groups as a power of two
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
