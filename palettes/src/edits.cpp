#include <palettes/edits.h>

#include <palettes/references.h>

#include "entryrecords.h"
#include "materialtable.h"
#include "showing.h"
#include "step.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/indexedcolor.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/textencoding.h>
#include <fltkilnutil/texturemaps.h>
#include <fltkilnutil/vertextails.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltfieldedit.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltmesh.h>
#include <quillon/fltrecordtype.h>
#include <quillon/flttext.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <unordered_set>

namespace palettes {

namespace {

using fltkilnutil::FileBytes, fltkilnutil::SourceRecord, fltkilnutil::SourceRecordsEdit;

void refuseColors(Palette palette) {
    if (palette == Palette::kColor) throw Refusal(CoreText::kColorsStay);
}

void refuseTable(const Database& database, Palette palette) {
    if (palette == Palette::kMaterial && database.hasMaterialTable())
        throw Refusal(CoreText::kTableStays);
}

// ---------------------------------------------------------------- records

/// An entry of before an edit of the palettes is none any more.
void checkEntry(const Database& database, const Entry& entry) {
    const std::vector<SourceRecord>& attached = database.kept().attached;
    if (entry.row >= 0) {
        const Entry* const now = database.find(Palette::kMaterial, entry.index);
        if (now != nullptr && now->place == entry.place && now->row == entry.row &&
            std::ranges::equal(now->record.bytes(), entry.record.bytes()))
            return;
        throw Refusal(CoreText::kNoEntry, {std::to_string(entry.index)});
    }
    if (entry.place >= attached.size() ||
        attached[entry.place].record.bytes().data() != entry.record.bytes().data())
        throw Refusal(CoreText::kNoEntry, {std::to_string(entry.index)});
}

/// The record of `entry` as `edit` has it.
const FltRecordView& recordIn(const SourceRecordsEdit& edit, const Entry& entry) {
    return edit.kept().attached.at(entry.place).record;
}

/// A table of materials in which one is another.
Bytes withRow(const FltRecordView& table, std::size_t row, const FltMaterial& material,
              std::uint32_t revision) {
    FltMaterialTable before;
    before.readBytes(table.bytes(), revision);
    FltMaterialTable after = before;
    copyMaterial(material, after.materials.at(row));
    return patched(table, before, after, revision);
}

void store(SourceRecordsEdit& edit, const Database& database) {
    edit.store(database.revision());
}

// ---------------------------------------------------------------- what follows an entry

void forEachUser(INode& database, Palette palette, std::int32_t index, auto&& visit) {
    for (INode* const node : usersOf(database, palette, index)) visit(*node);
}

/// The maps of the faces that use a texture show another picture.
void setPictures(INode& database, std::int32_t index, const std::string& before,
                 const std::string& after) {
    forEachUser(database, Palette::kTexture, index, [&](INode& node) {
        BitmapTex* const map = fltkilnutil::textureMapOf(node.GetTexmap());
        if (map != nullptr && before == map->GetMapName()) fltkilnutil::setPicture(*map, after);
    });
}

bool isSame(FltLightSourcePalette a, const FltLightSourcePalette& b) {
    a.paletteIndex = b.paletteIndex;
    return recordBytes(a, kFltRevision) == recordBytes(b, kFltRevision);
}

/// The lights that look like the entry become what it is now.
void setLights(INode& database, const FltLightSourcePalette& before,
               const FltLightSourcePalette& after) {
    forEachUser(database, Palette::kLightSource, before.paletteIndex, [&](INode& node) {
        KilnLight options;
        if (!fltGetOptions(&node, options) || !isSame(options.palette, before)) return;
        const std::int32_t index = options.palette.paletteIndex;
        options.palette = after;
        options.palette.paletteIndex = index;
        if (!fltPutOptions(&node, options)) throw std::bad_alloc();
    });
}

/// Faces and vertices that show an entry of the colors show what it is now.
void showColor(INode& database, std::int32_t entry, const FltColorPalette& before,
               const FltColorPalette& after) {
    const auto colors = [&](std::uint32_t index) {
        if (before.entryOf(index) != static_cast<std::uint32_t>(entry))
            return std::pair(COLORREF{}, COLORREF{});
        return std::pair(*fltkilnutil::indexedColor(index, before),
                         *fltkilnutil::indexedColor(index, after));
    };
    forEachUser(database, Palette::kColor, entry, [&](INode& node) { recolor(node, colors); });
}

}  // namespace

// ---------------------------------------------------------------- entries

std::int32_t addEntry(INode& node, Palette palette, std::string_view name) {
    refuseColors(palette);
    const Database database(node);
    refuseTable(database, palette);
    const std::int32_t index = database.freeIndex(palette);
    Step step(CoreText::kAddStep);
    SourceRecordsEdit edit(node);
    withClass(palette, [&](auto its) {
        using Its = decltype(its);
        typename Its::Record record;
        if (name.size() >= sizeof(record.*Its::kName) || name.find('\0') != name.npos)
            throw Refusal(CoreText::kNoValue, {"name", name});
        fltSetText(record.*Its::kName, name);
        record.*Its::kIndex = index;
        insertRecord(edit, recordBytes(record, database.revision()));
    });
    store(edit, database);
    step.Commit();
    return index;
}

std::int32_t copyEntry(INode& node, Palette palette, const Entry& entry) {
    const Database database(node);
    checkEntry(database, entry);
    refuseTable(database, palette);
    if (!entry.isReadable) throw Refusal(CoreText::kRefusedRecord);
    const std::int32_t index = database.freeIndex(palette);
    Step step(CoreText::kAddStep);
    SourceRecordsEdit edit(node);
    insertRecord(edit, withIndex(recordIn(edit, entry), palette, database.revision(), index));
    store(edit, database);
    step.Commit();
    return index;
}

void setField(INode& node, Palette palette, const Entry& entry, std::string_view field,
              std::string_view value) {
    const Database database(node);
    checkEntry(database, entry);
    const std::unique_ptr<FltRecord> before = readEntry(entry, database.revision());
    const std::unique_ptr<FltRecord> after = readEntry(entry, database.revision());
    if (before == nullptr) throw Refusal(CoreText::kRefusedRecord);
    if (field == "index" || field == "paletteIndex") throw Refusal(CoreText::kNoField, {field});
    switch (fltSetField(*after, field, value)) {
        case FltFieldSet::kDone:
            break;
        case FltFieldSet::kNoField:
            throw Refusal(CoreText::kNoField, {field});
        case FltFieldSet::kRefused:
            throw Refusal(CoreText::kNoValue, {field, value});
    }
    if (palette == Palette::kAnimation) {
        // The count of the steps makes them and takes them away.
        auto& animation = static_cast<FltLightPointAnimation&>(*after);
        constexpr std::uint32_t kMostSteps = 5000;
        if (field == "stepCount" && animation.stepCount > kMostSteps)
            throw Refusal(CoreText::kNoValue, {field, value});
        if (field == "stepCount") animation.steps.resize(animation.stepCount);
    }
    Step step(CoreText::kEditStep);
    SourceRecordsEdit edit(node);
    const FltRecordView& view = recordIn(edit, entry);
    const Bytes bytes = entry.row < 0
                            ? patched(view, *before, *after, database.revision())
                            : withRow(view, static_cast<std::size_t>(entry.row),
                                      static_cast<const FltMaterial&>(*after), database.revision());
    if (std::ranges::equal(bytes, view.bytes())) return;
    edit.replace(view, bytes);
    store(edit, database);
    if (palette == Palette::kTexture && entry.counts()) {
        const std::string name =
            fltkilnutil::textOf(static_cast<const FltTexture&>(*after).fileName);
        if (name != entry.name) setPictures(node, entry.index, entry.name, name);
    }
    if (palette == Palette::kLightSource && entry.counts())
        setLights(node, static_cast<const FltLightSourcePalette&>(*before),
                  static_cast<const FltLightSourcePalette&>(*after));
    step.Commit();
}

void deleteEntry(INode& node, Palette palette, const Entry& entry) {
    const Database database(node);
    checkEntry(database, entry);
    refuseTable(database, palette);
    Step step(CoreText::kDeleteStep);
    SourceRecordsEdit edit(node);
    const std::vector<SourceRecord>& attached = edit.kept().attached;
    edit.remove(attached.at(entry.place).record);
    for (std::size_t i = entry.place + 1; i < attached.size() && attached[i].isOpaque; ++i)
        edit.remove(attached[i].record);
    store(edit, database);
    if (palette == Palette::kTexture && entry.counts())
        forEachUser(node, palette, entry.index, [](INode& user) {
            if (fltkilnutil::textureMapOf(user.GetTexmap()) != nullptr) user.SetTexmap(nullptr);
        });
    step.Commit();
}

std::size_t compact(INode& node, Palette palette) {
    refuseColors(palette);
    const Database database(node);
    refuseTable(database, palette);
    const Usage usage = usageOf(node);
    if (usage.unseen[palette]) throw Refusal(CoreText::kUsedUnseen);
    std::vector<const Entry*> ordered;
    for (const Entry& entry : database.entries(palette))
        if (entry.hasIndex) ordered.push_back(&entry);
    std::ranges::stable_sort(
        ordered, {}, [](const Entry* entry) { return std::pair(!entry->counts(), entry->index); });
    std::map<std::int32_t, std::int32_t> becomes;
    std::int32_t next = 0;
    std::size_t changed = 0;
    SourceRecordsEdit edit(node);
    for (const Entry* entry : ordered) {
        if (entry->counts()) becomes.emplace(entry->index, next);
        if (entry->index != next) {
            edit.replace(recordIn(edit, *entry),
                         withIndex(recordIn(edit, *entry), palette, database.revision(), next));
            ++changed;
        }
        ++next;
    }
    // What names no entry must not come to name one.
    std::set<std::int32_t> dangling;
    for (const auto& [index, count] : usage.counts[palette])
        if (!becomes.contains(index)) dangling.insert(index);
    if (changed == 0) return 0;
    for (const std::int32_t index : dangling) becomes.emplace(index, std::max(index, next++));
    const std::int32_t most = withClass(palette, [](auto its) { return its.kMost; });
    if (next - 1 > most) throw Refusal(CoreText::kFull, {std::to_string(most)});
    Step step(CoreText::kCompactStep);
    store(edit, database);
    std::unordered_set<const BitmapTex*> marked;
    ForEachInSubtree(&node, [&](INode& user) {
        if (&user != &node && databaseOf(&user) == &user) return WalkStep::kPastThis;
        const bool isDone = renumberReferences(user, [&](Palette used, std::int32_t index) {
            const auto found = used == palette ? becomes.find(index) : becomes.end();
            return found == becomes.end() ? index : found->second;
        });
        if (!isDone) throw std::bad_alloc();
        if (palette != Palette::kTexture) return WalkStep::kOn;
        BitmapTex* const map = fltkilnutil::textureMapOf(user.GetTexmap());
        const std::int32_t index = map != nullptr ? indexUsedBy(user, palette) : -1;
        if (index >= 0 && marked.insert(map).second) fltkilnutil::markTextureMap(*map, index);
        return WalkStep::kOn;
    });
    step.Commit();
    return changed;
}

// ---------------------------------------------------------------- colors

namespace {

FltColorPalette whiteColors(std::uint32_t revision) {
    constexpr FltPackedColor kWhite{0xFF, 0xFF, 0xFF, 0xFF};
    const bool isOld = revision < FltColorPalette::kChangedIn;
    FltColorPalette palette;
    palette.colors.assign(isOld ? FltColorPalette::kOldEntries : FltColorPalette::kEntries, kWhite);
    if (isOld) palette.fixedColors.assign(FltColorPalette::kFixedColors, kWhite);
    return palette;
}

/// Changes the record of the colors, which is made where there is none.
void editColors(INode& node, auto&& change) {
    const Database database(node);
    if (!database.hasColors() && !database.colorRecord().empty())
        throw Refusal(CoreText::kOldColors);
    Step step(CoreText::kEditStep);
    SourceRecordsEdit edit(node);
    const std::uint32_t revision = database.colorRevision();
    const FltColorPalette before = database.hasColors() ? database.colors() : whiteColors(revision);
    FltColorPalette after = before;
    change(database, before, after);
    try {
        if (!database.hasColors()) {
            insertRecord(edit, recordBytes(after, revision));
        } else {
            const auto place =
                std::ranges::find_if(edit.kept().attached, [&](const SourceRecord& one) {
                    return one.record.bytes().data() == database.colorRecord().bytes().data();
                });
            const Bytes bytes = patched(place->record, before, after, revision);
            if (std::ranges::equal(bytes, place->record.bytes())) return;
            edit.replace(place->record, bytes);
        }
    } catch (const diagnostics::AviaryAssertion&) {
        throw Refusal(CoreText::kTooLong);
    }
    store(edit, database);
    step.Commit();
}

void checkColor(std::int32_t entry, const FltColorPalette& colors) {
    if (entry < 0 || static_cast<std::size_t>(entry) >= colors.entryCount())
        throw Refusal(CoreText::kNoEntry, {std::to_string(entry)});
}

Rgb rgbOf(const FltPackedColor& color) {
    return {color.red, color.green, color.blue};
}

}  // namespace

Rgb colorAt(const Database& database, std::int32_t entry) {
    if (!database.hasColors()) throw Refusal(CoreText::kNoEntry, {std::to_string(entry)});
    checkColor(entry, database.colors());
    return rgbOf(database.colors().entry(static_cast<std::size_t>(entry)));
}

void setColor(INode& node, std::int32_t entry, Rgb color) {
    Step step(CoreText::kEditStep);
    FltColorPalette old, now;
    editColors(node, [&](const Database&, const FltColorPalette& before, FltColorPalette& after) {
        checkColor(entry, before);
        FltPackedColor& place = after.entry(static_cast<std::size_t>(entry));
        place.red = color.red;
        place.green = color.green;
        place.blue = color.blue;
        old = before;
        now = after;
    });
    const auto place = static_cast<std::size_t>(entry);
    if (old.entry(place) != now.entry(place)) showColor(node, entry, old, now);
    step.Commit();
}

void setColorName(INode& node, std::int32_t entry, std::string_view name) {
    if (name.size() > FltColorNames::kLongest || name.find('\0') != name.npos)
        throw Refusal(CoreText::kNoValue, {"name", name});
    editColors(node, [&](const Database& database, const FltColorPalette&, FltColorPalette& after) {
        checkColor(entry, after);
        if (after.isOld()) throw Refusal(CoreText::kNoColorNames);
        if (!database.hasReadableColorNames()) throw Refusal(CoreText::kCutNames);
        after.nameTable = FltColorNames::with(after.nameTable, entry, std::string(name));
    });
}

std::string textOfColor(Rgb color) {
    return std::to_string(color.red) + ' ' + std::to_string(color.green) + ' ' +
           std::to_string(color.blue);
}

std::optional<Rgb> colorIn(std::string_view text) noexcept {
    Rgb color;
    const auto skipBlanks = [&] {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    };
    for (std::uint8_t* const part : {&color.red, &color.green, &color.blue}) {
        skipBlanks();
        const auto [behind, error] = std::from_chars(text.data(), text.data() + text.size(), *part);
        if (error != std::errc()) return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(behind - text.data()));
        if (!text.empty() && text.front() != ' ') return std::nullopt;
    }
    skipBlanks();
    if (!text.empty()) return std::nullopt;
    return color;
}

void setColorField(INode& node, std::int32_t entry, std::string_view field,
                   std::string_view value) {
    if (field == kNameField) return setColorName(node, entry, value);
    if (field != kColorField) throw Refusal(CoreText::kNoField, {field});
    const std::optional<Rgb> color = colorIn(value);
    if (!color) throw Refusal(CoreText::kNoValue, {field, value});
    setColor(node, entry, *color);
}

std::int32_t findOrAddColor(INode& node, Rgb color) {
    const Database database(node);
    if (!database.hasColors()) {
        setColor(node, 0, color);  // the first of the palette that this makes
        return FltColorPalette::kFullIntensity;
    }
    const FltColorPalette& palette = database.colors();
    const auto indexOf = [&](std::size_t entry) {
        return static_cast<std::int32_t>(
            palette.indexOf(static_cast<std::uint32_t>(entry), FltColorPalette::kFullIntensity));
    };
    std::vector<FltPackedColor> colors = palette.colors;
    colors.insert(colors.end(), palette.fixedColors.begin(), palette.fixedColors.end());
    const auto same = std::ranges::find(colors, color, rgbOf);
    if (same != colors.end()) return indexOf(static_cast<std::size_t>(same - colors.begin()));
    const Usage usage = usageOf(node);
    if (usage.unseen[Palette::kColor]) throw Refusal(CoreText::kUsedUnseen);
    std::map<std::uint32_t, int> counts;
    const auto keyOf = [](const FltPackedColor& one) { return fltkilnutil::colorRefOf(one); };
    for (const FltPackedColor& one : colors) ++counts[keyOf(one)];
    std::int32_t last = -1, doubled = -1;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(colors.size()); ++i) {
        if (usage.of(Palette::kColor, i) != 0 || !database.colorName(i).empty()) continue;
        last = i;
        if (counts[keyOf(colors[static_cast<std::size_t>(i)])] > 1) doubled = i;
    }
    const std::int32_t chosen = doubled >= 0 ? doubled : last;
    if (chosen < 0) throw Refusal(CoreText::kNoColorPlaces);
    setColor(node, chosen, color);
    return indexOf(static_cast<std::size_t>(chosen));
}

// ---------------------------------------------------------------- users

namespace {

/// Has nodes use one entry. One object serves many nodes.
class Assigner {
public:
    Assigner(const Database& database, Palette palette, std::int32_t index)
        : showing_(database), palette_(palette), index_(index) {
        if (palette == Palette::kColor) {
            if (index < 0 ||
                !fltkilnutil::indexedColor(static_cast<std::uint32_t>(index), database.colors()))
                throw Refusal(CoreText::kNoEntry, {std::to_string(index)});
            return;
        }
        if (index == -1) return;
        const Entry* const entry = database.find(palette, index);
        if (entry == nullptr || !entry->counts())
            throw Refusal(CoreText::kNoEntry, {std::to_string(index)});
        if (palette == Palette::kLightSource)
            light_.readBytes(entry->record.bytes(), database.revision());
    }

    /// False when the node cannot use such an entry.
    bool assign(INode& node) {
        FltNodeKind kind{};
        if (!fltGetKind(&node, false, kind)) return false;
        switch (palette_) {
            case Palette::kColor:
            case Palette::kMaterial:
            case Palette::kTexture:
            case Palette::kMapping:
                if (kind == FltNodeKind::Face) return assignFace(node);
                return static_cast<std::uint16_t>(kind) == kFltMesh &&
                       assignKept<FltMesh>(node, [this](FltMesh& mesh) { change(mesh); });
            case Palette::kLightSource:
                return kind == FltNodeKind::LightSource && assignLight(node);
            case Palette::kAppearance:
            case Palette::kAnimation:
                return static_cast<std::uint16_t>(kind) == kFltIndexedLightPoint &&
                       assignKept<FltIndexedLightPoint>(node, [this](FltIndexedLightPoint& light) {
                           (palette_ == Palette::kAppearance ? light.appearanceIndex
                                                             : light.animationIndex) = index_;
                       });
        }
        return false;
    }

private:
    void change(FltPolygonRec& surface) const {
        switch (palette_) {
            case Palette::kColor:
                surface.primaryColorIndex = static_cast<std::uint32_t>(index_);
                surface.flags &= ~(kFltSurfaceNoColor | kFltSurfacePackedColors);
                break;
            case Palette::kMaterial:
                surface.materialIndex = static_cast<std::int16_t>(index_);
                break;
            case Palette::kTexture:
                surface.textureIndex = static_cast<std::int16_t>(index_);
                break;
            default:
                surface.textureMappingIndex = static_cast<std::int16_t>(index_);
                break;
        }
    }

    bool assignFace(INode& node) {
        if (!fltGetRecord(&node, face_)) return false;
        change(face_);
        if (!fltPutRecord(&node, face_)) throw std::bad_alloc();
        if (palette_ == Palette::kTexture) showing_.showTexture(node, face_);
        if (palette_ == Palette::kColor) showing_.showColor(node, face_);
        return true;
    }

    template <typename Record>
    bool assignKept(INode& node, auto&& edit) {
        SourceRecordsEdit kept(node);
        const FltRecordView& view = kept.kept().record;
        if (view.empty() || view.opcode() != Record::kOpcode) return false;
        Record before;
        before.readBytes(view.bytes(), kept.kept().revision);
        Record after = before;
        edit(after);
        kept.replace(view, patched(view, before, after, kept.kept().revision));
        kept.store(kept.kept().revision);
        return true;
    }

    bool assignLight(INode& node) {
        FltLightSource record;
        if (!fltGetRecord(&node, record)) return false;
        record.paletteIndex = index_;
        KilnLight options;
        options.palette = light_;
        options.palette.paletteIndex = index_;
        if (!fltPutRecord(&node, record) || (index_ >= 0 && !fltPutOptions(&node, options)))
            throw std::bad_alloc();
        return true;
    }

    Showing showing_;
    Palette palette_;
    std::int32_t index_;
    FltLightSourcePalette light_;
    FltFace face_;
};

}  // namespace

std::size_t assign(INode& database, std::span<INode* const> nodes, Palette palette,
                   std::int32_t index) {
    const Database read(database);
    Step step(CoreText::kAssignStep);
    Assigner assigner(read, palette, index);
    std::size_t count = 0;
    std::unordered_set<const INode*> done;
    for (INode* const top : nodes) {
        if (databaseOf(top) != &database) continue;
        ForEachInSubtree(top, [&](INode& node) {
            if (!done.insert(&node).second) return WalkStep::kPastThis;
            if (!assigner.assign(node)) return WalkStep::kOn;
            ++count;
            return WalkStep::kPastThis;
        });
    }
    if (count == 0) throw Refusal(CoreText::kNoTarget);
    step.Commit();
    return count;
}

// ---------------------------------------------------------------- other files

namespace {

/// Which entries of the database become colors of another palette.
class ColorPlaces {
public:
    /// The database's colors, and all of the others, may be of either form.
    ColorPlaces(const Database& database, const FltColorPalette& ours,
                const FltColorPalette& theirs)
        : database_(database), usage_(usageOf(database.node())) {
        if (usage_.unseen[Palette::kColor]) throw Refusal(CoreText::kUsedUnseen);
        for (std::size_t i = 0; i < ours.entryCount(); ++i) {
            own_.push_back(keyOf(ours.entry(i)));
            ++counts_[own_.back()];
        }
        std::vector<std::size_t> missing, wanting;
        for (std::size_t i = 0; i < theirs.entryCount(); ++i) {
            if (!wanted_.insert(keyOf(theirs.entry(i))).second) continue;
            if (!counts_.contains(keyOf(theirs.entry(i)))) missing.push_back(i);
        }
        for (const std::size_t entry : missing) {
            if (isFree(entry))
                take(entry, entry);
            else
                wanting.push_back(entry);
        }
        // Then those that are not missed.
        const auto takeAll = [&](bool onlyDoubled) {
            auto next = wanting.begin();
            for (std::size_t place = 0; place < own_.size() && next != wanting.end(); ++place)
                if (isFree(place) && (!onlyDoubled || counts_[own_[place]] > 1))
                    take(place, *next++);
            wanting.erase(wanting.begin(), next);
        };
        takeAll(true);
        takeAll(false);
        if (!wanting.empty()) throw Refusal(CoreText::kNoColorPlaces);
    }

    /// By the place in the database, the entry of the others.
    const std::map<std::size_t, std::size_t>& taken() const noexcept { return taken_; }

private:
    static COLORREF keyOf(const FltPackedColor& color) { return fltkilnutil::colorRefOf(color); }

    /// Nobody uses the entry or has named it, and what is to be there does not go with it.
    bool isFree(std::size_t place) const {
        if (place >= own_.size() || taken_.contains(place)) return false;
        const COLORREF color = own_[place];
        const auto entry = static_cast<std::int32_t>(place);
        return (!wanted_.contains(color) || counts_.at(color) > 1) &&
               usage_.of(Palette::kColor, entry) == 0 && database_.colorName(entry).empty();
    }
    void take(std::size_t place, std::size_t entry) {
        --counts_[own_[place]];
        taken_.emplace(place, entry);
    }

    const Database& database_;
    const Usage usage_;
    std::vector<COLORREF> own_;
    std::map<COLORREF, int> counts_;  // of those that are still there
    std::set<COLORREF> wanted_;
    std::map<std::size_t, std::size_t> taken_;
};

/// The colors of a file; none where it has none.
FltColorPalette colorsOf(FltFileReader& reader) {
    FltColorPalette colors;
    while (reader.next())
        if (reader.opcode() == kFltColorPalette) {
            colors.readOfFile(reader.bytes(), reader.revision());
            if (!colors.isWhole()) throw Refusal(CoreText::kOldColors);
            break;
        }
    return colors;
}

std::size_t importColors(INode& node, FltFileReader& reader) {
    const FltColorPalette theirs = colorsOf(reader);
    if (theirs.entryCount() == 0) return 0;
    FltColorNames names;
    if (!theirs.isOld()) names.read(theirs.nameTable);
    std::size_t count = 0;
    Step step(CoreText::kAddStep);
    editColors(
        node, [&](const Database& database, const FltColorPalette& ours, FltColorPalette& after) {
            const ColorPlaces places(database, ours, theirs);
            count = places.taken().size();
            for (const auto& [place, entry] : places.taken()) {
                FltPackedColor& color = after.entry(place);
                const FltPackedColor& taken = theirs.entry(entry);
                color.red = taken.red;
                color.green = taken.green;
                color.blue = taken.blue;
                const std::string name = names.of(static_cast<std::int32_t>(entry));
                if (name.empty() || after.isOld()) continue;
                if (!database.hasReadableColorNames()) throw Refusal(CoreText::kCutNames);
                after.nameTable =
                    FltColorNames::with(after.nameTable, static_cast<std::int32_t>(place), name);
            }
        });
    if (count > 0) step.Commit();
    return count;
}

}  // namespace

std::size_t importEntries(INode& node, Palette palette, const std::string& file) {
    const FltFileBytes loaded = FltFileBytes::load(file);
    FltFileReader reader(loaded.bytes());
    if (palette == Palette::kColor) return importColors(node, reader);
    const Database database(node);
    refuseTable(database, palette);
    // The body without the zeros that it may be padded with.
    const auto keyOf = [&](const FltRecordView& view) {
        const Bytes bytes = withIndex(view, palette, database.revision(), 0);
        std::string key(bytes.begin() + FltRecordView::kHeaderSize, bytes.end());
        key.resize(key.find_last_not_of('\0') + 1);
        return key;
    };
    std::set<std::string> known;
    std::set<std::int32_t> taken;
    for (const Entry& entry : database.entries(palette)) {
        if (!entry.isReadable) continue;
        known.insert(keyOf(entry.record));
        if (entry.hasIndex) taken.insert(entry.index);
    }
    const std::uint16_t opcode =
        withClass(palette, [](auto its) { return decltype(its)::Record::kOpcode; });
    const std::int32_t most = withClass(palette, [](auto its) { return its.kMost; });
    Step step(CoreText::kAddStep);
    SourceRecordsEdit edit(node);
    Bytes added;
    std::size_t count = 0;
    std::int32_t next = 0;
    const auto take = [&](const FltRecordView& view) {
        if (!known.insert(keyOf(view)).second) return;
        while (taken.contains(next)) ++next;
        if (next > most) throw Refusal(CoreText::kFull, {std::to_string(most)});
        const Bytes bytes = withIndex(view, palette, database.revision(), next++);
        added.insert(added.end(), bytes.begin(), bytes.end());
        ++count;
    };
    while (reader.next()) {
        const FltRecordView view =
            FltRecordView::at(std::span(reader.token().data(), reader.token().length()), 0);
        const bool isTable = palette == Palette::kMaterial && reader.opcode() == kFltMaterialTable;
        try {
            if (isTable)
                for (const Bytes& material : recordsOfTable(view, database.revision()))
                    take(FltRecordView::at(material, 0));
            else if (reader.opcode() == opcode)
                take(view);
        } catch (const diagnostics::AviaryAssertion&) {
            continue;  // it states counts that cannot be right
        }
    }
    if (count == 0) return 0;
    insertRecord(edit, added);
    store(edit, database);
    step.Commit();
    return count;
}

}  // namespace palettes
