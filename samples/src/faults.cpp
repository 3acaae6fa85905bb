#include "faults.h"

#include "shapes.h"

#include <quillon/fltdof.h>
#include <quillon/fltgroup.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>
#include <quillon/fltxref.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <utility>

namespace samples {

namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

constexpr char kFile[] = "faults.flt", kTile[] = "faults-tile.flt", kPicture[] = "faults.rgb";

template <typename Record>
Record named(std::string_view id) {
    Record record;
    fltSetText(record.asciiId, id);
    return record;
}

FltXRef reference(std::string_view file) {
    FltXRef record;
    fltSetText(record.fileName, file);
    return record;
}

FltTexture texture(std::int32_t index, std::string_view file) {
    FltTexture record;
    record.index = index;
    fltSetText(record.fileName, file);
    return record;
}

/// Puts the faults beside each other, so that none leads to another's.
class Field {
public:
    explicit Field(Node& root) : root_(root) {}

    /// A group for the fault.
    Node& group(std::string_view id) {
        x_ += 20;
        return root_.add(named<FltGroup>(id));
    }
    /// A square of 10 m in a place of its own, raised by `z`.
    Polygon square(double z = 0) const { return rectangle(x_, 0, x_ + 10, 10, z); }
    Point at(double x, double y, double z = 0) const { return {x_ + x, y, z}; }

    Node& level(Node& parent, double in, double out, double z = 0) {
        FltLod record;
        record.switchInDistance = in;
        record.switchOutDistance = out;
        record.centerX = x_ + 5;
        record.centerY = 5;
        record.centerZ = z;
        Node& lod = parent.add(record);
        lod.add(FltObject()).addFace(square(z), 0);
        return lod;
    }

private:
    Node& root_;
    double x_ = 0;
};

void addNames(Field& field) {
    field.group("g9999").addFace(field.square(), 0);  // the header gives lower numbers next
    field.group("hangars8").addFace(field.square(), 0);
    field.group(" blank").addFace(field.square(), 0);
    for (int i = 0; i < 2; ++i) field.group("twin").addFace(field.square(), 0);
}

void addHierarchy(Field& field) {
    field.group("empty");
    Node* deep = &field.group("deep");
    for (int i = 0; i < 64; ++i) deep = &deep->add(FltGroup());
    deep->addFace(field.square(), 0);
    field.group("kinds").add(FltObject()).add(FltGroup()).addFace(field.square(), 0);
    Node& reversed = field.group("reversed");
    field.level(reversed, 50, 100);
    Node& gap = field.group("gap");
    field.level(gap, 100, 0);
    field.level(gap, 500, 120);
    Node& overlap = field.group("overlap");
    field.level(overlap, 100, 0);
    field.level(overlap, 500, 90);
    Node& centre = field.group("centre");
    for (const auto& [in, out] : {std::pair{100, 0}, {500, 100}}) {
        FltLod record;
        record.switchInDistance = in;
        record.switchOutDistance = out;
        record.centerY = 900;
        centre.add(record).add(FltObject()).addFace(field.square(), 0);
    }
    Node& unseen = field.group("unseen");
    field.level(field.level(unseen, 100, 0), 200, 100);
    field.level(field.group("toosmall"), 3, 0);
    field.level(field.group("nan"), kNotANumber, 0);
}

void addSwitch(Field& field, std::string_view id, int children,
               std::initializer_list<std::uint32_t> masks, std::int32_t current = 0) {
    FltSwitch record;
    record.wordsPerMask = 1;
    record.currentMask = current;
    for (const std::uint32_t mask : masks) record.maskWords.append(mask);
    Node& node = field.group(id).add(record);
    for (int i = 0; i < children; ++i) node.add(FltGroup()).addFace(field.square(i), 0);
}

void addStates(Field& field) {
    addSwitch(field, "short", 33, {0xFFFFFFFF});
    addSwitch(field, "current", 2, {1, 2}, 2);
    addSwitch(field, "stray", 2, {7});
    addSwitch(field, "never", 3, {1, 4});
    addSwitch(field, "nomask", 1, {});

    FltDof motion;
    motion.xScaleCurrent = motion.yScaleCurrent = 1;  // and that of z is 0
    motion.flags = 0x44000000;                        // limited in y and yaw
    motion.yTranslationMin = 3;
    motion.yawMax = 90;
    motion.yawCurrent = 91;
    motion.pointInXyPlane = {-4, 0, 0};
    field.group("motion").add(motion).addFace(field.square(), 0);
    Node& flat = field.group("flat");
    flat.transform({{{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}});
    flat.addFace(field.square(), 0);
}

void addReferences(Field& field) {
    Node& files = field.group("files");
    for (const char* const file : {"missing.flt", kTile, "C:/models/tree.flt"})
        files.add(reference(file));
    FltInstanceDef definition;
    definition.instanceNumber = 1;
    FltInstanceRef use;
    use.instanceNumber = 1;
    Node& instances = field.group("uses");
    instances.add(definition).add(use);
    use.instanceNumber = 9;
    instances.add(use);
}

void addFaces(Field& field) {
    field.group("corners").add(FltFace());
    field.group("line").addFace({field.at(0, 0), field.at(5, 0), field.at(10, 0)}, 0);
    field.group("warped").addFace(
        {field.at(0, 0), field.at(10, 0), field.at(10, 10, 1), field.at(0, 10)}, 0);
    field.group("concave").addFace(
        {field.at(0, 0), field.at(10, 0), field.at(2, 2), field.at(0, 10)}, 0);
    field.group("bowtie").addFace(
        {field.at(0, 0), field.at(10, 0), field.at(10, 10), field.at(5, -3)}, 0);
    Node& same = field.group("same");
    for (int i = 0; i < 2; ++i) same.addFace(field.square(), 0);
    Node& plane = field.group("plane");
    plane.addFace(field.square(), 0);
    plane.addFace({field.at(5, 3), field.at(14, 3), field.at(14, 6), field.at(5, 6)}, 0);
    field.group("subface")
        .addFace(field.square(), 0)
        .addSubface({field.at(8, 2), field.at(12, 2), field.at(12, 4), field.at(8, 4)}, 0);
    const auto surface = [&](std::string_view id, auto&& change) -> Node& {
        return field.group(id).addFace(field.square(), 0).changeFace(change);
    };
    surface("index", [](FltFace& face) { face.materialIndex = 99; });
    surface("drawtype", [](FltFace& face) { face.drawType = 2; });
    surface("turning", [](FltFace& face) { face.billboard = 9; });
    surface("picture", [](FltFace& face) { face.textureIndex = 0; });
    surface("size", [](FltFace& face) { face.textureIndex = 1; });
    surface("clear", [](FltFace& face) { face.materialIndex = 0; });
    surface("layers", [](FltFace&) {}).attach(FltMultiTexture());
    surface("normals", [](FltFace& face) { face.lightMode = kFltLitFaceColor; }).withoutNormals();
}

void addVertices(Field& field) {
    field.group("nowhere").addFace(
        {field.at(0, 0), field.at(kNotANumber, 0), field.at(10, 10), field.at(0, 10)}, 0);
    field.group("twice").addFace(
        {field.at(0, 0), field.at(10, 0), field.at(10, 10), field.at(10, 10), field.at(0, 10)}, 0);
    field.group("far").addFace(rectangle(17000, 0, 17010, 10, 0), 0);
}

void addLights(Field& field) {
    FltLightPoint light;
    light.directionalType = 1;  // into a lobe of no width, and of no intensity
    light.minPixelSize = 2;
    light.maxPixelSize = 1;
    Polygon points;
    for (int i = 0; i < 501; ++i) points.push_back(field.at(0.02 * i, 0, 1));
    Node& lights = field.group("lights");
    lights.add(light).setPoints(std::move(points), 0);
    FltIndexedLightPoint indexed;
    indexed.appearanceIndex = 5;
    lights.add(indexed);
}

bool writeTile(const std::string& path) {
    FltStream stream;
    if (!stream.open(path)) return false;
    reference(kFile).write(stream);
    return stream.close();
}

/// An SGI picture of 64 by 65 black texels.
bool writePicture(const std::string& path) {
    std::string bytes(512 + 64 * 65 * 3, '\0');
    constexpr std::uint8_t kStart[] = {0x01, 0xDA, 0, 1, 0, 3, 0, 64, 0, 65,
                                       0,    3,    0, 0, 0, 0, 0, 0,  0, 255};
    std::ranges::copy(kStart, bytes.begin());
    std::ofstream file(std::filesystem::path(std::u8string(path.begin(), path.end())),
                       std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file.good();
}

}  // namespace

bool writeFaults(const std::string& folder) {
    FltScene scene;
    FltHeader& header = scene.header;
    header.vertexCoordinateUnits = 2;
    header.vertexStorageType = 0;
    header.databaseOrigin = 1;
    header.projectionType = 9;
    header.earthEllipsoidModel = -1;
    header.earthMajorAxis = header.earthMinorAxis = 0;
    scene.colors = {{158, 158, 152}};
    FltMaterial clear, unused;
    clear.alpha = 0;
    unused.index = 1;
    scene.addPalette(clear);
    scene.addPalette(unused);
    scene.addPalette(texture(0, "missing.rgb"));
    scene.addPalette(texture(1, kPicture));
    scene.unusedVertices = 1;
    Field field(scene.root);
    addNames(field);
    addHierarchy(field);
    addStates(field);
    addReferences(field);
    addFaces(field);
    addVertices(field);
    addLights(field);
    const std::string at = folder + '/';
    return writeScene(scene, at + kFile) && writeTile(at + kTile) && writePicture(at + kPicture);
}

}  // namespace samples
