#include <quillon/fltbyteorder.h>
#include <quillon/fltcolornames.h>

#include <algorithm>
#include <optional>

namespace {

constexpr std::size_t kCountSize = 4, kHeadSize = 8, kEntryPlace = 4;

struct Name {
    std::span<const std::uint8_t> bytes;  ///< all of it
    std::int32_t entry = 0;

    std::string text() const {
        const auto name = bytes.subspan(kHeadSize);
        return {name.begin(), std::ranges::find(name, 0)};
    }
};

/// The names one behind the other; none for bytes that are no table.
std::optional<std::vector<Name>> namesIn(std::span<const std::uint8_t> table) {
    std::vector<Name> names;
    if (table.empty()) return names;
    if (table.size() < kCountSize) return std::nullopt;
    std::uint32_t count = 0;
    fltLoadBigEndian(table.data(), count);
    std::size_t place = kCountSize;
    for (; count > 0; --count) {
        if (table.size() - place < kHeadSize) return std::nullopt;
        std::uint16_t length = 0, entry = 0;
        fltLoadBigEndian(&table[place], length);
        fltLoadBigEndian(&table[place + kEntryPlace], entry);
        if (length < kHeadSize || length > table.size() - place) return std::nullopt;
        names.push_back({table.subspan(place, length), entry});
        place += length;
    }
    return names;
}

}  // namespace

bool FltColorNames::read(std::span<const std::uint8_t> table) {
    names_.clear();
    const auto names = namesIn(table);
    if (!names) return false;
    for (const Name& name : *names) names_.emplace(name.entry, name.text());
    return true;
}

std::string FltColorNames::of(std::int32_t entry) const {
    const auto found = names_.find(entry);
    return found == names_.end() ? std::string() : found->second;
}

std::vector<std::uint8_t> FltColorNames::with(std::span<const std::uint8_t> table,
                                              std::int32_t entry, const std::string& name) {
    std::vector<std::uint8_t> bytes(kCountSize);
    std::uint32_t count = 0;
    const auto take = [&](std::span<const std::uint8_t> one) {
        bytes.insert(bytes.end(), one.begin(), one.end());
        ++count;
    };
    std::vector<std::uint8_t> own;
    if (!name.empty()) {
        own.resize(kHeadSize + name.size() + 1);
        fltStoreBigEndian(own.data(), static_cast<std::uint16_t>(own.size()));
        fltStoreBigEndian(&own[kEntryPlace], static_cast<std::uint16_t>(entry));
        std::ranges::copy(name, own.begin() + kHeadSize);
    }
    bool isPlaced = name.empty();
    const auto names = namesIn(table).value_or(std::vector<Name>());
    for (const Name& one : names) {
        if (one.entry != entry) {
            take(one.bytes);
        } else if (!isPlaced) {
            take(own);
            isPlaced = true;
        }
    }
    if (!isPlaced) take(own);
    if (count == 0) return {};
    fltStoreBigEndian(bytes.data(), count);
    // What stands behind the names stays too.
    std::size_t end = table.empty() ? 0 : kCountSize;
    for (const Name& one : names) end += one.bytes.size();
    const auto rest = table.subspan(end);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}
