#include <render/renderer.h>

#include "painter.h"
#include "workers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <thread>
#include <tuple>

namespace render {
namespace {

constexpr Vec3 kSkyTop{0x4A, 0x55, 0x60}, kSkyBottom{0x7A, 0x85, 0x8F};

/// What is smaller has no more than a dot; a radius, in pixels.
constexpr float kTiny = 0.5f;

/// What is smaller is shown by points that stand for it; a radius, in pixels.
constexpr float kLargestStandIn = 9;

/// Pixels to a side, of which it is known what hides all that is behind it.
constexpr int kTile = 8;

/// How much of the picture is shared out at a time, a band for each thread: what is left at last is
/// little, so that no thread waits long for another that has more to do than was expected.
constexpr std::array kRounds{0.7, 0.2, 0.1};

/// Parts of the scene that threads choose from.
constexpr std::size_t kMostParts = 64;

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

/// The light of that time, to that of any.
Vec3 lightOf(TimeOfDay time) {
    switch (time) {
        case TimeOfDay::kDusk:
            return {0.66f, 0.55f, 0.5f};
        case TimeOfDay::kNight:
            return {0.2f, 0.23f, 0.32f};
        default:
            return {1, 1, 1};
    }
}

Color skyOf(Vec3 color, TimeOfDay time) {
    const Vec3 seen = product(color, lightOf(time));
    return static_cast<Color>(seen.x) << 16 | static_cast<Color>(seen.y) << 8 |
           static_cast<Color>(seen.z);
}

}  // namespace

/// One picture in the making. Its rows, or its columns, are shared out among threads, each of which
/// goes through what touches its own in the one order of all, so that no pixel depends on how they
/// are shared out.
struct Renderer::Frame {
    struct SeenMark {
        Mark mark;
        const LightPointLook* look;
    };

    /// The two ways to share out a picture; indices.
    enum Direction : std::size_t { kRows, kColumns };
    static constexpr Direction kDirections[] = {kRows, kColumns};

    /// Rows or columns.
    struct Extent {
        int first, end;
    };

    /// What is drawn of the scene, and what it touches in each direction.
    struct Seen {
        static constexpr int kWhole = -1;  ///< no level: of the item

        ItemIndex item;  ///< of no meaning for what stands for all of a model
        std::uint32_t appearance;
        Extent touched[2];
        float distance = 0;
        bool isDot = false;
        int level = kWhole;  ///< of what stands for the model
    };

    /// A model that stands in the scene, and how large it is in the picture.
    struct Placed {
        float pixels;  ///< radius
        ItemIndex item;
        std::uint64_t weight;
    };

    /// What there is to do.
    struct Load {
        /// By row or column: how much more than in the one before.
        std::vector<double> steps = {};
        double workByLength = 0;  ///< of each what there is to do for it times its rows or columns

        void clear(int pixels);
        void add(const Extent& touched, double work);
        void add(const Load& other);
    };

    /// What is seen of some of the scene's items, in their order.
    struct alignas(kApart) Part {
        std::size_t first = 0, end = 0;            ///< of the items
        std::vector<Appearance> appearances = {};  ///< the first is that of the scene itself
        std::vector<Seen> solid = {}, translucent = {};
        std::vector<Placed> placed = {};       ///< what may hide others, in no order
        std::vector<SeenMark> marks = {};      ///< items are those of the scene
        std::vector<std::uint8_t> shown = {};  ///< by range of each placed appearance
        Load load[2] = {};                     ///< by direction
        double work = 0;                       ///< of all

        void clear(const Canvas& picture);
    };

    /// One of those of a part.
    struct Ordered {
        std::uint32_t part, index;
    };

    void beginParts();
    void choose(std::size_t threads);
    void findHidden(std::size_t threads, const Appearance& whole);
    void findPlaced(Part& part) const;
    void drawHiders(std::size_t threads, const std::vector<Placed>& placed,
                    const Appearance& whole);
    bool isHidden(Vec3 centre, float radius) const;
    void choosePart(Part& part) const;
    void chooseOf(Part& part, std::uint32_t appearance) const;
    bool enter(Part& part, std::uint32_t appearance, const Block& block) const;
    void see(Part& part, std::uint32_t appearance, ItemIndex index, bool isDot) const;
    void seePlacement(Part& part, std::uint32_t appearance, ItemIndex index, bool isDot) const;
    bool seeStandIn(Part& part, std::uint32_t appearance, Vec3 centre, float radius) const;
    Seen seenAt(std::uint32_t appearance, Vec3 centre, float radius, float margin) const;
    void add(Part& part, std::uint32_t appearance, ItemIndex index, Vec3 centre, float radius,
             bool isDot) const;
    void addMarks(Part& part, const Appearance& appearance) const;
    bool isTiny(Vec3 centre, float radius) const {
        return radius * camera->pixelsPerUnitInView(centre) < kTiny;
    }
    bool isShown(const Part& part, const Appearance& appearance, const Item& item) const {
        const std::vector<std::uint8_t>& ranges = appearance.isPlaced ? part.shown : sceneShown;
        return (hours == 0 || (item.hours & hours) != 0) &&
               (ranges.empty() || ranges[appearance.firstRange + item.range]);
    }
    void chooseRanges(Appearance& appearance, std::vector<std::uint8_t>& ranges) const;
    static void addLoad(Part& part, const Seen& seen, double work);
    void orderTranslucent();
    void shareOut(std::span<Part> all, std::size_t threads);
    int pixelsAlong(Direction which) const {
        return which == kRows ? canvas->height() : canvas->width();
    }
    Painter& beginBand(std::size_t band, const RenderOptions& how);
    void drawBand(std::size_t band);
    std::size_t drawSeen(std::size_t band, const Part& part, const Seen& seen);
    void drawOutline();

    const SceneModel* scene = nullptr;
    const Camera* camera = nullptr;
    const RenderOptions* options = nullptr;
    Canvas* canvas = nullptr;

    Workers workers;
    Lighting lighting;
    std::vector<Painter> painters;   // by band
    std::vector<std::size_t> drawn;  // triangles, by band
    Direction direction = kRows;     // of which the bands consist
    std::vector<int> borders;        // where the bands begin, and the end of the last
    Part hiders;                     // the largest of what is placed in the scene
    std::vector<float> tiles;        // by tile of the picture: the depth of what hides, or none
    int tilesAcross = 0;
    std::vector<Part> parts;  // as many as `partCount` says are of this frame
    std::size_t partCount = 0;
    std::vector<Ordered> translucent;      // the farthest first
    std::vector<std::uint8_t> sceneShown;  // by range of the scene; none when all of them show
    std::vector<std::uint8_t> chosen;      // by item: whether it is outlined
    std::uint8_t hours = 0;                // one of them, or 0 for any
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
    frame.lighting.beginFrame(scene.lights(), camera, lightOf(options.time));
    const std::size_t threads =
        options.threads != 0 ? options.threads : std::max(std::thread::hardware_concurrency(), 1U);
    frame.choose(threads);
    frame.shareOut(std::span(frame.parts).first(frame.partCount), threads);
    const std::size_t bands = frame.painters.size();
    frame.workers.run(threads, bands, [&frame](std::size_t band) { frame.drawBand(band); });
    trianglesDrawn_ = 0;
    for (const std::size_t count : frame.drawn) trianglesDrawn_ += count;

    if (options.mode != DrawMode::kWireframe) frame.drawOutline();
    Painter& painter = frame.painters.front();
    painter.begin(camera, options, frame.lighting, canvas);
    for (const Item& item : scene.hasChosen() ? scene.items() : std::span<const Item>()) {
        if (item.selected && !item.selectionBox.empty()) painter.drawBrackets(item.selectionBox);
    }
    if (options.axes) painter.drawAxes();
}

void Renderer::Frame::Load::clear(int pixels) {
    steps.assign(static_cast<std::size_t>(pixels) + 1, 0);
    workByLength = 0;
}

void Renderer::Frame::Load::add(const Extent& touched, double work) {
    const int pixels = static_cast<int>(steps.size()) - 1;
    const int first = std::clamp(touched.first, 0, pixels - 1);
    const int end = std::clamp(touched.end, first + 1, pixels);
    const double each = work / (end - first);
    workByLength += work * (end - first);
    steps[static_cast<std::size_t>(first)] += each;
    steps[static_cast<std::size_t>(end)] -= each;
}

void Renderer::Frame::Load::add(const Load& other) {
    for (std::size_t i = 0; i < steps.size(); ++i) steps[i] += other.steps[i];
    workByLength += other.workByLength;
}

void Renderer::Frame::Part::clear(const Canvas& picture) {
    load[kRows].clear(picture.height());
    load[kColumns].clear(picture.width());
    appearances.clear();
    solid.clear();
    translucent.clear();
    placed.clear();
    marks.clear();
    shown.clear();
    work = 0;
}

void Renderer::Frame::chooseRanges(Appearance& appearance,
                                   std::vector<std::uint8_t>& ranges) const {
    const bool isFixed = options->levelDistance >= 0;
    if ((!options->levelsByEye && !isFixed) || scene->levelsHidden()) return;
    appearance.firstRange = ranges.size();
    ranges.push_back(1);
    for (const Range& range : appearance.model->ranges().subspan(1)) {
        const double distance = isFixed ? options->levelDistance
                                        : length(appearance.point(range.centre) - camera->eye());
        ranges.push_back(ranges[appearance.firstRange + range.within] && distance > range.nearest &&
                         distance <= range.farthest);
    }
}

/// The same ones whatever the number of threads.
void Renderer::Frame::beginParts() {
    const std::size_t items = scene->items().size();
    const std::size_t units = (items + SceneModel::kPart - 1) / SceneModel::kPart;
    const std::size_t size = (units + kMostParts - 1) / kMostParts * SceneModel::kPart;
    partCount = 0;
    for (std::size_t first = 0; first < items || partCount == 0; first += size) {
        if (parts.size() == partCount) parts.emplace_back();
        Part& part = parts[partCount++];
        part.clear(*canvas);
        part.first = first;
        part.end = std::min(first + size, items);
    }
}

void Renderer::Frame::choose(std::size_t threads) {
    hours = hoursOf(options->time);
    sceneShown.clear();
    Appearance whole{scene};
    chooseRanges(whole, sceneShown);
    beginParts();
    for (std::size_t i = 0; i < partCount; ++i) parts[i].appearances.push_back(whole);
    addMarks(parts.front(), whole);
    tiles.clear();
    if (options->cullsHidden) findHidden(threads, whole);
    workers.run(threads, partCount, [this](std::size_t part) { choosePart(parts[part]); });
    orderTranslucent();
}

/// Where there is much in models that are placed in the scene, the largest are drawn beforehand:
/// what is behind them all over needs not be looked at. The picture stays the same.
void Renderer::Frame::findHidden(std::size_t threads, const Appearance& whole) {
    constexpr std::uint64_t kWorthIt = 50'000, kMostHiding = 5'000;  // items
    if (options->mode == DrawMode::kWireframe || scene->placements().empty()) return;
    workers.run(threads, partCount, [this](std::size_t part) { findPlaced(parts[part]); });
    std::vector<Placed> all;
    std::uint64_t weight = 0;
    for (std::size_t i = 0; i < partCount; ++i)
        for (const Placed& placed : parts[i].placed) {
            all.push_back(placed);
            weight += std::min(placed.weight, kWorthIt);
        }
    if (weight < kWorthIt) return;
    std::ranges::sort(all, {},
                      [](const Placed& placed) { return std::pair(-placed.pixels, placed.item); });
    std::size_t count = 0;
    for (weight = 0; count < all.size() && weight < kMostHiding; ++count)
        weight += std::min(all[count].weight, kMostHiding);
    all.resize(count);
    drawHiders(threads, all, whole);
}

void Renderer::Frame::findPlaced(Part& part) const {
    const Appearance& whole = part.appearances.front();
    scene->walkPart(
        part.first, part.end,
        [&](const Block& block) {
            const Vec3 centre = camera->toView(block.centre);
            return block.sample != kNoItem && !camera->isOutside(centre, block.radius) &&
                   !isTiny(centre, block.radius);
        },
        [&](ItemIndex index) {
            const Item& item = scene->items()[index];
            if (item.placement == kNoPlacement || !isShown(part, whole, item)) return;
            const Vec3 centre = camera->toView(item.sphereCentre);
            const float pixels = item.sphereRadius * camera->pixelsPerUnitInView(centre);
            if (camera->isOutside(centre, item.sphereRadius) || !(pixels >= kLargestStandIn))
                return;
            part.placed.push_back(
                {pixels, index, scene->placements()[item.placement].model->weight()});
        });
}

void Renderer::Frame::drawHiders(std::size_t threads, const std::vector<Placed>& placed,
                                 const Appearance& whole) {
    hiders.clear(*canvas);
    hiders.appearances.push_back(whole);
    for (const Placed& one : placed) see(hiders, 0, one.item, false);
    RenderOptions plain = *options;
    plain.mode = DrawMode::kShaded;
    shareOut({&hiders, 1}, threads);
    workers.run(threads, painters.size(), [&](std::size_t band) {
        beginBand(band, plain).part().clear(0, 0);
        for (const Seen& seen : hiders.solid) drawSeen(band, hiders, seen);
    });
    const int width = canvas->width(), height = canvas->height();
    tilesAcross = (width + kTile - 1) / kTile;
    const int down = (height + kTile - 1) / kTile;
    tiles.assign(static_cast<std::size_t>(tilesAcross) * static_cast<std::size_t>(down), 0);
    workers.run(threads, static_cast<std::size_t>(down), [&](std::size_t row) {
        float* const own = tiles.data() + row * static_cast<std::size_t>(tilesAcross);
        std::fill_n(own, tilesAcross, std::numeric_limits<float>::max());
        const int top = static_cast<int>(row) * kTile;
        for (int y = top; y < std::min(top + kTile, height); ++y)
            for (int x = 0; x < width; ++x)
                own[x / kTile] = std::min(own[x / kTile], canvas->depth(x, y));
    });
}

/// All of what is within `radius` of a place in view space, with its edges: behind what is nearer.
bool Renderer::Frame::isHidden(Vec3 centre, float radius) const {
    if (tiles.empty()) return false;
    constexpr float kMostBias = 0.03f;  // more than that of the uppermost layer and its edges
    const float nearest = centre.z - radius;
    float depth = -nearest + kMostBias * static_cast<float>(camera->distance()) +
                  kMostBias * std::abs(nearest);
    if (!camera->isParallel()) {
        if (!(nearest > camera->nearDistance() && nearest > 0)) return false;
        depth = (1 + kMostBias) / nearest;
    }
    const float margin = 2 + options->pixelScale + SceneModel::kThinLine;
    const auto [top, bottom] = camera->rowsOf(centre, radius);
    const auto [left, right] = camera->columnsOf(centre, radius);
    const auto tileOf = [](float pixel, int pixels) {
        const float kept = std::min(std::max(0.f, pixel), static_cast<float>(pixels - 1));
        return static_cast<int>(kept) / kTile;
    };
    const int first = tileOf(left - margin, canvas->width());
    const int last = tileOf(right + margin, canvas->width());
    const int end = tileOf(bottom + margin, canvas->height());
    for (int row = tileOf(top - margin, canvas->height()); row <= end; ++row)
        for (int column = first; column <= last; ++column)
            if (!(tiles[static_cast<std::size_t>(row * tilesAcross + column)] > depth))
                return false;
    return true;
}

/// What lets light through comes last, from back to front; in layers, the lower ones first.
void Renderer::Frame::orderTranslucent() {
    translucent.clear();
    for (std::uint32_t part = 0; part < partCount; ++part)
        for (std::uint32_t i = 0; i < parts[part].translucent.size(); ++i)
            translucent.push_back({part, i});
    const auto key = [&](const Ordered& ordered) {
        const Part& part = parts[ordered.part];
        const Seen& seen = part.translucent[ordered.index];
        const SceneModel& model = *part.appearances[seen.appearance].model;
        return std::tuple(model.surfaceOf(model.items()[seen.item]).layer, -seen.distance,
                          ordered.part, seen.appearance, seen.item);
    };
    std::ranges::sort(translucent, {}, key);
}

void Renderer::Frame::addMarks(Part& part, const Appearance& appearance) const {
    const auto items = appearance.model->items();
    for (Mark mark : appearance.model->marks()) {
        if (!isShown(part, appearance, items[mark.item])) continue;
        if (!isShownAlways(mark.kind) && (!options->helpers || appearance.isPlaced)) continue;
        if (appearance.isPlaced) {
            mark.position = appearance.place.point(mark.position);
            mark.normal = appearance.place.normal(mark.normal);
            mark.item = appearance.item;
        }
        part.marks.push_back({mark, &appearance.model->lightLooks()[mark.look]});
    }
}

void Renderer::Frame::choosePart(Part& part) const {
    scene->walkPart(
        part.first, part.end, [&](const Block& block) { return enter(part, 0, block); },
        [&](ItemIndex index) { see(part, 0, index, false); });
}

void Renderer::Frame::chooseOf(Part& part, std::uint32_t which) const {
    part.appearances[which].model->walk(
        [&](const Block& block) { return enter(part, which, block); },
        [&](ItemIndex index) { see(part, which, index, false); });
}

/// Of what is outside of the picture, or smaller than a pixel, nothing within is looked at.
bool Renderer::Frame::enter(Part& part, std::uint32_t which, const Block& block) const {
    if (block.sample == kNoItem) return false;
    const Appearance& appearance = part.appearances[which];
    const Vec3 centre = camera->toView(appearance.point(block.centre));
    const float radius = appearance.length(block.radius);
    if (camera->isOutside(centre, radius)) return false;
    if (!block.isPlain) return true;
    if (isHidden(centre, radius)) return false;
    if (!isTiny(centre, radius)) return true;
    see(part, which, block.sample, true);
    return false;
}

/// `isDot`: it stands for others, all of them in one pixel.
void Renderer::Frame::see(Part& part, std::uint32_t which, ItemIndex index, bool isDot) const {
    const Appearance& appearance = part.appearances[which];
    const Item& item = appearance.model->items()[index];
    if (!item.hasSurface() || !isShown(part, appearance, item)) return;
    if (item.placement != kNoPlacement) return seePlacement(part, which, index, isDot);
    const Vec3 centre = camera->toView(appearance.point(item.sphereCentre));
    const float radius = appearance.length(item.sphereRadius);
    if (!camera->isOutside(centre, radius)) add(part, which, index, centre, radius, isDot);
}

void Renderer::Frame::seePlacement(Part& part, std::uint32_t which, ItemIndex index,
                                   bool isDot) const {
    const Appearance& outer = part.appearances[which];
    const Item& item = outer.model->items()[index];
    const Placement& placement = outer.model->placements()[item.placement];
    const Vec3 centre = camera->toView(outer.point(item.sphereCentre));
    const float radius = outer.length(item.sphereRadius);
    if (camera->isOutside(centre, radius)) return;
    if (placement.model->isPlain() && isHidden(centre, radius)) return;
    Appearance inner{placement.model.get()};
    inner.place = outer.isPlaced ? placement.place.within(outer.place) : placement.place;
    inner.isPlaced = true;
    inner.opacity = outer.opacity * placement.opacity;
    inner.item = outer.isPlaced ? outer.item : index;
    inner.isOutlined = outer.isPlaced ? outer.isOutlined : item.outlined;
    chooseRanges(inner, part.shown);
    const auto number = static_cast<std::uint32_t>(part.appearances.size());
    part.appearances.push_back(inner);
    if (isDot || (inner.opacity >= 1 && inner.model->isPlain() && isTiny(centre, radius)))
        return see(part, number, inner.model->sample(), true);
    if (seeStandIn(part, number, centre, radius)) return;
    addMarks(part, inner);
    chooseOf(part, number);
}

/// A few points instead of a placed model that is only a few pixels large.
bool Renderer::Frame::seeStandIn(Part& part, std::uint32_t which, Vec3 centre, float radius) const {
    const Appearance& appearance = part.appearances[which];
    const StandIn* const standIn = appearance.model->standIn();
    const float pixels = camera->pixelsPerUnitInView(centre);
    if (!standIn || appearance.opacity < 1 || !(radius * pixels < kLargestStandIn)) return false;
    const float extent = appearance.length(static_cast<float>(standIn->extent()));
    int level = StandIn::levelFor(extent * pixels);
    const auto isTooMuch = [&] {
        return level > StandIn::kFinest ||
               standIn->points(level).size() > appearance.model->weight();
    };
    // Of half as many to a side each is a square of a few pixels.
    if (level > 0 && isTooMuch()) --level;
    if (isTooMuch()) return false;
    const std::size_t points = standIn->points(level).size();
    Seen seen = seenAt(which, centre, radius, 2);
    seen.level = level;
    part.solid.push_back(seen);
    addLoad(part, seen, 1 + static_cast<double>(points) / 8);
    return true;
}

Renderer::Frame::Seen Renderer::Frame::seenAt(std::uint32_t which, Vec3 centre, float radius,
                                              float margin) const {
    const auto within = [margin](std::pair<float, float> ends, int pixels) {
        const auto most = static_cast<float>(pixels);
        // In this order what is no number becomes all.
        const auto first = static_cast<int>(std::min(std::max(0.f, ends.first - margin), most));
        const auto end = static_cast<int>(std::max(std::min(most, ends.second + margin), 0.f));
        return Extent{std::min(first, pixels - 1), std::max(end, first)};
    };
    return {kNoItem,
            which,
            {within(camera->rowsOf(centre, radius), canvas->height()),
             within(camera->columnsOf(centre, radius), canvas->width())}};
}

void Renderer::Frame::add(Part& part, std::uint32_t which, ItemIndex index, Vec3 centre,
                          float radius, bool isDot) const {
    const Appearance& appearance = part.appearances[which];
    const Item& item = appearance.model->items()[index];
    const Surface& surface = appearance.model->surfaceOf(item);
    Seen seen = seenAt(which, centre, radius, 2 + options->pixelScale + surface.lineWidth);
    seen.item = index;
    seen.isDot = isDot;
    if (isDot || (appearance.opacity >= 1 && !surface.isTranslucent())) {
        part.solid.push_back(seen);
    } else {
        // Beyond all measure there is no order, and nothing to be seen.
        seen.distance = centre.z;
        if (!std::isfinite(seen.distance)) return;
        part.translucent.push_back(seen);
    }
    addLoad(part, seen, 8. + (isDot ? 1 : item.triangleCount));
}

void Renderer::Frame::addLoad(Part& part, const Seen& seen, double work) {
    part.work += work;
    for (const Direction which : kDirections) part.load[which].add(seen.touched[which], work);
}

/// Makes bands, the first of which have about as much to do as each other.
void Renderer::Frame::shareOut(std::span<Part> all, std::size_t threads) {
    Part& sum = all.front();
    for (const Part& part : all.subspan(1)) {
        sum.work += part.work;
        for (const Direction which : kDirections) sum.load[which].add(part.load[which]);
    }
    // What reaches across a border is worked out on both sides: how much that is at one border.
    const auto workedOutTwice = [&](const Load& load) {
        double here = 0, squares = 0;
        for (const double step : load.steps) {
            here += step;
            squares += here * here;
        }
        return sum.work > 0 ? load.workByLength * squares / (sum.work * sum.work) : 0;
    };
    const double byRows = workedOutTwice(sum.load[kRows]);
    const double byColumns = workedOutTwice(sum.load[kColumns]);
    // A triangle is cut by rows in two, by columns in each of its rows.
    constexpr double kCutColumns = 4;
    direction = byColumns * kCutColumns < byRows ? kColumns : kRows;
    const double twice = direction == kRows ? byRows : byColumns;
    // Filling the pixels takes its time, too.
    const int pixels = pixelsAlong(direction);
    const double each = pixelsAlong(direction == kRows ? kColumns : kRows) / 16.;
    const double total = sum.work + each * pixels;

    constexpr double kMostTwice = 0.75;
    const auto further = static_cast<double>(threads * (kRounds.size() - 1));
    const std::size_t rounds = twice * further > total * kMostTwice ? 1 : kRounds.size();
    std::vector<double> shares;  // of all that there is to do, by band
    for (std::size_t round = 0; round < rounds && threads > 1; ++round)
        shares.insert(shares.end(), threads,
                      (rounds == 1 ? 1 : kRounds[round]) / static_cast<double>(threads));
    const std::vector<double>& steps = sum.load[direction].steps;
    borders.assign(1, 0);
    double done = 0, here = 0, wanted = shares.empty() ? 1 : shares.front();
    for (int i = 0; i < pixels - 1 && borders.size() < shares.size(); ++i) {
        done += (here += steps[static_cast<std::size_t>(i)]) + each;
        if (done < total * wanted) continue;
        wanted += shares[borders.size()];
        borders.push_back(i + 1);
    }
    borders.push_back(pixels);
    painters.resize(borders.size() - 1);
    drawn.assign(painters.size(), 0);
}

Painter& Renderer::Frame::beginBand(std::size_t band, const RenderOptions& how) {
    const int first = borders[band], end = borders[band + 1];
    painters[band].begin(
        *camera, how, lighting,
        direction == kRows ? canvas->rows(first, end) : canvas->columns(first, end));
    return painters[band];
}

void Renderer::Frame::drawBand(std::size_t band) {
    Painter& painter = beginBand(band, *options);
    painter.part().clear(skyOf(kSkyTop, options->time), skyOf(kSkyBottom, options->time));
    std::size_t count = 0;
    for (std::size_t i = 0; i < partCount; ++i)
        for (const Seen& seen : parts[i].solid) count += drawSeen(band, parts[i], seen);
    if (options->grid) painter.drawGrid();
    for (const auto& [part, index] : translucent)
        count += drawSeen(band, parts[part], parts[part].translucent[index]);
    for (std::size_t i = 0; i < partCount; ++i)
        for (const auto& [mark, look] : parts[i].marks)
            painter.drawMark(mark, *look, scene->items()[mark.item].selected);
    drawn[band] = count;
}

/// Returns its triangles, if it begins in this band.
std::size_t Renderer::Frame::drawSeen(std::size_t band, const Part& part, const Seen& seen) {
    const Extent& touched = seen.touched[direction];
    if (touched.first >= borders[band + 1] || touched.end < borders[band]) return 0;
    const Appearance& appearance = part.appearances[seen.appearance];
    Painter& painter = painters[band];
    const std::size_t count = seen.level != Seen::kWhole
                                  ? painter.drawStandIn(appearance, seen.level)
                                  : painter.drawItem(appearance, seen.item, seen.isDot);
    return touched.first >= borders[band] ? count : 0;
}

void Renderer::Frame::drawOutline() {
    if (!scene->hasChosen()) return;
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
