#include <palettes/move.h>

#include <palettes/database.h>
#include <palettes/references.h>

#include "entryrecords.h"

#include <fltkilnutil/indexedcolor.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/textencoding.h>
#include <fltkilnutil/texturemaps.h>
#include <kiln/kiln.h>
#include <kiln/undo.h>
#include <quillon/fltface.h>
#include <quillon/flttext.h>

#include <algorithm>
#include <map>
#include <new>
#include <set>
#include <type_traits>

namespace palettes {

namespace {

using fltkilnutil::SourceRecord, fltkilnutil::SourceRecordsEdit;
using Indices = std::map<std::int32_t, std::int32_t>;

bool changes(const Indices& indices) {
    return std::ranges::any_of(indices, [](const auto& one) { return one.first != one.second; });
}

std::int32_t becomes(const Indices& indices, std::int32_t index) {
    const auto found = indices.find(index);
    return found == indices.end() ? index : found->second;
}

std::string keyOf(const Bytes& record) {
    return {record.begin(), record.end()};
}

/// Names the picture of an entry of the textures otherwise.
void renamePicture(FltTexture& entry, const Rename& rename) {
    const std::string before = fltkilnutil::textOf(entry.fileName), after = rename(before);
    if (after == before) return;
    if (after.size() >= sizeof entry.fileName)
        throw Refusal(CoreText::kNoValue, {"fileName", after});
    fltSetText(entry.fileName, after);
}

class Mover {
public:
    Mover(INode& into, INode& from, INode& top, const ForEachPalette<bool>& taken,
          std::span<Texmap* const> maps, const Rename& rename)
        : intoNode_(into),
          top_(top),
          taken_(taken),
          maps_(maps),
          rename_(rename),
          into_(into),
          from_(from),
          usage_(usageOf(top)),
          edit_(into) {}

    void move() {
        addUsedByAppearances();
        // In this order: appearances name textures.
        for (const Palette palette :
             {Palette::kMaterial, Palette::kTexture, Palette::kMapping, Palette::kLightSource,
              Palette::kAppearance, Palette::kAnimation})
            if (!taken_[palette]) findEntries(palette);
        if (!taken_[Palette::kColor]) findColors();
        for (std::size_t i = 0; i < kPaletteCount; ++i) {
            const auto palette = static_cast<Palette>(i);
            if (usage_.unseen[palette] && changes(indices_[palette]))
                throw Refusal(CoreText::kUsedUnseen);
        }
        edit_.store(into_.revision());
        const Database now(intoNode_);
        ForEachInSubtree(&top_, [&](INode& node) {
            if (&node != &intoNode_ && databaseOf(&node) == &node) return WalkStep::kPastThis;
            renumber(node);
            showAs(now, node);
            return WalkStep::kOn;
        });
    }

private:
    void addUsedByAppearances() {
        if (taken_[Palette::kAppearance]) return;
        for (const auto& [index, count] : usage_.counts[Palette::kAppearance]) {
            const Entry* const entry = from_.find(Palette::kAppearance, index);
            if (entry == nullptr || !entry->isReadable) continue;
            FltLightPointAppearance look;
            look.readBytes(entry->record.bytes(), from_.revision());
            if (look.textureIndex >= 0) ++usage_.counts[Palette::kTexture][look.textureIndex];
        }
    }

    /// An entry of the other database as this one is to have it.
    Bytes entryWith(const Entry& entry, Palette palette, std::int32_t index) const {
        if (!entry.isReadable) throw Refusal(CoreText::kRefusedRecord);
        return changedEntry(entry.record, palette, from_.revision(), [&](auto its, auto& record) {
            record.*decltype(its)::kIndex = index;
            using Record = typename decltype(its)::Record;
            if constexpr (std::is_same_v<Record, FltTexture>) renamePicture(record, rename_);
            if constexpr (std::is_same_v<Record, FltLightPointAppearance>)
                if (!taken_[Palette::kTexture] && record.textureIndex >= 0)
                    record.textureIndex = static_cast<std::int16_t>(
                        becomes(indices_[Palette::kTexture], record.textureIndex));
        });
    }

    void findEntries(Palette palette) {
        std::set<std::int32_t> used;
        for (const auto& [index, count] : usage_.counts[palette]) used.insert(index);
        if (used.empty()) return;
        std::map<std::string, std::int32_t> known;
        std::set<std::int32_t> taken;
        for (const Entry& entry : into_.entries(palette)) {
            if (entry.hasIndex) taken.insert(entry.index);
            if (!entry.counts() || !entry.isReadable) continue;
            known.emplace(keyOf(withIndex(entry.record, palette, into_.revision(), 0)),
                          entry.index);
        }
        const std::int32_t most = withClass(palette, [](auto its) { return its.kMost; });
        std::int32_t next = 0;
        Bytes added;
        for (const std::int32_t index : used) {
            std::int32_t& now = indices_[palette].emplace(index, -1).first->second;
            const Entry* const entry = from_.find(palette, index);
            if (entry == nullptr) continue;
            const std::string key = keyOf(entryWith(*entry, palette, 0));
            const Entry* const same = into_.find(palette, index);
            if (same != nullptr && same->isReadable &&
                keyOf(withIndex(same->record, palette, into_.revision(), 0)) == key) {
                now = index;
            } else if (const auto found = known.find(key); found != known.end()) {
                now = found->second;
            } else {
                now = index;
                if (taken.contains(index)) {
                    while (taken.contains(next) || used.contains(next)) ++next;
                    now = next;
                }
                if (now > most) throw Refusal(CoreText::kFull, {std::to_string(most)});
                taken.insert(now);
                known.emplace(key, now);
                const Bytes record = entryWith(*entry, palette, now);
                added.insert(added.end(), record.begin(), record.end());
            }
        }
        if (added.empty()) return;
        if (palette == Palette::kMaterial && into_.hasMaterialTable())
            throw Refusal(CoreText::kTableStays);
        insertRecord(edit_, added);
    }

    void findColors() {
        const auto& used = usage_.counts[Palette::kColor];
        if (used.empty() || from_.colorRecord().empty()) return;
        if (!from_.hasColors() || from_.hasOldColors()) throw Refusal(CoreText::kOldColors);
        if (into_.colorRecord().empty()) {
            insertRecord(edit_, from_.colorRecord().bytes());
            return;
        }
        if (!into_.hasColors() || into_.hasOldColors()) throw Refusal(CoreText::kOldColors);
        const std::vector<FltPackedColor>& ours = into_.colors().colors;
        FltColorPalette after = into_.colors();
        std::set<std::int32_t> wanting, named;
        for (const auto& [entry, count] : used) {
            const FltPackedColor color = colorOf(entry);
            const auto same = ours[static_cast<std::size_t>(entry)] == color
                                  ? ours.begin() + entry
                                  : std::ranges::find(ours, color);
            if (same == ours.end()) {
                wanting.insert(entry);
                continue;
            }
            const auto place = static_cast<std::int32_t>(same - ours.begin());
            indices_[Palette::kColor].emplace(entry, place);
            named.insert(place);
        }
        if (wanting.empty()) return;
        const Usage all = usageOf(intoNode_);
        if (all.unseen[Palette::kColor]) throw Refusal(CoreText::kUsedUnseen);
        std::int32_t place = static_cast<std::int32_t>(ours.size());
        for (const std::int32_t entry : wanting) {
            // Those that nobody uses but the nodes that move, with indices of the other palette.
            const auto isFree = [&] {
                return all.of(Palette::kColor, place) == usage_.of(Palette::kColor, place) &&
                       into_.colorName(place).empty() && !named.contains(place);
            };
            do {
                if (--place < 0) throw Refusal(CoreText::kNoColorPlaces);
            } while (!isFree());
            after.colors[static_cast<std::size_t>(place)] = colorOf(entry);
            indices_[Palette::kColor].emplace(entry, place);
        }
        const auto record =
            std::ranges::find_if(edit_.kept().attached, [&](const SourceRecord& one) {
                return one.record.bytes().data() == into_.colorRecord().bytes().data();
            });
        edit_.replace(record->record,
                      patched(record->record, into_.colors(), after, into_.colorRevision()));
    }

    FltPackedColor colorOf(std::int32_t entry) const {
        return from_.colors().colors[static_cast<std::size_t>(entry)];
    }

    void renumber(INode& node) {
        const auto find = [this](Palette palette, std::int32_t index) {
            return becomes(indices_[palette], index);
        };
        if (!renumberReferences(node, find)) throw std::bad_alloc();
        const Indices& colors = indices_[Palette::kColor];
        if (changes(colors) &&
            !renumberColors(node, [&](auto entry) { return becomes(colors, entry); }))
            throw std::bad_alloc();
    }

    /// Has the scene show the node with the entries that it names in `now`.
    void showAs(const Database& now, INode& node) {
        if (taken_[Palette::kColor] && from_.hasColors() && now.hasColors())
            recolor(node, [&](std::uint32_t index) {
                const auto before = fltkilnutil::indexedColor(index, from_.colors());
                const auto after = fltkilnutil::indexedColor(index, now.colors());
                return before && after ? std::pair(*before, *after)
                                       : std::pair(COLORREF{}, COLORREF{});
            });
        FltNodeKind kind{};
        if (fltGetKind(&node, false, kind) && kind == FltNodeKind::Face &&
            fltGetRecord(&node, face_) &&
            (taken_[Palette::kTexture] || fltkilnutil::textureMapOf(node.GetTexmap()) != nullptr))
            node.SetTexmap(mapFor(now, face_.textureIndex));
        KilnLight options;
        if (!taken_[Palette::kLightSource] || !fltGetOptions(&node, options)) return;
        const Entry* const light = now.find(Palette::kLightSource, options.palette.paletteIndex);
        if (light == nullptr || !light->isReadable) return;
        options.palette.readBytes(light->record.bytes(), now.revision());
        if (!fltPutOptions(&node, options)) throw std::bad_alloc();
    }

    /// The map of an entry that the scene has for this database, or a new one.
    Texmap* mapFor(const Database& now, std::int32_t index) {
        const auto [known, isNew] = mapOfEntry_.try_emplace(index, nullptr);
        const Entry* const entry = now.find(Palette::kTexture, index);
        if (!isNew || entry == nullptr) return known->second;
        Interface& host = *GetCOREInterface();
        for (int i = 0; i < host.GetTexmapCount(); ++i) {
            BitmapTex* const map = fltkilnutil::textureMapOf(host.GetTexmap(i));
            if (map != nullptr && entry->name == map->GetMapName() &&
                fltkilnutil::markedIndex(*map) == index &&
                std::ranges::find(maps_, map) == maps_.end())
                return known->second = map;
        }
        OwnedPtr<BitmapTex> map = fltkilnutil::makeTextureMap(entry->name, index);
        host.AddTexmap(map.get());
        return known->second = map.release();
    }

    INode& intoNode_;
    INode& top_;
    const ForEachPalette<bool>& taken_;
    std::span<Texmap* const> maps_;
    const Rename& rename_;
    const Database into_, from_;
    Usage usage_;  // of the nodes that move
    SourceRecordsEdit edit_;
    ForEachPalette<Indices> indices_;  // what those that are used become
    std::map<std::int32_t, Texmap*> mapOfEntry_;
    FltFace face_;
};

}  // namespace

void moveUsers(INode& into, INode& from, INode& top, const ForEachPalette<bool>& taken,
               std::span<Texmap* const> maps, const Rename& rename) {
    UndoScope step(coreText(CoreText::kEditStep).c_str());
    Mover(into, from, top, taken, maps, rename).move();
    step.Commit();
}

void renamePictures(INode& node, const Rename& rename) {
    const Database database(node);
    UndoScope step(coreText(CoreText::kEditStep).c_str());
    SourceRecordsEdit edit(node);
    for (const Entry& entry : database.entries(Palette::kTexture)) {
        if (!entry.isReadable) continue;
        const FltRecordView& view = edit.kept().attached.at(entry.place).record;
        const Bytes bytes =
            changedEntry(view, Palette::kTexture, database.revision(), [&](auto its, auto& record) {
                if constexpr (std::is_same_v<typename decltype(its)::Record, FltTexture>)
                    renamePicture(record, rename);
            });
        if (!std::ranges::equal(bytes, view.bytes())) edit.replace(view, bytes);
    }
    edit.store(database.revision());
    step.Commit();
}

}  // namespace palettes
