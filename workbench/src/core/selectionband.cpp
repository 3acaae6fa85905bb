#include <workbench/selectionband.h>

#include <algorithm>

namespace workbench {
namespace {

bool isWithin(render::Vec3d world, const render::Camera& camera, const PixelArea& area) {
    const auto place = camera.project(world);
    return place && area.contains(place->x, place->y);
}

}  // namespace

std::vector<render::ItemIndex> itemsWithin(const render::SceneModel& scene,
                                           const render::Camera& camera, const PixelArea& area) {
    const std::span<const render::Item> items = scene.items();
    std::vector<render::ItemIndex> within;
    for (render::ItemIndex i = 0; i < items.size(); ++i) {
        const render::Item& item = items[i];
        if (!item.hasSurface()) continue;
        if (item.placement != render::kNoPlacement) {
            bool all = true;
            for (unsigned corner = 0; corner < 8; ++corner)
                all = all && isWithin(item.box.corner(corner), camera, area);
            if (all) within.push_back(i);
            continue;
        }
        const auto vertices = scene.vertices().subspan(item.firstVertex, item.vertexCount);
        if (std::ranges::all_of(vertices, [&](const render::Vec3& vertex) {
                return isWithin(item.origin + render::Vec3d{vertex.x, vertex.y, vertex.z}, camera,
                                area);
            }))
            within.push_back(i);
    }
    for (const render::Mark& mark : scene.marks())
        if (items[mark.item].triangleCount == 0 && isWithin(mark.position, camera, area) &&
            (within.empty() || within.back() != mark.item))
            within.push_back(mark.item);
    return within;
}

std::vector<render::ItemIndex> itemsTouched(const render::Canvas& canvas, const PixelArea& area) {
    std::vector<render::ItemIndex> touched;
    const int right = std::min(area.right, canvas.width()),
              bottom = std::min(area.bottom, canvas.height());
    for (int y = std::max(area.top, 0); y < bottom; ++y) {
        for (int x = std::max(area.left, 0); x < right; ++x) {
            const render::ItemIndex item = canvas.item(x, y);
            if (item != render::kNoItem && (touched.empty() || touched.back() != item))
                touched.push_back(item);
        }
    }
    std::ranges::sort(touched);
    touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
    return touched;
}

}  // namespace workbench
