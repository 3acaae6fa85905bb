// What a rubber band over the picture selects.
#pragma once

#include <render/canvas.h>

#include <vector>

namespace workbench {

/// A rectangle of pixels: from left and top up to, not including, right and bottom.
struct PixelArea {
    int left = 0, top = 0, right = 0, bottom = 0;

    bool contains(float x, float y) const {
        return x >= static_cast<float>(left) && x < static_cast<float>(right) &&
               y >= static_cast<float>(top) && y < static_cast<float>(bottom);
    }
};

/// The items that lie whole in the area, whether or not something hides them. The camera is that of
/// the picture. Takes time as drawing does.
std::vector<render::ItemIndex> itemsWithin(const render::SceneModel& scene,
                                           const render::Camera& camera, const PixelArea& area);

/// The items of which something is seen in the area.
std::vector<render::ItemIndex> itemsTouched(const render::Canvas& canvas, const PixelArea& area);

}  // namespace workbench
