#pragma once

#include <string>
#include <vector>

#include "canvas.h"

namespace draw {

struct Picture {
    std::string name;  // file name without its ending
    Canvas canvas;
};

// The icons of the browser's tree, 16 x 15 pixels, clear pixels already white.
std::vector<Picture> treeIcons();

// The same icons side by side, a picture for each larger scaling of the display: 20 x 19, 24 x 23
// and 32 x 30 pixels each.
std::vector<Picture> treeIconStrips();

// The symbols of the form's picture buttons, 16 x 16 pixels, four states each, magenta where clear.
std::vector<Picture> buttons();

// The emblem: a mosaic of nine square tiles, five of which form a T. `tile`, `gap` and `margin`
// are in pixels; the picture's side is 3 tiles, 2 gaps and 2 margins. The corners are rounded by
// `radius` and clear outside.
Canvas emblem(int tile, int gap, int margin, double radius);

// The about box's picture button, four states.
std::vector<Picture> aboutButton();

// What a button looks like in each of its four states. The names of their files end in these.
enum class ButtonState : char { kUp = 'u', kDown = 'd', kFocused = 'f', kDisabled = 'x' };
constexpr ButtonState kButtonStates[] = {ButtonState::kUp, ButtonState::kDown,
                                         ButtonState::kFocused, ButtonState::kDisabled};

std::string buttonName(const std::string& caption, ButtonState state);

// The picture in greys and paler, as a command looks that cannot be given now.
Canvas greyed(const Canvas& canvas);

// Prepares a picture for a display that knows only opaque and clear: a pixel that is covered by a
// third or more becomes opaque, mixed with the background that the display will show behind it, so
// that edges stay smooth; the rest becomes `clear`.
void cutOut(Canvas& canvas, Color background, Color clear);

}  // namespace draw
