#include <array>
#include <cmath>
#include <iterator>
#include <string>

#include "pictures.h"

namespace draw {
namespace {

constexpr int kWidth = 16;
constexpr int kHeight = 15;

// A folder.
void paintGroup(Canvas& c) {
    c.fill(Polygon{{{1, 3}, {2, 2}, {6, 2}, {7, 4}, {1, 4}}}, kAmber.deep);
    c.fill(Rect{1, 3, 15, 13}, kAmber.deep);
    c.fill(Rect{2, 3, 6, 5}, kAmber.plain);
    c.fill(Rect{2, 5, 14, 12}, kAmber.light, kAmber.plain);
    c.fill(Rect{2, 5, 14, 6}, rgb(0xFFF0BC));
}

// A solid box.
void paintObject(Canvas& c) {
    const Point top{8, 0.8}, right{14, 3.8}, lowRight{14, 10.8}, bottom{8, 14};
    const Point lowLeft{2, 10.8}, left{2, 3.8}, middle{8, 7};
    c.fill(Polygon{{top, right, middle, left}}, kBlue.light);
    c.fill(Polygon{{left, middle, bottom, lowLeft}}, kBlue.plain);
    c.fill(Polygon{{middle, right, lowRight, bottom}}, mix(kBlue.plain, kBlue.deep, 0.55));
    c.fill(Outline{{top, right, lowRight, bottom, lowLeft, left}, 1.1}, kBlue.deep);
}

// The same square three times, smaller and plainer each time.
void paintLod(Canvas& c) {
    c.fill(Rect{0, 5, 7, 12}, kGreen.deep);
    c.fill(Rect{1, 6, 6, 11}, kGreen.light);
    c.fill(Rect{1, 8, 6, 9}, kGreen.plain);
    c.fill(Rect{3, 6, 4, 11}, kGreen.plain);
    c.fill(Rect{8, 7, 13, 12}, kGreen.deep);
    c.fill(Rect{9, 8, 12, 11}, kGreen.light);
    c.fill(Rect{14, 10, 16, 12}, kGreen.deep);
}

// One terminal, two to choose from, and the lever on one of them.
void paintSwitch(Canvas& c) {
    c.fill(Line{{3.5, 7.5}, {12, 3.2}, 1.6}, kGrey.deep);
    c.fill(disc({3.5, 7.5}, 2.6), kGrey.deep);
    c.fill(disc({3.5, 7.5}, 1.5), kGrey.light);
    c.fill(disc({12.5, 3.2}, 2.7), kRed.deep);
    c.fill(disc({12.5, 3.2}, 1.7), kRed.plain);
    c.fill(disc({12.5, 11.6}, 2.7), kGrey.deep);
    c.fill(disc({12.5, 11.6}, 1.6), kGrey.light);
}

// Three axes.
void paintDof(Canvas& c) {
    const Point origin{5.5, 9.5};
    c.fill(Line{origin, {2.5, 12.5}, 1.5}, kGreen.plain);
    c.fill(Polygon{{{0.5, 14.5}, {0.5, 9.5}, {5.5, 14.5}}}, kGreen.plain);
    c.fill(Line{origin, {12, 9.5}, 1.5}, kRed.plain);
    c.fill(arrowhead({15.6, 9.5}, {1, 0}, 4.2, 2.6), kRed.plain);
    c.fill(Line{origin, {5.5, 4}, 1.5}, kBlue.plain);
    c.fill(arrowhead({5.5, 0.2}, {0, -1}, 4.2, 2.6), kBlue.plain);
    c.fill(disc(origin, 1.4), kGrey.deep);
}

// An arrow that leaves its box.
void paintXref(Canvas& c) {
    const auto box = frame({1, 4, 12, 15}, 2);
    c.fill(Without{box, Rect{7, 3, 13, 9}}, kBlue.deep);
    c.fill(Line{{6, 9}, {12, 3}, 2}, kGreen.plain);
    c.fill(Polygon{{{8.2, 0.6}, {15.4, 0.6}, {15.4, 7.8}}}, kGreen.plain);
}

// A field cut in two by a straight line.
void paintBsp(Canvas& c) {
    c.fill(Rect{1, 2, 15, 13}, kGrey.deep);
    const Rect field{2, 3, 14, 12};
    c.fill(field, kTeal.light);
    c.fill(Common{field, Polygon{{{12.2, 0}, {16, 0}, {16, 15}, {3.8, 15}}}}, kAmber.light);
    c.fill(Line{{4.2, 14.3}, {11.8, 0.7}, 1.7}, kRed.plain);
}

// Crop marks round what is kept.
void paintClip(Canvas& c) {
    c.fill(Rect{5, 5, 11, 10}, kTeal.light, kTeal.plain);
    c.fill(Rect{3, 0, 5, 12}, kTeal.deep);
    c.fill(Rect{3, 10, 16, 12}, kTeal.deep);
    c.fill(Rect{11, 3, 13, 15}, kTeal.deep);
    c.fill(Rect{0, 3, 13, 5}, kTeal.deep);
}

// A star with four points.
void paintLightPoint(Canvas& c) {
    const auto star = [](double reach, double waist) {
        const Point m{8, 7.5};
        return Polygon{{m + Point{0, -reach}, m + Point{waist, -waist}, m + Point{reach, 0},
                        m + Point{waist, waist}, m + Point{0, reach}, m + Point{-waist, waist},
                        m + Point{-reach, 0}, m + Point{-waist, -waist}}};
    };
    c.fill(star(7.6, 2.4), kAmber.deep);
    c.fill(star(5.4, 1.6), kAmber.light);
}

// A bulb.
void paintLightSource(Canvas& c) {
    c.fill(disc({8, 5.5}, 5.3), kAmber.deep);
    c.fill(Polygon{{{4.6, 8.6}, {11.4, 8.6}, {10.5, 11}, {5.5, 11}}}, kAmber.deep);
    c.fill(disc({8, 5.5}, 4.2), kAmber.light, kAmber.plain);
    c.fill(Rect{6.5, 7.5, 9.5, 10}, kAmber.light);
    c.fill(disc({6.5, 4}, 1.3), rgb(0xFFF3C8));
    c.fill(Rect{5.5, 11, 10.5, 12}, kGrey.plain);
    c.fill(Rect{5.5, 12, 10.5, 13}, kGrey.deep);
    c.fill(Rect{6.5, 13, 9.5, 14}, kGrey.plain);
}

// A page with a heading.
void paintHeader(Canvas& c) {
    c.fill(Polygon{{{2, 0}, {10, 0}, {14, 4}, {14, 15}, {2, 15}}}, kGrey.deep);
    c.fill(Polygon{{{3, 1}, {9.6, 1}, {13, 4.4}, {13, 14}, {3, 14}}}, rgb(0xE9ECF1));
    c.fill(Polygon{{{9, 1}, {10, 1}, {13, 4}, {13, 5}, {9, 5}}}, kGrey.light);
    c.fill(Rect{3, 6, 13, 9}, kBlue.plain);
    c.fill(Rect{4, 10, 12, 11}, kGrey.plain);
    c.fill(Rect{4, 12, 10, 13}, kGrey.plain);
}

// A light that shines all round.
void paintOmniLight(Canvas& c) {
    const Point m{8, 7.5};
    constexpr std::array<Point, 8> kWays{{{1, 0},
                                          {0.7071, 0.7071},
                                          {0, 1},
                                          {-0.7071, 0.7071},
                                          {-1, 0},
                                          {-0.7071, -0.7071},
                                          {0, -1},
                                          {0.7071, -0.7071}}};
    for (const Point way : kWays) c.fill(Line{m + way * 5.6, m + way * 6.6, 1.5}, kAmber.deep);
    c.fill(disc(m, 4.1), kAmber.deep);
    c.fill(disc(m, 3.1), kAmber.light, kAmber.plain);
}

// The globe that holds everything.
void paintSceneRoot(Canvas& c) {
    const Point m{8, 7.5};
    c.fill(disc(m, 7.1), kBlue.deep);
    const Ellipse sea = disc(m, 6.1);
    c.fill(sea, rgb(0xD3E8FA), kBlue.light);
    c.fill(Common{sea, Polygon{{{2, 2}, {7.6, 1}, {9.2, 3}, {7.4, 5}, {7, 7}, {4, 8}, {1, 6}}}},
           kGreen.plain);
    c.fill(Common{sea, Polygon{{{8, 8.4}, {12, 7.4}, {15, 9}, {12, 14}, {9.4, 13}, {9.6, 10.6}}}},
           kGreen.plain);
    c.fill(Common{sea, Polygon{{{11.4, 2}, {15, 4}, {14.6, 6}, {12, 5.4}}}}, kGreen.plain);
}

// A lamp and its beam.
void paintSpotLight(Canvas& c) {
    c.fill(Polygon{{{5, 6.6}, {8.2, 3.4}, {15.6, 9.2}, {9.6, 14.6}}}, kAmber.plain);
    c.fill(Polygon{{{6, 6.6}, {8.2, 4.4}, {14.2, 9.2}, {9.8, 13.1}}}, kAmber.light);
    c.fill(Polygon{{{0.6, 3.6}, {4, 0.4}, {9.4, 2.6}, {4.4, 8}}}, kGrey.deep);
    c.fill(Polygon{{{2, 3.7}, {4.2, 1.7}, {7.6, 3.0}, {4.6, 6.2}}}, kGrey.plain);
}

// A polygon with its corners.
void paintFace(Canvas& c) {
    const std::vector<Point> corners{{2.5, 4.5}, {11.5, 2.5}, {13.5, 10.5}, {4.5, 12.5}};
    c.fill(Polygon{corners}, kTeal.light, kTeal.plain);
    c.fill(Outline{corners, 1.1}, kTeal.deep);
    for (const Point p : corners) {
        c.fill(Rect{p.x - 1.5, p.y - 1.5, p.x + 1.5, p.y + 1.5}, kTeal.deep);
    }
}

// The original: solid, with the shadows of its copies behind it.
void paintInstanceDefinition(Canvas& c) {
    c.fill(frame({6, 0, 15, 9}, 1), kPurple.plain);
    c.fill(Rect{7, 1, 14, 8}, kPurple.light);
    c.fill(Rect{1, 4, 12, 15}, kPurple.deep);
    c.fill(Rect{2, 5, 11, 14}, kPurple.plain);
    c.fill(Rect{2, 5, 11, 6}, kPurple.light);
    c.fill(Rect{2, 5, 3, 14}, kPurple.light);
}

// A copy: hollow, with the arrow that says where it comes from.
void paintInstanceReference(Canvas& c) {
    c.fill(Without{frame({4, 0, 15, 11}, 2), Rect{3, 5, 10, 12}}, kPurple.plain);
    c.fill(Rect{0, 6, 9, 15}, kPurple.deep);
    c.fill(Rect{1, 7, 8, 14}, rgb(0xEEE7F8));
    c.fill(Line{{2.6, 12.4}, {5.2, 9.8}, 1.5}, kPurple.deep);
    c.fill(Polygon{{{3, 8}, {7, 8}, {7, 12}}}, kPurple.deep);
}

// A node that means nothing to OpenFlight.
void paintPlain(Canvas& c) {
    c.fill(ring(disc({8, 7.5}, 5.2), 1.5), kGrey.plain);
    c.fill(disc({8, 7.5}, 1.9), kGrey.plain);
}

// A mark for the lower right corner of any other icon.
void paintOverlay(Canvas& c) {
    c.fill(disc({12, 11}, 3.8), kRed.deep);
    c.fill(disc({12, 11}, 2.8), kRed.plain);
    c.fill(disc({12, 11}, 1.2), rgb(0xF6E3E0));
}

// What the icons are cut out along, and what the tree shows behind them. An opaque pixel is never
// pure white: it would turn into a hole.
constexpr Color kClear = rgb(0xFFFFFF);
constexpr Color kTreeBackground = rgb(0xE1E1E1);

struct Icon {
    const char* name;
    void (*paint)(Canvas&);
};
constexpr Icon kIcons[] = {
    {"group", paintGroup},
    {"object", paintObject},
    {"lod", paintLod},
    {"switch", paintSwitch},
    {"dof", paintDof},
    {"xref", paintXref},
    {"bsp", paintBsp},
    {"clip", paintClip},
    {"light_point", paintLightPoint},
    {"light_source", paintLightSource},
    {"header", paintHeader},
    {"scene_root", paintSceneRoot},
    {"omni_light", paintOmniLight},
    {"spot_light", paintSpotLight},
    {"face", paintFace},
    {"instance_definition", paintInstanceDefinition},
    {"instance_reference", paintInstanceReference},
    {"plain", paintPlain},
    {"overlay", paintOverlay},
};

Canvas painted(const Icon& icon, double scale) {
    Canvas canvas(static_cast<int>(std::ceil(kWidth * scale)),
                  static_cast<int>(std::ceil(kHeight * scale)), scale);
    icon.paint(canvas);
    cutOut(canvas, kTreeBackground, kClear);
    return canvas;
}

}  // namespace

std::vector<Picture> treeIcons() {
    std::vector<Picture> pictures;
    for (const Icon& icon : kIcons) pictures.push_back({icon.name, painted(icon, 1)});
    return pictures;
}

std::vector<Picture> treeIconStrips() {
    std::vector<Picture> pictures;
    for (const int percent : {125, 150, 200}) {
        const Canvas first = painted(kIcons[0], percent / 100.0);
        Canvas strip(static_cast<int>(std::size(kIcons)) * first.width(), first.height());
        int left = 0;
        for (const Icon& icon : kIcons) {
            strip.overlay(painted(icon, percent / 100.0), left, 0);
            left += first.width();
        }
        pictures.push_back({"tree_icons_" + std::to_string(percent), strip});
    }
    return pictures;
}

}  // namespace draw
