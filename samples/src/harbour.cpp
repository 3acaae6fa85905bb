#include "harbour.h"

#include "picturefiles.h"
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

#include <algorithm>
#include <cmath>
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
    kMoss,
    kTurf,
    kAsphalt,
    kFence,
    kPuddle,
    kSmoke,
    kFlag,
    kPlaster,
    kLattice,
    kNet
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
    for (const char* name :
         {"waves.TIF", "bricks.bmp", "tiles.rgb", "Planks.tga", "oak.tga", "pine.tga", "grain.tga",
          "moss.tga", "turf.jpg", "Asphalt.DDS", "fence.dds", "puddle.dds", "smoke.PNG", "flag.gif",
          "plaster.int", "lattice.rgba", "net.inta"})
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

constexpr std::size_t kSide = kPictureSide;

void put(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    base::replaceFile(base::textOf(path), bytes);
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

/// From -1 to 1, and the same again behind a picture's side.
double waveOf(double place) {
    return std::sin(2 * std::numbers::pi / kSide * place);
}

/// From 0 to 1, without any order.
double mixed(std::size_t x, std::size_t y) {
    const std::size_t number = (x * 7919 + y * 104729) ^ (x * y * 31);
    return static_cast<double>(number % 64) / 63;
}

/// `color` as far as `alpha`, 0 to 1, lets see of it.
std::uint32_t seen(std::uint32_t color, double alpha) {
    return (color & 0xFFFFFF) | static_cast<std::uint32_t>(alpha * 255) << 24;
}

void writePictures(const fs::path& folder) {
    put(folder / "waves.tif", tiffPicture([](std::size_t x, std::size_t y) {
            const auto u = static_cast<double>(x), v = static_cast<double>(y);
            return shaded(0x5090B8, 0.8 + 0.1 * waveOf(u + 2 * v) + 0.1 * waveOf(3 * u - v));
        }));
    put(folder / "Bricks.BMP", bmpPicture([](std::size_t x, std::size_t y) {
            return shaded(0xB87860, y % 8 == 0 || (x + y / 8 * 5) % 16 == 0 ? 0.6 : 1);
        }));
    put(folder / "tiles.rgb", sgiPicture(
                                  [](std::size_t x, std::size_t y) {
                                      const double wave = waveOf(4 * static_cast<double>(x));
                                      return shaded(0xB05440,
                                                    (0.85 + 0.15 * wave) * (y % 16 < 2 ? 0.6 : 1));
                                  },
                                  3));
    put(folder / "planks.tga", tgaPicture([](std::size_t x, std::size_t y) {
            return shaded(0x8A6A48,
                          x % 16 == 0 ? 0.5 : 0.85 + 0.02 * static_cast<double>(y * 5 % 7));
        }));
    for (const bool isPointed : {false, true})
        put(folder / (isPointed ? "pine.tga" : "oak.tga"),
            tgaPicture([=](std::size_t x, std::size_t y) { return treeTexel(x, y, isPointed); }));
    put(folder / "grain.tga", tgaPicture([](std::size_t x, std::size_t y) {
            return shaded(0xFFFFFF, 0.3 + 0.4 * mixed(x, y));
        }));
    // Patches before nothing, more of them near the ground.
    put(folder / "moss.tga", tgaPicture([](std::size_t x, std::size_t y) {
            const auto u = static_cast<double>(x), v = static_cast<double>(y);
            const double patch = waveOf(2 * u) + waveOf(3 * u + 9) + 1.4 * waveOf(v + kSide / 4.);
            return patch > 0.6 ? shaded(0x50784A, 0.8 + 0.2 * mixed(x, y)) : 0x0050784AU;
        }));
    put(folder / "turf.jpg", jpegPicture([](std::size_t x, std::size_t y) {
            const auto u = static_cast<double>(x), v = static_cast<double>(y);
            return shaded(0x709650,
                          0.78 + 0.1 * waveOf(u + v) * waveOf(2 * v - u) + 0.1 * mixed(x, y));
        }));
    put(folder / "asphalt.dds",
        ddsPicture(
            [](std::size_t x, std::size_t y) { return shaded(0x8C8A84, 0.75 + 0.2 * mixed(x, y)); },
            Blocks::kOpaque));
    // Bars, and what holds them together.
    put(folder / "fence.dds", ddsPicture(
                                  [](std::size_t x, std::size_t y) {
                                      const bool isRail = y % 32 < 4 || y > 58;
                                      return seen(0x3C4650, isRail || x % 8 < 3 ? 1 : 0);
                                  },
                                  Blocks::kSharpAlpha));
    put(folder / "puddle.dds", ddsPicture(
                                   [](std::size_t x, std::size_t y) {
                                       const double u = static_cast<double>(x) - kSide / 2.,
                                                    v = static_cast<double>(y) - kSide / 2.;
                                       const double rim = 26 + 4 * std::sin(3 * std::atan2(v, u));
                                       const double depth = (rim - std::hypot(u, v)) / 10;
                                       return seen(0x28343C, std::clamp(depth, 0., 0.8));
                                   },
                                   Blocks::kSmoothAlpha));
    put(folder / "smoke.png", pngPicture([](std::size_t x, std::size_t y) {
            const double u = static_cast<double>(x) - kSide / 2.,
                         v = static_cast<double>(y) - kSide / 2.;
            const double puff = 1 - std::hypot(u, v) / (24 + 6 * std::sin(3 * std::atan2(v, u)));
            return seen(shaded(0xE0E0E4, 0.9 + 0.1 * mixed(x, y)), std::clamp(puff, 0., 0.7));
        }));
    put(folder / "flag.gif", gifPicture([](std::size_t x, std::size_t y) {
            const bool isCross = (x >= 16 && x < 28) || (y >= 26 && y < 38);
            return isCross ? 0xFFFFFFFFU : 0xFF204080U;
        }));
    put(folder / "plaster.int",
        sgiPicture([](std::size_t x,
                      std::size_t y) { return shaded(0xFFFFFF, 0.84 + 0.16 * mixed(x, y)); },
                   1));
    put(folder / "lattice.rgba", sgiPicture(
                                     [](std::size_t x, std::size_t y) {
                                         const bool isBar =
                                             (x + y) % 32 < 5 || (x + kSide - y) % 32 < 5;
                                         return seen(0xD8A838, isBar || x < 4 || x > 59 ? 1 : 0);
                                     },
                                     4));
    put(folder / "net.inta",
        sgiPicture([](std::size_t x,
                      std::size_t y) { return seen(0x707070, x % 8 == 0 || y % 8 == 0 ? 1 : 0); },
                   2));
    // Smooth from near and from afar.
    std::string use(64, '\0');
    use[7 * 4 + 3] = 6;
    use[8 * 4 + 3] = 1;
    // Beside the trees: their rims do not repeat.
    use[9 * 4 + 3] = use[10 * 4 + 3] = use[11 * 4 + 3] = 1;
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
    parent.add(byNight).addFace(pane, kLamp).changeFace([](FltFace& face) {
        face.materialIndex = 1;
        face.lightMode = 2;
    });
}

/// Turned to the eye.
void addSmoke(Node& parent, const Point& at, double side) {
    const double half = side / 2;
    parent
        .addFace({{at.x - half, at.y, at.z - half},
                  {at.x + half, at.y, at.z - half},
                  {at.x + half, at.y, at.z + half},
                  {at.x - half, at.y, at.z + half}},
                 kWhite, kSmoke)
        .stretched()
        .changeFace([](FltFace& face) {
            face.billboard = kFltPointBlended;
            face.textureWhite = 1;
        });
}

FltScene house() {
    FltScene scene = sceneOf("house", "../pictures/");
    FltMaterial glass;
    fltSetText(glass.name, "glass");
    glass.ambient = glass.diffuse = {0.5F, 0.6F, 0.7F};
    glass.specular = {0.9F, 0.9F, 0.9F};
    glass.shininess = 30;
    scene.addPalette(glass);
    FltMaterial lit;
    fltSetText(lit.name, "lit");
    lit.index = 1;
    lit.ambient = lit.diffuse = {0.1F, 0.1F, 0.1F};
    lit.emissive = {0.9F, 0.78F, 0.45F};
    scene.addPalette(lit);
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
        addBlock(shape, rectangle(3, 0.6, 4, 1.6, 7), 3, kWall, kBricks, kDark, kNone);
        if (!isNear) continue;
        Node& smoke = level.add(named<FltObject>("smoke"));
        for (int puff = 0; puff < 3; ++puff)
            addSmoke(smoke, {3.5 + 0.7 * puff, 1.1, 10.8 + 1.5 * puff}, 1.8 + 0.8 * puff);
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

/// What is seen of its picture is seen from both sides.
void asCutOut(FltFace& face) {
    face.drawType = kFltSolidTwoSided;
    face.textureWhite = 1;
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
    addBlock(beam, rectangle(-6, -0.8, 2, 0.8, 14), 1.6, kYellow, kNone, kRed, kNone);
    for (int part = 0; part < 8; ++part) {
        const double from = 2 + 2.5 * part;
        const Polygon below = rectangle(from, -0.8, from + 2.5, 0.8, 14);
        for (const Polygon& side : walls(below, raised(below, 1.6)))
            beam.addFace(side, kWhite, kLattice).stretched().changeFace(asCutOut);
    }
    addBlock(beam, rectangle(19, -0.8, 21, 0.8, 14), 0.2, kRed, kNone, kRed, kNone);
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

/// A wheel that rolls about an axle along y.
void addWheel(Node& parent, double x, double y) {
    constexpr double kRadius = 0.5, kWidth = 0.3;
    constexpr int kCorners = 12;
    FltDof turns = dofAt("wheel", {x, y, kRadius});
    turns.rollCurrent = 20;
    turns.rollIncrement = 5;
    Node& wheel = parent.add(turns).add(named<FltObject>("tyre"));
    // Lying, and then put up.
    const auto upright = [&](Polygon polygon) {
        for (Point& point : polygon) point = {point.x + x, y - point.z, point.y + kRadius};
        return polygon;
    };
    const Polygon low = ring(0, 0, -kWidth / 2, kRadius, kCorners), high = raised(low, kWidth);
    for (const Polygon& tread : walls(low, high)) wheel.addFace(upright(tread), kDark);
    for (int i = 0; i < kCorners; ++i) {
        const auto next = static_cast<std::size_t>((i + 1) % kCorners);
        const auto own = static_cast<std::size_t>(i);
        const Color color = i % 3 == 0 ? kWhite : kSteel;
        wheel.addFace(upright({{0, 0, kWidth / 2}, high[own], high[next]}), color);
        wheel.addFace(upright({{0, 0, -kWidth / 2}, low[next], low[own]}), color);
    }
}

FltScene lorry() {
    FltScene scene = sceneOf("lorry", "../pictures/");
    Node& body = scene.root.add(named<FltObject>("body"));
    addBlock(body, rectangle(-3.2, -1, 2.9, 1, 0.6), 0.3, kDark, kNone, kSteel, kNone);
    addBlock(body, rectangle(1.1, -1.1, 2.9, 1.1, 0.9), 1.7, kRed, kNone, kRed, kNone);
    addBlock(body, rectangle(-3.2, -1.1, 0.9, 1.1, 0.9), 0.9, kWhite, kPlanks, kWood, kNone);
    body.addFace({{2.91, -0.9, 1.6}, {2.91, 0.9, 1.6}, {2.91, 0.9, 2.4}, {2.91, -0.9, 2.4}}, kDark);
    for (const double x : {-2.2, 2.})
        for (const double y : {-1.05, 1.05}) addWheel(scene.root, x, y);
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
            tower.addFace(wall, color, kPlaster);
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
    flash.flags = FltLightPoint::kFlashes;
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
        record.flags = FltLightPoint::kFlashes;
        record.animationPeriod = 3;
        record.animationEnabledPeriod = 2;
        lights.add(record).setPoints({{-99.0 + 18 * i, -29.5, 0.4}}, i % 2 == 0 ? kRed : kGreen);
    }
}

FltScene town() {
    FltScene scene = sceneOf("harbour", "pictures/");
    Node& ground = scene.root.add(named<FltObject>("ground"));
    ground.addFace(rectangle(-120, -120, 120, -30, -1.5), kWhite, kWaves);
    Node& land = ground.addFace(rectangle(-120, -30, 120, 120, 0), kWhite, kTurf);
    land.addSubface(rectangle(-120, -30, 120, -12, 0), kWhite).changeFace([](FltFace& face) {
        face.textureIndex = kAsphalt;
    });
    for (int i = 0; i < 5; ++i)
        land.addSubface(rectangle(-70 + 31 * i, -26, -65 + 31 * i, -22, 0), kWhite)
            .stretched()
            .changeFace([](FltFace& face) {
                face.textureIndex = kPuddle;
                face.billboard = kFltFixedBlended;
                face.relativePriority = 1;
            });
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
    Node& railing = scene.root.add(named<FltObject>("railing"));
    const auto addUpright = [&](const Point& from, const Point& to, double height,
                                Texture picture) {
        return &railing
                    .addFace(
                        {from, to, {to.x, to.y, to.z + height}, {from.x, from.y, from.z + height}},
                        kWhite, picture)
                    .changeFace(asCutOut);
    };
    for (int i = 0; i < 12; ++i) {
        const double x = -118 + 16 * i;
        if (x < -7 || x > 7) addUpright({x, -12.4, 0}, {x + 8, -12.4, 0}, 1.4, kFence)->stretched();
    }
    // Hung up to dry.
    for (const double y : {-44., -56.})
        addUpright({-3.6, y - 4, 0}, {-3.6, y + 4, 0}, 2, kNet)->stretched();
    addBlock(railing, ring(3.4, -72, 0, 0.08, 6), 7, kSteel, kNone, kSteel, kNone);
    addUpright({3.5, -72, 5}, {6.5, -72, 5}, 2, kFlag)->stretched();
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
    refer(places, "town/lorry.flt", turnedAndMoved(0, -14, -21));
    refer(places, "town/lorry.flt", turnedAndMoved(180, 62, -17));
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
    writeSceneFile(lorry(), folder / "town/lorry.flt");
    writeSceneFile(boat(), folder / "town/boat.flt");
    writeSceneFile(lamp(), folder / "town/lamp.flt");
    writeSceneFile(lighthouse(), folder / "town/lighthouse.flt");
    writeSceneFile(town(), folder / "harbour.flt");
}

}  // namespace samples
