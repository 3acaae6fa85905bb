#include <palettes/database.h>

#include "materialtable.h"
#include "recordpatch.h"

#include <base/text.h>
#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/textencoding.h>
#include <kiln/kiln.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltrevision.h>
#include <quillon/flttext.h>

#include <algorithm>
#include <optional>

namespace palettes {

namespace {

bool isDatabase(INode& node) {
    FltNodeKind kind{};
    return fltGetKind(&node, false, kind) && kind == FltNodeKind::Header;
}

std::optional<Palette> paletteOf(std::uint16_t opcode) noexcept {
    switch (opcode) {
        case kFltMaterial:
            return Palette::kMaterial;
        case kFltTexture:
            return Palette::kTexture;
        case kFltTextureMappingPalette:
            return Palette::kMapping;
        case kFltLightSourcePalette:
            return Palette::kLightSource;
        case kFltLightPointAppearance:
            return Palette::kAppearance;
        case kFltLightPointAnimation:
            return Palette::kAnimation;
        default:
            return std::nullopt;
    }
}

}  // namespace

INode* databaseOf(INode* node) {
    while (node != nullptr && !isDatabase(*node)) node = node->GetParentNode();
    return node;
}

std::vector<INode*> databasesIn(INode& root) {
    std::vector<INode*> found;
    ForEachInSubtree(&root, [&](INode& node) {
        if (!isDatabase(node)) return WalkStep::kOn;
        found.push_back(&node);
        return WalkStep::kPastThis;
    });
    return found;
}

Database::Database(INode& node) : node_(node), kept_(fltkilnutil::sourceRecordsOf(node)) {
    using fltkilnutil::SourceChunk;
    if (kept_.revision == 0 && !fltkilnutil::sourceChunk(node, SourceChunk::records).empty())
        throw Refusal(CoreText::kDamaged);
    if (kept_.revision == 0) {
        kept_.revision = kFltRevision;
        fltGetParameter(&node, kept_.revision);
    }
    for (std::size_t i = 0; i < kept_.attached.size(); ++i) {
        const fltkilnutil::SourceRecord& kept = kept_.attached[i];
        if (kept.isOpaque) continue;
        if (const auto palette = paletteOf(kept.record.opcode())) {
            add(*palette, i, kept.record);
        } else if (kept.record.opcode() == kFltMaterialTable) {
            addTable(i, kept.record);
        } else if (kept.record.opcode() == kFltColorPalette && colorRecord_.empty()) {
            colorRecord_ = kept.record;
            colors_.readBytes(kept.record.bytes(), colorRevision());
        }
    }
    if (!colors_.isOld()) hasReadableNames_ = colorNames_.read(colors_.nameTable);
    for (std::size_t p = 0; p < kPaletteCount; ++p) {
        const auto palette = static_cast<Palette>(p);
        auto& byIndex = byIndex_[palette];
        std::vector<Entry>& entries = entries_[palette];
        for (std::size_t i = 0; i < entries.size(); ++i)
            if (entries[i].hasIndex)
                byIndex.emplace_back(entries[i].index, static_cast<std::uint32_t>(i));
        std::ranges::sort(byIndex);
        for (std::size_t i = 1; i < byIndex.size(); ++i)
            entries[byIndex[i].second].isDoubled = byIndex[i].first == byIndex[i - 1].first;
    }
}

void Database::addTable(std::size_t place, const FltRecordView& record) {
    std::vector<std::vector<std::uint8_t>> records;
    try {
        records = recordsOfTable(record, kept_.revision);
    } catch (const diagnostics::AviaryAssertion&) {
        return;  // it states what cannot be right: there is no material then
    }
    std::int32_t row = 0;
    for (std::vector<std::uint8_t>& one : records) {
        tableRecords_.push_back(std::move(one));
        add(Palette::kMaterial, place, FltRecordView::at(tableRecords_.back(), 0), row++);
    }
}

void Database::add(Palette palette, std::size_t place, const FltRecordView& record,
                   std::int32_t row) {
    Entry entry;
    entry.place = place;
    entry.record = record;
    entry.row = row;
    withClass(palette, [&](auto its) {
        using Its = decltype(its);
        typename Its::Record read;
        entry.hasIndex = record.length() >= read.lengthThrough(&(read.*Its::kIndex));
        entry.isCut = record.length() < read.lengthThrough(&(read.*Its::kLast));
        try {
            read.readBytes(record.bytes(), kept_.revision);
        } catch (const diagnostics::AviaryAssertion&) {
            entry.isReadable = entry.hasIndex = false;
            return;
        }
        entry.index = entry.hasIndex ? read.*Its::kIndex : 0;
        entry.isBeyond = entry.index < 0 || entry.index > Its::kMost;
        const std::string_view name = fltText(read.*Its::kName);
        entry.isText = base::validUtf8(name) == name;
        entry.name = fltkilnutil::textOf(read.*Its::kName);
    });
    entries_[palette].push_back(std::move(entry));
}

const Entry* Database::find(Palette palette, std::int32_t index) const noexcept {
    const auto& byIndex = byIndex_[palette];
    const auto found = std::ranges::lower_bound(byIndex, std::pair(index, std::uint32_t{0}));
    if (found == byIndex.end() || found->first != index) return nullptr;
    return &entries_[palette][found->second];
}

std::int32_t Database::freeIndex(Palette palette) const {
    std::int32_t next = 0;
    for (const auto& [index, entry] : byIndex_[palette])
        if (index == next) ++next;
    const std::int32_t most = withClass(palette, [](auto its) { return its.kMost; });
    if (next > most) throw Refusal(CoreText::kFull, {std::to_string(most)});
    return next;
}

std::string Database::colorName(std::int32_t entry) const {
    const std::string bytes = colorNames_.of(entry);
    return fltkilnutil::textOf(std::span<const char>(bytes));
}

std::unique_ptr<FltRecord> readEntry(const Entry& entry, std::uint32_t revision) {
    if (entry.record.empty() || !entry.isReadable) return nullptr;
    std::unique_ptr<FltRecord> record = fltRecordType(entry.record.opcode())->create();
    record->readBytes(entry.record.bytes(), revision);
    return record;
}

}  // namespace palettes
