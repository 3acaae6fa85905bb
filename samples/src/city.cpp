#include "city.h"

#include "fltscene.h"
#include "shapes.h"

#include <base/paths.h>
#include <base/replacefile.h>
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
#include <cstdio>

namespace samples {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFewestFiles = 8;
constexpr std::size_t kTilesOfDistrict = 100;
constexpr std::size_t kMostModels = 50;
constexpr double kTile = 200;  // metres

enum Color : std::uint32_t { kGround, kWall, kRoof, kTree, kLamp };
const std::vector<Rgb> kColors = {
    {122, 158, 88}, {222, 214, 198}, {172, 84, 66}, {64, 108, 62}, {255, 250, 220}};

enum Picture : std::int16_t { kGrass, kBricks, kTiles, kPictures };
constexpr const char* kPictureNames[kPictures] = {"grass.rgb", "bricks.rgb", "tiles.rgb"};

std::string numbered(const char* format, std::size_t number) {
    char text[40];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

template <typename Record>
Record named(const std::string& id) {
    Record record;
    fltSetText(record.asciiId, id);
    return record;
}

FltXRef referenceTo(const std::string& file) {
    FltXRef reference;
    fltSetText(reference.fileName, file);
    return reference;
}

Matrix moved(double x, double y) {
    return {{{1, 0, 0, 0},
             {0, 1, 0, 0},
             {0, 0, 1, 0},
             {static_cast<float>(x), static_cast<float>(y), 0, 1}}};
}

FltScene sceneOf(const std::string& id, const std::string& textures) {
    FltScene scene;
    fltSetText(scene.header.asciiId, id);
    fltSetText(scene.header.dateTime, "2026-01-01 12:00:00");
    scene.colors = kColors;
    if (textures.empty()) return scene;
    for (const char* name : kPictureNames) scene.addTexture(textures + name);
    return scene;
}

/// A picture in the format of SGI, 64 by 64 texels with courses of stones.
void writePicture(const fs::path& path, std::size_t seed) {
    constexpr std::size_t kSide = 64, kHead = 512, kChannels = 3, kCourse = 8;
    std::string bytes(kHead, '\0');
    constexpr unsigned char kStart[] = {0x01, 0xDA,      0, 1, 0, 3, 0, kSide, 0, kSide,
                                        0,    kChannels, 0, 0, 0, 0, 0, 0,     0, 255};
    std::copy(std::begin(kStart), std::end(kStart), bytes.begin());
    const Rgb& color = kColors[seed];
    for (const std::uint8_t channel : {color.red, color.green, color.blue})
        for (std::size_t y = 0; y < kSide; ++y)
            for (std::size_t x = 0; x < kSide; ++x) {
                const bool isJoint = y % kCourse == 0 || (x + y / kCourse * 5) % 16 == 0;
                bytes += static_cast<char>(isJoint ? channel / 2 : channel);
            }
    fs::create_directories(path.parent_path());
    base::replaceFile(base::textOf(path), bytes);
}

/// A block of textured walls and a roof over `base`.
void addBlock(Node& parent, const Polygon& base, double height) {
    const Polygon cover = raised(base, height);
    for (const Polygon& wall : walls(base, cover)) parent.addFace(wall, kWall, kBricks);
    parent.addFace(cover, kRoof, kTiles);
}

/// A house that is a plain block from afar.
void addHouse(Node& parent, double x, double y, double height) {
    Node& house = parent.add(named<FltGroup>("house"));
    for (const bool isNear : {true, false}) {
        auto lod = named<FltLod>(isNear ? "near" : "far");
        lod.switchInDistance = isNear ? 800 : 4000;
        lod.switchOutDistance = isNear ? 0 : 800;
        lod.centerX = x;
        lod.centerY = y;
        lod.centerZ = height / 2;
        Node& shape = house.add(lod).add(named<FltObject>("shape"));
        addBlock(shape, ring(x, y, 0, 9, isNear ? 8 : 4), height);
        if (isNear) addBlock(shape, ring(x, y, height + 0.1, 4, 8), 2);
    }
}

void addSwitch(Node& root) {
    auto record = named<FltSwitch>("season");
    record.wordsPerMask = 1;
    for (const std::uint32_t mask : {1U, 2U})
        record.maskWords.insertAt(record.maskWords.count(), mask);
    Node& season = root.add(std::move(record), "季节 season");
    for (const char* name : {"summer", "winter"})
        addBlock(season.add(named<FltObject>(name)), ring(60, 60, 0, 5, 6), 6);
}

void addWindmill(Node& root) {
    FltDof record = dofAt("sails", {-60, 60, 12});
    record.rollMin = -180;
    record.rollMax = 180;
    Node& sails = root.add(record, "风车 windmill").add(named<FltObject>("sail"));
    sails.addFace({{-61, 60, 12}, {-59, 60, 12}, {-59, 60, 20}, {-61, 60, 20}}, kRoof);
}

void addDividedBlocks(Node& root) {
    FltInstanceDef definition;
    definition.instanceNumber = 1;
    addBlock(root.add(definition).add(named<FltObject>("kiosk")), ring(0, 0, 0, 3, 5), 3);
    Node& group = root.add(named<FltBsp>("divide")).add(named<FltGroup>("kiosks"));
    for (const double x : {-40.0, 40.0}) {
        FltInstanceRef reference;
        reference.instanceNumber = 1;
        group.add(reference).transform(moved(x, -70));
    }
}

void addPark(Node& root) {
    auto region = named<FltClipRegion>("park");
    region.edgeClip0 = region.edgeClip1 = region.edgeClip2 = region.edgeClip3 = 1;
    region.corner0X = region.corner3X = 20;
    region.corner1X = region.corner2X = 90;
    region.corner0Y = region.corner1Y = -90;
    region.corner2Y = region.corner3Y = -20;
    Node& trees = root.add(region, "公园 park").add(named<FltObject>("trees"));
    for (int i = 0; i < 6; ++i) {
        const Polygon crown = ring(30 + 10 * i, -80 + 9 * i, 1, 3, 5);
        for (std::size_t k = 0; k < crown.size(); ++k)
            trees.addFace(
                {crown[k], crown[(k + 1) % crown.size()], {30.0 + 10 * i, -80.0 + 9 * i, 9}},
                kTree);
    }
}

void addLights(FltScene& scene) {
    FltLightSourcePalette entry;
    fltSetText(entry.name, "sun");
    scene.lights.push_back(entry);
    auto light = named<FltLightSource>("sun");
    light.flags = static_cast<std::int32_t>(FltLightSource::kEnabled);
    scene.root.add(light, "太阳 sun");
    auto lamp = named<FltLightPoint>("lamps");
    lamp.intensity = 1;
    lamp.minPixelSize = 1;
    lamp.maxPixelSize = 4;
    Polygon points;
    for (int i = 0; i < 10; ++i) points.push_back({-90.0 + 20 * i, 0, 6});
    scene.root.add(named<FltObject>("street")).add(lamp, "路灯 lamps").setPoints(points, kLamp);
}

FltScene makeTile(std::size_t number, std::size_t models) {
    FltScene scene = sceneOf(numbered("t%zu", number), "../../textures/");
    scene.comment = "城市街区 " + std::to_string(number);
    Node& ground = scene.root.add(named<FltGroup>("ground"), "地面 ground");
    Node& street =
        ground.add(named<FltObject>("street"))
            .addFace(rectangle(-kTile / 2, -kTile / 2, kTile / 2, kTile / 2, 0), kGround, kGrass);
    street.addSubface(rectangle(-kTile / 2, -4, kTile / 2, 4, 0), kWall);
    const std::size_t houses = 2 + number % 5;
    for (std::size_t i = 0; i < houses; ++i)
        addHouse(scene.root, -75 + 37.0 * static_cast<double>(i), 30,
                 8 + static_cast<double>((number * 7 + i * 3) % 20));
    Node& street2 = scene.root.add(named<FltGroup>("models"));
    for (std::size_t i = 0; i < 3; ++i)
        street2.add(referenceTo(numbered("../../models/m%02zu.flt", (number + i * 17) % models)))
            .transform(moved(-60 + 55.0 * static_cast<double>(i), -40));
    switch (number % 5) {
        case 0:
            addSwitch(scene.root);
            break;
        case 1:
            addWindmill(scene.root);
            break;
        case 2:
            addDividedBlocks(scene.root);
            break;
        case 3:
            addPark(scene.root);
            break;
        default:
            addLights(scene);
    }
    return scene;
}

FltScene makeModel(std::size_t number) {
    FltScene scene = sceneOf(numbered("m%zu", number), "../textures/");
    addHouse(scene.root, 0, 0, 6 + static_cast<double>(number % 9));
    scene.root.add(referenceTo("door.flt")).transform(moved(9, 0));
    return scene;
}

}  // namespace

void writeCity(const fs::path& folder, std::size_t files) {
    files = std::max(files, kFewestFiles);
    const std::size_t models = std::clamp<std::size_t>(files / 50, 2, kMostModels);
    // The others are the city, the door, and one district for each hundred tiles.
    const std::size_t rest = files - models - 2;
    const std::size_t districts = (rest + kTilesOfDistrict) / (kTilesOfDistrict + 1);
    const std::size_t tiles = rest - districts;
    for (std::size_t i = 0; i < kPictures; ++i)
        writePicture(folder / "textures" / kPictureNames[i], i);
    FltScene door = sceneOf("door", {});
    door.root.add(named<FltObject>("door"))
        .addFace({{0, -1, 0}, {0, 1, 0}, {0, 1, 2}, {0, -1, 2}}, kRoof);
    writeSceneFile(door, folder / "models/door.flt");
    for (std::size_t i = 0; i < models; ++i)
        writeSceneFile(makeModel(i), folder / "models" / numbered("m%02zu.flt", i));
    FltScene city = sceneOf("city", {});
    for (std::size_t d = 0; d < districts; ++d) {
        const std::string name = numbered("d%04zu", d);
        FltScene district = sceneOf(name, {});
        const std::size_t end = std::min(tiles, (d + 1) * kTilesOfDistrict);
        for (std::size_t i = d * kTilesOfDistrict; i < end; ++i) {
            const std::string tile = numbered("t%06zu.flt", i);
            writeSceneFile(makeTile(i, models), folder / "tiles" / name / tile);
            district.root.add(referenceTo(std::string(name).append("/").append(tile)))
                .transform(moved(kTile * static_cast<double>(i % 10),
                                 kTile * static_cast<double>(i / 10 % 10)));
        }
        writeSceneFile(district, folder / "tiles" / (name + ".flt"));
        const std::size_t row = d / 10;
        city.root.add(referenceTo(numbered("tiles/d%04zu.flt", d)))
            .transform(moved(10 * kTile * static_cast<double>(d % 10),
                             10 * kTile * static_cast<double>(row)));
    }
    writeSceneFile(city, folder / "city.flt");
}

}  // namespace samples
