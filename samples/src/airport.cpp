#include "airport.h"

#include "shapes.h"

#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltdof.h>
#include <quillon/fltgroup.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlod.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string_view>

namespace samples {

namespace {

enum Color : std::uint32_t {
    kGrass,
    kMeadow,
    kAsphalt,
    kConcrete,
    kPaint,
    kYellow,
    kWall,
    kGlass,
    kRoof,
    kSteel,
    kDoor,
    kOrange,
    kFuselage,
    kTrim,
    kTree,
    kTrunk,
    kWhiteLamp,
    kGreenLamp,
    kRedLamp,
};

const std::vector<Rgb> kColors = {
    {104, 142, 78}, {122, 158, 88},  {68, 70, 74},    {158, 158, 152}, {240, 240, 236},
    {236, 190, 60}, {222, 214, 198}, {96, 150, 176},  {172, 84, 66},   {150, 162, 172},
    {92, 112, 132}, {238, 112, 48},  {244, 246, 248}, {48, 96, 168},   {64, 108, 62},
    {112, 86, 60},  {255, 250, 220}, {70, 255, 120},  {255, 70, 60},
};

// Layers of things that lie on the ground, far enough apart for every depth buffer. Markings are
// subfaces, which lie in the plane of their face.
constexpr double kGround = 0;
constexpr double kPavement = 0.15;
constexpr double kMarking = kPavement;
constexpr double kLamp = 0.6;

template <typename Record>
Record named(std::string_view id) {
    Record record;
    fltSetText(record.asciiId, id);
    return record;
}

FltLod lod(std::string_view id, double in, double out, const Point& center) {
    auto record = named<FltLod>(id);
    record.switchInDistance = in;
    record.switchOutDistance = out;
    record.centerX = center.x;
    record.centerY = center.y;
    record.centerZ = center.z;
    return record;
}

void addFaces(Node& parent, const std::vector<Polygon>& polygons, Color color) {
    for (const Polygon& polygon : polygons) parent.addFace(polygon, color);
}

/// A block with flat sides over `base`, given counter-clockwise from above.
void addBlock(Node& parent, const Polygon& base, double height, Color side, Color top) {
    const Polygon cover = raised(base, height);
    addFaces(parent, walls(base, cover), side);
    parent.addFace(cover, top);
}

// ---------------------------------------------------------------- ground

void addGround(Node& root) {
    Node& ground = root.add(named<FltGroup>("ground"), "地面 ground");
    ground.comment("草地、跑道与停机坪");
    ground.addFace(rectangle(-235, -95, 265, 195, kGround), kGrass);

    Node& runway = ground.add(named<FltObject>("runway"), "跑道 runway 09/27");
    runway.comment("Length 450 m, width 30 m").comment("道面：沥青");
    Node& asphalt = runway.addFace(rectangle(-210, -66, 240, -36, kPavement), kAsphalt);
    for (int i = 0; i < 12; ++i) {
        const double x = -163 + 30 * i;
        asphalt.addSubface(rectangle(x, -51.6, x + 16, -50.4, kMarking), kPaint);
    }
    for (int i = 0; i < 8; ++i) {
        const double y = -63.8 + 3.4 * i;
        asphalt.addSubface(rectangle(-204, y, -178, y + 1.8, kMarking), kPaint);
        asphalt.addSubface(rectangle(208, y, 234, y + 1.8, kMarking), kPaint);
    }

    Node& taxiway = ground.add(named<FltObject>("taxiway"), "滑行道 taxiway A");
    Node& bend = taxiway.addFace({{-190, -36, kPavement},
                                  {-170, -36, kPavement},
                                  {-170, 0, kPavement},
                                  {-110, 0, kPavement},
                                  {-110, 20, kPavement},
                                  {-190, 20, kPavement}},
                                 kConcrete);
    bend.addSubface(rectangle(-180.8, -36, -179.2, 9.2, kMarking), kYellow);
    bend.addSubface(rectangle(-180.8, 9.2, -110, 10.8, kMarking), kYellow);
    Node& apron = taxiway.addFace(rectangle(-110, -15, 230, 68, kPavement), kConcrete);
    apron.addSubface(rectangle(-110, 9.2, 215, 10.8, kMarking), kYellow);
    for (int i = 0; i < 8; ++i) {
        const double x = -95 + 40 * i;
        apron.addSubface(rectangle(x - 0.5, 10.8, x + 0.5, 45, kMarking), kYellow);
    }
}

// ---------------------------------------------------------------- buildings

void addTower(Node& root) {
    constexpr double kX = 60, kY = 110;
    Node& tower = root.add(named<FltGroup>("tower"), "塔台 control tower");
    tower.comment("塔台：高 34 米，八边形").comment("Two levels of detail, changing at 600 m");

    Node& close = tower.add(lod("towernr", 600, 0, {kX, kY, 17}), "塔台近景 tower, close");
    Node& shaft = close.add(named<FltObject>("shaft"));
    addFaces(shaft, walls(ring(kX, kY, 0, 6, 8), ring(kX, kY, 22, 4.5, 8)), kWall);
    Node& cab = close.add(named<FltObject>("cab"), "指挥室 cab");
    addFaces(cab, walls(ring(kX, kY, 22, 4.5, 8), ring(kX, kY, 24, 8, 8)), kConcrete);
    addFaces(cab, walls(ring(kX, kY, 24, 8, 8), ring(kX, kY, 29, 9, 8)), kGlass);
    addFaces(cab, walls(ring(kX, kY, 29, 10, 8), ring(kX, kY, 30, 10, 8)), kRoof);
    const Polygon eaves = ring(kX, kY, 30, 10, 8);
    for (std::size_t i = 0; i < eaves.size(); ++i) {
        cab.addFace({eaves[i], eaves[(i + 1) % eaves.size()], {kX, kY, 34}}, kRoof);
    }

    Node& distant = tower.add(lod("towerfar", 4000, 600, {kX, kY, 17}), "塔台远景 tower, distant");
    Node& block = distant.add(named<FltObject>("block"));
    addBlock(block, ring(kX, kY, 0, 5, 4), 24, kWall, kWall);
    addBlock(block, ring(kX, kY, 24, 9, 4), 8, kGlass, kRoof);
}

void addTerminal(Node& root) {
    Node& bsp = root.add(named<FltBsp>("divide"), "候机楼分隔面 terminal divide");
    bsp.comment("Separates the terminal's wings");
    Node& terminal = bsp.add(named<FltObject>("terminal"), "候机楼 terminal");
    const Polygon plan = {{90, 80, 0},   {220, 80, 0},  {220, 105, 0}, {150, 105, 0},
                          {150, 150, 0}, {110, 150, 0}, {110, 105, 0}, {90, 105, 0}};
    addBlock(terminal, plan, 4, kWall, kRoof);
    addFaces(terminal, walls(raised(plan, 4), raised(plan, 8)), kGlass);
    addFaces(terminal, walls(raised(plan, 8), raised(plan, 10)), kWall);
    terminal.addFace(raised(plan, 10), kRoof);
}

/// The curve of the hangar's roof from the east eave over the top to the west one, at depth y.
Polygon hangarArch(double x, double y) {
    constexpr int kSteps = 10;
    constexpr double kHalfWidth = 25, kEaves = 6, kRise = 9;
    Polygon arch;
    for (int i = 0; i <= kSteps; ++i) {
        const double angle = std::numbers::pi * i / kSteps;
        arch.push_back({x + kHalfWidth * std::cos(angle), y, kEaves + kRise * std::sin(angle)});
    }
    return arch;
}

void addHangarShell(Node& hangar, double x, double y0, double y1) {
    Node& shell = hangar.add(named<FltObject>("shell"), "机库外壳 hangar shell");
    const Polygon front = hangarArch(x, y0), back = hangarArch(x, y1);
    for (std::size_t i = 0; i + 1 < front.size(); ++i) {
        shell.addFace({front[i], back[i], back[i + 1], front[i + 1]}, kSteel);
    }
    shell.addFace({{x - 25, y0, 0}, {x - 25, y0, 6}, {x - 25, y1, 6}, {x - 25, y1, 0}}, kWall);
    shell.addFace({{x + 25, y0, 0}, {x + 25, y1, 0}, {x + 25, y1, 6}, {x + 25, y0, 6}}, kWall);
    Polygon rear(back.rbegin(), back.rend());
    rear.push_back({x + 25, y1, 0});
    rear.push_back({x - 25, y1, 0});
    shell.addFace(rear, kWall);
    // The front is one polygon around the doorway, concave like the doorway itself.
    Polygon gable = front;
    gable.insert(gable.end(), {{x - 25, y0, 0},
                               {x - 20, y0, 0},
                               {x - 20, y0, 8},
                               {x + 20, y0, 8},
                               {x + 20, y0, 0},
                               {x + 25, y0, 0}});
    shell.addFace(gable, kWall);
}

/// Door panels of the doorway, slid to the sides by `open` of their width.
void addDoors(Node& doors, std::string_view id, const std::string& longId, double x, double y,
              double open) {
    Node& state = doors.add(named<FltObject>(id), longId);
    for (const double side : {-1.0, 1.0}) {
        const double near = x + side * 20 * open, far = near + side * 20 * (1 - open);
        const double left = std::min(near, far), right = std::max(near, far);
        state.addFace({{left, y, 0}, {right, y, 0}, {right, y, 8}, {left, y, 8}}, kDoor);
    }
}

void addHangar(Node& root) {
    constexpr double kX = -60, kFront = 80, kBack = 140;
    Node& hangar = root.add(named<FltGroup>("hangar"), "机库 hangar");
    hangar.comment("机库门由切换节点控制：关闭、半开、全开");
    addHangarShell(hangar, kX, kFront, kBack);

    auto record = named<FltSwitch>("doors");
    record.wordsPerMask = 1;
    for (const std::uint32_t mask : {0b001U, 0b010U, 0b100U}) {
        record.maskWords.insertAt(record.maskWords.count(), mask);
    }
    record.currentMask = 1;
    Node& doors = hangar.add(std::move(record), "机库门 hangar doors");
    doors.comment("Masks: 0 closed, 1 half open, 2 open");
    addDoors(doors, "closed", "关闭 closed", kX, kFront, 0);
    addDoors(doors, "half", "半开 half open", kX, kFront, 0.5);
    addDoors(doors, "open", "全开 open", kX, kFront, 0.9);
}

// ---------------------------------------------------------------- things that move or repeat

void addWindsock(Node& root) {
    constexpr double kX = -140, kY = -20;
    Node& group = root.add(named<FltGroup>("wind"), "风向标 windsock");
    Node& mast = group.add(named<FltObject>("mast"));
    addBlock(mast, ring(kX, kY, 0, 0.4, 6), 9, kPaint, kPaint);

    FltDof record = dofAt("sock", {kX, kY, 8.5});
    record.yawMin = -180;
    record.yawMax = 180;
    record.yawCurrent = 20;
    record.yawIncrement = 5;
    Node& dof = group.add(record, "风袋 sock, turns about z");
    dof.comment("随风向转动");
    Node& sock = dof.add(named<FltObject>("cloth"));
    for (int band = 0; band < 4; ++band) {
        const double x0 = 1.6 * band, x1 = x0 + 1.6;
        const double r0 = 1.1 - 0.15 * band, r1 = r0 - 0.15;
        const Color color = band % 2 == 0 ? kOrange : kPaint;
        constexpr int kSides = 8;
        for (int i = 0; i < kSides; ++i) {
            const double a = 2 * std::numbers::pi * i / kSides;
            const double b = 2 * std::numbers::pi * (i + 1) / kSides;
            const auto point = [&](double x, double r, double angle) {
                return Point{kX + x, kY + r * std::cos(angle), 8.5 + r * std::sin(angle)};
            };
            sock.addFace({point(x0, r0, a), point(x1, r1, a), point(x1, r1, b), point(x0, r0, b)},
                         color);
        }
    }
}

/// Two outlines of as many corners joined by walls and closed at both ends.
void addLoft(Node& parent, const Polygon& lower, const Polygon& upper, Color side, Color end) {
    addFaces(parent, walls(lower, upper), side);
    parent.addFace(Polygon(lower.rbegin(), lower.rend()), end);
    parent.addFace(upper, end);
}

/// A cross section of a fuselage: an upright octagon at depth y, seen from its nose.
Polygon section(double y, double z, double radius) {
    Polygon polygon;
    for (const Point& point : ring(0, 0, 0, radius, 8))
        polygon.push_back({point.x, y, z + point.y});
    return Polygon(polygon.rbegin(), polygon.rend());
}

/// A light aircraft around the origin, nose towards negative y.
void addAircraftShape(Node& definition) {
    Node& body = definition.add(named<FltObject>("body"), "机身 fuselage");
    addLoft(body, section(-4.4, 1.3, 0.25), section(-3.2, 1.4, 0.75), kTrim, kSteel);
    addLoft(body, section(-3.2, 1.4, 0.75), section(0.6, 1.5, 0.85), kFuselage, kFuselage);
    addLoft(body, section(0.6, 1.5, 0.85), section(4.6, 1.8, 0.2), kFuselage, kTrim);
    addBlock(body, rectangle(-0.55, -1.9, 0.55, 0.5, 2.1), 0.7, kGlass, kFuselage);

    Node& wings = definition.add(named<FltObject>("wings"), "机翼 wings");
    const Polygon wing = {{-6, -0.6, 1.2}, {-1, -1.2, 1.1}, {1, -1.2, 1.1}, {6, -0.6, 1.2},
                          {6, 0.4, 1.2},   {1, 0.7, 1.1},   {-1, 0.7, 1.1}, {-6, 0.4, 1.2}};
    addLoft(wings, wing, raised(wing, 0.15), kTrim, kFuselage);
    const Polygon tail = {{-2, 3.7, 1.9}, {2, 3.7, 1.9}, {2, 4.6, 1.9}, {-2, 4.6, 1.9}};
    addLoft(wings, tail, raised(tail, 0.1), kTrim, kFuselage);
    const Polygon fin = {{-0.06, 3.5, 1.9}, {0.06, 3.5, 1.9}, {0.06, 4.7, 1.9}, {-0.06, 4.7, 1.9}};
    const Polygon finTop = {
        {-0.06, 4.3, 3.4}, {0.06, 4.3, 3.4}, {0.06, 4.9, 3.4}, {-0.06, 4.9, 3.4}};
    addLoft(wings, fin, finTop, kTrim, kTrim);
}

Matrix turnedAndMoved(double degrees, double x, double y) {
    const double angle = degrees * std::numbers::pi / 180;
    const auto c = static_cast<float>(std::cos(angle)), s = static_cast<float>(std::sin(angle));
    return {{{c, s, 0, 0},
             {-s, c, 0, 0},
             {0, 0, 1, 0},
             {static_cast<float>(x), static_cast<float>(y), static_cast<float>(kPavement), 1}}};
}

void addAircraft(Node& root) {
    constexpr std::int16_t kAircraft = 1;
    FltInstanceDef definition;
    definition.instanceNumber = kAircraft;
    Node& shape = root.add(definition, "轻型飞机 light aircraft");
    shape.comment("定义一次，三个实例参考").transform(turnedAndMoved(-30, -95, 30));
    addAircraftShape(shape);

    Node& stands = root.add(named<FltGroup>("stands"), "停机位 stands");
    for (int i = 0; i < 3; ++i) {
        FltInstanceRef reference;
        reference.instanceNumber = kAircraft;
        stands.add(reference, "停机位 stand " + std::to_string(i + 1))
            .transform(turnedAndMoved(-30, -55 + 40.0 * i, 30));
    }
}

void addVisitor(Node& root) {
    Node& place = root.add(named<FltGroup>("visitor"), "来访飞机 visitor");
    FltXRef reference;
    fltSetText(reference.fileName, "aircraft/airliner.flt");
    reference.flags = static_cast<std::int32_t>(kFltOverrideColors);
    place.add(reference, "外部参照 airliner").comment("aircraft/airliner.flt, own colors");
}

// ---------------------------------------------------------------- surroundings and lights

void addTree(Node& parent, double x, double y, double height) {
    Node& tree = parent.add(named<FltObject>("tree"));
    addBlock(tree, ring(x, y, 0, 0.5, 5), height * 0.3, kTrunk, kTrunk);
    const Polygon base = ring(x, y, height * 0.25, height * 0.28, 7);
    for (std::size_t i = 0; i < base.size(); ++i) {
        tree.addFace({base[i], base[(i + 1) % base.size()], {x, y, height}}, kTree);
    }
}

void addWood(Node& root) {
    auto region = named<FltClipRegion>("woodclip");
    region.edgeClip0 = region.edgeClip1 = region.edgeClip2 = region.edgeClip3 = 1;
    region.corner0X = region.corner3X = -220;
    region.corner1X = region.corner2X = -115;
    region.corner0Y = region.corner1Y = 50;
    region.corner2Y = region.corner3Y = 180;
    region.corner0Z = region.corner1Z = region.corner2Z = region.corner3Z = 0;
    Node& wood = root.add(region, "树林 wood");
    wood.comment("Clipped where the wood ends");
    wood.addFace({{-220, 50, 0.1},
                  {-160, 62, 0.1},
                  {-115, 50, 0.1},
                  {-128, 115, 0.1},
                  {-115, 180, 0.1},
                  {-220, 180, 0.1}},
                 kMeadow);
    for (int i = 0; i < 24; ++i) {
        // Multiples of irrational numbers, less their whole part, spread the trees evenly.
        const double u = i * 0.7549, v = i * 0.5698;
        const double x = -213 + 80 * (u - std::floor(u)), y = 66 + 106 * (v - std::floor(v));
        addTree(wood, x, y, 9 + (i * 5) % 7);
    }
}

FltLightPoint lamp(std::string_view id, bool isDirectional) {
    auto record = named<FltLightPoint>(id);
    record.intensity = 1;
    record.backIntensity = 1;
    record.minPixelSize = 1;
    record.maxPixelSize = 6;
    record.actualPixelSize = 0.5F;
    record.significance = 1;
    if (isDirectional) {
        record.directionalMode = 1;
        record.directionalType = 1;
        record.horizontalLobeAngle = 60;
        record.verticalLobeAngle = 30;
    }
    return record;
}

void addLampRow(Node& parent, const FltLightPoint& record, const std::string& longId,
                const Point& from, const Point& to, int count, Color color) {
    Polygon points;
    for (int i = 0; i < count; ++i) points.push_back(pointBetween(from, to, i, count - 1));
    parent.add(record, longId).setPoints(std::move(points), color);
}

void addRunwayLights(Node& root) {
    Node& lights = root.add(named<FltGroup>("lights"), "跑道灯 runway lights");
    lights.comment("边灯、入口灯与末端灯");
    Node& edge = lights.add(named<FltObject>("edge"), "边灯 edge lights");
    addLampRow(edge, lamp("north", false), "北侧 north", {-210, -34, kLamp}, {240, -34, kLamp}, 16,
               kWhiteLamp);
    addLampRow(edge, lamp("south", false), "南侧 south", {-210, -68, kLamp}, {240, -68, kLamp}, 16,
               kWhiteLamp);
    Node& ends = lights.add(named<FltObject>("ends"), "两端 ends");
    addLampRow(ends, lamp("thresh", true), "入口灯 threshold, green", {-212, -65, kLamp},
               {-212, -37, kLamp}, 9, kGreenLamp);
    addLampRow(ends, lamp("end", true), "末端灯 end, red", {242, -65, kLamp}, {242, -37, kLamp}, 9,
               kRedLamp);
}

FltLightSourcePalette lightEntry(std::int32_t index, std::string_view name, std::int32_t type) {
    FltLightSourcePalette entry;
    entry.paletteIndex = index;
    fltSetText(entry.name, name);
    entry.lightType = type;
    return entry;
}

constexpr std::uint32_t kGlobal = 0x40000000;

FltLightSource lightAt(std::string_view id, std::int32_t entry, std::uint32_t flags,
                       const Point& position, float yaw, float pitch) {
    auto record = named<FltLightSource>(id);
    record.paletteIndex = entry;
    record.flags = static_cast<std::int32_t>(flags);
    record.positionX = position.x;
    record.positionY = position.y;
    record.positionZ = position.z;
    record.yaw = yaw;
    record.pitch = pitch;
    return record;
}

void addLights(FltScene& scene) {
    constexpr std::int32_t kSun = 0, kFloodlight = 1;
    constexpr std::int32_t kInfinite = 0, kSpot = 2;
    scene.lights.push_back(lightEntry(kSun, "sun", kInfinite));
    FltLightSourcePalette flood = lightEntry(kFloodlight, "floodlight", kSpot);
    flood.diffuseGreen = 0.9F;
    flood.diffuseBlue = 0.7F;
    flood.spotCutoffAngle = 40;
    scene.lights.push_back(flood);

    Node& group = scene.root.add(named<FltGroup>("lamps"), "灯光 light sources");
    group.add(lightAt("sun", kSun, FltLightSource::kEnabled | kGlobal, {-150, -60, 130}, 210, 50),
              "太阳 sun");
    group.add(lightAt("flood", kFloodlight, FltLightSource::kEnabled, {80, 70, 18}, 90, 55),
              "停机坪泛光灯 floodlight");
}

}  // namespace

FltScene makeAirport() {
    FltScene scene;
    fltSetText(scene.header.asciiId, "airport");
    fltSetText(scene.header.dateTime, "2026-01-01 12:00:00");
    scene.colors = kColors;
    scene.comment = "示例机场 sample airport";
    addLights(scene);
    addGround(scene.root);
    addTower(scene.root);
    addTerminal(scene.root);
    addHangar(scene.root);
    addWindsock(scene.root);
    addAircraft(scene.root);
    addVisitor(scene.root);
    addWood(scene.root);
    addRunwayLights(scene.root);
    return scene;
}

FltScene makeAirliner() {
    FltScene scene;
    fltSetText(scene.header.asciiId, "airliner");
    fltSetText(scene.header.dateTime, "2026-01-01 12:00:00");
    scene.colors = kColors;
    constexpr float kLarger = 2.6F;
    Node& shape = scene.root.add(named<FltGroup>("airliner"));
    shape.transform({{{kLarger, 0, 0, 0}, {0, kLarger, 0, 0}, {0, 0, kLarger, 0}, {0, 0, 0, 1}}});
    addAircraftShape(shape);
    return scene;
}

}  // namespace samples
