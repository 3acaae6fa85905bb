#include <palettes/look.h>

#include "showing.h"
#include "step.h"

#include <fltkilnutil/attrtext.h>
#include <fltkilnutil/indexedcolor.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltmesh.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <memory>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace palettes {

namespace {

constexpr char kColorKey[] = "FltColor", kAltColorKey[] = "FltAltColor",
               kPackedKey[] = "FltPackedColors", kNoColorKey[] = "FltNoColor",
               kNoAltColorKey[] = "FltNoAltColor", kTextureKey[] = "FltTexture";
constexpr std::string_view kMaskName = "FltSwitchMaskName";
constexpr double kClear = 65535;

// ---------------------------------------------------------------- the rows

enum class Sort : std::uint8_t { kOther, kColor, kAlternate };

/// Rows of fields of the attribute table are called what that calls them.
constexpr CoreText kCaptionOfTable{};

struct RowTemplate {
    CoreText caption;
    std::vector<std::string> keys;
    LookPart part = LookPart::kWhole;
    std::optional<Palette> palette = {};
    Sort sort = Sort::kOther;
    std::string number = {};  ///< in the caption
};

/// Those that a kind of nodes has or has not; the names of masks are no two switches' same.
std::vector<RowTemplate> fixedRows() {
    using enum CoreText;
    using Part = LookPart;
    const std::vector<std::string> packed{"FltColorRed", "FltColorGreen", "FltColorBlue"},
        packedAlternate{"FltAltColorRed", "FltAltColorGreen", "FltAltColorBlue"};
    std::vector<RowTemplate> rows{
        {kColorEntry, {kColorKey}, Part::kEntry, Palette::kColor, Sort::kColor},
        {kColorIntensity, {kColorKey}, Part::kIntensity, {}, Sort::kColor},
        {kPackedColor, packed, Part::kWhole, {}, Sort::kColor},
        {kPackedAlpha, {"FltColorAlpha"}, Part::kWhole, {}, Sort::kColor},
        {kNoColorField, {kNoColorKey}, Part::kWhole, {}, Sort::kColor},
        {kAltColorEntry, {kAltColorKey}, Part::kEntry, Palette::kColor, Sort::kAlternate},
        {kAltColorIntensity, {kAltColorKey}, Part::kIntensity, {}, Sort::kAlternate},
        {kPackedAltColor, packedAlternate, Part::kWhole, {}, Sort::kAlternate},
        {kPackedAltAlpha, {"FltAltColorAlpha"}, Part::kWhole, {}, Sort::kAlternate},
        {kNoAltColorField, {kNoAltColorKey}, Part::kWhole, {}, Sort::kAlternate},
        {kPackedCounts, {kPackedKey}, Part::kWhole, {}, Sort::kColor},
        {kColorName, {"FltColorName"}},
        {kAltColorName, {"FltAltColorName"}},
        {kTextureField, {kTextureKey}, Part::kWhole, Palette::kTexture},
        {kTextureWhite, {"FltTextureWhite"}},
        {kDetailTexture, {"FltDetailTexture"}, Part::kWhole, Palette::kTexture},
        {kMappingField, {"FltTextureMapping"}, Part::kWhole, Palette::kMapping},
        {kMaterialField, {"FltMaterial"}, Part::kWhole, Palette::kMaterial},
        {kTransparency, {"FltTransparency"}, Part::kShare},
        {kCaptionOfTable, {"FltLightMode"}},
        {kCaptionOfTable, {"FltDrawType"}},
        {kCaptionOfTable, {"FltBillboard"}},
        {kRelativePriority, {"FltRelativePriority"}},
        {kLineStyle, {"FltLineStyle"}},
        {kLodControl, {"FltLodControl"}},
    };
    for (char layer = '1'; layer <= '7'; ++layer) {
        const std::string number(1, layer), key = "FltLayer" + number;
        rows.push_back(
            {kLayerTexture, {key + "Texture"}, Part::kWhole, Palette::kTexture, {}, number});
        rows.push_back({kLayerEffect, {key + "Effect"}, Part::kWhole, {}, {}, number});
        rows.push_back(
            {kLayerMapping, {key + "Mapping"}, Part::kWhole, Palette::kMapping, {}, number});
        rows.push_back({kLayerData, {key + "Data"}, Part::kWhole, {}, {}, number});
    }
    rows.push_back({kLoopCount, {"FltGrpLoopCount"}});
    rows.push_back({kLoopDuration, {"FltGrpLoopDuration"}});
    rows.push_back({kLastFrame, {"FltGrpLastFrame"}});
    rows.push_back({kSignificantSize, {"FltLodSize"}});
    return rows;
}

bool isSurface(FltNodeKind kind) noexcept {
    return kind == FltNodeKind::Face || static_cast<std::uint16_t>(kind) == kFltMesh;
}

bool isSurface(INode* node) {
    FltNodeKind kind{};
    return fltGetKind(node, true, kind) && isSurface(kind);
}

void addMaskNames(std::span<INode* const> nodes, std::vector<RowTemplate>& rows) {
    std::set<std::uint32_t> numbers;
    for (INode* const node : nodes) {
        FltNodeKind kind{};
        if (!fltGetKind(node, false, kind) || kind != FltNodeKind::Switch) continue;
        for (const std::string& key : fltFieldKeys(node)) {
            if (!key.starts_with(kMaskName)) continue;
            std::uint32_t number = 0;
            std::from_chars(&key[kMaskName.size()], key.data() + key.size(), number);
            numbers.insert(number);
        }
    }
    for (const std::uint32_t number : numbers) {
        const std::string text = std::to_string(number);
        rows.push_back(
            {CoreText::kMaskNameField, {std::string(kMaskName) + text}, {}, {}, {}, text});
    }
}

// ---------------------------------------------------------------- texts of values

std::uint32_t colorIndexIn(std::string_view text) noexcept {
    return static_cast<std::uint32_t>(fltParseInteger(text));
}

/// What a row of that part shows of a field's text.
std::string shownPart(LookPart part, const std::string& text) {
    if (part == LookPart::kEntry)
        return std::to_string(colorIndexIn(text) >> FltColorPalette::kIntensityBits);
    if (part == LookPart::kIntensity)
        return std::to_string(colorIndexIn(text) & FltColorPalette::kFullIntensity);
    return text;
}

template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end != 0) words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

bool isYes(const LookRow* row) {
    return row != nullptr && !row->isMixed && row->choices.size() == 2 &&
           row->value == row->choices[1];
}

// ---------------------------------------------------------------- values that are entered

/// Whether a field of that row can hold what `text` says.
bool holds(const FltAttrDesc& row, const std::string& text) {
    const auto isWithin = [&](double number) {
        const FltAttrRange range = fltAttrRange(row.width);
        return number >= range.least && number <= range.most;
    };
    std::int32_t ignored = 0;
    switch (row.type) {
        case FltAttrType::Enumeration:
            return fltAttrEnumValue(row.enumeration, text, ignored);
        case FltAttrType::Integer: {
            const auto number = numberIn<std::int64_t>(text);
            return number && isWithin(static_cast<double>(*number));
        }
        case FltAttrType::Float:
        case FltAttrType::Double: {
            const auto number = numberIn<double>(text);
            return number && std::isfinite(*number) && isWithin(*number);
        }
        default:
            return text.find('\0') == text.npos;
    }
}

/// What is to be stored for what was entered, key by key; of a color index the part as a number.
std::vector<std::string> textsFor(const LookRow& row, std::string_view entered) {
    const Refusal refusal(CoreText::kBadValue, {row.caption, entered});
    if (row.part == LookPart::kShare && entered.ends_with('%')) {
        std::string_view share = entered.substr(0, entered.size() - 1);
        share = share.substr(0, share.find_last_not_of(' ') + 1);
        const auto percent = numberIn<double>(share);
        if (!percent || !(*percent >= 0 && *percent <= 100)) throw refusal;
        return {std::to_string(std::lround(*percent / 100 * kClear))};
    }
    if (row.part == LookPart::kEntry || row.part == LookPart::kIntensity) {
        const std::uint32_t most = row.part == LookPart::kEntry
                                       ? std::uint32_t{FltColorPalette::kEntries} - 1
                                       : std::uint32_t{FltColorPalette::kFullIntensity};
        const auto number = numberIn<std::uint32_t>(entered);
        if (!number || *number > most) throw refusal;
        return {std::to_string(*number)};
    }
    if (row.keys.size() == 1) return {std::string(entered)};
    std::vector<std::string> words = wordsOf(entered);
    if (words.size() != row.keys.size()) throw refusal;
    return words;
}

/// A color index with another entry or intensity.
std::string withPart(LookPart part, std::string_view index, const std::string& number) {
    constexpr std::uint32_t kIntensity = FltColorPalette::kFullIntensity;
    const std::uint32_t before = colorIndexIn(index), wanted = colorIndexIn(number);
    return std::to_string(part == LookPart::kEntry
                              ? wanted << FltColorPalette::kIntensityBits | (before & kIntensity)
                              : (before & ~kIntensity) | wanted);
}

bool setPart(INode* node, const LookRow& row, const std::string& number) {
    const FltField field = fltFieldFind(node, row.keys.front());
    return field && fltFieldLoad(node, field, kFltRevision) &&
           fltFieldStore(node, field, withPart(row.part, field.row->value.text(), number).c_str());
}

// ---------------------------------------------------------------- what the scene shows

/// Has the faces of several databases show what they are now.
class Followers {
public:
    void showColor(INode& node) {
        follow(node, [&](Showing& showing, const FltFace& face) { showing.showColor(node, face); });
    }
    void showTexture(INode& node) {
        follow(node,
               [&](Showing& showing, const FltFace& face) { showing.showTexture(node, face); });
    }

private:
    struct Follower {
        explicit Follower(INode& node) : database(node), showing(database) {}
        Database database;
        Showing showing;
    };

    void follow(INode& node, auto&& show) {
        FltNodeKind kind{};
        if (!fltGetKind(&node, false, kind) || kind != FltNodeKind::Face ||
            !fltGetRecord(&node, face_))
            return;
        INode* const database = databaseOf(&node);
        if (database == nullptr) return;
        const auto [place, isNew] = followers_.try_emplace(database);
        if (isNew) try {
                place->second = std::make_unique<Follower>(*database);
            } catch (const Refusal&) {
                // Palettes that cannot be read show nothing.
            }
        if (place->second != nullptr) show(place->second->showing, face_);
    }

    std::unordered_map<INode*, std::unique_ptr<Follower>> followers_;
    FltFace face_;
};

}  // namespace

// ---------------------------------------------------------------- reading

Look::Look(std::span<INode* const> nodes) {
    std::vector<RowTemplate> templates = fixedRows();
    addMaskNames(nodes, templates);
    std::vector<std::string> keys;
    for (const RowTemplate& one : templates)
        for (const std::string& key : one.keys)
            if (std::ranges::find(keys, key) == keys.end()) keys.push_back(key);
    std::vector<std::vector<std::size_t>> places;  // of the rows' keys
    for (const RowTemplate& one : templates) {
        std::vector<std::size_t>& own = places.emplace_back();
        for (const std::string& key : one.keys)
            own.push_back(static_cast<std::size_t>(std::ranges::find(keys, key) - keys.begin()));
    }
    std::vector<std::optional<LookRow>> found(templates.size());
    std::string value;
    fltFieldsRead(nodes, keys, [&](INode& node, std::span<const FltFieldValue> values) {
        if (isSurface(&node)) ++surfaces_;
        for (std::size_t i = 0; i < templates.size(); ++i) {
            const FltFieldValue& first = values[places[i].front()];
            if (!first.isThere) continue;
            std::optional<LookRow>& row = found[i];
            if (row && row->isMixed && row->canSet) continue;
            value = shownPart(templates[i].part, first.text);
            for (std::size_t k = 1; k < places[i].size(); ++k)
                value.append(" ").append(values[places[i][k]].text);
            if (row) {
                row->isMixed |= row->value != value;
                row->canSet |= first.canSet;
                continue;
            }
            const RowTemplate& one = templates[i];
            row.emplace();
            row->keys = one.keys;
            row->part = one.part;
            row->palette = one.palette;
            row->isColor = one.sort != Sort::kOther;
            row->isAlternate = one.sort == Sort::kAlternate;
            row->value = value;
            row->canSet = first.canSet;
            if (one.caption != kCaptionOfTable) row->caption = coreText(one.caption, {one.number});
            const FltField field = fltFieldFind(&node, one.keys.front());
            if (!field) continue;
            if (row->caption.empty()) row->caption = field.row->caption;
            for (const char* const choice : field.row->choices) row->choices.emplace_back(choice);
        }
    });
    for (std::optional<LookRow>& row : found)
        if (row) rows_.push_back(std::move(*row));
}

const LookRow* Look::row(std::string_view key, LookPart part) const noexcept {
    for (const LookRow& row : rows_)
        if (row.keys.front() == key && row.part == part) return &row;
    return nullptr;
}

LookColor Look::color(const Database& database, bool isAlternate) const {
    const LookRow* const packedCounts = row(kPackedKey);
    const LookRow* const none = row(isAlternate ? kNoAltColorKey : kNoColorKey);
    if (packedCounts == nullptr || none == nullptr) return {};
    if (packedCounts->isMixed) return {{}, true};
    if (isYes(packedCounts)) {
        const LookRow* const packed = row(isAlternate ? "FltAltColorRed" : "FltColorRed");
        if (packed == nullptr) return {};
        return {colorIn(packed->value), packed->isMixed};
    }
    const char* const key = isAlternate ? kAltColorKey : kColorKey;
    const LookRow *const entry = row(key, LookPart::kEntry), *const intensity =
                                                                 row(key, LookPart::kIntensity);
    if (isYes(none)) return {};
    if (none->isMixed || entry->isMixed || intensity->isMixed) return {{}, true};
    const auto shown = fltkilnutil::indexedColor(
        colorIndexIn(withPart(LookPart::kEntry, intensity->value, entry->value)),
        database.colors());
    if (!shown) return {};
    return {Rgb{static_cast<std::uint8_t>(*shown), static_cast<std::uint8_t>(*shown >> 8),
                static_cast<std::uint8_t>(*shown >> 16)},
            false};
}

std::string Look::meaning(const Database& database, const LookRow& of) const {
    if (of.isMixed) return {};
    if (of.part == LookPart::kShare) {
        const double percent = fltParseInteger(of.value) / kClear * 100;
        return std::to_string(std::lround(percent)) + " %";
    }
    if (of.isColor && of.choices.empty()) {
        const bool isIndex = of.part != LookPart::kWhole;
        const LookRow* const packedCounts = row(kPackedKey);
        const bool isNone = isYes(row(of.isAlternate ? kNoAltColorKey : kNoColorKey));
        if (packedCounts != nullptr && !packedCounts->isMixed &&
            (isYes(packedCounts) == isIndex || (isIndex && isNone)))
            return coreText(CoreText::kCountsNot);
    }
    if (!of.palette) return {};
    const std::int32_t index = fltParseInteger(of.value);
    if (index < 0) return {};
    if (*of.palette == Palette::kColor) {
        if (database.hasOldColors() &&
            index >= static_cast<std::int32_t>(FltColorPalette::kOldEntries)) {
            // Only entry and intensity together name one of the fixed colors.
            const auto shown = color(database, of.isAlternate).color;
            return shown ? textOfColor(*shown) : coreText(CoreText::kMissingEntry);
        }
        if (static_cast<std::size_t>(index) >= database.colorCount())
            return coreText(CoreText::kMissingEntry);
        const std::string name = database.colorName(index);
        return textOfColor(colorAt(database, index)) + (name.empty() ? "" : " " + name);
    }
    const Entry* const entry = database.find(*of.palette, index);
    return entry != nullptr && entry->counts() ? entry->name : coreText(CoreText::kMissingEntry);
}

std::vector<INode*> lookNodes(std::span<INode* const> selected, bool below) {
    std::vector<INode*> nodes;
    std::unordered_set<const INode*> known;
    for (INode* const top : selected) {
        if (!known.insert(top).second) continue;
        nodes.push_back(top);
    }
    if (!below) return nodes;
    for (INode* const top : selected)
        ForEachInSubtree(top, [&](INode& node) {
            if (&node != top && isSurface(&node) && known.insert(&node).second)
                nodes.push_back(&node);
            return WalkStep::kOn;
        });
    return nodes;
}

// ---------------------------------------------------------------- edits

std::size_t setLook(std::span<INode* const> nodes, const LookRow& row, std::string_view value) {
    const std::vector<std::string> texts = textsFor(row, value);
    const bool isPart = row.part == LookPart::kEntry || row.part == LookPart::kIntensity;
    const bool isShownColor = row.isColor && !row.isAlternate;
    const bool isShownTexture = row.keys.front() == kTextureKey;
    bool isChecked = isPart;
    Step step(CoreText::kLookStep);
    Followers followers;
    std::size_t count = 0;
    for (INode* const node : nodes) {
        if (!isChecked) {
            for (std::size_t i = 0; i < texts.size(); ++i) {
                const FltField field = fltFieldFind(node, row.keys[i]);
                if (!field) break;
                isChecked = true;
                if (!holds(*field.row, texts[i]))
                    throw Refusal(CoreText::kBadValue, {row.caption, value});
            }
        }
        bool isSet = true;
        for (std::size_t i = 0; isSet && i < texts.size(); ++i)
            isSet = isPart ? setPart(node, row, texts[i])
                           : fltFieldSet(node, row.keys[i], texts[i].c_str());
        if (!isSet) continue;
        ++count;
        if (isShownColor) followers.showColor(*node);
        if (isShownTexture) followers.showTexture(*node);
    }
    if (count == 0) throw Refusal(CoreText::kNoSuchField);
    step.Commit();
    return count;
}

std::size_t setLookColor(std::span<INode* const> nodes, bool isAlternate, Rgb color) {
    const std::string parts[] = {std::to_string(color.red), std::to_string(color.green),
                                 std::to_string(color.blue)};
    const std::vector<std::string> packed =
        isAlternate
            ? std::vector<std::string>{"FltAltColorRed", "FltAltColorGreen", "FltAltColorBlue"}
            : std::vector<std::string>{"FltColorRed", "FltColorGreen", "FltColorBlue"};
    Step step(CoreText::kLookStep);
    std::unordered_map<INode*, std::string> indices;  // by database
    std::vector<INode*> changed;
    for (INode* const node : nodes) {
        const FltField counts = fltFieldFind(node, kPackedKey);
        if (!counts || !fltFieldLoad(node, counts, kFltRevision)) continue;
        bool isSet = true;
        if (std::string_view(counts.row->value.text()) == counts.row->choices[1]) {
            for (std::size_t i = 0; isSet && i < packed.size(); ++i)
                isSet = fltFieldSet(node, packed[i], parts[i].c_str());
        } else if (INode* const database = databaseOf(node); database != nullptr) {
            const std::string no = counts.row->choices[0];
            const auto [index, isNew] = indices.try_emplace(database);
            if (isNew) index->second = std::to_string(findOrAddColor(*database, color));
            isSet =
                fltFieldSet(node, isAlternate ? kAltColorKey : kColorKey, index->second.c_str()) &&
                fltFieldSet(node, isAlternate ? kNoAltColorKey : kNoColorKey, no.c_str());
        } else {
            continue;
        }
        if (isSet) changed.push_back(node);
    }
    if (changed.empty()) throw Refusal(CoreText::kNoSuchField);
    Followers followers;
    if (!isAlternate)
        for (INode* const node : changed) followers.showColor(*node);
    step.Commit();
    return changed.size();
}

}  // namespace palettes
