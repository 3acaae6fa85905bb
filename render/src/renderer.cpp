#include <render/renderer.h>

#include "painter.h"
#include "workers.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <tuple>

namespace render {
namespace {

constexpr Color kSkyTop = 0x4A5560, kSkyBottom = 0x7A858F;

/// What is smaller has no more than a dot; a radius, in pixels.
constexpr float kTiny = 0.5f;

/// Parts of the picture for each thread, so that one that is done early takes over from another.
constexpr std::size_t kBandsPerThread = 3;

std::uint8_t hoursOf(TimeOfDay time) {
    switch (time) {
        case TimeOfDay::kDay:
            return kDay;
        case TimeOfDay::kDusk:
            return kDusk;
        case TimeOfDay::kNight:
            return kNight;
        case TimeOfDay::kAny:
            break;
    }
    return 0;
}

}  // namespace

/// One picture in the making. Its rows are shared out among threads, each of which goes through
/// what touches its rows in the one order of all, so that no pixel depends on how they are shared
/// out.
struct Renderer::Frame {
    struct SeenMark {
        Mark mark;
        const LightPointLook* look;
    };

    /// What is drawn of the scene, and the rows that it touches.
    struct Seen {
        ItemIndex item;
        std::uint32_t appearance;
        int top, bottom;
        float distance = 0;
        bool isDot = false;
    };

    void choose();
    void chooseOf(std::uint32_t appearance);
    void see(std::uint32_t appearance, ItemIndex index, bool isDot);
    void seePlacement(std::uint32_t appearance, ItemIndex index, bool isDot);
    void add(std::uint32_t appearance, ItemIndex index, Vec3d centre, float radius, bool isDot);
    void addMarks(const Appearance& appearance);
    bool isTiny(Vec3d centre, float radius) const {
        return radius * camera->pixelsPerUnitAt(centre) < kTiny;
    }
    bool isShown(const Appearance& appearance, const Item& item) const {
        return (hours == 0 || (item.hours & hours) != 0) &&
               (shown.empty() || shown[appearance.firstRange + item.range]);
    }
    void chooseRanges(Appearance& appearance);
    void addLoad(const Seen& seen, const Item& item);
    void shareOut(std::size_t bands);
    void drawBand(std::size_t band);
    std::size_t drawItems(Painter& painter, const std::vector<Seen>& items, int first, int end);
    void drawOutline();

    const SceneModel* scene = nullptr;
    const Camera* camera = nullptr;
    const RenderOptions* options = nullptr;
    Canvas* canvas = nullptr;

    Workers workers;
    Lighting lighting;
    std::vector<Painter> painters;   // by band
    std::vector<std::size_t> drawn;  // triangles, by band
    std::vector<int> borders;        // first rows of the bands, and the end of the last
    std::vector<double> load;        // by row: how much more there is to do than in the one above
    std::vector<Seen> solid;         // in the order of the scene
    std::vector<Seen> translucent;   // the farthest first
    std::vector<Appearance> appearances;  // the first is that of the scene itself
    std::vector<SeenMark> marks;          // items are those of the scene
    std::vector<std::uint8_t> shown;      // by range of each appearance; none when all of them show
    std::vector<std::uint8_t> chosen;     // by item: whether it is outlined
    std::uint8_t hours = 0;               // one of them, or 0 for any
};

Renderer::Renderer() : frame_(std::make_unique<Frame>()) {}
Renderer::~Renderer() = default;

void Renderer::draw(const SceneModel& scene, const Camera& camera, const RenderOptions& options,
                    Canvas& canvas) {
    Frame& frame = *frame_;
    frame.scene = &scene;
    frame.camera = &camera;
    frame.options = &options;
    frame.canvas = &canvas;
    frame.lighting.beginFrame(scene.lights(), camera);
    frame.choose();
    const std::size_t threads =
        options.threads != 0 ? options.threads : std::max(std::thread::hardware_concurrency(), 1U);
    frame.shareOut(threads == 1 ? 1 : threads * kBandsPerThread);
    const std::size_t bands = frame.painters.size();
    frame.workers.run(threads, bands, [&frame](std::size_t band) { frame.drawBand(band); });
    trianglesDrawn_ = 0;
    for (const std::size_t count : frame.drawn) trianglesDrawn_ += count;

    if (options.mode != DrawMode::kWireframe) frame.drawOutline();
    Painter& painter = frame.painters.front();
    painter.begin(camera, options, frame.lighting, canvas);
    for (const Item& item : scene.items()) {
        if (item.selected && !item.selectionBox.empty()) painter.drawBrackets(item.selectionBox);
    }
    if (options.axes) painter.drawAxes();
}

void Renderer::Frame::chooseRanges(Appearance& appearance) {
    const bool isFixed = options->levelDistance >= 0;
    if ((!options->levelsByEye && !isFixed) || scene->levelsHidden()) return;
    appearance.firstRange = shown.size();
    shown.push_back(1);
    for (const Range& range : appearance.model->ranges().subspan(1)) {
        const double distance = isFixed ? options->levelDistance
                                        : length(appearance.point(range.centre) - camera->eye());
        shown.push_back(shown[appearance.firstRange + range.within] && distance > range.nearest &&
                        distance <= range.farthest);
    }
}

void Renderer::Frame::choose() {
    hours = hoursOf(options->time);
    shown.clear();
    solid.clear();
    translucent.clear();
    appearances.clear();
    marks.clear();
    load.assign(static_cast<std::size_t>(canvas->height()) + 1, 0);
    appearances.push_back({scene});
    chooseRanges(appearances.back());
    addMarks(appearances.back());
    chooseOf(0);
    // What lets light through comes last, from back to front; in layers, the lower ones first.
    const auto layer = [&](const Seen& seen) {
        const SceneModel& model = *appearances[seen.appearance].model;
        return model.surfaceOf(model.items()[seen.item]).layer;
    };
    std::sort(translucent.begin(), translucent.end(), [&](const Seen& a, const Seen& b) {
        return std::tuple(layer(a), -a.distance, a.appearance, a.item) <
               std::tuple(layer(b), -b.distance, b.appearance, b.item);
    });
}

void Renderer::Frame::addMarks(const Appearance& appearance) {
    const auto items = appearance.model->items();
    for (Mark mark : appearance.model->marks()) {
        if (!isShown(appearance, items[mark.item])) continue;
        if (!isShownAlways(mark.kind) && (!options->helpers || appearance.isPlaced)) continue;
        if (appearance.isPlaced) {
            mark.position = appearance.place.point(mark.position);
            mark.normal = appearance.place.normal(mark.normal);
            mark.item = appearance.item;
        }
        marks.push_back({mark, &appearance.model->lightLooks()[mark.look]});
    }
}

/// Of what is outside of the picture, or smaller than a pixel, nothing within is looked at.
void Renderer::Frame::chooseOf(std::uint32_t which) {
    const Appearance appearance = appearances[which];
    appearance.model->walk(
        [&](const Block& block) {
            if (block.sample == kNoItem) return false;
            const Vec3d centre = appearance.point(block.centre);
            const float radius = appearance.length(block.radius);
            if (camera->isOutside(centre, radius)) return false;
            if (!block.isPlain || !isTiny(centre, radius)) return true;
            see(which, block.sample, true);
            return false;
        },
        [&](ItemIndex index) { see(which, index, false); });
}

/// `isDot`: it stands for others, all of them in one pixel.
void Renderer::Frame::see(std::uint32_t which, ItemIndex index, bool isDot) {
    const Appearance& appearance = appearances[which];
    const Item& item = appearance.model->items()[index];
    if (!item.hasSurface() || !isShown(appearance, item)) return;
    if (item.placement != kNoPlacement) return seePlacement(which, index, isDot);
    const Vec3d centre = appearance.point(item.sphereCentre);
    const float radius = appearance.length(item.sphereRadius);
    if (!camera->isOutside(centre, radius)) add(which, index, centre, radius, isDot);
}

void Renderer::Frame::seePlacement(std::uint32_t which, ItemIndex index, bool isDot) {
    const Appearance& outer = appearances[which];
    const Item& item = outer.model->items()[index];
    const Placement& placement = outer.model->placements()[item.placement];
    const Vec3d centre = outer.point(item.sphereCentre);
    const float radius = outer.length(item.sphereRadius);
    if (camera->isOutside(centre, radius)) return;
    Appearance inner{placement.model.get()};
    inner.place = outer.isPlaced ? placement.place.within(outer.place) : placement.place;
    inner.isPlaced = true;
    inner.opacity = outer.opacity * placement.opacity;
    inner.item = outer.isPlaced ? outer.item : index;
    inner.isOutlined = outer.isPlaced ? outer.isOutlined : item.outlined;
    chooseRanges(inner);
    const auto number = static_cast<std::uint32_t>(appearances.size());
    appearances.push_back(inner);
    if (isDot || (inner.opacity >= 1 && inner.model->isPlain() && isTiny(centre, radius)))
        return see(number, inner.model->sample(), true);
    addMarks(inner);
    chooseOf(number);
}

void Renderer::Frame::add(std::uint32_t which, ItemIndex index, Vec3d centre, float radius,
                          bool isDot) {
    const Appearance& appearance = appearances[which];
    const Item& item = appearance.model->items()[index];
    const float lowest = static_cast<float>(canvas->height());
    const float margin = 2 + options->pixelScale + appearance.model->surfaceOf(item).lineWidth;
    const auto [top, bottom] = camera->rowsOf(centre, radius);
    // In this order what is no number gives all rows.
    Seen seen{index, which, static_cast<int>(std::min(std::max(0.f, top - margin), lowest)),
              static_cast<int>(std::max(std::min(lowest, bottom + margin), 0.f))};
    seen.isDot = isDot;
    if (isDot || (appearance.opacity >= 1 && !appearance.model->surfaceOf(item).isTranslucent())) {
        solid.push_back(seen);
    } else {
        // Beyond all measure there is no order, and nothing to be seen.
        seen.distance = camera->toView(centre).z;
        if (!std::isfinite(seen.distance)) return;
        translucent.push_back(seen);
    }
    addLoad(seen, item);
}

void Renderer::Frame::addLoad(const Seen& seen, const Item& item) {
    const auto first = static_cast<std::size_t>(std::min(seen.top, canvas->height() - 1));
    const auto end = static_cast<std::size_t>(std::clamp(seen.bottom, 0, canvas->height()));
    if (end <= first) return;
    const double each =
        (8. + (seen.isDot ? 1 : item.triangleCount)) / static_cast<double>(end - first);
    load[first] += each;
    load[end] -= each;
}

/// Makes bands that have about as much to do as each other.
void Renderer::Frame::shareOut(std::size_t bands) {
    const auto rows = static_cast<std::size_t>(canvas->height());
    bands = std::min(bands, rows);
    // Filling a row takes its time, too.
    const double perRow = canvas->width() / 16.;
    double all = 0, here = 0;
    for (std::size_t row = 0; row < rows; ++row) all += (here += load[row]) + perRow;
    borders.assign(1, 0);
    double done = here = 0;
    for (std::size_t row = 0; row < rows && borders.size() < bands; ++row) {
        done += (here += load[row]) + perRow;
        if (done * static_cast<double>(bands) >= all * static_cast<double>(borders.size()))
            borders.push_back(static_cast<int>(row) + 1);
    }
    borders.push_back(canvas->height());
    painters.resize(borders.size() - 1);
    drawn.assign(painters.size(), 0);
}

void Renderer::Frame::drawBand(std::size_t band) {
    const int first = borders[band], end = borders[band + 1];
    Painter& painter = painters[band];
    painter.begin(*camera, *options, lighting, canvas->rows(first, end));
    painter.rows().clear(kSkyTop, kSkyBottom);
    drawn[band] = drawItems(painter, solid, first, end);
    if (options->grid) painter.drawGrid();
    drawn[band] += drawItems(painter, translucent, first, end);
    for (const auto& [mark, look] : marks)
        painter.drawMark(mark, *look, scene->items()[mark.item].selected);
}

/// Returns the triangles of those that begin in these rows.
std::size_t Renderer::Frame::drawItems(Painter& painter, const std::vector<Seen>& items, int first,
                                       int end) {
    std::size_t sum = 0;
    for (const Seen& seen : items) {
        const int top = std::min(seen.top, canvas->height() - 1);
        if (top >= end || std::max(seen.bottom, top) < first) continue;
        const std::size_t count =
            painter.drawItem(appearances[seen.appearance], seen.item, seen.isDot);
        if (top >= first) sum += count;
    }
    return sum;
}

void Renderer::Frame::drawOutline() {
    const auto items = scene->items();
    chosen.resize(items.size());
    bool any = false;
    for (std::size_t i = 0; i < items.size(); ++i) {
        chosen[i] = items[i].outlined && items[i].hasSurface();
        any = any || chosen[i] != 0;
    }
    if (any) canvas->outline(chosen, static_cast<int>(2 * options->pixelScale), kSelected);
}

}  // namespace render
