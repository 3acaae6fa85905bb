#include "names.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <utility>

#include "node.h"

NameMaker::~NameMaker() = default;

namespace kiln {

namespace {

constexpr std::size_t kDigits = 3;

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

std::string numberText(std::uint64_t number) {
    std::string digits = std::to_string(number);
    if (digits.size() < kDigits) digits.insert(0, kDigits - digits.size(), '0');
    return digits;
}

std::size_t lengthWithoutDigits(std::string_view name) noexcept {
    std::size_t length = name.size();
    while (length > 0 && isDigit(name[length - 1])) --length;
    return length;
}

}  // namespace

void NameIndex::add(Node* node) {
    NameLinks& links = node->nameLinks();
    const std::uint32_t hash = hashOf(node->name());
    if (Node* const first = find(node->name(), hash)) {
        Node*& last = first->nameLinks().previous;
        links = {last, nullptr};
        last->nameLinks().next = node;
        last = node;
        return;
    }
    reserve();
    links = {node, nullptr};
    put({hash, node->GetHandle()});
    ++names_;
}

void NameIndex::insert(Node* node, Node* behind) noexcept {
    if (!behind) return add(node);
    NameLinks& next = behind->nameLinks();
    node->nameLinks() = {next.previous, behind};
    const bool isFirst = next.previous == behind || next.previous->nameLinks().next == nullptr;
    if (isFirst)
        at(placeOf(behind)).handle = node->GetHandle();
    else
        next.previous->nameLinks().next = node;
    next.previous = node;
}

bool NameIndex::remove(Node* node) noexcept {
    const NameLinks links = std::exchange(node->nameLinks(), {nullptr, node->nameLinks().next});
    const bool isFirst = links.previous == node || links.previous->nameLinks().next == nullptr;
    if (!isFirst) {
        Node* const behind = links.next ? links.next : find(node->name());
        behind->nameLinks().previous = links.previous;
        links.previous->nameLinks().next = links.next;
        return false;
    }
    const std::size_t place = placeOf(node);
    if (!links.next) {
        empty(place);
        --names_;
        return true;
    }
    at(place).handle = links.next->GetHandle();
    links.next->nameLinks().previous = links.previous;
    return false;
}

std::uint32_t NameIndex::hashOf(std::string_view name) noexcept {
    const std::size_t stem = name.size() < 2 ? 0 : name.size() - 2;
    const std::size_t hash = TextHash{}(name.substr(0, stem));
    // Another order in each group, lest names that all end alike begin in one slot.
    std::size_t inGroup = hash >> 32;
    for (const char c : name.substr(stem)) inGroup = 10 * inGroup + static_cast<unsigned char>(c);
    return static_cast<std::uint32_t>(hash * kGroup | inGroup % kGroup);
}

Node* NameIndex::find(std::string_view name, std::uint32_t hash) const noexcept {
    if (slots_.empty()) return nullptr;
    for (std::size_t i = firstPlace(hash); at(i).handle != 0; i = next(i)) {
        if (at(i).hash != hash) continue;
        Node* const node = nodes_.find(at(i).handle);
        if (node->name() == name) return node;
    }
    return nullptr;
}

/// Where the first node of its name stands.
std::size_t NameIndex::placeOf(const Node* first) const noexcept {
    std::size_t i = firstPlace(hashOf(first->name()));
    while (at(i).handle != first->GetHandle()) i = next(i);
    return i;
}

void NameIndex::put(Slot slot) noexcept {
    std::size_t i = firstPlace(slot.hash);
    while (at(i).handle != 0) i = next(i);
    at(i) = slot;
}

/// Empties a place, and moves up those behind it that had found it taken.
void NameIndex::empty(std::size_t place) noexcept {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = next(place); at(i).handle != 0; i = next(i)) {
        const std::size_t way = (i - firstPlace(at(i).hash)) & mask;
        if (way < ((i - place) & mask)) continue;
        at(place) = at(i);
        place = i;
    }
    at(place) = {};
}

void NameIndex::enlarge() {
    constexpr std::size_t kFewest = std::size_t{2} * kGroup;
    std::vector<Slot> before(std::max(kFewest, 2 * slots_.size()));
    before.swap(slots_);
    groupBits_ = std::countr_zero(groups());
    for (const Slot& slot : before)
        if (slot.handle != 0) put(slot);
}

void MakerRegistry::nameFreed(std::string_view name) noexcept {
    for (SceneNameMaker* const maker : makers) maker->nameFreed(name);
}

void MakerRegistry::sceneReplaced(const NameIndex* names) noexcept {
    sceneNames = names;
    for (SceneNameMaker* const maker : makers) maker->sceneReplaced();
}

SceneNameMaker::SceneNameMaker(std::shared_ptr<MakerRegistry> registry)
    : registry_(std::move(registry)) {
    if (registry_) registry_->makers.push_back(this);
}

SceneNameMaker::~SceneNameMaker() {
    if (registry_) std::erase(registry_->makers, this);
}

bool SceneNameMaker::taken(std::string_view name) const noexcept {
    if (registry_ && registry_->sceneNames && registry_->sceneNames->contains(name)) return true;
    return added_.contains(name) || given_.contains(name);
}

std::string SceneNameMaker::numbered(const std::string& base) {
    std::uint64_t& next = nextNumber_.try_emplace(base, 1).first->second;
    std::string name;
    do {
        name = base + numberText(next++);
    } while (taken(name));
    given_.insert(name);
    return name;
}

void SceneNameMaker::MakeUniqueName(CStr& name) {
    if (!taken(name.str())) {
        given_.insert(name.str());
        return;
    }
    name = CStr(numbered(name.str().substr(0, lengthWithoutDigits(name.str()))));
}

void SceneNameMaker::AddName(const char* name) {
    added_.emplace(name ? name : "");
}

bool SceneNameMaker::NameExists(const char* name) const {
    return taken(name ? name : "");
}

void SceneNameMaker::nameFreed(std::string_view name) noexcept {
    if (const auto given = given_.find(name); given != given_.end()) given_.erase(given);
    // "g0012" is number 12 of base "g0", but no number of base "g": numbers are padded to three
    // digits and no further.
    const std::size_t stem = lengthWithoutDigits(name);
    for (std::size_t at = stem; at + kDigits <= name.size(); ++at) {
        const std::string_view digits = name.substr(at);
        if (digits.size() > kDigits && digits.front() == '0') continue;
        const auto next = nextNumber_.find(name.substr(0, at));
        if (next == nextNumber_.end()) continue;
        std::uint64_t number = 0;
        const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (parsed.ec == std::errc() && number > 0) next->second = std::min(next->second, number);
    }
}

void SceneNameMaker::sceneReplaced() noexcept {
    given_.clear();
    nextNumber_.clear();
}

}  // namespace kiln
