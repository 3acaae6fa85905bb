#include "pictures.h"

namespace draw {
namespace {

// A slanted ray of light over the mosaic keeps the tiles from looking printed.
Color tileColor(int row, int column, double shade) {
    const bool letter = row == 0 || column == 1;
    const Tone& tone = letter ? kAmber : kBlue;
    return mix(letter ? tone.light : mix(tone.light, tone.plain, 0.5), tone.plain, shade);
}

}  // namespace

Canvas emblem(int tile, int gap, int margin, double radius) {
    const int side = 3 * tile + 2 * gap + 2 * margin;
    Canvas canvas(side, side);
    const double size = side;
    canvas.fill(RoundedRect{{0, 0, size, size}, radius}, rgb(0x22375C), rgb(0x12203A));
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double left = margin + column * (tile + gap);
            const double top = margin + row * (tile + gap);
            const RoundedRect shape{{left, top, left + tile, top + tile}, radius / 4};
            canvas.fill(shape, tileColor(row, column, (row + column) / 4.0));
            // A lit upper edge, where there is room for one.
            if (tile >= 12) {
                const double edge = tile / 12.0;
                canvas.fill(Without{shape, Rect{left, top + edge, left + tile, top + tile}},
                            rgb(0xFFFFFF, 0.45));
                canvas.fill(Without{shape, Rect{left, top, left + tile, top + tile - edge}},
                            rgb(0x000000, 0.22));
            }
        }
    }
    return canvas;
}

std::vector<Picture> aboutButton() {
    // 48 x 44 dialog units in Tahoma 8 at 96 dots per inch: 72 x 72 pixels, all of the button.
    std::vector<Picture> pictures;
    for (const ButtonState state : kButtonStates) {
        Canvas canvas = emblem(18, 4, 5, 0);
        const Rect whole{0, 0, 72, 72};
        switch (state) {
            case ButtonState::kUp:
                break;
            case ButtonState::kDown:
                canvas.fill(whole, rgb(0x000000, 0.25));
                break;
            case ButtonState::kFocused:
                canvas.fill(frame(whole, 2), kBlue.light);
                break;
            case ButtonState::kDisabled:
                canvas = greyed(canvas);
                break;
        }
        pictures.push_back({buttonName("about", state), canvas});
    }
    return pictures;
}

}  // namespace draw
