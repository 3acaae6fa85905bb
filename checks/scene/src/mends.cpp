#include <checks/mends.h>

#include "smallerpicture.h"

#include <base/file.h>
#include <base/paths.h>
#include <base/text.h>
#include <checks/counters.h>
#include <checks/namedfile.h>
#include <checks/scenesource.h>
#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/meshgeometry.h>
#include <fltkilnutil/scenegeometry.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/kiln.h>
#include <kiln/searchfolders.h>
#include <palettes/edits.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltrevision.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

namespace checks {

namespace {

/// What a mend works on.
struct Patient {
    Interface& host;
    const Target& target;
    const Finding& finding;
    INode& node;
};

std::string_view valueOf(const Patient& at, std::size_t i) {
    return i < at.finding.values.size() ? std::string_view(at.finding.values[i])
                                        : std::string_view();
}

/// Reads the node's record, has `change` change it, and stores it; false where one of them fails.
template <typename Record, typename Change>
bool edit(INode& node, Change&& change) {
    FltNodeKind kind{};
    Record record;
    return fltGetKind(&node, false, kind) && static_cast<std::uint16_t>(kind) == Record::kOpcode &&
           fltGetRecord(&node, record) && change(record) && fltPutRecord(&node, record);
}

// ---------------------------------------------------------------- header and names

bool mendRevision(const Patient& at) {
    return edit<FltHeader>(at.node, [&](FltHeader& header) {
        header.formatRevision = static_cast<std::int32_t>(
            at.target.revision.value_or(fltNearestWritable(header.revision())));
        return true;
    });
}

bool mendUnits(const Patient& at) {
    return edit<FltHeader>(at.node, [&](FltHeader& header) {
        header.vertexCoordinateUnits = at.target.units.value_or(std::uint8_t{0});
        return true;
    });
}

bool mendStorage(const Patient& at) {
    return edit<FltHeader>(at.node, [](FltHeader& header) {
        header.vertexStorageType = 1;
        return true;
    });
}

bool mendCounter(const Patient& at) {
    return edit<FltHeader>(at.node, [&](FltHeader& header) {
        const auto counter = counterOf(valueOf(at, 0));
        if (counter == nullptr || at.finding.detail < header.*counter ||
            at.finding.detail >= 0x7FFF)
            return false;
        header.*counter = static_cast<std::int16_t>(at.finding.detail + 1);
        return true;
    });
}

/// The whole name stays on the node, and goes into files as a long identifier.
bool mendLongName(const Patient& at) {
    FltNodeKind kind{};
    if (!fltGetKind(&at.node, false, kind)) return false;
    const std::unique_ptr<FltRecord> record = fltCreateRecord(static_cast<std::uint16_t>(kind));
    if (!record || !fltGetRecord(&at.node, *record) || record->id() == nullptr) return false;
    constexpr std::size_t kSize = 8;
    char* const field = record->id();
    const std::string id(base::clipUtf8(std::string(fltText(std::span(field, kSize))), kSize - 1));
    fltSetText(std::span(field, kSize), id);
    return fltPutRecord(&at.node, *record);
}

/// Gives the node that name, or one like it that is free, unless it got another one since the
/// check.
bool rename(const Patient& at, const std::string& name) {
    if (at.node.GetName() != valueOf(at, 0)) return false;
    const std::unique_ptr<NameMaker> maker(at.host.NewNameMaker());
    CStr unique(name.c_str());
    maker->MakeUniqueName(unique);
    at.node.SetName(unique.data());
    return true;
}

bool mendDuplicateName(const Patient& at) {
    return rename(at, at.node.GetName());
}

bool mendNameChars(const Patient& at) {
    std::string plain;
    for (const char character : std::string_view(at.node.GetName())) {
        // Of a character of several bytes the first one counts.
        if ((static_cast<unsigned char>(character) & 0xC0) == 0x80) continue;
        plain += character >= ' ' && character <= '~' ? character : '_';
    }
    const std::size_t first = plain.find_first_not_of(' ');
    if (first == std::string::npos) return false;
    return rename(at, plain.substr(first, plain.find_last_not_of(' ') - first + 1));
}

// ---------------------------------------------------------------- hierarchy

/// A node that holds others is not deleted, nor one that is a state of a switch.
bool mendByDeleting(const Patient& at) {
    if (at.node.NumberOfChildren() != 0 || fltkilnutil::isStateOfSwitch(at.node)) return false;
    at.host.DeleteNode(&at.node);
    return true;
}

bool mendReversed(const Patient& at) {
    return edit<FltLod>(at.node, [](FltLod& lod) {
        std::swap(lod.switchInDistance, lod.switchOutDistance);
        return lod.switchInDistance > lod.switchOutDistance;
    });
}

bool mendRange(const Patient& at) {
    return edit<FltLod>(at.node, [&](FltLod& lod) {
        lod.switchOutDistance = std::bit_cast<double>(at.finding.detail);
        return lod.switchOutDistance < lod.switchInDistance;
    });
}

bool mendLodSize(const Patient& at) {
    return edit<FltLod>(at.node, [&](FltLod& lod) {
        lod.switchInDistance = 2 * std::bit_cast<double>(at.finding.detail);
        return std::isfinite(lod.switchInDistance);
    });
}

bool mendCenter(const Patient& at) {
    INode* const level[] = {&at.node};
    return fltkilnutil::centerLevels(level) != 0;
}

// ---------------------------------------------------------------- switches and motions

constexpr std::uint32_t kBits = FltSwitch::kMaskBitsPerWord;

/// The children that a file has: what is passed over there is not counted.
std::uint32_t childrenOf(INode& node) {
    std::uint32_t count = 0;
    ForEachInSubtree(&node, [&](INode& below) {
        if (&below == &node) return WalkStep::kOn;
        FltNodeKind kind{};
        if (!fltGetKind(&below, true, kind)) return WalkStep::kOn;
        ++count;
        return WalkStep::kPastThis;
    });
    return count;
}

/// Masks get longer by bits that show nothing, which is what lacking bits do.
bool mendMaskShort(const Patient& at) {
    const std::uint32_t words = (childrenOf(at.node) + kBits - 1) / kBits;
    return edit<FltSwitch>(at.node, [&](FltSwitch& record) {
        const std::int32_t masks = record.maskCount(), before = record.wordsPerMask;
        const auto after = static_cast<std::int32_t>(words);
        if (masks == 0 || after <= before ||
            std::int64_t{masks} * after > FltSwitch::kMaxWrittenMaskWords)
            return false;
        FltListOf<std::uint32_t> longer;
        for (std::int32_t mask = 0; mask < masks; ++mask)
            for (std::int32_t word = 0; word < after; ++word)
                longer.append(word < before ? *record.maskWords.at(mask * before + word) : 0);
        record.maskWords = longer;
        record.wordsPerMask = after;
        return true;
    });
}

bool mendStrayBits(const Patient& at) {
    const std::uint32_t children = childrenOf(at.node);
    return edit<FltSwitch>(at.node, [&](FltSwitch& record) {
        const auto perMask = static_cast<std::uint32_t>(record.wordsPerMask);
        if (perMask == 0) return false;
        for (std::int32_t i = 0; i < record.maskWords.count(); ++i) {
            const std::uint32_t word = static_cast<std::uint32_t>(i) % perMask;
            *record.maskWords.at(i) &= FltSwitch::bitsInUse(children, word);
        }
        return true;
    });
}

bool mendCurrentMask(const Patient& at) {
    return edit<FltSwitch>(at.node, [](FltSwitch& record) {
        record.currentMask = 0;
        return record.maskCount() > 0;
    });
}

/// A switch without masks gets one that shows all; one without children goes.
bool mendEmptySwitch(const Patient& at) {
    const std::uint32_t children = childrenOf(at.node);
    if (children == 0) return mendByDeleting(at);
    return edit<FltSwitch>(at.node, [&](FltSwitch& record) {
        if (record.maskCount() > 0) return false;
        record.maskWords.clear();
        record.setMaskBits(static_cast<std::int32_t>(children));
        const auto last = static_cast<std::uint32_t>(record.wordsPerMask) - 1;
        *record.maskWords.at(record.wordsPerMask - 1) = FltSwitch::bitsInUse(children, last);
        return record.wordsPerMask <= FltSwitch::kMaxWrittenMaskWords;
    });
}

bool mendDofLimits(const Patient& at) {
    return edit<FltDof>(at.node, [](FltDof& dof) {
        for (const FltDofMotion& motion : kFltDofMotions) {
            if (!motion.isLimited(dof) || !(dof.*motion.least > dof.*motion.greatest)) continue;
            std::swap(dof.*motion.least, dof.*motion.greatest);
            dof.*motion.current =
                std::clamp(dof.*motion.current, dof.*motion.least, dof.*motion.greatest);
        }
        return true;
    });
}

bool mendDofCurrent(const Patient& at) {
    return edit<FltDof>(at.node, [](FltDof& dof) {
        for (const FltDofMotion& motion : kFltDofMotions)
            if (motion.isLimited(dof) && dof.*motion.least <= dof.*motion.greatest)
                dof.*motion.current =
                    std::clamp(dof.*motion.current, dof.*motion.least, dof.*motion.greatest);
        return true;
    });
}

bool mendZeroScale(const Patient& at) {
    return edit<FltDof>(at.node, [](FltDof& dof) {
        for (const FltDofMotion& motion : kFltDofMotions) {
            double& current = dof.*motion.current;
            if (!motion.isScale || current != 0) continue;
            current = 1;
            if (motion.isLimited(dof) && dof.*motion.least <= dof.*motion.greatest)
                current = std::clamp(current, dof.*motion.least, dof.*motion.greatest);
            if (current == 0) return false;  // its limits allow nothing else
        }
        return true;
    });
}

// ---------------------------------------------------------------- paths and palettes

/// The path that leads from a folder of the host's to the file that `name` names, or to one of that
/// name beside; empty when there is neither.
std::string relativePath(Interface& host, std::string name) {
    namespace fs = std::filesystem;
    std::ranges::replace(name, '\\', '/');
    const fs::path path = base::pathFrom(name);
    for (const std::string& folderName : SearchFolders(host)) {
        const fs::path folder = base::pathFrom(folderName);
        const fs::path relative = path.lexically_relative(folder);
        if (!relative.empty() && *relative.begin() != ".." && base::isFile(path))
            return base::genericTextOf(relative);
        if (base::isFile(folder / path.filename())) return base::genericTextOf(path.filename());
    }
    return {};
}

/// Gives the palette record of that index on the database's node to `change`, with the edit that it
/// is to note what becomes of it in; makes the edit unless the result is false.
template <typename Record, typename Index, typename Change>
bool editPalette(INode& node, std::int64_t index, Index Record::*indexField, Change&& change) {
    fltkilnutil::SourceRecordsEdit edit(node);
    const fltkilnutil::SourceRecords& kept = edit.kept();
    for (const fltkilnutil::SourceRecord& entry : kept.attached) {
        if (entry.isOpaque || entry.record.opcode() != Record::kOpcode) continue;
        Record record;
        // One that ends before its index is none of the palette's entries.
        if (entry.record.length() < record.lengthThrough(&(record.*indexField))) continue;
        record.readBytes(entry.record.bytes(), kept.revision);
        if (record.*indexField != index) continue;
        if (!change(edit, entry.record)) return false;
        edit.store(kept.revision);
        return true;
    }
    return false;
}

bool mendPath(const Patient& at) {
    const std::string relative = relativePath(at.host, std::string(valueOf(at, 0)));
    if (relative.empty() || relative.size() >= sizeof FltXRef::fileName) return false;
    FltNodeKind kind{};
    if (!fltGetKind(&at.node, false, kind)) return false;
    if (kind == FltNodeKind::XRef)
        return edit<FltXRef>(at.node, [&](FltXRef& record) {
            const std::string_view whole = fltText(record.fileName);
            const std::size_t nodeName = whole.find('<');
            const std::string rest(nodeName == std::string_view::npos ? ""
                                                                      : whole.substr(nodeName));
            if (whole.substr(0, nodeName) != valueOf(at, 0) ||
                relative.size() + rest.size() > sizeof record.fileName)
                return false;
            fltSetText(record.fileName, relative + rest);
            return true;
        });
    return editPalette(
        at.node, at.finding.detail, &FltTexture::index,
        [&](fltkilnutil::SourceRecordsEdit& palette, const FltRecordView& record) {
            std::vector<std::uint8_t> bytes(record.bytes().begin(), record.bytes().end());
            // The name is the first field.
            char* const field = reinterpret_cast<char*>(&bytes[FltRecordView::kHeaderSize]);
            const std::span name(field, sizeof FltTexture::fileName);
            if (fltText(name) != valueOf(at, 0)) return false;
            fltSetText(name, relative);
            palette.replace(record, bytes);
            return true;
        });
}

/// The entry names a smaller picture, which is made beside the one that it named. That one stays,
/// and so does the smaller one when the step is undone.
bool mendTextureSize(const Patient& at) {
    const palettes::Database database(at.node);
    const auto index = static_cast<std::int32_t>(at.finding.detail);
    const palettes::Entry* const entry = database.find(palettes::Palette::kTexture, index);
    const std::string name(valueOf(at, 0));
    if (entry == nullptr || entry->name != name) return false;
    const std::vector<std::string> folders = SceneSource(at.host).folders();
    const std::optional<SmallerPicture> smaller =
        smallerPicture(findNamedFile(name, folders), at.target.limits.textureSide);
    if (!smaller) return false;
    const std::size_t slash = name.find_last_of("/\\:");
    const std::string named = name.substr(0, slash == std::string::npos ? 0 : slash + 1) +
                              base::textOf(smaller->path.filename());
    // A file of that name in another of the folders would be taken for it.
    const std::filesystem::path found = findNamedFile(named, folders);
    if (!found.empty() && found != smaller->path) return false;
    palettes::setField(at.node, palettes::Palette::kTexture, *entry, "fileName", named);
    smaller->write();
    return true;
}

bool mendUnusedEntry(const Patient& at) {
    const auto remove = [](fltkilnutil::SourceRecordsEdit& edit, const FltRecordView& record) {
        edit.remove(record);
        return true;
    };
    const std::int64_t index = at.finding.detail;
    const std::string_view palette = valueOf(at, 0);
    if (palette == "texture") return editPalette(at.node, index, &FltTexture::index, remove);
    if (palette == "material") return editPalette(at.node, index, &FltMaterial::index, remove);
    if (palette == "texture mapping")
        return editPalette(at.node, index, &FltTextureMapping::index, remove);
    if (palette == "appearance")
        return editPalette(at.node, index, &FltLightPointAppearance::index, remove);
    if (palette == "animation")
        return editPalette(at.node, index, &FltLightPointAnimation::index, remove);
    return false;
}

bool mendIndex(const Patient& at) {
    return edit<FltFace>(at.node, [&](FltFace& face) {
        bool found = false;
        const auto drop = [&](std::int16_t& field) {
            if (field != at.finding.detail) return;
            field = -1;
            found = true;
        };
        const std::string_view what = valueOf(at, 0);
        if (what == "texture") {
            drop(face.textureIndex);
            drop(face.detailTextureIndex);
        } else if (what == "material") {
            drop(face.materialIndex);
        } else if (what == "texture mapping") {
            drop(face.textureMappingIndex);
        }
        return found;
    });
}

// ---------------------------------------------------------------- meshes and lights

/// Whether another node of the scene shows the object too. The history may refer to it besides.
bool isShownElsewhere(Interface& host, const INode& node, const Object& object) {
    if (object.NumReferences() <= 1) return false;
    return !ForEachInSubtree(host.GetRootNode(), [&](INode& other) {
        return &other != &node && other.GetObjectRef() == &object ? WalkStep::kEnd : WalkStep::kOn;
    });
}

/// The node's mesh, when it is its own and no other node shows it too.
Mesh* ownMesh(const Patient& at) {
    Object* const object = at.node.GetObjectRef();
    if (object == nullptr || object->ClassID() != TRIOBJ_CLASS_ID ||
        isShownElsewhere(at.host, at.node, *object))
        return nullptr;
    Mesh& mesh = static_cast<TriObject*>(object)->GetMesh();
    return mesh.IsConsistent() ? &mesh : nullptr;
}

/// Has `change` change the node's own mesh; false where there is none, or `change` says so.
template <typename Change>
bool editMesh(const Patient& at, Change&& change) {
    Mesh* const mesh = ownMesh(at);
    if (mesh == nullptr || !at.node.GetObjectRef()->AboutToChange() || !change(*mesh)) return false;
    at.node.InvalidateWS();
    return true;
}

/// Deletes a face that is one polygon, or none.
bool mendFaceByDeleting(const Patient& at) {
    const Mesh* const mesh = ownMesh(at);
    if (mesh == nullptr || (!mesh->faces.IsEmpty() && !fltkilnutil::isOnePolygon(*mesh)))
        return false;
    return mendByDeleting(at);
}

bool mendBySplitting(const Patient& at) {
    return editMesh(at, fltkilnutil::splitIntoTriangles);
}

/// Every vertex gets the direction of the polygons around it.
bool mendNormals(const Patient& at) {
    return editMesh(at, [](Mesh& mesh) {
        if (mesh.normals.Count() == mesh.verts.Count()) return false;
        std::vector<Point3> sums(static_cast<std::size_t>(mesh.verts.Count()));
        for (const Face& face : mesh.faces) {
            const auto corner = [&](std::size_t c) {
                return mesh.verts[static_cast<int>(face.v[c])];
            };
            const Point3 area = CrossProd(corner(1) - corner(0), corner(2) - corner(0));
            for (const DWORD vertex : face.v) sums[vertex] = sums[vertex] + area;
        }
        mesh.normals.SetCount(mesh.verts.Count());
        for (int i = 0; i < mesh.verts.Count(); ++i)
            mesh.normals[i] = Point3f(Normalize(sums[static_cast<std::size_t>(i)]));
        return true;
    });
}

/// Takes the vertices out that no face has, with what is kept of them; false when there are none.
bool removeUnused(const Patient& at, bool isAllowed) {
    fltkilnutil::VertexOrder order;
    const bool done = isAllowed && editMesh(at, [&](Mesh& mesh) {
                          const auto before = static_cast<std::size_t>(mesh.verts.Count());
                          order = fltkilnutil::removeUnusedVertices(mesh);
                          return order.size() != before;
                      });
    if (done) fltkilnutil::takeCorners(at.node, order);
    return done;
}

bool mendUnusedVertices(const Patient& at) {
    const Mesh* const mesh = ownMesh(at);
    return removeUnused(at, mesh != nullptr && !mesh->faces.IsEmpty());
}

/// Of corners in one place the first stays. Only a polygon whose cut into triangles passes the
/// others over is mended: nothing else is cut anew.
bool mendDuplicateVertices(const Patient& at) {
    const Mesh* const mesh = ownMesh(at);
    return removeUnused(at, mesh != nullptr && fltkilnutil::isOnePolygon(*mesh));
}

/// The node gets a place of its own in the middle of its faces, whose vertices are near that then.
/// Only where faces are all that is below it, and none of them is moved: nothing else there is in
/// its coordinates.
bool mendFar(const Patient& at) {
    FltNodeKind kind{};
    if (!fltGetKind(&at.node, false, kind) ||
        (kind != FltNodeKind::Object && kind != FltNodeKind::Group))
        return false;
    std::vector<Patient> faces;
    Box3 box;
    const bool areFaces = ForEachInSubtree(&at.node, [&](INode& node) {
        if (&node == &at.node) return WalkStep::kOn;
        const Patient face{at.host, at.target, at.finding, node};
        FltNodeKind below{};
        const Mesh* const mesh = ownMesh(face);
        if (mesh == nullptr || !fltGetKind(&node, true, below) || below != FltNodeKind::Face ||
            !node.GetLocalTM(0).IsIdentity())
            return WalkStep::kEnd;
        box += mesh->BoundingBox();
        faces.push_back(face);
        return WalkStep::kOn;
    });
    const Point3 middle = box.Center();
    if (!areFaces || !std::isfinite(middle.x + middle.y + middle.z)) return false;
    const Point3 offset{std::round(middle.x), std::round(middle.y), std::round(middle.z)};
    const auto farthest = [](const Point3& a, const Point3& b) {
        return std::max({std::abs(a.x), std::abs(a.y), std::abs(a.z), std::abs(b.x), std::abs(b.y),
                         std::abs(b.z)});
    };
    // It must bring them nearer.
    if (2 * farthest(box.Min() - offset, box.Max() - offset) >= farthest(box.Min(), box.Max()))
        return false;
    for (const Patient& face : faces)
        if (!editMesh(face, [&](Mesh& mesh) {
                for (Point3& vertex : mesh.verts) vertex = vertex - offset;
                return true;
            }))
            return false;
    at.node.SetLocalTM(0, TransMatrix(offset) * at.node.GetLocalTM(0));
    return true;
}

bool mendPixelSizes(const Patient& at) {
    return edit<FltLightPoint>(at.node, [](FltLightPoint& light) {
        std::swap(light.minPixelSize, light.maxPixelSize);
        return light.minPixelSize < light.maxPixelSize;
    });
}

// ---------------------------------------------------------------- the table

struct MendRow {
    Rule rule;
    bool (*mend)(const Patient& at);
};
constexpr MendRow kMends[] = {
    {Rule::HDR_REVISION, mendRevision},
    {Rule::HDR_UNITS, mendUnits},
    {Rule::HDR_STORAGE, mendStorage},
    {Rule::COUNTER_BEHIND, mendCounter},
    {Rule::NAME_LONG, mendLongName},
    {Rule::NAME_DUPLICATE, mendDuplicateName},
    {Rule::NAME_CHARS, mendNameChars},
    {Rule::GROUP_EMPTY, mendByDeleting},
    {Rule::LOD_REVERSED, mendReversed},
    {Rule::LOD_GAP, mendRange},
    {Rule::LOD_OVERLAP, mendRange},
    {Rule::LOD_CENTER, mendCenter},
    {Rule::LOD_SIZE, mendLodSize},
    {Rule::SWITCH_MASK_SHORT, mendMaskShort},
    {Rule::SWITCH_CURRENT, mendCurrentMask},
    {Rule::SWITCH_STRAY_BITS, mendStrayBits},
    {Rule::SWITCH_EMPTY, mendEmptySwitch},
    {Rule::DOF_LIMITS, mendDofLimits},
    {Rule::DOF_CURRENT, mendDofCurrent},
    {Rule::DOF_SCALE_ZERO, mendZeroScale},
    {Rule::PATH_ABSOLUTE, mendPath},
    {Rule::FACE_CORNERS, mendFaceByDeleting},
    {Rule::FACE_DEGENERATE, mendFaceByDeleting},
    {Rule::FACE_NONPLANAR, mendBySplitting},
    {Rule::FACE_CONCAVE, mendBySplitting},
    {Rule::FACE_DUPLICATE, mendFaceByDeleting},
    {Rule::INDEX_RANGE, mendIndex},
    {Rule::NORMAL_MISSING, mendNormals},
    {Rule::VERTEX_UNUSED, mendUnusedVertices},
    {Rule::VERTEX_DUPLICATE, mendDuplicateVertices},
    {Rule::VERTEX_FAR, mendFar},
    {Rule::LP_SIZE, mendPixelSizes},
    {Rule::TEX_SIZE, mendTextureSize},
    {Rule::PALETTE_UNUSED, mendUnusedEntry},
};

const MendRow* mendOf(Rule rule) noexcept {
    const auto* const found = std::ranges::find(kMends, rule, &MendRow::rule);
    return found == std::end(kMends) ? nullptr : found;
}

}  // namespace

bool canMend(Rule rule) noexcept {
    return mendOf(rule) != nullptr;
}

bool mend(Interface& host, const Target& target, const Finding& finding) noexcept {
    const MendRow* const row = mendOf(finding.rule);
    INode* const node = host.GetINodeByHandle(static_cast<DWORD>(finding.place));
    if (row == nullptr || node == nullptr || finding.place == 0) return false;
    try {
        return RunUndoable(fltkilnutil::nameOf(fltkilnutil::Action::kMend).c_str(), [&] {
            return row->mend({host, target, finding, *node});
        });
    } catch (...) {
        return false;
    }
}

}  // namespace checks
