// Every rule with a scene that it finds nothing in and one that it finds something in, and every
// mend: it removes what was found, and adds nothing.
#include "checkscene.h"

#include <base/file.h>
#include <base/paths.h>
#include <fltkilnutil/actions.h>
#include <fltkilnutil/texturemaps.h>
#include <gtest/gtest.h>
#include <quillon/fltdof.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltstream.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>
#include <quillon/fltxref.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <set>

namespace {

using checks::Finding;
using checks::Rule;
using checks::Severity;
using checks::Target;

struct Case {
    Rule rule;
    /// Makes the scene, with the fault or without it.
    void (*build)(CheckScene& scene, bool faulty, Target& target);
    /// Whether a mend is to remove it.
    bool isMended = false;
    const char* name = "";  ///< tells several cases of one rule apart
    /// What the fault leads to besides; a mend may leave that.
    Rule also = rule;
};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

void writeFile(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// The beginning of an SGI picture of that size.
std::string picture(unsigned width, unsigned height) {
    std::string bytes(512, '\0');
    bytes[0] = 1, bytes[1] = static_cast<char>(0xDA), bytes[3] = 1, bytes[5] = 3;
    bytes[6] = static_cast<char>(width >> 8), bytes[7] = static_cast<char>(width);
    bytes[8] = static_cast<char>(height >> 8), bytes[9] = static_cast<char>(height);
    bytes[11] = 3;
    return bytes;
}

FltTexture texture(std::int32_t index, const std::string& file) {
    FltTexture record;
    record.index = index;
    fltSetText(record.fileName, file);
    return record;
}

/// A face with the texture 0, whose vertices have coordinates for it.
INode* textured(CheckScene& s) {
    Mesh& mesh = s.meshOf(s.face);
    mesh.tVerts.SetCount(mesh.verts.Count());
    mesh.tvFaces.SetCount(mesh.faces.Count());
    for (int i = 0; i < mesh.faces.Count(); ++i)
        for (std::size_t c = 0; c < 3; ++c) mesh.tvFaces[i].t[c] = mesh.faces[i].v[c];
    s.edit<FltFace>(s.face, [](FltFace& face) { face.textureIndex = 0; });
    return s.face;
}

FltLod lod(double in, double out) {
    FltLod record;
    record.switchInDistance = in;
    record.switchOutDistance = out;
    record.centerX = record.centerY = 5;
    return record;
}

/// A level of detail with a face that fills the square around its centre, raised by `z`.
INode* addLod(CheckScene& s, double in, double out, double z = 0, INode* parent = nullptr) {
    INode* const level = s.add(parent ? parent : s.database, lod(in, out));
    s.addFace(s.add(level, FltObject()), square(10, 0, 0, z));
    return level;
}

/// A switch with so many groups below it, and one mask with those bits.
INode* addSwitch(CheckScene& s, int children, std::initializer_list<std::uint32_t> words,
                 std::int32_t perMask = 1, std::int32_t current = 0) {
    FltSwitch record;
    record.wordsPerMask = perMask;
    record.currentMask = current;
    for (const std::uint32_t word : words) record.maskWords.append(word);
    INode* const node = s.add(s.database, record);
    for (int i = 0; i < children; ++i) s.add(node, FltGroup());
    return node;
}

FltDof dof() {
    FltDof record;
    record.xScaleCurrent = record.yScaleCurrent = record.zScaleCurrent = 1;
    return record;
}

FltXRef reference(const std::string& file) {
    FltXRef record;
    fltSetText(record.fileName, file);
    return record;
}

template <typename Record>
Record instance(std::int16_t number) {
    Record record;
    record.instanceNumber = number;
    return record;
}

FltLightPoint light() {
    FltLightPoint record;
    record.intensity = 1;
    record.horizontalLobeAngle = record.verticalLobeAngle = 30;
    return record;
}

INode* addLight(CheckScene& s, const FltLightPoint& record, bool hasNormals = false) {
    auto* const points = new TriObject;
    points->GetMesh().verts.Append(Point3{1, 1, 1});
    if (hasNormals) points->GetMesh().normals.Append(Point3f{0, 0, 1});
    return s.add(s.group, record, points);
}

INode* replaceFace(CheckScene& s, const Corners& corners, const FltFace& record = {}) {
    s.host.DeleteNode(s.face);
    return s.face = s.addFace(s.object, corners, record);
}

template <typename Change>
void header(CheckScene& s, Change&& change) {
    s.edit<FltHeader>(s.database, change);
}

const Case kCases[] = {
    // ------------------------------------------------------------ header
    {Rule::HDR_REVISION,
     [](CheckScene&, bool faulty, Target& target) { target.revision = faulty ? 1570 : 1580; }, true},
    {Rule::HDR_REVISION,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) { h.formatRevision = faulty ? 1599 : 1610; });
     },
     true, "Unknown"},
    {Rule::RECORD_TOO_NEW,
     [](CheckScene& s, bool faulty, Target& target) {
         target.revision = 1550;
         header(s, [](FltHeader& h) { h.formatRevision = 1550; });
         FltMultiTexture layers;
         if (faulty) s.keep(s.face, {&layers});
     }},
    {Rule::HDR_UNITS,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) { h.vertexCoordinateUnits = faulty ? 2 : 4; });
     },
     true},
    {Rule::HDR_UNITS,
     [](CheckScene& s, bool faulty, Target& target) {
         target.units = 4;
         header(s, [&](FltHeader& h) { h.vertexCoordinateUnits = faulty ? 0 : 4; });
     },
     true, "OfTarget"},
    {Rule::HDR_STORAGE,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) { h.vertexStorageType = faulty ? 0 : 1; });
     },
     true},
    {Rule::HDR_ORIGIN,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) { h.databaseOrigin = faulty ? 1 : 200; });
     }},
    {Rule::HDR_PROJECTION,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) {
             h.projectionType = 3;
             if (faulty) h.lambertUpperLatitude = h.lambertLowerLatitude;
         });
     }},
    {Rule::HDR_PROJECTION,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) {
             h.projectionType = 1;
             h.originLatitude = faulty ? 91 : -90;
         });
     },
     false, "Origin"},
    {Rule::HDR_ELLIPSOID,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [&](FltHeader& h) {
             h.earthEllipsoidModel = -1;
             h.earthMajorAxis = 6378137;
             h.earthMinorAxis = faulty ? 0 : 6356752;
         });
     }},
    {Rule::COUNTER_BEHIND,
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltGroup>(s.group, [](FltGroup& g) { fltSetText(g.asciiId, "g7"); });
         header(s, [&](FltHeader& h) { h.nextGroupId = faulty ? 7 : 8; });
     },
     true},
    {Rule::COUNTER_BEHIND,  // a switch's ID begins as a face's does
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltSwitch>(addSwitch(s, 1, {1}), [](auto& r) { fltSetText(r.asciiId, "f3"); });
         header(s, [&](FltHeader& h) { h.nextSwitchId = faulty ? 2 : 4; });
     },
     true, "Switch"},
    // ------------------------------------------------------------ names
    {Rule::NAME_LONG,
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltGroup>(s.group, [&](FltGroup& g) {
             fltSetText(g.asciiId, faulty ? "hangars8" : "hangars");
         });
     },
     true},
    {Rule::NAME_DUPLICATE,
     [](CheckScene& s, bool faulty, Target&) {
         s.face->SetName(faulty ? s.group->GetName() : "other");
     },
     true},
    {Rule::NAME_CHARS,
     [](CheckScene& s, bool faulty, Target&) { s.face->SetName(faulty ? "机场" : "airfield"); },
     true},
    {Rule::NAME_CHARS,
     [](CheckScene& s, bool faulty, Target&) { s.face->SetName(faulty ? " wall" : "a wall"); },
     true, "Blank"},
    // ------------------------------------------------------------ hierarchy
    {Rule::GROUP_EMPTY,
     [](CheckScene& s, bool faulty, Target&) {
         INode* const node = s.add(s.group, FltObject());
         if (!faulty) s.addFace(node, square(1, 20));
     },
     true},
    {Rule::DEPTH_EXCESS,
     [](CheckScene&, bool faulty, Target& target) { target.limits.depth = faulty ? 3 : 4; }},
    {Rule::CHILD_KIND,
     [](CheckScene& s, bool faulty, Target&) {
         s.addFace(s.add(faulty ? s.object : s.group, FltGroup()), square(1, 20));
     }},
    {Rule::CHILD_KIND,
     [](CheckScene& s, bool faulty, Target&) {
         if (faulty) s.addFace(s.add(s.face, FltObject()), square(1, 20));
     },
     false, "BelowFace"},
    {Rule::LOD_REVERSED,
     [](CheckScene& s, bool faulty, Target&) {
         faulty ? addLod(s, 50, 100) : addLod(s, 100, 50);
     },
     true},
    {Rule::LOD_GAP,
     [](CheckScene& s, bool faulty, Target&) {
         addLod(s, 100, 0);
         addLod(s, 500, faulty ? 120.123456789 : 100);
     },
     true},
    {Rule::LOD_OVERLAP,
     [](CheckScene& s, bool faulty, Target&) {
         addLod(s, 100, 0);
         addLod(s, 500, faulty ? 90 : 100);
     },
     true},
    {Rule::LOD_CENTER,
     [](CheckScene& s, bool faulty, Target&) {
         for (INode* const level : {addLod(s, 100, 0), addLod(s, 500, 100)})
             s.edit<FltLod>(level, [&](FltLod& l) { l.centerX = faulty ? 50 : 5; });
     },
     true},
    {Rule::LOD_UNREACHABLE,
     [](CheckScene& s, bool faulty, Target&) {
         INode* const outer = s.add(s.database, lod(100, 0));
         addLod(s, faulty ? 200 : 100, faulty ? 100 : 50, 0, outer);
     }},
    {Rule::LOD_SIZE,
     [](CheckScene& s, bool faulty, Target&) { addLod(s, faulty ? 3 : 300, 0); }, true},
    {Rule::SWITCH_MASK_SHORT,
     [](CheckScene& s, bool faulty, Target&) {
         faulty ? addSwitch(s, 33, {0xFFFFFFFF, 1}) : addSwitch(s, 33, {0xFFFFFFFF, 1}, 2);
     },
     true, "", Rule::SWITCH_NEVER},
    {Rule::SWITCH_CURRENT,
     [](CheckScene& s, bool faulty, Target&) { addSwitch(s, 2, {1, 2}, 1, faulty ? 2 : 1); },
     true},
    {Rule::SWITCH_STRAY_BITS,
     [](CheckScene& s, bool faulty, Target&) { addSwitch(s, 2, {faulty ? 7U : 3U}); }, true},
    {Rule::SWITCH_NEVER,
     [](CheckScene& s, bool faulty, Target&) { addSwitch(s, 3, {1, faulty ? 4U : 6U}); }},
    {Rule::SWITCH_EMPTY,
     [](CheckScene& s, bool faulty, Target&) {
         faulty ? addSwitch(s, 33, {}) : addSwitch(s, 1, {1});
     },
     true},
    {Rule::SWITCH_EMPTY,
     [](CheckScene& s, bool faulty, Target&) { addSwitch(s, faulty ? 0 : 1, {1}); }, true,
     "Childless"},
    {Rule::DOF_LIMITS,
     [](CheckScene& s, bool faulty, Target&) {
         FltDof record = dof();
         record.flags = 0x40000000;
         record.yTranslationMin = faulty ? 3 : -3;
         record.xTranslationMin = 9;  // which is not limited
         s.add(s.database, record);
     },
     true},
    {Rule::DOF_CURRENT,
     [](CheckScene& s, bool faulty, Target&) {
         FltDof record = dof();
         record.flags = 0x04000000;
         record.yawMax = 90;
         record.yawCurrent = faulty ? 91 : 90;
         s.add(s.database, record);
     },
     true},
    {Rule::DOF_FRAME,
     [](CheckScene& s, bool faulty, Target&) {
         FltDof record = dof();
         if (faulty) record.pointInXyPlane = {-4, 0, 0};
         s.add(s.database, record);
     }},
    {Rule::DOF_SCALE_ZERO,
     [](CheckScene& s, bool faulty, Target&) {
         FltDof record = dof();
         if (faulty) record.zScaleCurrent = 0;
         s.add(s.database, record);
     },
     true},
    {Rule::MATRIX_SINGULAR,
     [](CheckScene& s, bool faulty, Target&) {
         s.add(s.database, dof())->SetLocalTM(0, ScaleMatrix({1, faulty ? 0.0 : 2.0, 1}));
     }},
    {Rule::XREF_MISSING,
     [](CheckScene& s, bool faulty, Target&) {
         if (!faulty) writeFile(s.folder.file("tree.flt"), "");
         s.add(s.database, reference("tree.flt<oak>"));
     }},
    {Rule::XREF_CYCLE,
     [](CheckScene& s, bool faulty, Target&) {
         FltStream stream;
         ASSERT_TRUE(stream.open(s.folder.file("tree.flt")));
         reference(faulty ? "home.flt" : "leaf.flt").write(stream);
         ASSERT_TRUE(stream.close());
         writeFile(s.folder.file("home.flt"), "");
         const std::string home = "home.flt";
         fltkilnutil::storeSourceChunk(
             *s.database, fltkilnutil::SourceChunk::source,
             {reinterpret_cast<const std::uint8_t*>(home.data()), home.size()});
         s.add(s.database, reference("tree.flt"));
     }},
    {Rule::PATH_ABSOLUTE,
     [](CheckScene& s, bool faulty, Target&) {
         writeFile(s.folder.file("tree.flt"), "");
         s.add(s.database, reference(faulty ? s.folder.file("tree.flt") + "<oak>" : "tree.flt"));
     },
     true},
    {Rule::PATH_ABSOLUTE,
     [](CheckScene& s, bool faulty, Target&) {
         writeFile(s.folder.file("bark.rgb"), picture(64, 64));
         const FltTexture record = texture(0, faulty ? "C:\\pictures\\bark.rgb" : "bark.rgb");
         s.keep(s.database, {&record});
         textured(s);
     },
     true, "OfTexture"},
    {Rule::INSTANCE_UNDEFINED,
     [](CheckScene& s, bool faulty, Target&) {
         s.add(s.database, instance<FltInstanceDef>(1));
         s.add(s.database, instance<FltInstanceRef>(faulty ? 2 : 1));
     }},
    {Rule::INSTANCE_CYCLE,
     [](CheckScene& s, bool faulty, Target&) {
         INode* const one = s.add(s.database, instance<FltInstanceDef>(1));
         INode* const two = s.add(s.database, instance<FltInstanceDef>(2));
         s.add(one, instance<FltInstanceRef>(2));
         if (faulty) s.add(s.add(two, dof()), instance<FltInstanceRef>(1));
     }},
    // ------------------------------------------------------------ faces
    {Rule::FACE_CORNERS,
     [](CheckScene& s, bool faulty, Target&) {
         s.addFace(s.object, faulty ? Corners() : square(1, 20));
     },
     true},
    {Rule::FACE_DEGENERATE,
     [](CheckScene& s, bool faulty, Target&) {
         INode* const node = s.addFace(s.object, square(1, 20));
         if (faulty) s.meshOf(node).verts[2] = {20.7, 0, 0}, s.meshOf(node).verts[3] = {20.5, 0, 0};
     },
     true},
    {Rule::FACE_NONPLANAR,
     [](CheckScene& s, bool faulty, Target&) {
         Corners corners = square();
         corners[2].z = faulty ? 0.1 : 0;
         replaceFace(s, corners);
     },
     true},
    {Rule::FACE_CONCAVE,
     [](CheckScene& s, bool faulty, Target&) {
         Corners corners = square();
         corners[2] = faulty ? Point3{2, 2, 0} : Point3{9, 9, 0};
         replaceFace(s, corners);
     },
     true},
    {Rule::FACE_CROSSING,
     [](CheckScene& s, bool faulty, Target&) {
         Corners corners = square();
         if (faulty) corners[3] = {5, -3, 0};
         replaceFace(s, corners);
     }},
    {Rule::FACE_CROSSING,  // which turns left at every corner
     [](CheckScene& s, bool faulty, Target&) {
         Corners corners;
         for (int i = 0; i < 5; ++i) {
             const double angle = (faulty ? 2 : 1) * i * 2 * 3.14159265358979 / 5;
             corners.push_back({9 * std::cos(angle), 9 * std::sin(angle), 0});
         }
         INode* const node = replaceFace(s, square());
         Mesh& mesh = s.meshOf(node);
         mesh.Clear();
         for (const Point3& corner : corners) mesh.verts.Append(corner);
         const DWORD order[] = {0, 1, 2, 3, 4};
         for (const DWORD third : {2U, 3U, 4U})
             mesh.faces.Append(Face{{order[0], third - 1, third},
                                    (third == 2 ? EDGE_A : 0) | EDGE_B | (third == 4 ? EDGE_C : 0)});
     },
     false, "Star"},
    {Rule::FACE_DUPLICATE,
     [](CheckScene& s, bool faulty, Target&) {
         Corners again = square(10, faulty ? 0 : 20);
         std::rotate(again.begin(), again.begin() + 1, again.end());
         s.addFace(s.object, again);
     },
     true},
    {Rule::FACE_DUPLICATE,  // in two levels of detail it is none
     [](CheckScene& s, bool faulty, Target&) {
         INode* const first = addLod(s, 100, 0, 3);
         if (faulty)
             s.addFace(first->GetChildNode(0), square(10, 0, 0, 3));
         else
             addLod(s, 500, 100, 3);
     },
     true, "LevelOfDetail"},
    {Rule::FACE_OVERLAP,
     [](CheckScene& s, bool faulty, Target&) {
         s.addFace(s.object, square(10, faulty ? 7 : 10, 3));
     }},
    {Rule::FACE_OVERLAP,  // seen from the other side it is none
     [](CheckScene& s, bool faulty, Target&) {
         Corners corners = square(4, 7, 3);
         if (!faulty) std::ranges::reverse(corners);
         s.addFace(s.object, corners);
     },
     false, "Side"},
    {Rule::SUBFACE_OUTSIDE,
     [](CheckScene& s, bool faulty, Target&) {
         s.addFace(s.face, square(3, faulty ? 8 : 7, 2));
     }},
    {Rule::INDEX_RANGE,
     [](CheckScene& s, bool faulty, Target&) {
         const FltMaterial material;
         s.keep(s.database, {&material});
         FltFace record;
         record.materialIndex = 0;
         replaceFace(s, square(), record);
         if (faulty) record.materialIndex = 1;
         s.addFace(s.object, square(10, 20), record);
     },
     true},
    {Rule::INDEX_RANGE,
     [](CheckScene& s, bool faulty, Target&) {
         // A box of triangles, so that no vertex is left over without the bad one.
         Mesh& mesh = s.meshOf(s.face);
         if (faulty) mesh.faces.Append(Face{{0, 1, 99}, EDGE_ALL});
     },
     false, "Vertex"},
    {Rule::DRAW_LINE_AREA,
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltFace>(s.face, [&](FltFace& f) { f.drawType = faulty ? 2 : 1; });
     }},
    {Rule::BILLBOARD,
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltFace>(s.face, [&](FltFace& f) { f.billboard = faulty ? kFltPointBlended : 0; });
     }},
    {Rule::BILLBOARD,
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltFace>(s.face, [&](FltFace& f) { f.billboard = faulty ? 9 : 1; });
     },
     false, "Unknown"},
    {Rule::UV_MISSING,
     [](CheckScene& s, bool faulty, Target&) {
         writeFile(s.folder.file("a.rgb"), picture(64, 64));
         const FltTexture record = texture(0, "a.rgb");
         s.keep(s.database, {&record});
         textured(s);
         if (!faulty) return;
         s.meshOf(s.face).tVerts.ZeroCount();
         s.meshOf(s.face).tvFaces.ZeroCount();
     }},
    {Rule::NORMAL_MISSING,
     [](CheckScene& s, bool faulty, Target&) {
         s.edit<FltFace>(s.face, [](FltFace& f) { f.lightMode = kFltLitFaceColor; });
         if (faulty) s.keepPlainCorners(s.face);
     },
     true},
    // ------------------------------------------------------------ vertices
    {Rule::VERTEX_NONFINITE,
     [](CheckScene& s, bool faulty, Target&) {
         if (faulty) s.meshOf(s.face).verts[1].y = kNan;
     }},
    {Rule::VERTEX_UNUSED,
     [](CheckScene& s, bool faulty, Target&) {
         Mesh& mesh = s.meshOf(s.face);
         if (faulty) mesh.verts.Append(Point3{1, 2, 3});
     },
     true},
    {Rule::VERTEX_DUPLICATE,
     [](CheckScene& s, bool faulty, Target&) {
         Corners corners = square();
         if (faulty) corners.insert(corners.begin() + 2, corners[2]);
         replaceFace(s, corners);
     },
     true},
    {Rule::VERTEX_FAR,
     [](CheckScene& s, bool faulty, Target&) {
         header(s, [](FltHeader& h) { h.vertexCoordinateUnits = 1; });  // kilometres
         replaceFace(s, square(1, faulty ? 17 : 15));
     },
     true},
    // ------------------------------------------------------------ lights
    {Rule::LP_DARK,
     [](CheckScene& s, bool faulty, Target&) {
         FltLightPoint record = light();
         if (faulty) record.intensity = 0;
         addLight(s, record);
     }},
    {Rule::LP_DIRECTION,
     [](CheckScene& s, bool faulty, Target&) {
         FltLightPoint record = light();
         record.directionalType = 1;
         addLight(s, record, !faulty);
     }},
    {Rule::LP_SIZE,
     [](CheckScene& s, bool faulty, Target&) {
         FltLightPoint record = light();
         record.minPixelSize = 2;
         record.maxPixelSize = faulty ? 1 : 2;
         addLight(s, record);
     },
     true},
    // ------------------------------------------------------------ textures, materials, budgets
    {Rule::TEX_MISSING,
     [](CheckScene& s, bool faulty, Target&) {
         if (!faulty) writeFile(s.folder.file("a.rgb"), picture(64, 64));
         const FltTexture record = texture(0, "a.rgb");
         s.keep(s.database, {&record});
         textured(s);
     }},
    {Rule::TEX_SIZE,
     [](CheckScene& s, bool faulty, Target&) {
         const unsigned height = faulty ? 65 : 32;
         writeFile(s.folder.file("a.rgb"),
                   picture(64, height) + std::string(std::size_t{3} * 64 * height, '\0'));
         const FltTexture record = texture(0, "a.rgb");
         s.keep(s.database, {&record});
         textured(s);
     },
     true},
    {Rule::PALETTE_UNUSED,
     [](CheckScene& s, bool faulty, Target&) {
         FltMaterial used, unused;
         unused.index = 1;
         faulty ? s.keep(s.database, {&used, &unused}) : s.keep(s.database, {&used});
         s.edit<FltFace>(s.face, [](FltFace& f) { f.materialIndex = 0; });
     },
     true},
    {Rule::MAT_ALPHA_ZERO,
     [](CheckScene& s, bool faulty, Target&) {
         FltMaterial material;
         material.alpha = faulty ? 0.F : 0.5F;
         s.keep(s.database, {&material});
         s.edit<FltFace>(s.face, [](FltFace& f) { f.materialIndex = 0; });
     }},
    {Rule::BUDGET,
     [](CheckScene& s, bool faulty, Target& target) {
         target.limits.lodFaces = 1;
         INode* const level = addLod(s, 100, 0);
         if (faulty) s.addFace(s.add(level, FltObject()), square(10, 0, 0, 4));
     }},
    {Rule::BUDGET,
     [](CheckScene& s, bool faulty, Target& target) {
         target.limits.lightPoints = faulty ? 0 : 1;
         addLight(s, light());
     },
     false, "Lights"},
    {Rule::BUDGET,
     [](CheckScene& s, bool faulty, Target& target) {
         target.limits.lightSources = faulty ? 1 : 2;
         for (int i = 0; i < 2; ++i) s.add(s.database, FltLightSource());
     },
     false, "LightSources"},
    {Rule::BUDGET,
     [](CheckScene& s, bool faulty, Target& target) {
         // Two textures of 3 MB, and one of 4 bytes.
         target.limits.textureMegabytes = faulty ? 6 : 7;
         target.severities[static_cast<std::size_t>(Rule::TEX_SIZE)] = Severity::kOff;
         target.severities[static_cast<std::size_t>(Rule::PALETTE_UNUSED)] = Severity::kOff;
         writeFile(s.folder.file("a.rgb"), picture(1024, 768));
         writeFile(s.folder.file("b.rgb"), picture(1, 1));
         const FltTexture first = texture(0, "a.rgb"), second = texture(1, "a.rgb"),
                          third = texture(2, "b.rgb");
         s.keep(s.database, {&first, &second, &third});
     },
     false, "Textures"},
    {Rule::NOT_JUDGED,
     [](CheckScene& s, bool faulty, Target&) {
         for (int i = 0; i < 2; ++i) addLod(s, faulty ? kNan : 100, 0, i);
     }},
};

class RuleTest : public testing::TestWithParam<Case> {};

TEST_P(RuleTest, FindsTheFaultAndNothingElse) {
    Target target;
    CheckScene clean;
    GetParam().build(clean, false, target);
    EXPECT_EQ(listOf(clean.check(target)), "");

    target = {};
    CheckScene faulty;
    GetParam().build(faulty, true, target);
    const checks::Report report = faulty.check(target);
    EXPECT_NE(report.countOf(GetParam().rule), 0U) << listOf(report);
    for (const Finding& finding : report.findings) {
        EXPECT_TRUE(finding.rule == GetParam().rule || finding.rule == GetParam().also)
            << listOf(report);
        for (const auto language : {base::Language::kEnglish, base::Language::kChinese}) {
            const std::string text = finding.text(language);
            EXPECT_EQ(text.find_first_of("{}"), std::string::npos) << text;
            // Words of ours stand in it in its language.
            for (std::size_t i = 0; i < finding.values.size(); ++i) {
                if ((checks::infoOf(finding.rule).words >> i & 1) == 0) continue;
                EXPECT_EQ(text.find(finding.values[i]) == std::string::npos,
                          language == base::Language::kChinese)
                    << text;
            }
        }
    }
}

TEST_P(RuleTest, MendRemovesTheFindingAndAddsNone) {
    Target target;
    CheckScene scene;
    GetParam().build(scene, true, target);
    const checks::Report report = scene.check(target);
    ASSERT_FALSE(report.findings.empty());
    const Finding finding = report.findings.front();
    const std::string before = kiln::Core::get()->sceneText();
    if (!GetParam().isMended) {
        EXPECT_FALSE(checks::mend(scene.host, target, finding)) << listOf(report);
        EXPECT_EQ(kiln::Core::get()->sceneText(), before);
        return;
    }
    EXPECT_NE(checks::infoOf(finding.rule).mend, checks::Mend::kNone);
    kiln::History& history = kiln::Core::get()->history();
    history.endCommand();
    history.clear();
    std::size_t mended = 0;
    for (const Finding& each : report.findings)
        if (checks::mend(scene.host, target, each)) ++mended;
    const checks::Report after = scene.check(target);
    EXPECT_EQ(after.countOf(GetParam().rule), 0U) << listOf(after);
    for (const Finding& each : after.findings)
        EXPECT_EQ(each.rule, GetParam().also) << listOf(after);
    const std::string done = kiln::Core::get()->sceneText();
    EXPECT_NE(done, before);
    history.endCommand();
    const std::size_t steps = history.stepCount();
    ASSERT_GE(steps, 1U);
    EXPECT_LE(steps, mended);
    for (const Finding& each : report.findings) checks::mend(scene.host, target, each);
    EXPECT_EQ(kiln::Core::get()->sceneText(), done) << "what is mended stays as it is";
    history.endCommand();
    EXPECT_EQ(history.stepCount(), steps);
    EXPECT_EQ(history.stepName(0), fltkilnutil::nameOf(fltkilnutil::Action::kMend));
    EXPECT_TRUE(history.goTo(0));
    EXPECT_EQ(kiln::Core::get()->sceneText(), before);
    EXPECT_TRUE(history.goTo(steps));
    EXPECT_EQ(kiln::Core::get()->sceneText(), done);
}

INSTANTIATE_TEST_SUITE_P(Rules, RuleTest, testing::ValuesIn(kCases), [](const auto& test) {
    return std::string(checks::infoOf(test.param.rule).code) + test.param.name;
});

TEST(Catalogue, EveryRuleHasACaseAndEveryMendAFunction) {
    std::set<Rule> tested;
    for (const Case& each : kCases) tested.insert(each.rule);
    tested.insert(Rule::LP_INDEX);  // files: file_test.cpp
    for (const checks::RuleInfo& rule : checks::catalogue()) {
        EXPECT_TRUE(tested.contains(rule.rule)) << rule.code;
        EXPECT_EQ(checks::canMend(rule.rule), rule.mend != checks::Mend::kNone) << rule.code;
    }
}

TEST(Mend, LeavesAStateOfASwitchAlone) {
    CheckScene scene;
    INode* const states = addSwitch(scene, 1, {3});
    INode* const empty = scene.addFace(states, {});
    // A node that no file has between the two makes no difference.
    INode* const between = scene.host.CreateObjectNode(new DummyObject, "between");
    states->AttachChild(between);
    between->AttachChild(empty);
    const checks::Report report = scene.check();
    ASSERT_EQ(report.countOf(Rule::FACE_CORNERS), 1U) << listOf(report);
    for (const Finding& finding : report.findings)
        EXPECT_TRUE(finding.rule != Rule::FACE_CORNERS || !checks::mend(scene.host, {}, finding));
    EXPECT_TRUE(scene.host.IsNodeInScene(empty));
}

TEST(Mend, ChangesAMeshThatTheHistoryKeepsButNoneThatIsShownElsewhere) {
    CheckScene scene;
    replaceFace(scene, {{0, 0, 0}, {10, 0, 0}, {10, 10, 3}, {0, 10, 0}});
    scene.edit<FltFace>(scene.face, [](FltFace& face) { face.lightMode = kFltLitFaceColor; });
    scene.keepPlainCorners(scene.face);
    const checks::Report report = scene.check();
    ASSERT_EQ(report.findings.size(), 2U) << listOf(report);
    kiln::Core::get()->history().endCommand();
    INode* const other = scene.host.CreateObjectNode(scene.face->GetObjectRef(), "other");
    const std::string before = kiln::Core::get()->sceneText();
    for (const Finding& finding : report.findings)
        EXPECT_FALSE(checks::mend(scene.host, {}, finding));
    EXPECT_EQ(kiln::Core::get()->sceneText(), before);
    scene.host.DeleteNode(other);
    for (const Finding& finding : report.findings)
        EXPECT_TRUE(checks::mend(scene.host, {}, finding));
    EXPECT_EQ(listOf(scene.check()), "");
}

TEST(Mend, MakesASmallerPictureBesideTheOneThatIsTooLarge) {
    CheckScene scene;
    std::string large = picture(6, 3);
    for (unsigned channel = 0; channel < 3; ++channel)
        for (const char* const row :
             {"\x0A\x14\x1E\x28\x32\x3C", "\x46\x50\x5A\x64\x6E\x78", "\1\1\1\1\1\1"})
            large += row;
    const std::string attributes("\0\0\0\6\0\0\0\3rest", 12);
    std::filesystem::create_directory(base::pathFrom(scene.folder.file("pictures")));
    writeFile(scene.folder.file("pictures/bark.rgb"), large);
    writeFile(scene.folder.file("pictures/bark.rgb.attr"), attributes);
    writeFile(scene.folder.file("pictures/bark_4x2.rgb"), "another one's");
    const FltTexture record = texture(0, "pictures/bark.rgb");
    scene.keep(scene.database, {&record});
    OwnedPtr<BitmapTex> map = fltkilnutil::makeTextureMap("pictures/bark.rgb", 0);
    BitmapTex& shown = *map;
    textured(scene)->SetTexmap(map.release());
    const checks::Report report = scene.check();
    ASSERT_EQ(listOf(report), "TEX_SIZE n1: the texture pictures/bark.rgb is 6 by 3\n");
    const std::string name = "pictures/bark_4x2_2.rgb";
    kiln::Core::get()->history().endCommand();
    ASSERT_TRUE(checks::mend(scene.host, {}, report.findings.front()));
    EXPECT_EQ(listOf(scene.check()), "");
    EXPECT_STREQ(shown.GetMapName(), name.c_str());
    const auto read = [&](const std::string& file) {
        std::string bytes;
        EXPECT_FALSE(base::readFile(scene.folder.file(file.c_str()), bytes)) << file;
        return bytes;
    };
    // The first row covers one row of the other, the second one two; the columns one, two, one,
    // two.
    const std::string plane = "\x0A\x19\x28\x37\x24\x2B\x33\x3A";
    EXPECT_EQ(read(name).substr(0, 12), std::string("\1\xDA\0\1\0\3\0\4\0\2\0\3", 12));
    EXPECT_EQ(read(name).substr(512), plane + plane + plane);
    EXPECT_EQ(read(name + ".attr"), std::string("\0\0\0\4\0\0\0\2rest", 12));
    // What was there is as it was.
    EXPECT_EQ(read("pictures/bark.rgb"), large);
    EXPECT_EQ(read("pictures/bark.rgb.attr"), attributes);
    EXPECT_EQ(read("pictures/bark_4x2.rgb"), "another one's");
    kiln::Core::get()->history().endCommand();
    kiln::Core::get()->history().goTo(kiln::Core::get()->history().stepCount() - 1);
    EXPECT_STREQ(shown.GetMapName(), "pictures/bark.rgb");
    // A picture that was made before serves.
    ASSERT_TRUE(checks::mend(scene.host, {}, report.findings.front()));
    EXPECT_STREQ(shown.GetMapName(), name.c_str());
}

TEST(Mend, LeavesTheSceneAndTheFolderWhereAPictureCannotBeMadeSmaller) {
    CheckScene scene;
    writeFile(scene.folder.file("bark.rgb"), picture(6, 3));
    // As long as a name may be: there is no room for another one.
    std::string longest = "bark.rgb";
    while (longest.size() + 2 < sizeof FltTexture::fileName) longest.insert(0, "./");
    for (const std::string& name : {longest, std::string("bark.rgb")}) {
        const FltTexture record = texture(0, name);
        scene.keep(scene.database, {&record});
        textured(scene);
        const checks::Report report = scene.check();
        ASSERT_EQ(report.countOf(Rule::TEX_SIZE), 1U) << listOf(report);
        const std::string before = kiln::Core::get()->sceneText();
        Target target;
        if (name != longest) target.limits.textureSide = 0;
        EXPECT_FALSE(checks::mend(scene.host, target, report.findings.front()));
        EXPECT_EQ(kiln::Core::get()->sceneText(), before);
        EXPECT_EQ(
            std::distance(
                std::filesystem::directory_iterator(base::pathFrom(scene.folder.file(""))), {}),
            1);
    }
}

TEST(Mend, LooksForPaletteEntriesInWholeRecordsOnly) {
    CheckScene scene;
    writeFile(scene.folder.file("a.rgb"), picture(64, 64));
    const FltTexture record = texture(0, scene.folder.file("a.rgb"));
    scene.keep(scene.database, {&record});
    textured(scene);
    const checks::Report report = scene.check();
    ASSERT_EQ(report.countOf(Rule::PATH_ABSOLUTE), 1U) << listOf(report);
    // Since then something has cut the record short.
    fltkilnutil::SourceRecordsWriter kept;
    kept.begin(kFltRevision);
    FltToken token;
    record.writeToken(token, kFltRevision);
    token.finish();
    kept.record({token.data(), token.length()}, 8);
    fltkilnutil::storeSourceChunk(*scene.database, fltkilnutil::SourceChunk::records, kept.bytes());
    EXPECT_FALSE(checks::mend(scene.host, {}, report.findings.front()));
}

TEST(Rules, TellRingsOfInstancesFromWhatLiesBetweenThem) {
    CheckScene scene;
    const auto define = [&](std::int16_t number, std::initializer_list<std::int16_t> uses) {
        INode* const definition = scene.add(scene.database, instance<FltInstanceDef>(number));
        for (const std::int16_t used : uses) scene.add(definition, instance<FltInstanceRef>(used));
    };
    define(1, {2, 2});
    define(2, {3, 1});
    define(3, {4, 7});
    define(4, {5});
    define(5, {6, 4});
    define(6, {6});
    define(7, {8});
    define(8, {});
    std::set<std::string> inRings;
    for (const Finding& finding : scene.check().findings)
        if (finding.rule == Rule::INSTANCE_CYCLE) inRings.insert(finding.values.at(0));
    EXPECT_EQ(inRings, (std::set<std::string>{"1", "2", "4", "5", "6"}));
}

TEST(Rules, SayOnceOfAGroupOfFacesThatItIsFarAway) {
    CheckScene scene;
    header(scene, [](FltHeader& h) { h.vertexCoordinateUnits = 4; });  // feet
    replaceFace(scene, square(1, 53'000));
    EXPECT_EQ(listOf(scene.check()), "");
    for (int i = 0; i < 2; ++i) scene.addFace(scene.object, square(1, 54'000, 2 * i));
    scene.addFace(scene.add(scene.group, FltObject()), square(1, 54'000, 9));
    const checks::Report report = scene.check();
    EXPECT_EQ(report.countOf(Rule::VERTEX_FAR), 2U) << listOf(report);
    EXPECT_EQ(report.findings.front().node, scene.object->GetName());
}

TEST(Mend, BringsFarVerticesNearWithoutMovingThem) {
    CheckScene scene;
    INode* const far1 = scene.addFace(scene.object, square(10, 1e6, -2e6));
    scene.addFace(far1, square(5, 1e6, -2e6));
    scene.host.DeleteNode(scene.face);
    scene.object->SetNodeTM(0, RotAngleAxisMatrix({0, 0, 1}, 1));
    const auto worldOf = [&](INode* face) {
        return face->GetNodeTM(0).PointTransform(scene.meshOf(face).verts[2]);
    };
    const Point3 before = worldOf(far1), beforeBelow = worldOf(far1->GetChildNode(0));
    const checks::Report report = scene.check();
    ASSERT_EQ(report.findings.front().rule, Rule::VERTEX_FAR) << listOf(report);
    // What hangs there and is no face would have to move along.
    INode* const other = scene.add(scene.object, FltGroup());
    EXPECT_FALSE(checks::mend(scene.host, {}, report.findings.front()));
    EXPECT_EQ(worldOf(far1), before);
    scene.host.DeleteNode(other);
    ASSERT_TRUE(checks::mend(scene.host, {}, report.findings.front()));
    EXPECT_EQ(scene.meshOf(far1).verts[2], (Point3{5, 5, 0}));
    EXPECT_LT(Length(worldOf(far1) - before), 1e-8);
    EXPECT_LT(Length(worldOf(far1->GetChildNode(0)) - beforeBelow), 1e-8);
    EXPECT_EQ(scene.check().countOf(Rule::VERTEX_FAR), 0U);
}

TEST(Mend, RefusesANodeThatHasGone) {
    CheckScene scene;
    addLod(scene, 0, 100);
    const checks::Report report = scene.check();
    kiln::Core::get()->newScene();
    EXPECT_FALSE(checks::mend(scene.host, {}, report.findings.at(0)));
}

}  // namespace
