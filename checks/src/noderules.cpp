// What a node's record says by itself.
#include "gathered.h"
#include "texts.h"

#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlod.h>
#include <quillon/fltmesh.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltrevision.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>
#include <iterator>

namespace checks {

namespace {

// ---------------------------------------------------------------- header

template <typename Number>
bool isOneOf(Number value, std::initializer_list<Number> known) {
    return std::ranges::find(known, value) != known.end();
}

void checkProjection(Gathered& all, std::uint32_t number, const FltHeader& header) {
    if (!isOneOf(header.projectionType, {0, 1, 2, 3, 4, 5, 6}))
        return all.found(Rule::HDR_PROJECTION, number,
                         "type " + std::to_string(header.projectionType));
    if (header.projectionType == 0) return;
    if (!all.canJudge(Rule::HDR_PROJECTION, number,
                      {header.originLatitude, header.originLongitude, header.lambertUpperLatitude,
                       header.lambertLowerLatitude}))
        return;
    constexpr double kMostLatitude = 90, kMostLongitude = 360;
    if (std::abs(header.originLatitude) > kMostLatitude ||
        std::abs(header.originLongitude) > kMostLongitude)
        all.found(Rule::HDR_PROJECTION, number, "the origin lies outside of the earth");
    constexpr std::int32_t kLambert = 3, kUtm = 4;
    if (header.projectionType == kLambert &&
        header.lambertUpperLatitude == header.lambertLowerLatitude)
        all.found(Rule::HDR_PROJECTION, number, "both latitudes of the cone are the same");
    constexpr std::int16_t kMostZones = 60;
    if (header.projectionType == kUtm && std::abs(header.utmZone) > kMostZones)
        all.found(Rule::HDR_PROJECTION, number, "zone " + std::to_string(header.utmZone));
}

void checkHeader(Gathered& all, std::uint32_t number, const FltHeader& header) {
    Database& database = all.databaseOf(number);
    database.header = header;
    database.hasHeader = true;
    const Target& target = all.target;
    const std::uint32_t revision = header.revision();
    if (target.revision ? revision != *target.revision : !fltIsWritable(revision))
        all.found(Rule::HDR_REVISION, number, revisionText(revision),
                  target.revision ? revisionText(*target.revision)
                                  : std::string("14.2 to 15.8 or 16.0 to 16.6"));
    const std::uint8_t units = header.vertexCoordinateUnits;
    if (target.units ? units != *target.units : !isOneOf<std::uint8_t>(units, {0, 1, 4, 5, 8}))
        all.found(Rule::HDR_UNITS, number, std::int32_t{units});
    if (header.vertexStorageType != 1)
        all.found(Rule::HDR_STORAGE, number, std::int32_t{header.vertexStorageType});
    if (!isOneOf(header.databaseOrigin, {100, 200, 300, 400, 500, 510, 550, 560, 600, 700, 800}))
        all.found(Rule::HDR_ORIGIN, number, header.databaseOrigin);
    checkProjection(all, number, header);
    constexpr std::int32_t kOwnEllipsoid = -1;
    if (!isOneOf(header.earthEllipsoidModel, {kOwnEllipsoid, 0, 1, 2, 3, 4})) {
        all.found(Rule::HDR_ELLIPSOID, number,
                  "model " + std::to_string(header.earthEllipsoidModel));
    } else if (header.earthEllipsoidModel == kOwnEllipsoid &&
               all.canJudge(Rule::HDR_ELLIPSOID, number,
                            {header.earthMajorAxis, header.earthMinorAxis}) &&
               (header.earthMinorAxis <= 0 || header.earthMajorAxis < header.earthMinorAxis)) {
        all.found(Rule::HDR_ELLIPSOID, number, "its axes are no ellipsoid's");
    }
}

// ---------------------------------------------------------------- switch, degree of freedom

void checkDof(Gathered& all, std::uint32_t number, const FltDof& dof) {
    for (const FltDofMotion& motion : kFltDofMotions) {
        const double least = dof.*motion.least, greatest = dof.*motion.greatest,
                     current = dof.*motion.current;
        if (motion.isScale && current == 0) all.found(Rule::DOF_SCALE_ZERO, number, motion.name);
        if (!motion.isLimited(dof) ||
            !all.canJudge(Rule::DOF_LIMITS, number, {least, greatest, current}))
            continue;
        if (least > greatest) {
            all.found(Rule::DOF_LIMITS, number, motion.name, least, greatest);
        } else if (current < least || current > greatest) {
            all.found(Rule::DOF_CURRENT, number, motion.name, current, least, greatest);
        }
    }
    const FltPoint3d x = dof.pointOnXAxis - dof.origin, xy = dof.pointInXyPlane - dof.origin;
    const double width = length(cross(x, xy));
    if (!all.canJudge(Rule::DOF_FRAME, number, {width})) return;
    constexpr double kSmallestSine = 1e-6;
    if (width <= kSmallestSine * length(x) * length(xy)) all.found(Rule::DOF_FRAME, number);
}

void keepSwitch(Gathered& all, std::uint32_t number, const FltSwitch& record) {
    KeptSwitch& kept = all.switches.emplace_back();
    kept.node = number;
    kept.wordsPerMask = record.wordsPerMask;
    const std::int32_t masks = record.maskCount();
    if (masks > 0) {
        const std::uint32_t* const words = record.maskWords.data();
        kept.words.assign(words, words + std::ptrdiff_t{masks} * record.wordsPerMask);
        if (record.currentMask < 0 || record.currentMask >= masks)
            all.found(Rule::SWITCH_CURRENT, number, record.currentMask, masks);
    }
}

void keepLod(Gathered& all, std::uint32_t number, const FltLod& lod) {
    if (!all.canJudge(Rule::LOD_REVERSED, number,
                      {lod.switchInDistance, lod.switchOutDistance, lod.centerX, lod.centerY,
                       lod.centerZ, lod.transitionRange}))
        return;
    if (lod.switchInDistance < lod.switchOutDistance)
        all.found(Rule::LOD_REVERSED, number, lod.switchInDistance, lod.switchOutDistance);
    const std::uint32_t parent = all.nodes[number].parent;
    const Transform above = parent == kNone ? Transform() : all.beads[all.nodes[parent].bead].world;
    all.lods.push_back({number, lod.switchInDistance, lod.switchOutDistance, lod.transitionRange,
                        above({lod.centerX, lod.centerY, lod.centerZ})});
}

// ---------------------------------------------------------------- surfaces and lights

void useIndex(Gathered& all, std::uint32_t number, Palette palette, std::int32_t index) {
    Database& database = all.databaseOf(number);
    if (index >= 0 && !database.use(palette, index))
        database.openIndices.push_back({number, palette, index});
}

void checkSurface(Gathered& all, std::uint32_t number, const FltPolygonRec& surface,
                  const Polygons* polygons) {
    useIndex(all, number, Palette::kTexture, surface.textureIndex);
    useIndex(all, number, Palette::kTexture, surface.detailTextureIndex);
    useIndex(all, number, Palette::kMaterial, surface.materialIndex);
    useIndex(all, number, Palette::kMapping, surface.textureMappingIndex);
    constexpr std::uint8_t kClosedLines = 2, kLines = 3;
    const bool isLines = surface.drawType == kClosedLines || surface.drawType == kLines;
    const bool hasPolygon =
        polygons != nullptr && !polygons->ends.empty() && polygons->corners.size() > 2;
    if (isLines && hasPolygon)
        all.found(Rule::DRAW_LINE_AREA, number, std::int32_t{surface.drawType});
    const std::int32_t billboard = surface.billboard;
    if (!isOneOf<std::uint8_t>(surface.billboard,
                               {kFltOpaque, kFltFixedBlended, kFltAxisBlended, kFltPointBlended})) {
        all.found(Rule::BILLBOARD, number, billboard, "it is none of the known ones");
    } else if (surface.textureIndex < 0 && surface.billboard >= kFltAxisBlended) {
        all.found(Rule::BILLBOARD, number, billboard, "there is no texture");
    }
    if (!hasPolygon) return;
    if (surface.textureIndex >= 0 && !polygons->hasTexture) all.found(Rule::UV_MISSING, number);
    if (fltIsLit(surface.lightMode) && !polygons->hasNormals && !polygons->makesNormals)
        all.found(Rule::NORMAL_MISSING, number);
}

constexpr std::int32_t kOmnidirectional = 0, kBidirectional = 2;

void checkLook(Gathered& all, std::uint32_t number, const FltLightPoint& look) {
    if (!all.canJudge(Rule::LP_DARK, number,
                      {look.intensity, look.backIntensity, look.minPixelSize, look.maxPixelSize,
                       look.horizontalLobeAngle, look.verticalLobeAngle}))
        return;
    const bool hasBack = look.directionalType == kBidirectional;
    if (look.intensity <= 0 && !(hasBack && look.backIntensity > 0))
        all.found(Rule::LP_DARK, number, "its intensity is 0");
    if (look.minPixelSize > look.maxPixelSize)
        all.found(Rule::LP_SIZE, number, double{look.minPixelSize}, double{look.maxPixelSize});
    if (look.directionalType == kOmnidirectional) return;
    if (look.horizontalLobeAngle <= 0 || look.verticalLobeAngle <= 0)
        all.found(Rule::LP_DIRECTION, number, "its lobe has no width");
}

void checkLightPoint(Gathered& all, std::uint32_t number, const FltLightPoint& light,
                     const Polygons* points) {
    checkLook(all, number, light);
    if (points == nullptr || points->corners.empty())
        return all.found(Rule::LP_DARK, number, "it has no points");
    if (light.directionalType != kOmnidirectional && !points->hasNormals)
        all.found(Rule::LP_DIRECTION, number, "its points have no normals");
}

void useLightIndex(Gathered& all, std::uint32_t number, const FltIndexedLightPoint& light) {
    const auto use = [&](Palette palette, std::int32_t index) {
        if (!all.databaseOf(number).use(palette, index))
            all.found(Rule::LP_INDEX, number, nameOf(palette), index);
    };
    use(Palette::kAppearance, light.appearanceIndex);
    if (light.animationIndex >= 0) use(Palette::kAnimation, light.animationIndex);
}

// ---------------------------------------------------------------- IDs and names

/// The prefix of the IDs that records of a kind get by themselves; null for kinds without one.
const char* prefixOf(std::uint16_t kind) noexcept {
    switch (kind) {
        case kFltGroup:
            return "g";
        case kFltLod:
            return "l";
        case kFltObject:
            return "o";
        case kFltFace:
            return "f";
        case kFltDof:
            return "d";
        case kFltBsp:
            return "b";
        case kFltSwitch:
            return "f (switch)";
        case kFltClipRegion:
            return "c";
        case kFltLightSource:
            return "ls";
        case kFltLightPoint:
            return "lp";
        default:
            return nullptr;
    }
}

void checkId(Gathered& all, std::uint32_t number, const Node& node) {
    // The records hand out their ID for reading and writing alike.
    const char* const field = const_cast<FltRecord*>(node.record)->id();
    if (field == nullptr || *field == 0) return;
    constexpr std::size_t kSize = 8;
    const std::string_view id = fltText(std::span(field, kSize));
    if (id.size() == kSize) all.found(Rule::NAME_LONG, number, id);
    const char* const prefix = prefixOf(node.kind);
    if (prefix == nullptr) return;
    const std::string_view letters(prefix,
                                   std::string_view(prefix).find(' ') == std::string_view::npos
                                       ? std::string_view(prefix).size()
                                       : 1);
    if (!id.starts_with(letters)) return;
    std::int32_t used = 0;
    const char* const end = id.data() + id.size();
    const auto [behind, error] = std::from_chars(id.data() + letters.size(), end, used);
    // No counter reaches further.
    constexpr std::int32_t kMost = 0x7FFE;
    if (error != std::errc() || behind != end || used < 0 || used > kMost) return;
    auto& greatest = all.databaseOf(number).greatest;
    const auto [entry, isNew] = greatest.try_emplace(prefix, used);
    entry->second = std::max(entry->second, used);
}

void checkName(Gathered& all, std::uint32_t number, std::string_view name) {
    if (name.empty()) return;
    const bool isPlain = std::ranges::all_of(
        name, [](char character) { return character >= ' ' && character <= '~'; });
    if (!isPlain || name.front() == ' ' || name.back() == ' ')
        all.found(Rule::NAME_CHARS, number, name);
    if (all.isOn(Rule::NAME_DUPLICATE))
        all.names.push_back(
            {std::hash<std::string_view>()(name), number, all.nodes[number].database});
}

// ---------------------------------------------------------------- hierarchy

/// Nodes that gather others.
bool gathers(std::uint16_t kind) noexcept {
    return isOneOf<std::uint16_t>(
        kind, {kFltGroup, kFltObject, kFltLod, kFltSwitch, kFltDof, kFltBsp, kFltClipRegion});
}

bool mayStandBelow(std::uint16_t kind, std::uint16_t parent) noexcept {
    if (kind == kFltHeader) return false;
    if (parent == kFltFace) return isSurface(kind);
    if (parent == kFltObject) return !gathers(kind);
    return !isOneOf<std::uint16_t>(
        parent, {kFltMesh, kFltLightPoint, kFltIndexedLightPoint, kFltLightSource, kFltExternalRef,
                 kFltInstanceRef, kFltText});
}

void checkPlace(Gathered& all, std::uint32_t number, const Node& node) {
    const KeptNode& kept = all.nodes[number];
    if (kept.depth == all.target.limits.depth)
        all.found(Rule::DEPTH_EXCESS, number, kept.depth + 1, all.target.limits.depth);
    if (kept.parent != kNone) {
        const std::uint16_t parent = all.nodes[kept.parent].kind;
        if (!mayStandBelow(kept.kind, parent))
            all.found(Rule::CHILD_KIND, number, recordWord(kept.kind), recordWord(parent));
    }
    if (node.hasTransform) {
        const bool isFinite = node.transform.isFinite();
        if (!isFinite || node.transform.determinant() == 0)
            all.found(Rule::MATRIX_SINGULAR, number);
    }
}

}  // namespace

void checkNode(Gathered& all, std::uint32_t number, const Node& node) {
    checkPlace(all, number, node);
    checkName(all, number, node.name);
    Statistics& figures = all.report.statistics;
    Database& database = all.databaseOf(number);
    if (node.record != nullptr) checkId(all, number, node);
    switch (node.kind) {
        case kFltHeader:
            if (node.record != nullptr)
                checkHeader(all, number, static_cast<const FltHeader&>(*node.record));
            return;
        case kFltLod:
            ++figures.lods;
            break;
        case kFltSwitch:
            ++figures.switches;
            break;
        case kFltDof:
            ++figures.dofs;
            break;
        case kFltLightSource:
            ++figures.lightSources;
            break;
        case kFltExternalRef:
            ++figures.references;
            break;
        default:
            break;
    }
    if (node.record == nullptr) {
        if (isSurface(node.kind) || fltIsLightPoint(node.kind)) return;
        const FltRecordType* const type = fltRecordType(node.kind);
        if (type == nullptr || type->create == nullptr) database.usesUnknown = true;
        return;
    }
    const FltRecord& record = *node.record;
    switch (node.kind) {
        case kFltLod:
            return keepLod(all, number, static_cast<const FltLod&>(record));
        case kFltSwitch:
            return keepSwitch(all, number, static_cast<const FltSwitch&>(record));
        case kFltDof:
            return checkDof(all, number, static_cast<const FltDof&>(record));
        case kFltFace:
        case kFltMesh:
            return checkSurface(all, number, static_cast<const FltPolygonRec&>(record),
                                node.polygons);
        case kFltLightPoint:
            return checkLightPoint(all, number, static_cast<const FltLightPoint&>(record),
                                   node.polygons);
        case kFltIndexedLightPoint:
            return useLightIndex(all, number, static_cast<const FltIndexedLightPoint&>(record));
        case kFltLightSource:
            // A scene's lights bring their entries along.
            if (all.source.isFile())
                useIndex(all, number, Palette::kLightSource,
                         static_cast<const FltLightSource&>(record).paletteIndex);
            return;
        case kFltExternalRef:
            all.references.push_back(
                {number, std::string(fltText(static_cast<const FltXRef&>(record).fileName))});
            return;
        case kFltInstanceDef:
            database.definitions.try_emplace(static_cast<const FltInstance&>(record).instanceNumber,
                                             number);
            return;
        case kFltInstanceRef:
            database.references.emplace_back(static_cast<const FltInstance&>(record).instanceNumber,
                                             number);
            return;
        default:
            return;
    }
}

}  // namespace checks
