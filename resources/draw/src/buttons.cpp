#include "pictures.h"

namespace draw {
namespace {

constexpr int kSymbolSize = 16;

void paintVerticalArrow(Canvas& c, bool down) {
    const auto arrow = [down](double inset) {
        const double wing = inset * 2.2;
        std::vector<Point> corners{{8, 1 + inset * 1.4},    {14.5 - wing, 8 - inset},
                                   {11 - inset, 8 - inset}, {11 - inset, 15 - inset},
                                   {5 + inset, 15 - inset}, {5 + inset, 8 - inset},
                                   {1.5 + wing, 8 - inset}};
        if (down) {
            for (Point& p : corners) p.y = kSymbolSize - p.y;
        }
        return Polygon{corners};
    };
    c.fill(arrow(0), kBlue.deep);
    c.fill(arrow(1), kBlue.light, kBlue.plain);
}

void paintUp(Canvas& c) {
    paintVerticalArrow(c, false);
}
void paintDown(Canvas& c) {
    paintVerticalArrow(c, true);
}

// The box with which a tree opens and closes an item, and the item beside it.
void paintTreeBox(Canvas& c, const Tone& tone) {
    c.fill(Rect{0, 0, 9, 9}, tone.deep);
    c.fill(Rect{1, 1, 8, 8}, rgb(0xFFFFFF), tone.light);
    c.fill(Rect{2, 4, 7, 5}, tone.deep);
    c.fill(Rect{10, 3, 16, 6}, kGrey.deep);
}

void paintExpand(Canvas& c) {
    paintTreeBox(c, kGreen);
    c.fill(Rect{4, 2, 5, 7}, kGreen.deep);
    c.fill(Rect{4, 9, 5, 15}, kGrey.plain);
    c.fill(Rect{4, 10, 7, 11}, kGrey.plain);
    c.fill(Rect{4, 14, 7, 15}, kGrey.plain);
    c.fill(Rect{8, 9, 16, 12}, kGreen.plain);
    c.fill(Rect{8, 13, 16, 16}, kGreen.plain);
}

void paintCollapse(Canvas& c) {
    paintTreeBox(c, kRed);
    c.fill(Polygon{{{8, 10}, {13, 15}, {3, 15}}}, kRed.plain);
}

// An arrow from `from` to `to`, both on one height.
void paintTransfer(Canvas& c, double from, double to, const Tone& tone) {
    const double way = to > from ? 1 : -1;
    const auto arrow = [&](double inset) {
        return Polygon{{{to - way * inset * 1.4, 8},
                        {to - way * (5 - inset), 2.5 + inset * 2.2},
                        {to - way * (5 - inset), 6 + inset},
                        {from + way * inset, 6 + inset},
                        {from + way * inset, 10 - inset},
                        {to - way * (5 - inset), 10 - inset},
                        {to - way * (5 - inset), 13.5 - inset * 2.2}}};
    };
    c.fill(arrow(0), tone.deep);
    c.fill(arrow(1), tone.plain);
}

// Into the tree.
void paintSelectGet(Canvas& c) {
    c.fill(Rect{0, 1, 1, 14}, kGrey.plain);
    c.fill(Rect{0, 1, 5, 4}, kGrey.deep);
    c.fill(Rect{1, 7, 2, 8}, kGrey.plain);
    c.fill(Rect{2, 6, 5, 9}, kGrey.deep);
    c.fill(Rect{1, 12, 2, 13}, kGrey.plain);
    c.fill(Rect{2, 11, 5, 14}, kGrey.deep);
    paintTransfer(c, 16, 6, kGreen);
}

// Out to the scene's box.
void paintSelectSet(Canvas& c) {
    paintTransfer(c, 0, 9, kAmber);
    const Point top{12.5, 3.5}, right{16, 5.5}, lowRight{16, 10.5}, bottom{12.5, 12.5};
    const Point lowLeft{9, 10.5}, left{9, 5.5}, middle{12.5, 7.5};
    c.fill(Polygon{{top, right, lowRight, bottom, lowLeft, left}}, kBlue.deep);
    c.fill(Polygon{{top, right, middle, left}}, kBlue.light);
    c.fill(Polygon{{left, middle, bottom, lowLeft}}, kBlue.plain);
}

void paintFind(Canvas& c) {
    c.fill(Line{{10.5, 10.5}, {14, 14}, 3.6}, kGrey.deep);
    c.fill(Line{{11, 11}, {13.8, 13.8}, 1.6}, kAmber.plain);
    c.fill(disc({6.5, 6.5}, 6), kGrey.deep);
    c.fill(disc({6.5, 6.5}, 4.2), kBlue.light);
    c.fill(Common{ring(disc({6.5, 6.5}, 3.4), 1.2), Rect{2, 2, 6.5, 6.5}}, rgb(0xFFFFFF));
}

// A spanner.
void paintTool(Canvas& c) {
    const auto spanner = [](double grow) {
        const Point head{11, 5};
        // The jaw opens towards the upper right.
        const Line jaw{{11.8, 4.2}, {18, -2}, 3.4 - grow * 2};
        return std::pair{Without{disc(head, 4.2 + grow), jaw},
                         Line{{3.2, 12.8}, {8.6, 7.4}, 3 + grow * 2}};
    };
    const auto [outerHead, outerHandle] = spanner(0.8);
    const auto [head, handle] = spanner(-0.3);
    c.fill(outerHandle, kGrey.deep);
    c.fill(outerHead, kGrey.deep);
    c.fill(handle, kGrey.light);
    c.fill(head, kGrey.light);
    c.fill(disc({3.4, 12.6}, 0.8), kGrey.deep);
}

// The button draws its face and frame itself; the picture is cut out along this color.
constexpr Color kSeeThrough = rgb(0xFF00FF);
// What the face looks like, for the edges of the symbol to run into.
constexpr Color kFace = rgb(0xF5F5F5);

Canvas darkened(const Canvas& canvas) {
    Canvas result = canvas;
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            Color& pixel = result.at(x, y);
            const double alpha = pixel.alpha;
            pixel = mix(pixel, rgb(0x000000), 0.3);
            pixel.alpha = alpha;
        }
    }
    return result;
}

// With the focus the symbol stands on a pale plate, pressed on a deeper one.
Canvas button(const Canvas& symbol, ButtonState state) {
    const RoundedRect plate{{0, 0, kSymbolSize, kSymbolSize}, 2};
    Canvas canvas(kSymbolSize, kSymbolSize);
    switch (state) {
        case ButtonState::kUp:
            canvas.overlay(symbol, 0, 0);
            break;
        case ButtonState::kDown:
            canvas.fill(plate, rgb(0x9FC3E8));
            canvas.overlay(darkened(symbol), 0, 0);
            break;
        case ButtonState::kFocused:
            canvas.fill(plate, rgb(0xD2E6FA));
            canvas.overlay(symbol, 0, 0);
            break;
        case ButtonState::kDisabled:
            canvas.overlay(greyed(symbol), 0, 0);
            break;
    }
    cutOut(canvas, kFace, kSeeThrough);
    return canvas;
}

}  // namespace

std::string buttonName(const std::string& caption, ButtonState state) {
    return caption + '_' + static_cast<char>(state);
}

Canvas greyed(const Canvas& canvas) {
    Canvas result = canvas;
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            Color& pixel = result.at(x, y);
            const double light = 0.3 * pixel.red + 0.59 * pixel.green + 0.11 * pixel.blue;
            const double pale = 0.62 + 0.34 * light;
            pixel = {pale, pale, pale, pixel.alpha};
        }
    }
    return result;
}

void cutOut(Canvas& canvas, Color background, Color clear) {
    constexpr double kLeastCoverage = 0.34;
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            Color& pixel = canvas.at(x, y);
            const double coverage = pixel.alpha;
            pixel.alpha = 1;
            pixel = coverage < kLeastCoverage ? clear : mix(background, pixel, coverage);
        }
    }
}

std::vector<Picture> buttons() {
    struct Entry {
        const char* name;
        void (*paint)(Canvas&);
    };
    constexpr Entry kEntries[] = {
        {"up", paintUp},
        {"down", paintDown},
        {"expand", paintExpand},
        {"collapse", paintCollapse},
        {"selectget", paintSelectGet},
        {"selectset", paintSelectSet},
        {"find", paintFind},
        {"tool", paintTool},
    };
    std::vector<Picture> pictures;
    for (const Entry& entry : kEntries) {
        Canvas symbol(kSymbolSize, kSymbolSize);
        entry.paint(symbol);
        for (const ButtonState state : kButtonStates) {
            pictures.push_back({buttonName(entry.name, state), button(symbol, state)});
        }
    }
    return pictures;
}

}  // namespace draw
