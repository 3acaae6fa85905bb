#include <palettes/lightpoints.h>

#include <palettes/database.h>

#include "recordpatch.h"
#include "step.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltopcode.h>
#include <quillon/flttext.h>

#include <algorithm>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>

namespace palettes {

namespace {

using fltkilnutil::SourceRecords, fltkilnutil::SourceRecordsEdit;
using Bytes = std::vector<std::uint8_t>;

// ---------------------------------------------------------------- one look in two forms

/// What a light point's record says, in the form of palettes.
struct PaletteForm {
    FltLightPointAppearance appearance;
    std::optional<FltLightPointAnimation> animation;  ///< none where nothing moves
};

/// Copies what both records have by the same name.
template <typename From, typename To>
void copyLook(const From& from, To& to) {
    to.surfaceMaterialCode = from.surfaceMaterialCode;
    to.featureId = from.featureId;
    to.backColor = from.backColor;
    to.displayMode = from.displayMode;
    to.intensity = from.intensity;
    to.backIntensity = from.backIntensity;
    to.minDefocus = from.minDefocus;
    to.maxDefocus = from.maxDefocus;
    to.fadingMode = from.fadingMode;
    to.fogPunchMode = from.fogPunchMode;
    to.directionalMode = from.directionalMode;
    to.rangeMode = from.rangeMode;
    to.minPixelSize = from.minPixelSize;
    to.maxPixelSize = from.maxPixelSize;
    to.actualPixelSize = from.actualPixelSize;
    to.transparentFalloffPixelSize = from.transparentFalloffPixelSize;
    to.transparentFalloffExponent = from.transparentFalloffExponent;
    to.transparentFalloffScalar = from.transparentFalloffScalar;
    to.transparentFalloffClamp = from.transparentFalloffClamp;
    to.fogScalar = from.fogScalar;
    to.sizeDifferenceThreshold = from.sizeDifferenceThreshold;
    to.directionalType = from.directionalType;
    to.horizontalLobeAngle = from.horizontalLobeAngle;
    to.verticalLobeAngle = from.verticalLobeAngle;
    to.lobeRollAngle = from.lobeRollAngle;
    to.directionalFalloffExponent = from.directionalFalloffExponent;
    to.directionalAmbientIntensity = from.directionalAmbientIntensity;
    to.significance = from.significance;
    to.flags = from.flags;
}

/// Without name and index. The word that a light point reserves is where an entry has its fog
/// intensity, and the flags have the same places in both.
PaletteForm paletteFormOf(const FltLightPoint& light) {
    PaletteForm form;
    copyLook(light, form.appearance);
    form.appearance.fogIntensity = light.reserved;
    FltLightPointAnimation animation;
    animation.period = light.animationPeriod;
    animation.phaseDelay = light.animationPhaseDelay;
    animation.enabledPeriod = light.animationEnabledPeriod;
    animation.axis = {static_cast<float>(light.axisX), static_cast<float>(light.axisY),
                      static_cast<float>(light.axisZ)};
    const bool isStill =
        recordBytes(animation, kFltRevision) == recordBytes(FltLightPointAnimation(), kFltRevision);
    if (isStill) return form;
    // A sequence without steps does nothing, and keeps the values as the light point does.
    animation.type = light.flags & FltLightPoint::kRotates ? FltLightPointAnimation::kRotating
                     : light.flags & FltLightPoint::kFlashes
                         ? FltLightPointAnimation::kStrobe
                         : FltLightPointAnimation::kFlashingSequence;
    if (animation.type == FltLightPointAnimation::kRotating &&
        (light.flags & FltLightPoint::kRotatesCounterClockwise) != 0)
        animation.flags = FltLightPointAnimation::kRotatesCounterClockwise;
    form.animation = animation;
    return form;
}

FltLightPoint lightPointOf(const PaletteForm& form) {
    FltLightPoint light;
    copyLook(form.appearance, light);
    light.reserved = form.appearance.fogIntensity;
    if (!form.animation) return light;
    light.animationPeriod = form.animation->period;
    light.animationPhaseDelay = form.animation->phaseDelay;
    light.animationEnabledPeriod = form.animation->enabledPeriod;
    light.axisX = double{form.animation->axis.x};
    light.axisY = double{form.animation->axis.y};
    light.axisZ = double{form.animation->axis.z};
    return light;
}

/// An entry's bytes without name and index, by which entries of the same look are known.
template <typename Record>
std::string keyOf(Record record) {
    record.index = 0;
    std::ranges::fill(record.name, '\0');
    const Bytes bytes = recordBytes(record, kFltRevision);
    return {bytes.begin(), bytes.end()};
}

bool isSame(const PaletteForm& a, const PaletteForm& b) {
    if (keyOf(a.appearance) != keyOf(b.appearance) ||
        a.animation.has_value() != b.animation.has_value())
        return false;
    return !a.animation || keyOf(*a.animation) == keyOf(*b.animation);
}

/// Whether the class holds all that a record says, which is read into `record`.
bool holdsAll(const FltRecordView& view, FltRecord& record, std::uint32_t revision) {
    try {
        record.readBytes(view.bytes(), revision);
    } catch (const diagnostics::AviaryAssertion&) {
        return false;
    }
    const Bytes own = recordBytes(record, revision);
    const auto bytes = view.bytes();
    const std::size_t common = std::min(own.size(), bytes.size());
    constexpr std::size_t kHead = FltRecordView::kHeaderSize;
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return std::ranges::equal(bytes.first(common).subspan(kHead),
                              std::span(own).first(common).subspan(kHead)) &&
           std::ranges::all_of(bytes.subspan(common), isZero) &&
           std::ranges::all_of(std::span(own).subspan(common), isZero);
}

// ---------------------------------------------------------------- the palettes

/// The entries of one palette, by what they look like, and those that are to be added.
template <typename Record>
class Entries {
public:
    Entries(const Database& database, Palette palette) {
        for (const Entry& entry : database.entries(palette)) {
            if (entry.hasIndex) taken_.insert(entry.index);
            Record record;
            if (entry.counts() && entry.isReadable &&
                holdsAll(entry.record, record, database.revision()))
                known_.try_emplace(keyOf(record), entry.index);
        }
    }

    /// The index of an entry of that look. A new one is named after the light point.
    std::int32_t find(Record record, std::string_view name, std::uint32_t revision) {
        const auto [place, isNew] = known_.try_emplace(keyOf(record), 0);
        if (!isNew) return place->second;
        while (taken_.contains(next_)) ++next_;
        place->second = record.index = next_++;
        fltSetText(record.name, name);
        const Bytes bytes = recordBytes(record, revision);
        added_.insert(added_.end(), bytes.begin(), bytes.end());
        return record.index;
    }

    const Bytes& added() const noexcept { return added_; }

private:
    std::map<std::string, std::int32_t> known_;
    std::set<std::int32_t> taken_;
    std::int32_t next_ = 0;
    Bytes added_;
};

/// A database while light points of it come to name its entries.
struct Growing {
    explicit Growing(INode& header)
        : node(header),
          database(header),
          appearances(database, Palette::kAppearance),
          animations(database, Palette::kAnimation) {}

    INode& node;
    Database database;
    Entries<FltLightPointAppearance> appearances;
    Entries<FltLightPointAnimation> animations;
};

// ---------------------------------------------------------------- nodes

/// Calls `convert(node, database)`, which returns whether it did, for the nodes of that kind, each
/// once.
ConvertedLightPoints forEachLight(std::span<INode* const> nodes, std::uint16_t kind,
                                  auto&& convert) {
    ConvertedLightPoints converted;
    std::unordered_set<const INode*> done;
    for (INode* const top : nodes)
        ForEachInSubtree(top, [&](INode& node) {
            if (!done.insert(&node).second) return WalkStep::kPastThis;
            FltNodeKind own{};
            if (!fltGetKind(&node, false, own) || static_cast<std::uint16_t>(own) != kind)
                return WalkStep::kOn;
            INode* const database = databaseOf(&node);
            if (database != nullptr && convert(node, *database)) {
                ++converted.done;
            } else {
                ++converted.passedOver;
            }
            return WalkStep::kOn;
        });
    if (converted.done == 0) throw Refusal(CoreText::kNoLightPoints);
    return converted;
}

std::uint32_t revisionOf(INode& node, const SourceRecords& kept) {
    std::uint32_t revision = kFltRevision;
    if (kept.revision != 0) return kept.revision;
    fltGetParameter(&node, revision);
    return revision;
}

/// The node becomes one of `kind`, of whose record files keep those bytes.
void become(INode& node, std::uint16_t kind, const FltRecord& record) {
    SourceRecordsEdit edit(node);
    const std::uint32_t revision = revisionOf(node, edit.kept());
    edit.setNodeRecord(recordBytes(record, revision));
    edit.store(revision);
    if (!fltEnsureKind(&node, static_cast<FltNodeKind>(kind), kFltRevision)) throw std::bad_alloc();
}

}  // namespace

ConvertedLightPoints indexLightPoints(std::span<INode* const> nodes) {
    Step step(CoreText::kIndexLightsStep);
    std::map<INode*, std::unique_ptr<Growing>> databases;
    const auto convert = [&](INode& node, INode& header) {
        FltLightPoint light, read;
        if (!fltGetRecord(&node, light)) return false;
        const SourceRecords kept = fltkilnutil::sourceRecordsOf(node);
        if (!kept.record.empty() &&
            (kept.record.opcode() != kFltLightPoint || !holdsAll(kept.record, read, kept.revision)))
            return false;
        auto& database = databases[&header];
        if (database == nullptr) database = std::make_unique<Growing>(header);
        const PaletteForm form = paletteFormOf(light);
        const std::uint32_t revision = database->database.revision();
        FltIndexedLightPoint indexed;
        std::ranges::copy(light.asciiId, indexed.asciiId);
        indexed.drawOrder = light.calligraphicDrawOrder;
        const std::string name = node.GetName();
        indexed.appearanceIndex = database->appearances.find(form.appearance, name, revision);
        if (form.animation)
            indexed.animationIndex = database->animations.find(*form.animation, name, revision);
        become(node, kFltIndexedLightPoint, indexed);
        fltRemoveRecord(&node);
        return true;
    };
    const ConvertedLightPoints converted = forEachLight(nodes, kFltLightPoint, convert);
    for (auto& [header, database] : databases) {
        SourceRecordsEdit edit(database->node);
        for (const Bytes* const added :
             {&database->appearances.added(), &database->animations.added()})
            if (!added->empty()) insertRecord(edit, *added);
        edit.store(database->database.revision());
    }
    step.Commit();
    return converted;
}

ConvertedLightPoints inlineLightPoints(std::span<INode* const> nodes) {
    Step step(CoreText::kInlineLightsStep);
    std::map<INode*, std::unique_ptr<Database>> databases;
    /// The entry of that index, if its class holds all of it.
    const auto readEntryOf = [](const Database& database, Palette palette, std::int32_t index,
                                FltRecord& record) {
        const Entry* const entry = database.find(palette, index);
        return entry != nullptr && entry->counts() && entry->isReadable &&
               holdsAll(entry->record, record, database.revision());
    };
    const auto convert = [&](INode& node, INode& header) {
        const SourceRecords kept = fltkilnutil::sourceRecordsOf(node);
        FltIndexedLightPoint indexed;
        if (kept.record.empty() || kept.record.opcode() != kFltIndexedLightPoint ||
            !holdsAll(kept.record, indexed, kept.revision))
            return false;
        auto& database = databases[&header];
        if (database == nullptr) database = std::make_unique<Database>(header);
        PaletteForm form;
        if (!readEntryOf(*database, Palette::kAppearance, indexed.appearanceIndex, form.appearance))
            return false;
        if (indexed.animationIndex != -1 &&
            !readEntryOf(*database, Palette::kAnimation, indexed.animationIndex,
                         form.animation.emplace()))
            return false;
        FltLightPoint light = lightPointOf(form);
        if (!isSame(paletteFormOf(light), form)) return false;
        std::ranges::copy(indexed.asciiId, light.asciiId);
        light.calligraphicDrawOrder = indexed.drawOrder;
        become(node, kFltLightPoint, light);
        if (!fltPutRecord(&node, light)) throw std::bad_alloc();
        return true;
    };
    const ConvertedLightPoints converted = forEachLight(nodes, kFltIndexedLightPoint, convert);
    step.Commit();
    return converted;
}

}  // namespace palettes
