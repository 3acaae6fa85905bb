#include "names.h"

#include <algorithm>
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
    links = {};
    links.hash = TextHash{}(node->name());
    if (Node* const first = find(node->name(), links.hash)) {
        Node*& last = first->nameLinks().last;
        links.previous = last;
        last->nameLinks().next = node;
        last = node;
        return;
    }
    reserve();
    links.last = node;
    links.nextInBucket = std::exchange(bucket(links.hash), node);
    ++names_;
}

bool NameIndex::remove(Node* node) noexcept {
    const NameLinks links = std::exchange(node->nameLinks(), NameLinks());
    if (links.previous) {
        links.previous->nameLinks().next = links.next;
        if (links.next) {
            links.next->nameLinks().previous = links.previous;
        } else {
            Node* const first = find(node->name(), links.hash);
            first->nameLinks().last = links.previous;
        }
        return false;
    }
    Node** link = &bucket(links.hash);
    while (*link != node) link = &(*link)->nameLinks().nextInBucket;
    *link = links.nextInBucket;
    if (!links.next) {
        --names_;
        return true;
    }
    NameLinks& heir = links.next->nameLinks();
    heir.previous = nullptr;
    heir.last = links.last;
    heir.nextInBucket = std::exchange(*link, links.next);
    return false;
}

Node* NameIndex::find(std::string_view name) const noexcept {
    return find(name, TextHash{}(name));
}

Node* NameIndex::find(std::string_view name, std::size_t hash) const noexcept {
    if (buckets_.empty()) return nullptr;
    Node* node = buckets_[hash & (buckets_.size() - 1)];
    while (node && (node->nameLinks().hash != hash || node->name() != name))
        node = node->nameLinks().nextInBucket;
    return node;
}

void NameIndex::enlarge() {
    constexpr std::size_t kFewest = 64;
    std::vector<Node*> before(std::max(kFewest, 2 * buckets_.size()));
    before.swap(buckets_);
    for (Node* node : before) {
        while (node) {
            NameLinks& links = node->nameLinks();
            Node* const next = links.nextInBucket;
            links.nextInBucket = std::exchange(bucket(links.hash), node);
            node = next;
        }
    }
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
    if (added_.contains(name) || given_.contains(name)) return true;
    return registry_ && registry_->sceneNames && registry_->sceneNames->contains(name);
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
