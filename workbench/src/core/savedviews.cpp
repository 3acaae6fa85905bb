#include <base/text.h>
#include <workbench/savedviews.h>
#include <workbench/userfile.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

using render::CameraStand, render::View;

namespace workbench {
namespace {

struct Line {
    std::string file;
    std::size_t place = 0;
    CameraStand view;
};

std::string written(const Line& line) {
    char numbers[256];
    std::snprintf(numbers, sizeof numbers, "%zu\t%d\t%.17g\t%.17g\t%.17g\t%.17g\t%.9g\t%.9g\t",
                  line.place, static_cast<int>(line.view.view), line.view.target.x,
                  line.view.target.y, line.view.target.z, line.view.distance, double{line.view.yaw},
                  double{line.view.pitch});
    return numbers + line.file;
}

std::optional<Line> read(std::string_view text) {
    double numbers[8];
    for (double& number : numbers) {
        const std::size_t end = text.find('\t');
        if (end == text.npos) return std::nullopt;
        const auto [rest, error] = std::from_chars(text.data(), text.data() + end, number);
        if (error != std::errc() || rest != text.data() + end) return std::nullopt;
        text.remove_prefix(end + 1);
    }
    const bool isOne = numbers[0] >= 0 && numbers[0] < SavedViews::kPlaces && numbers[1] >= 0 &&
                       numbers[1] <= static_cast<int>(View::kBottom) && !text.empty();
    if (!isOne) return std::nullopt;
    return Line{std::string(text),
                static_cast<std::size_t>(numbers[0]),
                {static_cast<View>(static_cast<int>(numbers[1])),
                 {numbers[2], numbers[3], numbers[4]},
                 numbers[5],
                 static_cast<float>(numbers[6]),
                 static_cast<float>(numbers[7])}};
}

auto found(auto& known, std::string_view file) {
    return std::ranges::find_if(
        known, [&](const auto& one) { return base::sameTextIgnoringCase(one.first, file); });
}

}  // namespace

SavedViews::SavedViews(std::string path) : path_(std::move(path)) {
    if (path_.empty()) return;
    for (const std::string& text : readUserFile(path_)) {
        const std::optional<Line> line = read(text);
        if (!line) continue;
        auto scene = found(known_, line->file);
        if (scene == known_.end() && known_.size() < kMostScenes)
            scene = known_.insert(scene, {line->file, {}});
        if (scene != known_.end()) scene->second[line->place] = line->view;
    }
}

void SavedViews::setScene(const std::string& file, bool keep) {
    const bool isSame = base::sameTextIgnoringCase(scene_, file);
    if (keep && isSame) return;
    scene_ = file;
    if (keep) return store();
    const auto scene = found(known_, file);
    shown_ = scene == known_.end() ? Views{} : scene->second;
}

void SavedViews::save(std::size_t place, const CameraStand& view) {
    shown_[place] = view;
    store();
}

void SavedViews::store() {
    const bool hasAny =
        std::ranges::any_of(shown_, [](const auto& view) { return view.has_value(); });
    if (scene_.empty() || !hasAny) return;
    if (const auto before = found(known_, scene_); before != known_.end()) known_.erase(before);
    known_.insert(known_.begin(), {scene_, shown_});
    if (known_.size() > kMostScenes) known_.resize(kMostScenes);
    if (path_.empty()) return;
    std::vector<std::string> lines;
    for (const auto& [file, views] : known_)
        for (std::size_t place = 0; place < kPlaces; ++place)
            if (views[place]) lines.push_back(written({file, place, *views[place]}));
    writeUserFile(path_, lines);
}

}  // namespace workbench
