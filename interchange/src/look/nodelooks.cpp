#include <interchange/nodelooks.h>

#include "../colors.h"
#include "../sourcerecords.h"
#include "morse.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <interchange/textencoding.h>
#include <kiln/kiln.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlinestyle.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttexture.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace interchange {

namespace {

constexpr int kMostLayers = 8;

FltNodeKind kindOf(INode* node) {
    FltNodeKind kind{};
    return fltGetKind(node, false, kind) ? kind : FltNodeKind{};
}

/// A share from 0 to 1; what is no number is 0.
float shareOf(float value) {
    return value > 0 ? std::min(value, 1.F) : 0.F;
}

LightColor colorOf(const FltColor3f& color) {
    return {shareOf(color.red), shareOf(color.green), shareOf(color.blue)};
}

LightColor colorOf(COLORREF color) {
    const auto part = [&](unsigned shift) {
        return static_cast<float>(color >> shift & 0xFF) / 255;
    };
    return {part(0), part(8), part(16)};
}

/// Draw types beyond these are those of light points.
SurfaceStyle styleOf(std::uint8_t drawType) {
    switch (drawType) {
        case kFltSolidOneSided:
            return SurfaceStyle::kFrontOnly;
        case kFltClosedOutline:
            return SurfaceStyle::kClosedOutline;
        case kFltOpenOutline:
            return SurfaceStyle::kOpenOutline;
        case kFltSolidAndOutline:
            return SurfaceStyle::kSurfaceAndOutline;
        default:
            return SurfaceStyle::kBothSides;
    }
}

Point3 pointOf(const FltPoint3d& point) {
    return {point.x, point.y, point.z};
}

/// The local frame of a degree of freedom as a transform; none for points in one line.
std::optional<Matrix3> frameOf(const FltDof& dof) {
    const Point3 origin = pointOf(dof.origin);
    const Point3 x = Normalize(pointOf(dof.pointOnXAxis) - origin);
    const Point3 z = Normalize(CrossProd(x, pointOf(dof.pointInXyPlane) - origin));
    const Matrix3 frame(x, CrossProd(z, x), z, origin);
    return IsInvertible(frame) ? std::optional(frame) : std::nullopt;
}

static_assert(std::size(kFltDofMotions) == NodeJoint::kMotions);

/// A scale of 0 is none.
double shownValue(const FltDofMotion& motion, double value) {
    return motion.isScale && value == 0 ? 1 : value;
}

NodeJoint::Values valuesOf(const FltDof& dof) {
    NodeJoint::Values values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = shownValue(kFltDofMotions[i], dof.*kFltDofMotions[i].current);
    return values;
}

/// How it moves what is below it by these values; none when it does not, or by numbers that are not
/// finite.
std::optional<Matrix3> motionOf(const FltDof& dof, const NodeJoint::Values& values) {
    const std::optional<Matrix3> frame = frameOf(dof);
    if (!frame) return std::nullopt;
    const auto radians = [](double degrees) { return degrees * (std::numbers::pi / 180); };
    const Matrix3 motion = RotAngleAxisMatrix({1, 0, 0}, radians(values[3])) *
                           RotAngleAxisMatrix({0, 1, 0}, radians(values[4])) *
                           RotAngleAxisMatrix({0, 0, 1}, radians(values[5])) *
                           ScaleMatrix({values[6], values[7], values[8]}) *
                           TransMatrix({values[0], values[1], values[2]});
    if (motion.IsIdentity() || !IsInvertible(motion)) return std::nullopt;
    return Inverse(*frame) * motion * *frame;
}

/// Of a color as light points have it, red in the lowest byte.
LightColor colorOfPacked(std::uint32_t color) {
    return colorOf(static_cast<COLORREF>(color));
}

/// Of the record or the palette entry of light points; both say it in the same words.
template <typename Record>
LightPointLook pointsOf(const Record& record) {
    using Shines = LightPointLook::Shines;
    LightPointLook look;
    look.shines = record.directionalType == 1   ? Shines::kAhead
                  : record.directionalType == 2 ? Shines::kAheadAndBack
                                                : Shines::kEverywhere;
    look.across = record.horizontalLobeAngle;
    look.along = record.verticalLobeAngle;
    look.roll = record.lobeRollAngle;
    if (look.shines == Shines::kAheadAndBack && (record.flags & Record::kNoBackColor) == 0)
        look.back = colorOfPacked(record.backColor);
    look.size = record.actualPixelSize;
    look.leastPixels = record.minPixelSize;
    look.mostPixels = record.maxPixelSize;
    return look;
}

float turnOf(float period, std::uint32_t counterClockwise) {
    if (!(period > 0)) return 0;
    return counterClockwise != 0 ? period : -period;
}

/// Adds how light points change by their own record.
void animate(LightPointLook& look, const FltLightPoint& light) {
    if ((light.flags & FltLightPoint::kRotates) != 0) {
        look.turn =
            turnOf(light.animationPeriod, light.flags & FltLightPoint::kRotatesCounterClockwise);
        look.axis = Point3{light.axisX, light.axisY, light.axisZ};
        return;
    }
    if ((light.flags & FltLightPoint::kFlashes) == 0) return;
    look.period = light.animationPeriod;
    look.delay = light.animationPhaseDelay;
    look.onTime = light.animationEnabledPeriod;
}

/// The same by an entry of the animation palette. `steps` is where those of a sequence, or of a
/// Morse code, are put.
void animate(LightPointLook& look, const FltLightPointAnimation& animation,
             std::vector<LightPointStep>& steps) {
    constexpr std::uint32_t kOff = 1, kChanging = 2;
    constexpr std::size_t kMostSteps = 256;
    if (animation.type == FltLightPointAnimation::kRotating) {
        look.turn = turnOf(animation.period,
                           animation.flags & FltLightPointAnimation::kRotatesCounterClockwise);
        look.axis = Point3{animation.axis.x, animation.axis.y, animation.axis.z};
    } else if (animation.type == FltLightPointAnimation::kStrobe) {
        look.period = animation.period;
        look.delay = animation.phaseDelay;
        look.onTime = animation.enabledPeriod;
    } else {
        steps.clear();
        if (animation.type == FltLightPointAnimation::kMorseCode) steps = morseStepsOf(animation);
        if (animation.type == FltLightPointAnimation::kFlashingSequence) {
            for (const FltLightPointStep& step : animation.steps) {
                if (!(step.duration > 0) || !std::isfinite(step.duration)) continue;
                if (steps.size() == kMostSteps) break;
                steps.push_back({step.duration, step.state != kOff, {}});
                if (step.state == kChanging) steps.back().color = colorOfPacked(step.color);
            }
        }
        double period = 0;
        for (const LightPointStep& step : steps) period += double{step.seconds};
        look.period = static_cast<float>(period);
        look.delay = animation.phaseDelay;
        look.steps = steps.data();
        look.stepCount = steps.size();
    }
}

}  // namespace

void NodeLooks::BeginLooks(Interface*) noexcept {
    EndLooks();
}

void NodeLooks::EndLooks() noexcept {
    databases_.clear();
    definitions_.clear();
    overrides_.clear();
    overrideNumbers_.clear();
    family_ = {};
}

bool NodeLooks::GetLook(INode* node, NodeLook& look) noexcept {
    try {
        if (node == nullptr) return false;
        switch (static_cast<std::uint16_t>(kindOf(node))) {
            case kFltFace:
                if (!fltGetRecord(node, face_)) return false;
                describe(face_, *node, look);
                return true;
            case kFltLightSource:
                return describeLight(*node, look);
            case kFltLightPoint:
                if (!fltGetRecord(node, lightPoint_)) return false;
                look.points = pointsOf(lightPoint_);
                animate(*look.points, lightPoint_);
                return true;
            case kFltIndexedLightPoint:
                return describeIndexedPoint(*node, look);
            case kFltMesh:
                if (!readMesh(*node)) return false;
                describe(mesh_, *node, look);
                return true;
            default:
                return false;
        }
    } catch (...) {
        return false;
    }
}

bool NodeLooks::GetBranch(INode* node, NodeBranch& branch) noexcept {
    try {
        if (node == nullptr) return false;
        const FltNodeKind kind = kindOf(node);
        if (static_cast<std::uint16_t>(kind) == kFltLightPointSystem) {
            return describeLightSystem(*node, branch);
        }
        switch (kind) {
            case FltNodeKind::Switch:
                return describeSwitch(*node, branch);
            case FltNodeKind::Dof:
                if (!fltGetRecord(node, dof_)) return false;
                branch.motion = motionOf(dof_, valuesOf(dof_));
                return branch.motion.has_value();
            case FltNodeKind::Lod:
                return describeLod(*node, branch);
            case FltNodeKind::Object:
                return describeObject(*node, branch);
            default:
                return false;
        }
    } catch (...) {
        branch = {};
        return false;
    }
}

bool NodeLooks::GetJoint(INode* node, NodeJoint& joint) noexcept {
    try {
        if (node == nullptr || kindOf(node) != FltNodeKind::Dof || !fltGetRecord(node, dof_))
            return false;
        joint.values = valuesOf(dof_);
        for (std::size_t i = 0; i < joint.motions.size(); ++i) {
            const FltDofMotion& motion = kFltDofMotions[i];
            joint.motions[i] = {motion.isLimited(dof_), dof_.*motion.least, dof_.*motion.greatest,
                                dof_.*motion.increment};
        }
        return true;
    } catch (...) {
        return false;
    }
}

std::optional<Matrix3> NodeLooks::GetMotion(INode* node, const NodeJoint::Values& values) noexcept {
    try {
        if (node == nullptr || kindOf(node) != FltNodeKind::Dof || !fltGetRecord(node, dof_))
            return std::nullopt;
        NodeJoint::Values shown = values;
        for (std::size_t i = 0; i < shown.size(); ++i)
            shown[i] = shownValue(kFltDofMotions[i], shown[i]);
        return motionOf(dof_, shown);
    } catch (...) {
        return std::nullopt;
    }
}

/// What already shows so stays as it is.
bool NodeLooks::SetJoint(INode* node, const NodeJoint::Values& values) noexcept {
    try {
        FltDof dof;
        if (node == nullptr || kindOf(node) != FltNodeKind::Dof || !fltGetRecord(node, dof))
            return false;
        if (!std::ranges::all_of(values, [](double value) { return std::isfinite(value); }))
            return false;
        const NodeJoint::Values before = valuesOf(dof);
        if (values == before) return true;
        for (std::size_t i = 0; i < values.size(); ++i)
            if (values[i] != before[i]) dof.*kFltDofMotions[i].current = values[i];
        return fltPutRecord(node, dof);
    } catch (...) {
        return false;
    }
}

bool NodeLooks::describeSwitch(INode& node, NodeBranch& branch) {
    if (!fltGetRecord(&node, switch_)) return false;
    const std::int32_t masks = switch_.maskCount();
    if (masks < 1) return false;
    const std::int32_t current = switch_.currentMask;
    const std::int32_t mask = current >= 0 && current < masks ? current : 0;
    branch.shownChildren = switch_.maskWords.data() + mask * switch_.wordsPerMask;
    branch.shownWords = static_cast<std::size_t>(switch_.wordsPerMask);
    return true;
}

bool NodeLooks::describeLod(INode& node, NodeBranch& branch) {
    if (!fltGetRecord(&node, lod_)) return false;
    if (!std::isfinite(lod_.switchInDistance) || !std::isfinite(lod_.switchOutDistance)) {
        return false;
    }
    branch.range = ViewRange{lod_.switchOutDistance, lod_.switchInDistance, {}};
    if ((static_cast<std::uint32_t>(lod_.flags) & FltLod::kFrozenCenter) != 0) {
        branch.range->center = Point3{lod_.centerX, lod_.centerY, lod_.centerZ};
    }
    return true;
}

bool NodeLooks::describeObject(INode& node, NodeBranch& branch) {
    if (!fltGetRecord(&node, object_)) return false;
    const auto flags = static_cast<std::uint32_t>(object_.flags);
    const bool isShadow = (flags & FltObject::kShadow) != 0;
    branch.byDay = (flags & FltObject::kNotByDay) == 0;
    branch.atDusk = (flags & FltObject::kNotAtDusk) == 0 && !isShadow;
    branch.atNight = (flags & FltObject::kNotAtNight) == 0 && !isShadow;
    branch.smooth = (flags & FltObject::kFlatShaded) == 0;
    const auto transparency = static_cast<std::uint16_t>(object_.transparency);
    branch.opacity = 1 - static_cast<float>(transparency) / float{kFltFullTransparency};
    return flags != 0 || transparency != 0;
}

/// The record of such a node is kept as it was read.
bool NodeLooks::describeLightSystem(INode& node, NodeBranch& branch) {
    const SourceRecords& kept = kept_.read(node);
    if (kept.record.empty() || kept.record.opcode() != kFltLightPointSystem) return false;
    FltLightPointSystem system;
    system.readBytes(kept.record.bytes(), kept.revision);
    branch.lightStrength =
        (system.flags & FltLightPointSystem::kEnabled) != 0 ? shareOf(system.intensity) : 0;
    branch.lightChange = system.animationState == FltLightPointSystem::kOff ? LightChange::kNever
                         : system.animationState == FltLightPointSystem::kRandom
                             ? LightChange::kAtRandom
                             : LightChange::kAsTheySay;
    return true;
}

/// The vertices of a mesh to `pool_`, the records that go on with them included.
void NodeLooks::readPool(const SourceRecords& kept) {
    pool_.mask = 0;
    pool_.vertices.clear();
    if (kept.record.empty() || kept.record.opcode() != kFltMesh) return;
    const auto isPool = [](const SourceRecord& entry) {
        return !entry.isOpaque && entry.record.opcode() == kFltLocalVertexPool;
    };
    auto entry = std::ranges::find_if(kept.attached, isPool);
    if (entry == kept.attached.end()) return;
    poolBody_.assign(entry->record.body().begin(), entry->record.body().end());
    while (++entry != kept.attached.end() && entry->record.opcode() == kFltContinuation)
        poolBody_.insert(poolBody_.end(), entry->record.body().begin(), entry->record.body().end());
    pool_.readBody(poolBody_);
}

/// The layers above the texture, with their coordinates where the file has them for each corner.
void NodeLooks::describeLayers(INode& node, const Database& database, NodeLook& look) {
    if (sourceChunk(node, SourceChunk::records).empty()) return;
    const SourceRecords& kept = kept_.read(node);
    const auto attached = [&](std::uint16_t opcode) {
        return std::ranges::find_if(kept.attached, [&](const SourceRecord& entry) {
            return !entry.isOpaque && entry.record.opcode() == opcode;
        });
    };
    const auto layers = attached(kFltMultiTexture), coordinates = attached(kFltUvList);
    if (layers == kept.attached.end()) return;
    multiTexture_.readBytes(layers->record.bytes(), kept.revision);
    uvList_.mask = 0;
    uvList_.coordinates.clear();
    if (coordinates != kept.attached.end())
        uvList_.readBytes(coordinates->record.bytes(), kept.revision);
    const auto* const object = dynamic_cast<const TriObject*>(node.GetObjectRef());
    const auto corners = static_cast<std::size_t>(object ? object->GetMesh().verts.Count() : 0);
    const auto step = static_cast<std::size_t>(std::popcount(uvList_.mask));
    // Of morphing vertices those at 0 % count.
    const std::size_t each = corners > 0 ? uvList_.coordinates.size() / corners : 0;
    const bool fits = step > 0 && (each == step || each == 2 * step) &&
                      uvList_.coordinates.size() == corners * each;
    readPool(kept);
    std::size_t ofLayers = 0, ofCoordinates = 0;
    for (std::size_t i = 0; i < NodeLook::kMostLayers; ++i) {
        const std::uint32_t bit = 0x80000000U >> i;
        const std::size_t place = ofCoordinates;
        if ((uvList_.mask & bit) != 0) ++ofCoordinates;
        if ((multiTexture_.mask & bit) == 0) continue;
        const FltTextureLayer& layer = multiTexture_.layers[ofLayers++];
        const auto texture = database.textures.find(layer.textureIndex);
        if (texture == database.textures.end() || layer.effect == FltTextureLayer::kBumpMap)
            continue;
        PictureLayer& added = layers_[look.layerCount];
        std::vector<float>& places = places_[look.layerCount++];
        places.clear();
        for (std::size_t k = 0; fits && (uvList_.mask & bit) != 0 && k < corners; ++k) {
            const FltTextureCoordinates& uv = uvList_.coordinates[k * each + place * (each / step)];
            places.insert(places.end(), {uv.u, uv.v});
        }
        if ((pool_.mask & (kFltPoolBaseTexture >> (i + 1))) != 0) {
            for (const FltPoolVertex& vertex : pool_.vertices)
                places.insert(places.end(), {vertex.texture[i + 1].u, vertex.texture[i + 1].v});
        }
        added = {texture->second.c_str(), places.data(), places.size() / 2};
    }
    look.layers = layers_.data();
}

INode* NodeLooks::GetInstanced(INode* node) noexcept {
    try {
        return definitions_.of(node);
    } catch (...) {
        return nullptr;
    }
}

bool NodeLooks::GetReference(INode* node, NodeReference& reference) noexcept {
    try {
        FltXRef record;
        if (node == nullptr || kindOf(node) != FltNodeKind::XRef) return false;
        if (!fltGetRecord(node, record)) return false;
        reference_ = parsedReference(textOf(record.fileName));
        if (reference_.file.empty()) return false;
        reference.file = reference_.file.c_str();
        reference.part = reference_.part.empty() ? nullptr : reference_.part.c_str();
        return true;
    } catch (...) {
        return false;
    }
}

std::uint32_t NodeLooks::EnterReference(INode* node) noexcept {
    try {
        const Overrides overrides = node == nullptr ? Overrides{} : overridesBy(*node);
        overrides_.push_back(overrides);
        if (overrides == Overrides{}) return 0;
        const auto number = static_cast<std::uint32_t>(overrideNumbers_.size() + 1);
        return overrideNumbers_.try_emplace(overrides, number).first->second;
    } catch (...) {
        return 0;
    }
}

void NodeLooks::LeaveReference() noexcept {
    if (!overrides_.empty()) overrides_.pop_back();
}

/// Of those that already count where the reference stands.
NodeLooks::Overrides NodeLooks::overridesBy(INode& reference) {
    FltXRef record;
    if (!fltGetRecord(&reference, record)) return {};
    const Database* const own = familyOf(reference).database;
    Overrides overrides;
    const auto take = [&](FltOverrideFlag flag, const Database* Overrides::*palette) {
        if ((static_cast<std::uint32_t>(record.flags) & flag) != 0) {
            overrides.*palette = databaseFor(palette, own);
        }
    };
    take(kFltOverrideColors, &Overrides::colors);
    take(kFltOverrideMaterials, &Overrides::materials);
    take(kFltOverrideTextures, &Overrides::textures);
    take(kFltOverrideLineStyles, &Overrides::lineStyles);
    take(kFltOverrideLightPoints, &Overrides::lightPoints);
    return overrides;
}

INode* NodeLooks::GetWhole(INode* node) noexcept {
    for (INode* above = node; above != nullptr; above = above->GetParentNode())
        if (kindOf(above) == FltNodeKind::Object) return above;
    return node;
}

bool NodeLooks::IsOnlyInstanced(INode* node) noexcept {
    return kindOf(node) == FltNodeKind::InstanceDef;
}

bool NodeLooks::describeLight(INode& node, NodeLook& look) {
    FltLightSource record;
    if (fltGetRecord(&node, record)) {
        const auto flags = static_cast<std::uint32_t>(record.flags);
        look.shines = (flags & FltLightSource::kEnabled) != 0;
    }
    KilnLight options;
    if (fltGetOptions(&node, options)) {
        const FltLightSourcePalette& palette = options.palette;
        look.light = {{palette.diffuseRed, palette.diffuseGreen, palette.diffuseBlue}};
    }
    return look.shines || look.light;
}

/// The record of such a node is kept as it was read.
bool NodeLooks::describeIndexedPoint(INode& node, NodeLook& look) {
    const SourceRecords kept = sourceRecordsOf(node);
    const Database* const database = databaseFor(&Overrides::lightPoints, familyOf(node).database);
    if (kept.record.empty() || kept.record.opcode() != kFltIndexedLightPoint || !database) {
        return false;
    }
    FltIndexedLightPoint record;
    record.readBytes(kept.record.bytes(), kept.revision);
    const auto appearance = database->appearances.find(record.appearanceIndex);
    if (appearance == database->appearances.end()) return false;
    look.points = appearance->second;
    const auto animation = database->animations.find(record.animationIndex);
    if (animation != database->animations.end()) animate(*look.points, animation->second, steps_);
    return true;
}

/// The record of a mesh, which is kept as it was read, to `mesh_`.
bool NodeLooks::readMesh(INode& node) {
    const SourceRecords kept = sourceRecordsOf(node);
    if (kept.record.empty() || kept.record.opcode() != kFltMesh) return false;
    mesh_.readBytes(kept.record.bytes(), kept.revision);
    return true;
}

const NodeLooks::Family& NodeLooks::familyOf(INode& node) {
    INode* const parent = node.GetParentNode();
    if (parent == family_.parent) return family_;
    family_ = {parent, nullptr, 0};
    INode* above = parent;
    for (; above != nullptr && kindOf(above) == FltNodeKind::Face; above = above->GetParentNode()) {
        ++family_.layer;
    }
    while (above != nullptr && kindOf(above) != FltNodeKind::Header) {
        above = above->GetParentNode();
    }
    if (above != nullptr) family_.database = &databaseOf(*above);
    return family_;
}

NodeLooks::Database& NodeLooks::databaseOf(INode& header) {
    const auto known = databases_.find(&header);
    if (known != databases_.end()) return known->second;
    Database& database = databases_[&header];
    const SourceRecords kept = sourceRecordsOf(header);
    for (const SourceRecord& entry : kept.attached) {
        if (entry.isOpaque) continue;
        if (entry.record.opcode() == kFltMaterial) addMaterial(entry.record, database);
        if (entry.record.opcode() == kFltTexture) addTexture(entry.record, database);
        if (entry.record.opcode() == kFltLightPointAppearance) {
            FltLightPointAppearance appearance;
            appearance.readBytes(entry.record.bytes(), kept.revision);
            database.appearances.emplace(appearance.index, pointsOf(appearance));
        }
        if (entry.record.opcode() == kFltLightPointAnimation) {
            FltLightPointAnimation animation;
            animation.readBytes(entry.record.bytes(), kept.revision);
            database.animations.emplace(animation.index, std::move(animation));
        }
        if (entry.record.opcode() == kFltLineStylePalette) addLineStyle(entry.record, database);
        if (entry.record.opcode() == kFltColorPalette) {
            database.colors.readOfFile(entry.record.bytes(), kept.revision);
        }
    }
    return database;
}

void NodeLooks::addMaterial(const FltRecordView& record, Database& database) {
    FltMaterial material;
    if (record.length() < material.lengthThrough(&material.alpha)) return;
    material.readBytes(record.bytes(), 0);
    database.materials.emplace(
        material.index,
        Material{colorOf(material.ambient), colorOf(material.diffuse), colorOf(material.emissive),
                 colorOf(material.specular), material.shininess, shareOf(material.alpha)});
}

void NodeLooks::addTexture(const FltRecordView& record, Database& database) {
    FltTexture texture;
    if (record.length() < texture.lengthThrough(&texture.index)) return;
    texture.readBytes(record.bytes(), 0);
    database.textures.emplace(texture.index, textOf(texture.fileName));
}

void NodeLooks::addLineStyle(const FltRecordView& record, Database& database) {
    FltLineStyle style;
    if (record.length() < style.lengthThrough(&style.width)) return;
    style.readBytes(record.bytes(), 0);
    database.lineStyles.emplace(style.index, LineStyle{style.width, style.pattern});
}

/// The alternate color of a face or a mesh: its packed one, or the one that it names in the
/// palette. Scenes do not store packed ones, but what was read from a file is kept beside them.
template <typename Record>
std::optional<LightColor> NodeLooks::outlineOf(const Record& record, INode& node,
                                               const Database* database) {
    if ((record.flags & kFltSurfacePackedColors) != 0) {
        FltPackedColor color = record.packedAlternateColor;
        const SourceRecords kept = sourceRecordsOf(node);
        if (!kept.record.empty() && kept.record.opcode() == Record::kOpcode) {
            Record read;
            read.readBytes(kept.record.bytes(), kept.revision);
            color = read.packedAlternateColor;
        }
        if (color == FltPackedColor{}) return {};
        return LightColor{static_cast<float>(color.red) / 255,
                          static_cast<float>(color.green) / 255,
                          static_cast<float>(color.blue) / 255};
    }
    if ((record.flags & kFltSurfaceNoAlternateColor) != 0 || database == nullptr) return {};
    const auto color = indexedColor(record.alternateColorIndex, database->colors);
    return color ? std::optional(colorOf(*color)) : std::nullopt;
}

/// Describes the node by its record, that of a face or a mesh.
template <typename Record>
void NodeLooks::describe(const Record& record, INode& node, NodeLook& look) {
    const Family& family = familyOf(node);
    look.hidden = (record.flags & kFltSurfaceHidden) != 0;
    look.lit = fltIsLit(record.lightMode);
    const bool hasColor =
        (record.flags & kFltSurfacePackedColors) != 0 || (record.flags & kFltSurfaceNoColor) == 0;
    look.vertexColors = !hasColor || fltShowsVertexColors(record.lightMode);
    KilnFace options;
    look.vertexNormals =
        look.lit && (!fltGetOptions(&node, options) || options.useHostNormals != 0);
    look.white = record.textureWhite != 0;
    look.blended = record.billboard == kFltFixedBlended || record.billboard == kFltAxisBlended ||
                   record.billboard == kFltPointBlended;
    look.opacity = 1 - static_cast<float>(record.transparency) / float{kFltFullTransparency};
    look.layer = std::clamp(family.layer + record.relativePriority, -kMostLayers, kMostLayers);
    look.style = styleOf(record.drawType);
    look.facing = record.billboard == kFltAxisBlended    ? SurfaceFacing::kUpright
                  : record.billboard == kFltPointBlended ? SurfaceFacing::kEye
                                                         : SurfaceFacing::kFixed;
    if (look.style == SurfaceStyle::kSurfaceAndOutline) {
        look.outline = outlineOf(record, node, databaseFor(&Overrides::colors, family.database));
    }
    describeTextures(record, node, look);
    if (!overrides_.empty() && overrides_.back().colors != nullptr &&
        (record.flags & (kFltSurfacePackedColors | kFltSurfaceNoColor)) == 0) {
        const auto color = indexedColor(record.primaryColorIndex, overrides_.back().colors->colors);
        if (color) look.color = colorOf(*color);
    }
    if (const Database* const lines = databaseFor(&Overrides::lineStyles, family.database)) {
        const auto line = lines->lineStyles.find(record.lineStyleIndex);
        if (line != lines->lineStyles.end()) {
            look.lineWidth = static_cast<float>(line->second.width);
            look.linePattern = line->second.pattern;
        }
    }
    const Database* const materials = databaseFor(&Overrides::materials, family.database);
    if (materials == nullptr) return;
    const auto found = materials->materials.find(record.materialIndex);
    if (found == materials->materials.end()) return;
    const Material& material = found->second;
    look.opacity *= material.alpha;
    if (!look.lit) return;
    look.ambient = material.ambient;
    look.diffuse = material.diffuse;
    look.emissive = material.emissive;
    look.specular = material.specular;
    look.shininess = material.shininess;
}

template <typename Record>
void NodeLooks::describeTextures(const Record& record, INode& node, NodeLook& look) {
    const Database* const own = familyOf(node).database;
    const Database* const database = databaseFor(&Overrides::textures, own);
    look.picture = pictureOf(node, record.textureIndex, database, database != own);
    if (database == nullptr) return;
    describeLayers(node, *database, look);
    const auto detail = database->textures.find(record.detailTextureIndex);
    if (detail != database->textures.end()) look.detail = detail->second.c_str();
}

/// The record says which picture a face has, unless its picture was made in the scene.
const char* NodeLooks::pictureOf(INode& node, std::int32_t textureIndex, const Database* database,
                                 bool isOverridden) {
    Texmap* const map = node.GetTexmap();
    if (map != nullptr && !isOverridden && map->ClassID() == BMTEX_CLASS_ID &&
        sourceChunk(*map, SourceChunk::records).empty()) {
        return static_cast<const BitmapTex*>(map)->GetMapName();
    }
    if (database == nullptr) return nullptr;
    const auto texture = database->textures.find(textureIndex);
    return texture == database->textures.end() ? nullptr : texture->second.c_str();
}

}  // namespace interchange
