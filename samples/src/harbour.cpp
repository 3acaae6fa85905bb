#include "harbour.h"

#include "shapes.h"

#include <base/paths.h>
#include <base/replacefile.h>
#include <quillon/fltdof.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlinestyle.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>

#include <cmath>
#include <functional>
#include <iterator>
#include <numbers>
#include <string>
#include <string_view>

namespace samples {

namespace {

namespace fs = std::filesystem;

enum Color : std::uint32_t {
    kWhite,
    kStone,
    kWall,
    kRoof,
    kWood,
    kSteel,
    kRed,
    kYellow,
    kWater,
    kLamp,
    kGreen,
    kGrass,
    kDark
};
const std::vector<Rgb> kColors = {{240, 240, 236}, {150, 148, 140}, {222, 206, 180}, {172, 84, 66},
                                  {120, 92, 62},   {120, 132, 142}, {196, 52, 44},   {236, 190, 60},
                                  {70, 110, 140},  {255, 244, 200}, {80, 240, 120},  {104, 142, 78},
                                  {34, 30, 28}};

enum Texture : std::int16_t {
    kNone = -1,
    kWaves,
    kBricks,
    kTiles,
    kPlanks,
    kOak,
    kPine,
    kGrain,
    kMoss
};

template <typename Record>
Record named(std::string_view id) {
    Record record;
    fltSetText(record.asciiId, id);
    return record;
}

Matrix turnedAndMoved(double degrees, double x, double y, double z = 0) {
    const double angle = degrees * std::numbers::pi / 180;
    const auto c = static_cast<float>(std::cos(angle)), s = static_cast<float>(std::sin(angle));
    return {{{c, s, 0, 0},
             {-s, c, 0, 0},
             {0, 0, 1, 0},
             {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z), 1}}};
}

/// With the pictures as they are named from its folder.
FltScene sceneOf(std::string_view id, const std::string& textures) {
    FltScene scene;
    fltSetText(scene.header.asciiId, id);
    fltSetText(scene.header.dateTime, "2026-01-01 12:00:00");
    scene.colors = kColors;
    // As people write them who do not look at large and small letters.
    for (const char* name : {"waves.TIF", "bricks.bmp", "tiles.rgb", "Planks.tga", "oak.tga",
                             "pine.tga", "grain.tga", "moss.tga"})
        scene.addTexture(textures + name);
    return scene;
}

void refer(Node& parent, std::string_view file, const Matrix& place, std::uint32_t overrides = 0) {
    FltXRef reference;
    reference.flags = static_cast<std::int32_t>(overrides);
    fltSetText(reference.fileName, file);
    parent.add(reference).transform(place);
}

/// A block over `base` with textures on its sides and its top.
void addBlock(Node& parent, const Polygon& base, double height, Color side, Texture onSides,
              Color top, Texture onTop) {
    const Polygon cover = raised(base, height);
    for (const Polygon& wall : walls(base, cover)) parent.addFace(wall, side, onSides);
    parent.addFace(cover, top, onTop);
}

/// What turns about a vertical, or along `x`, from `least` to `most` degrees.
FltDof hinge(std::string_view id, const Point& origin, double least, double most, double now) {
    FltDof dof = dofAt(id, origin);
    dof.yawMin = least;
    dof.yawMax = most;
    dof.yawCurrent = now;
    dof.yawIncrement = 5;
    dof.flags = 0x04000000;  // the limits of yaw count
    return dof;
}

// ---------------------------------------------------------------- pictures

constexpr std::size_t kSide = 64;

/// Red, green, blue and alpha of a texel, its row counted from below.
using Painting = std::function<std::uint32_t(std::size_t x, std::size_t y)>;

void put(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    base::replaceFile(base::textOf(path), bytes);
}

std::string little(std::size_t value, int size) {
    std::string bytes;
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i);
    return bytes;
}

/// Blue, green and red of all rows from below, with alpha or without.
std::string texels(const Painting& paint, bool withAlpha, bool fromBelow = true,
                   bool redFirst = false) {
    std::string bytes;
    for (std::size_t row = 0; row < kSide; ++row)
        for (std::size_t x = 0; x < kSide; ++x) {
            const std::uint32_t color = paint(x, fromBelow ? row : kSide - 1 - row);
            for (const unsigned shift : {0U, 8U, 16U})
                bytes += static_cast<char>(color >> (redFirst ? 16 - shift : shift));
            if (withAlpha) bytes += static_cast<char>(color >> 24);
        }
    return bytes;
}

void writeTga(const fs::path& path, const Painting& paint) {
    std::string head(18, '\0');
    head[2] = 2;
    head[12] = head[14] = static_cast<char>(kSide);
    head[16] = 32;
    head[17] = 8;
    put(path, head + texels(paint, true));
}

void writeBmp(const fs::path& path, const Painting& paint) {
    constexpr std::size_t kHead = 54;
    put(path, "BM" + little(kHead + kSide * kSide * 3, 4) + little(0, 4) + little(kHead, 4) +
                  little(40, 4) + little(kSide, 4) + little(kSide, 4) + little(1, 2) +
                  little(24, 2) + std::string(24, '\0') + texels(paint, false));
}

void writeTiff(const fs::path& path, const Painting& paint) {
    const std::pair<std::size_t, std::size_t> fields[] = {
        {256, kSide}, {257, kSide}, {258, 8},
        {259, 1},     {262, 2},     {273, 122},
        {277, 3},     {278, kSide}, {279, kSide * kSide * 3}};
    std::string bytes = "II" + little(42, 2) + little(8, 4) + little(std::size(fields), 2);
    for (const auto& [tag, value] : fields)
        bytes += little(tag, 2) + little(4, 2) + little(1, 4) + little(value, 4);
    put(path, bytes + little(0, 4) + texels(paint, false, false, true));
}

void writeSgi(const fs::path& path, const Painting& paint) {
    constexpr unsigned char kStart[] = {0x01, 0xDA, 0, 1, 0, 3, 0, kSide, 0, kSide, 0, 3};
    std::string bytes(512, '\0');
    std::copy(std::begin(kStart), std::end(kStart), bytes.begin());
    for (const unsigned shift : {16U, 8U, 0U})
        for (std::size_t y = 0; y < kSide; ++y)
            for (std::size_t x = 0; x < kSide; ++x)
                bytes += static_cast<char>(paint(x, y) >> shift);
    put(path, bytes);
}

/// `color` made darker.
std::uint32_t shaded(std::uint32_t color, double share) {
    std::uint32_t result = 0xFF000000;
    for (const unsigned shift : {0U, 8U, 16U})
        result |= static_cast<std::uint32_t>((color >> shift & 0xFF) * share) << shift;
    return result;
}

/// A tree before nothing: round, or pointed.
std::uint32_t treeTexel(std::size_t x, std::size_t y, bool isPointed) {
    const double u = static_cast<double>(x) / kSide - 0.5, v = static_cast<double>(y) / kSide;
    const double grain = 0.75 + 0.25 * std::sin(static_cast<double>(x * 7 + y * 13));
    const bool isLeaf = isPointed ? v > 0.2 && std::abs(u) < 0.36 * (1 - v)
                                  : std::hypot(u, (v - 0.62) * 1.2) < 0.42;
    if (!isLeaf && v < 0.4) return std::abs(u) < 0.05 ? 0xFF5A4630 : 0x005A4630;
    return (isLeaf ? 0xFF000000 : 0) | (shaded(isPointed ? 0x2E5A3C : 0x4A7A38, grain) & 0xFFFFFF);
}

void writePictures(const fs::path& folder) {
    writeTiff(folder / "waves.tif", [](std::size_t x, std::size_t y) {
        const double turn = 2 * std::numbers::pi / kSide;
        return shaded(0x5090B8, 0.8 + 0.1 * std::sin(turn * static_cast<double>(x + 2 * y)) +
                                    0.1 * std::sin(turn * static_cast<double>(3 * x - y)));
    });
    writeBmp(folder / "Bricks.BMP", [](std::size_t x, std::size_t y) {
        return shaded(0xB87860, y % 8 == 0 || (x + y / 8 * 5) % 16 == 0 ? 0.6 : 1);
    });
    writeSgi(folder / "tiles.rgb", [](std::size_t x, std::size_t y) {
        return shaded(0xB05440, 0.7 + 0.3 * std::abs(std::sin(static_cast<double>(x) * 0.4)) *
                                          (y % 16 < 2 ? 0.5 : 1));
    });
    writeTga(folder / "planks.tga", [](std::size_t x, std::size_t y) {
        return shaded(0x8A6A48, x % 16 == 0 ? 0.5 : 0.85 + 0.02 * static_cast<double>(y * 5 % 7));
    });
    for (const bool isPointed : {false, true})
        writeTga(folder / (isPointed ? "pine.tga" : "oak.tga"),
                 [=](std::size_t x, std::size_t y) { return treeTexel(x, y, isPointed); });
    writeTga(folder / "grain.tga", [](std::size_t x, std::size_t y) {
        const std::size_t mixed = (x * 7919 + y * 104729) ^ (x * y * 31);
        return shaded(0xFFFFFF, 0.3 + 0.4 * static_cast<double>(mixed % 64) / 63);
    });
    // Patches before nothing, more of them near the ground.
    writeTga(folder / "moss.tga", [](std::size_t x, std::size_t y) {
        const double turn = 2 * std::numbers::pi / kSide;
        const double patch = std::sin(turn * static_cast<double>(2 * x)) +
                             std::sin(turn * static_cast<double>(3 * x + 5)) +
                             1.4 * std::cos(turn * static_cast<double>(y));
        return patch > 0.6 ? shaded(0x50784A, 0.8 + 0.2 * static_cast<double>((x ^ y) % 3) / 2)
                           : 0x0050784AU;
    });
    // Beside the trees: their rims do not repeat.
    std::string use(64, '\0');
    use[8 * 4 + 3] = use[9 * 4 + 3] = use[10 * 4 + 3] = use[11 * 4 + 3] = 1;
    for (const char* const name : {"pine.tga.attr", "oak.tga.attr"}) put(folder / name, use);
    // Moss lies on a wall and does not color it.
    use[9 * 4 + 3] = use[10 * 4 + 3] = use[11 * 4 + 3] = 0;
    use[15 * 4 + 3] = 2;
    put(folder / "moss.tga.attr", use);
}

// ---------------------------------------------------------------- models

FltScene trees() {
    FltScene scene = sceneOf("trees", "../pictures/");
    for (const Texture kind : {kOak, kPine}) {
        Node& tree = scene.root.add(named<FltGroup>(kind == kOak ? "oak" : "pine"))
                         .add(named<FltObject>(kind == kOak ? "oakshape" : "pinshape"));
        const double height = kind == kOak ? 9 : 12;
        tree.addFace({{-4, 0, 0}, {4, 0, 0}, {4, 0, height}, {-4, 0, height}}, kWhite, kind)
            .stretched()
            .changeFace([](FltFace& face) {
                face.billboard = kFltAxisBlended;
                face.textureWhite = 1;
            });
    }
    return scene;
}

FltScene door() {
    FltScene scene = sceneOf("door", "../../pictures/");
    Node& leaf =
        scene.root.add(hinge("hinge", {-0.6, 0, 0}, -110, 0, -50)).add(named<FltObject>("leaf"));
    addBlock(leaf, rectangle(-0.6, -0.05, 0.6, 0.05, 0), 2.1, kWhite, kPlanks, kWood, kNone);
    return scene;
}

/// By day dark windows, by night lit ones.
void addWindow(Node& parent, double x, double z) {
    const Polygon pane = {
        {x, -4.06, z}, {x + 1.4, -4.06, z}, {x + 1.4, -4.06, z + 1.5}, {x, -4.06, z + 1.5}};
    auto byDay = named<FltObject>("pane");
    byDay.flags = static_cast<std::int32_t>(FltObject::kNotAtNight);
    parent.add(byDay).addFace(pane, kSteel).changeFace([](FltFace& face) {
        face.materialIndex = 0;
        face.lightMode = 2;
    });
    auto byNight = named<FltObject>("lit");
    byNight.flags = static_cast<std::int32_t>(FltObject::kNotByDay | FltObject::kNotAtDusk);
    parent.add(byNight).addFace(pane, kLamp);
}

FltScene house() {
    FltScene scene = sceneOf("house", "../pictures/");
    FltMaterial glass;
    fltSetText(glass.name, "glass");
    glass.ambient = glass.diffuse = {0.5F, 0.6F, 0.7F};
    glass.specular = {0.9F, 0.9F, 0.9F};
    glass.shininess = 30;
    scene.addPalette(glass);
    for (const bool isNear : {true, false}) {
        auto lod = named<FltLod>(isNear ? "near" : "far");
        lod.switchInDistance = isNear ? 300 : 5000;
        lod.switchOutDistance = isNear ? 0 : 300;
        lod.centerZ = 4;
        Node& level = scene.root.add(lod);
        Node& shape = level.add(named<FltObject>("shape"));
        addBlock(shape, rectangle(-6, -4, 6, 4, 0), 6, kWall, kBricks, kRoof, kNone);
        shape.addFace({{-6.4, -4.4, 5.8}, {6.4, -4.4, 5.8}, {6.4, 0, 9}, {-6.4, 0, 9}}, kWhite,
                      kTiles);
        shape.addFace({{6.4, 4.4, 5.8}, {-6.4, 4.4, 5.8}, {-6.4, 0, 9}, {6.4, 0, 9}}, kWhite,
                      kTiles);
        for (const double x : {-6., 6.})
            shape.addFace({{x, -4, 6}, {x, 4, 6}, {x, 0, 8.8}}, kWall, kBricks)
                .changeFace([](FltFace& face) { face.drawType = kFltSolidTwoSided; });
        if (!isNear) continue;
        for (const double x : {-4.6, -2.4, 2.4}) addWindow(level, x, 3.6);
        addWindow(level, 2.4, 1);
        // It is dark behind the door.
        shape.addFace({{-0.6, -4.03, 0}, {0.6, -4.03, 0}, {0.6, -4.03, 2.1}, {-0.6, -4.03, 2.1}},
                      kDark);
        refer(level, "parts/door.flt", turnedAndMoved(0, 0, -4.06));
        // What the sign says is one of two things.
        auto sign = named<FltSwitch>("sign");
        sign.maskWords.append(1);
        sign.maskWords.append(2);
        sign.currentMask = 1;
        Node& open = level.add(sign);
        for (const Color color : {kRed, kGreen})
            open.add(named<FltObject>("board"))
                .addFace({{1, -4.1, 2.2}, {2, -4.1, 2.2}, {2, -4.1, 2.8}, {1, -4.1, 2.8}}, color);
    }
    return scene;
}

FltScene crane() {
    FltScene scene = sceneOf("crane", "../pictures/");
    FltLineStyle thick;
    thick.index = 1;
    thick.width = 3;
    scene.addPalette(thick);
    Node& foot = scene.root.add(named<FltObject>("foot"));
    addBlock(foot, ring(0, 0, 0, 2, 8), 14, kYellow, kNone, kYellow, kNone);
    Node& arm = scene.root.add(hinge("arm", {0, 0, 14}, -120, 120, 35));
    Node& beam = arm.add(named<FltObject>("beam"));
    addBlock(beam, rectangle(-6, -0.8, 22, 0.8, 14), 1.6, kYellow, kNone, kRed, kNone);
    Node& rope = arm.add(named<FltObject>("rope"));
    rope.addFace({{20, 0, 14}, {20, 0.1, 5}, {20, -0.1, 5}}, kSteel).changeFace([](FltFace& face) {
        face.drawType = kFltClosedOutline;
        face.lineStyleIndex = 1;
    });
    addBlock(rope, rectangle(18.5, -1.2, 21.5, 1.2, 3), 2, kRed, kNone, kRed, kNone);
    return scene;
}

/// Its palette has another red than the harbour's.
FltScene boat() {
    FltScene scene = sceneOf("boat", "../pictures/");
    scene.colors[kRed] = {40, 84, 160};
    Node& hull = scene.root.add(named<FltObject>("hull"));
    const Polygon keel = {{-5, -1, -2}, {4, -1, -2}, {6, 0, -2}, {4, 1, -2}, {-5, 1, -2}};
    const Polygon rail = {{-6, -2, 0.4}, {4, -2, 0.4}, {8, 0, 0.4}, {4, 2, 0.4}, {-6, 2, 0.4}};
    for (const Polygon& side : walls(keel, rail)) hull.addFace(side, kRed);
    hull.addFace(rail, kWhite, kPlanks);
    addBlock(hull, rectangle(-4.5, -1.2, -1, 1.2, 0.4), 1.8, kWhite, kNone, kRed, kNone);
    return scene;
}

/// A bar across the quay, which lifts.
void addBarrier(Node& parent) {
    addBlock(parent.add(named<FltObject>("post")), rectangle(14.6, -21.4, 15.4, -20.6, 0), 1.2,
             kSteel, kNone, kSteel, kNone);
    auto lift = hinge("barrier", {15, -21, 1}, 0, 0, 0);
    // About an axis along the quay, so that the bar goes up.
    lift.pitchMax = 80;
    lift.pitchCurrent = 25;
    lift.pitchIncrement = 5;
    lift.flags = 0x14000000;
    Node& bar = parent.add(lift).add(named<FltObject>("bar"));
    for (int i = 0; i < 5; ++i)
        addBlock(bar, rectangle(14.85, -21 + 1.6 * i, 15.15, -19.4 + 1.6 * i, 0.9), 0.25,
                 i % 2 == 0 ? kRed : kWhite, kNone, i % 2 == 0 ? kRed : kWhite, kNone);
}

FltScene lamp() {
    FltScene scene = sceneOf("lamp", {});
    addBlock(scene.root.add(named<FltObject>("post")), ring(0, 0, 0, 0.12, 6), 5, kSteel, kNone,
             kSteel, kNone);
    auto record = named<FltLightPoint>("bulb");
    record.intensity = 1;
    record.actualPixelSize = 0.5F;
    record.minPixelSize = 2;
    record.maxPixelSize = 12;
    scene.root.add(record).setPoints({{0, 0, 5.2}}, kLamp);
    return scene;
}

/// A light that goes round and a red one that flashes.
FltScene lighthouse() {
    FltScene scene = sceneOf("beacon", "../pictures/");
    FltLightPointAppearance beam;
    fltSetText(beam.name, "beam");
    beam.index = 0;
    beam.directionalType = 2;
    beam.horizontalLobeAngle = 60;
    beam.verticalLobeAngle = 90;
    beam.backColor = 0xFF78F050;
    beam.intensity = beam.backIntensity = 1;
    beam.actualPixelSize = 3;
    beam.minPixelSize = 6;
    beam.maxPixelSize = 40;
    scene.addPalette(beam);
    FltLightPointAnimation round;
    fltSetText(round.name, "round");
    round.index = 0;
    round.type = 1;
    round.period = 6;
    round.axis = {0, 0, 1};
    scene.addPalette(round);
    Node& tower = scene.root.add(named<FltObject>("tower"));
    for (int band = 0; band < 5; ++band) {
        const double low = 4. * band;
        const Color color = band % 2 == 0 ? kWhite : kRed;
        for (const Polygon& wall : walls(ring(0, 0, low, 3 - 0.25 * band, 16),
                                         ring(0, 0, low + 4, 2.75 - 0.25 * band, 16)))
            tower.addFace(wall, color);
    }
    addBlock(tower, ring(0, 0, 20, 2.4, 16), 0.4, kStone, kNone, kStone, kNone);
    Node& top = scene.root.add(named<FltObject>("top"));
    for (int i = 0; i < 4; ++i) {
        const double x = i % 2 == 0 ? 1.3 : -1.3, y = i < 2 ? 0.8 : -0.8;
        addBlock(top, ring(x, y, 20.4, 0.1, 6), 2.2, kSteel, kNone, kSteel, kNone);
    }
    addBlock(top, ring(0, 0, 22.6, 1.6, 12), 0.8, kRed, kNone, kRed, kNone);
    auto light = named<FltIndexedLightPoint>("beam");
    light.appearanceIndex = light.animationIndex = 0;
    Node& bulb = scene.root.add(light).directed({0, -1, 0});
    bulb.setPoints({{0, 0, 21.6}}, kLamp);
    auto flash = named<FltLightPoint>("flash");
    flash.intensity = 1;
    flash.minPixelSize = 4;
    flash.maxPixelSize = 10;
    flash.animationPeriod = 2;
    flash.animationEnabledPeriod = 1;
    scene.root.add(flash).setPoints({{0, 0, 23.8}}, kRed);
    return scene;
}

/// Along the edge of the quay, switched together: each flashes at a time of its own.
void addQuayLights(Node& parent) {
    auto system = named<FltLightPointSystem>("quay");
    system.intensity = 0.8F;
    system.animationState = 2;
    system.flags = 0x80000000;
    Node& lights = parent.add(system);
    for (int i = 0; i < 12; ++i) {
        auto record = named<FltLightPoint>("light");
        record.intensity = 1;
        record.minPixelSize = 3;
        record.maxPixelSize = 8;
        record.animationPeriod = 3;
        record.animationEnabledPeriod = 2;
        lights.add(record).setPoints({{-99.0 + 18 * i, -29.5, 0.4}}, i % 2 == 0 ? kRed : kGreen);
    }
}

FltScene town() {
    FltScene scene = sceneOf("harbour", "pictures/");
    Node& ground = scene.root.add(named<FltObject>("ground"));
    ground.addFace(rectangle(-120, -120, 120, -30, -1.5), kWhite, kWaves);
    ground.addFace(rectangle(-120, -30, 120, 120, 0), kGrass)
        .addSubface(rectangle(-120, -30, 120, -12, 0), kStone);
    for (const Polygon& wall :
         walls(rectangle(-120, -30, 120, -29.9, -1.5), rectangle(-120, -30, 120, -29.9, 0)))
        ground.addFace(wall, kStone, kBricks).layered(kMoss, 1);
    Node& jetty = scene.root.add(named<FltObject>("jetty"));
    const Polygon deck = rectangle(-4, -80, 4, -30, -1);
    for (const Polygon& side : walls(deck, raised(deck, 1)))
        jetty.addFace(side, kWhite, kPlanks).layered(kMoss, 2);
    // From close by the planks show their grain.
    jetty.addFace(raised(deck, 1), kWhite, kPlanks).changeFace([](FltFace& face) {
        face.detailTextureIndex = kGrain;
    });
    addQuayLights(scene.root);
    Node& places = scene.root.add(named<FltGroup>("places"));
    for (int row = 0; row < 3; ++row)
        for (int i = 0; i < 7; ++i) {
            refer(places, "town/House.flt",
                  turnedAndMoved(row % 2 * 180., -90 + 30 * i, 5 + 34 * row));
            refer(places, i % 3 == 0 ? "town/trees.flt<pine>" : "town/trees.flt<oak>",
                  turnedAndMoved(0, -75 + 30 * i, 10 + 30 * row));
        }
    for (int i = 0; i < 9; ++i)
        refer(places, "town\\lamp.flt", turnedAndMoved(0, -100 + 25 * i, -14));
    refer(places, "town/crane.flt", turnedAndMoved(-90, 40, -24));
    refer(places, "town/lighthouse.flt", turnedAndMoved(0, 0, -76));
    // One as its own file has it, the other in the harbour's colors.
    refer(places, "town/boat.flt", turnedAndMoved(90, 10, -52, -0.6));
    refer(places, "town/boat.flt", turnedAndMoved(90, 18, -52, -0.6), kFltOverrideColors);
    addBarrier(scene.root);
    refer(places, "ships/lost.flt", turnedAndMoved(0, -40, -60));
    return scene;
}

}  // namespace

void writeHarbour(const fs::path& folder) {
    writePictures(folder / "pictures");
    writeSceneFile(trees(), folder / "town/trees.flt");
    writeSceneFile(door(), folder / "town/parts/door.flt");
    writeSceneFile(house(), folder / "town/house.flt");
    writeSceneFile(crane(), folder / "town/crane.flt");
    writeSceneFile(boat(), folder / "town/boat.flt");
    writeSceneFile(lamp(), folder / "town/lamp.flt");
    writeSceneFile(lighthouse(), folder / "town/lighthouse.flt");
    writeSceneFile(town(), folder / "harbour.flt");
}

}  // namespace samples
