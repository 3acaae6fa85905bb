#include "facts.h"

#include "commands.h"

#include <base/paths.h>
#include <checks/check.h>
#include <checks/filesource.h>
#include <checks/namedfile.h>
#include <diagnostics/assertion.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmesh.h>
#include <quillon/fltmultitexture.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace fltool {

namespace {

namespace fs = std::filesystem;

constexpr double kFar = std::numeric_limits<double>::infinity();

/// The distances at which something is shown: more than `nearest`, up to `farthest`.
struct Range {
    double nearest = 0;
    double farthest = kFar;
};

/// Hands a file's nodes on to the check and notes what a report wants of them.
class Observer final : public checks::Source {
public:
    Observer(std::span<const std::uint8_t> bytes, Facts& facts, const FactLimits& limits)
        : bytes_(bytes), source_(bytes, facts.path), facts_(facts), limits_(limits) {}

    bool next(checks::Node& node) override {
        const bool isThere = source_.next(node);
        endRecords(isThere ? node.place : bytes_.size());
        if (isThere) take(node);
        return isThere;
    }
    std::size_t estimate() const override { return source_.estimate(); }
    std::string nameAt(std::uint64_t place) const override { return source_.nameAt(place); }
    std::vector<std::string> folders() const override { return source_.folders(); }
    std::string fileOf(std::uint64_t place) const override { return source_.fileOf(place); }
    bool isFile() const override { return true; }
    std::uint64_t unusedVertices() const override { return source_.unusedVertices(); }

    /// When all nodes have passed.
    void finish() {
        addUp();
        makeSteps();
        keepHeaviest();
        findTextures();
        takeUsers();
        for (auto& [name, reference] : references_) {
            reference.path =
                base::textOf(checks::findNamedFile(checks::fileOfReference(name), folders()));
            facts_.references.push_back(std::move(reference));
        }
        std::ranges::sort(facts_.references, {}, &ReferenceFacts::offset);
    }

private:
    /// The records of the present node have ended at `end`.
    void endRecords(std::uint64_t end) {
        if (!facts_.branches.empty()) facts_.branches[branchOf_.back()].bytes += end - begin_;
        begin_ = end;
    }

    void take(const checks::Node& node) {
        ++facts_.kinds[node.kind];
        const bool hasParent = node.parent < branchOf_.size();
        if (node.kind == kFltFace && hasParent)
            branchOf_.push_back(branchOf_[node.parent]);
        else
            addBranch(node, hasParent ? branchOf_[node.parent] : 0);
        if (node.polygons != nullptr && !fltIsLightPoint(node.kind)) {
            const std::size_t branch = branchOf_.back();
            facts_.branches[branch].faces += node.polygons->ends.size();
        }
        takeRecord(node);
        for (const FltRecordView& record : node.attached) {
            try {
                takeAttached(node, record);
            } catch (const diagnostics::AviaryAssertion&) {
                // Counts that no record can hold: there is no entry then.
            }
        }
    }

    void addBranch(const checks::Node& node, std::uint32_t parent) {
        const auto number = static_cast<std::uint32_t>(facts_.branches.size());
        branchOf_.push_back(number);
        BranchFacts branch;
        branch.parent = parent;
        branch.kind = node.kind;
        branch.name = node.name;
        branch.offset = node.place;
        facts_.branches.push_back(std::move(branch));
        std::uint32_t range = number == 0 ? addRange({}) : rangeOf_[parent];
        if (node.kind == kFltLod && node.record != nullptr) {
            const auto& lod = static_cast<const FltLod&>(*node.record);
            facts_.levels.push_back({std::string(node.name), node.place, lod.switchInDistance,
                                     lod.switchOutDistance, 0});
            levelBranches_.push_back(number);
            range = addRange(within(ranges_[range], lod));
        }
        rangeOf_.push_back(range);
    }

    std::uint32_t addRange(const Range& range) {
        ranges_.push_back(range);
        return static_cast<std::uint32_t>(ranges_.size() - 1);
    }

    static Range within(const Range& outer, const FltLod& lod) {
        // Distances that are no numbers are none.
        const double out = std::isnan(lod.switchOutDistance) ? 0 : lod.switchOutDistance;
        const double in = std::isnan(lod.switchInDistance) ? 0 : lod.switchInDistance;
        return {std::max(outer.nearest, out), std::min(outer.farthest, in)};
    }

    void takeRecord(const checks::Node& node) {
        if (node.record == nullptr) return;
        const FltRecord& record = *node.record;
        switch (node.kind) {
            case kFltHeader:
                if (!facts_.hasHeader) facts_.header = static_cast<const FltHeader&>(record);
                facts_.hasHeader = true;
                return;
            case kFltFace:
            case kFltMesh: {
                const auto& surface = static_cast<const FltPolygonRec&>(record);
                use(textureUsers_, surface.textureIndex);
                if (surface.detailTextureIndex != surface.textureIndex)
                    use(textureUsers_, surface.detailTextureIndex);
                use(EntryKind::kMaterial, surface.materialIndex);
                use(EntryKind::kMapping, surface.textureMappingIndex);
                return;
            }
            case kFltLightPoint: {
                const auto& light = static_cast<const FltLightPoint&>(record);
                return addLightPoint(node, -1, light.intensity, light.directionalMode);
            }
            case kFltIndexedLightPoint: {
                const auto& light = static_cast<const FltIndexedLightPoint&>(record);
                use(EntryKind::kAppearance, light.appearanceIndex);
                use(EntryKind::kAnimation, light.animationIndex);
                return addLightPoint(node, light.appearanceIndex, 0, 0);
            }
            case kFltLightSource:
                return use(EntryKind::kLightSource,
                           static_cast<const FltLightSource&>(record).paletteIndex);
            case kFltExternalRef: {
                std::string name(fltText(static_cast<const FltXRef&>(record).fileName));
                ReferenceFacts& reference = references_[name];
                if (reference.count++ == 0) {
                    reference.name = std::move(name);
                    reference.offset = node.place;
                }
                return;
            }
            default:
                return;
        }
    }

    void addLightPoint(const checks::Node& node, std::int32_t appearance, double intensity,
                       std::int32_t directional) {
        if (facts_.lightPoints.size() >= limits_.rows) {
            ++facts_.lightPointsLeftOut;
            return;
        }
        facts_.lightPoints.push_back({std::string(node.name), node.place,
                                      node.polygons != nullptr ? node.polygons->corners.size() : 0,
                                      node.kind, appearance,
                                      std::isfinite(intensity) ? intensity : 0, directional});
    }

    void takeAttached(const checks::Node& node, const FltRecordView& view) {
        const auto read = [&](auto record) {
            record.readBytes(view.bytes(), node.revision);
            return record;
        };
        const auto enter = [&](EntryKind kind, std::int32_t index, std::string_view name) {
            entriesOf(kind).push_back({index, std::string(name)});
        };
        switch (view.opcode()) {
            case kFltComment:
                return addComment(node, view);
            case kFltTexture: {
                const FltTexture texture = read(FltTexture());
                facts_.textures.push_back(
                    {texture.index, std::string(fltText(texture.fileName)), {}});
                return;
            }
            case kFltMaterial: {
                const FltMaterial material = read(FltMaterial());
                addMaterial(material.index, material);
                return;
            }
            case kFltMaterialTable: {
                const FltMaterialTable table = read(FltMaterialTable());
                for (std::size_t i = 0; i < table.materials.size(); ++i)
                    addMaterial(static_cast<std::int32_t>(i), table.materials[i]);
                return;
            }
            case kFltLightSourcePalette: {
                const FltLightSourcePalette entry = read(FltLightSourcePalette());
                return enter(EntryKind::kLightSource, entry.paletteIndex, fltText(entry.name));
            }
            case kFltTextureMappingPalette: {
                const FltTextureMapping entry = read(FltTextureMapping());
                return enter(EntryKind::kMapping, entry.index, fltText(entry.name));
            }
            case kFltLightPointAppearance: {
                const FltLightPointAppearance entry = read(FltLightPointAppearance());
                use(textureUsers_, entry.textureIndex);
                return enter(EntryKind::kAppearance, entry.index, fltText(entry.name));
            }
            case kFltLightPointAnimation: {
                const FltLightPointAnimation entry = read(FltLightPointAnimation());
                return enter(EntryKind::kAnimation, entry.index, fltText(entry.name));
            }
            case kFltMultiTexture: {
                for (const FltTextureLayer& layer : read(FltMultiTexture()).layers) {
                    if (layer.textureIndex != FltTextureLayer::kNone)
                        use(textureUsers_, layer.textureIndex);
                    if (layer.mappingIndex != FltTextureLayer::kNone)
                        use(EntryKind::kMapping, layer.mappingIndex);
                }
                return;
            }
            case kFltColorPalette:
                facts_.colors = read(FltColorPalette()).entryCount();
                return;
            default:
                return;
        }
    }

    template <typename Material>
    void addMaterial(std::int32_t index, const Material& material) {
        const FltColor3f& color = material.diffuse;
        entriesOf(EntryKind::kMaterial)
            .push_back({index,
                        std::string(fltText(material.name)),
                        0,
                        true,
                        {color.red, color.green, color.blue, material.alpha}});
    }

    void addComment(const checks::Node& node, const FltRecordView& view) {
        if (facts_.comments.size() >= limits_.rows) {
            ++facts_.commentsLeftOut;
            return;
        }
        const auto body = view.body();
        const std::string_view text =
            fltText({reinterpret_cast<const char*>(body.data()), body.size()});
        facts_.comments.push_back({std::string(node.name), view.offset(), std::string(text)});
    }

    using Users = std::unordered_map<std::int32_t, std::uint64_t>;

    static void use(Users& users, std::int32_t index) {
        if (index >= 0) ++users[index];
    }
    void use(EntryKind kind, std::int32_t index) {
        use(users_[static_cast<std::size_t>(kind)], index);
    }
    std::vector<EntryFacts>& entriesOf(EntryKind kind) {
        return facts_.entries[static_cast<std::size_t>(kind)];
    }

    static std::uint64_t usersOf(const Users& users, std::int32_t index) {
        const auto found = users.find(index);
        return found != users.end() ? found->second : 0;
    }

    void takeUsers() {
        for (std::size_t kind = 0; kind < kEntryKinds; ++kind)
            for (EntryFacts& entry : facts_.entries[kind])
                entry.users = usersOf(users_[kind], entry.index);
    }

    void findTextures() {
        const std::vector<std::string> where = folders();
        for (TextureFacts& texture : facts_.textures) {
            texture.users = usersOf(textureUsers_, texture.index);
            const fs::path path = checks::findNamedFile(texture.name, where);
            if (path.empty()) continue;
            texture.path = base::textOf(path);
            std::error_code unknown;
            const std::uintmax_t size = fs::file_size(path, unknown);
            texture.fileBytes = unknown ? 0 : size;
            if (const auto sides = checks::pictureSizeOf(path)) {
                texture.width = sides->width;
                texture.height = sides->height;
            }
        }
    }

    /// Faces and bytes upwards, and those of each level of detail.
    void addUp() {
        std::vector<BranchFacts>& branches = facts_.branches;
        for (BranchFacts& branch : branches) {
            branch.allFaces = branch.faces;
            branch.allBytes = branch.bytes;
        }
        std::vector<std::uint64_t> shown(branches.size());
        for (std::size_t i = 0; i < branches.size(); ++i) shown[i] = branches[i].faces;
        for (std::size_t i = branches.size(); i-- > 1;) {
            const BranchFacts& branch = branches[i];
            branches[branch.parent].allFaces += branch.allFaces;
            branches[branch.parent].allBytes += branch.allBytes;
            if (branch.kind != kFltLod) shown[branch.parent] += shown[i];
        }
        for (std::size_t i = 0; i < levelBranches_.size(); ++i)
            facts_.levels[i].faces = shown[levelBranches_[i]];
    }

    /// All distances are taken to be the same: each is measured to the center of its own level.
    void makeSteps() {
        if (facts_.levels.empty()) return;
        std::map<double, std::int64_t> changes{{0, 0}};
        for (std::size_t i = 0; i < facts_.branches.size(); ++i) {
            const Range& range = ranges_[rangeOf_[i]];
            const auto faces = static_cast<std::int64_t>(facts_.branches[i].faces);
            if (faces == 0 || !(range.nearest < range.farthest)) continue;
            changes[std::max(range.nearest, 0.0)] += faces;
            if (range.farthest < kFar) changes[std::max(range.farthest, 0.0)] -= faces;
        }
        std::int64_t faces = 0;
        for (const auto& [distance, change] : changes) {
            faces += change;
            if (change != 0 || distance == 0)
                facts_.steps.push_back({distance, static_cast<std::uint64_t>(faces)});
        }
    }

    /// Those with the most below them, so that the parents of those that are kept are kept too.
    void keepHeaviest() {
        std::vector<BranchFacts>& branches = facts_.branches;
        if (branches.size() <= limits_.branches) return;
        const auto all = [&](auto of) {
            return static_cast<double>(std::max<std::uint64_t>(branches.front().*of, 1));
        };
        const double faces = all(&BranchFacts::allFaces), bytes = all(&BranchFacts::allBytes);
        const auto weight = [&](std::uint32_t i) {
            return static_cast<double>(branches[i].allFaces) / faces +
                   static_cast<double>(branches[i].allBytes) / bytes;
        };
        std::vector<std::uint32_t> order(branches.size());
        std::iota(order.begin(), order.end(), 0U);
        // A parent stands before its children, and so does it here.
        std::ranges::stable_sort(order.begin() + 1, order.end(), std::greater(), weight);
        order.resize(limits_.branches);
        std::ranges::sort(order);
        std::vector<std::uint32_t> numberOf(branches.size());
        std::vector<BranchFacts> kept;
        for (const std::uint32_t i : order) {
            numberOf[i] = static_cast<std::uint32_t>(kept.size());
            kept.push_back(std::move(branches[i]));
            kept.back().parent = numberOf[kept.back().parent];
        }
        facts_.branchesLeftOut = branches.size() - kept.size();
        branches = std::move(kept);
    }

    std::span<const std::uint8_t> bytes_;
    checks::FileSource source_;
    Facts& facts_;
    const FactLimits& limits_;
    std::uint64_t begin_ = 0;              ///< of the present node's records
    std::vector<std::uint32_t> branchOf_;  ///< by the number of a node
    std::vector<std::uint32_t> rangeOf_;   ///< by branch: index in `ranges_`
    std::vector<Range> ranges_;
    std::vector<std::uint32_t> levelBranches_;
    Users textureUsers_;
    std::array<Users, kEntryKinds> users_;
    std::map<std::string, ReferenceFacts> references_;
};

}  // namespace

Facts factsOf(std::span<const std::uint8_t> bytes, const std::string& path,
              const checks::Target& target, const FactLimits& limits,
              checks::KnownReferences* known) {
    Facts facts;
    facts.path = path;
    facts.bytes = bytes.size();
    checks::Target bounded = target;
    bounded.mostFindings = std::min(target.mostFindings, limits.findings);
    Observer observer(bytes, facts, limits);
    checks::Check check(observer, bounded, known);
    check.finish();
    facts.report = check.report();
    facts.report.damages = damagesIn(bytes);
    observer.finish();
    return facts;
}

Facts gatherFacts(const std::string& path, const checks::Target& target, const FactLimits& limits,
                  checks::KnownReferences* known) {
    try {
        return factsOf(FltFileBytes::load(path).bytes(), path, target, limits, known);
    } catch (const std::system_error& error) {
        Facts facts;
        facts.path = path;
        facts.failure = error.what();
        return facts;
    }
}

}  // namespace fltool
