#include "pictures.h"

#include "childprocess.h"

#include <base/file.h>
#include <base/paths.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <functional>
#include <random>
#include <sstream>
#include <utility>

namespace fltool {

namespace {

namespace fs = std::filesystem;

constexpr int kWidth = 480, kHeight = 320;
constexpr int kThumbnailSide = 64;
constexpr std::size_t kMostThumbnails = 200;
constexpr std::size_t kMostLevels = 6;
constexpr std::size_t kLargestPicture = 2 << 20;  // bytes
constexpr std::chrono::seconds kMostTime{120};

/// A folder of this object's own, which goes with it.
class Workplace {
public:
    Workplace() {
        std::random_device random;
        std::error_code failure;
        do {
            path_ = fs::temp_directory_path() / ("fltool-" + std::to_string(random()));
            // Nobody else's: made here, or tried under another name.
        } while (!fs::create_directory(path_, failure) && !failure);
        fs::permissions(path_, fs::perms::owner_all, failure);
    }
    ~Workplace() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    fs::path operator/(const std::string& name) const { return path_ / name; }

private:
    fs::path path_;
};

/// A text of the script language.
std::string literal(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : text) {
        switch (character) {
            case '\n':
                quoted += "\\n";
                break;
            case '\r':
                quoted += "\\r";
                break;
            case '"':
            case '\\':
                quoted += '\\';
                [[fallthrough]];
            default:
                quoted += character;
        }
    }
    return quoted + '"';
}

std::string shortest(double number) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.begin(), text.end(), number).ptr;
    return {text.begin(), end};
}

/// A distance within each step at which something is shown, the nearest first.
std::vector<double> levelDistances(const std::vector<Step>& steps) {
    std::vector<double> distances;
    if (steps.size() < 2) return distances;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].faces == 0) continue;
        constexpr double kBeyondLast = 1.5;
        distances.push_back(i + 1 < steps.size() ? (steps[i].distance + steps[i + 1].distance) / 2
                                                 : steps[i].distance * kBeyondLast);
    }
    if (distances.size() <= kMostLevels) return distances;
    std::vector<double> some;
    for (std::size_t i = 0; i < kMostLevels; ++i)
        some.push_back(distances[i * (distances.size() - 1) / (kMostLevels - 1)]);
    return some;
}

std::string bytesOf(const fs::path& path) {
    std::string bytes;
    if (base::readFile(base::textOf(path), bytes) || bytes.size() > kLargestPicture) return {};
    return bytes;
}

/// The textures with the most users, of those that are there.
std::vector<TextureFacts*> texturesToShow(Facts& facts) {
    std::vector<TextureFacts*> shown;
    for (TextureFacts& texture : facts.textures)
        if (!texture.path.empty()) shown.push_back(&texture);
    std::ranges::stable_sort(shown, std::greater(), [](const auto* entry) { return entry->users; });
    shown.resize(std::min(shown.size(), kMostThumbnails));
    return shown;
}

/// What the script says of the textures' sizes, a line for each: its number, width and height.
void takeSizes(const std::string& printed, const std::vector<TextureFacts*>& textures) {
    std::istringstream lines(printed);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string mark;
        std::size_t number = 0;
        std::uint32_t width = 0, height = 0;
        if (!(words >> mark >> number >> width >> height) || mark != "texture" ||
            number >= textures.size())
            continue;
        textures[number]->width = width;
        textures[number]->height = height;
    }
}

}  // namespace

fs::path findKilnbatch(const std::string& named) {
#ifdef _WIN32
    constexpr const char* kName = "kilnbatch.exe";
#else
    constexpr const char* kName = "kilnbatch";
#endif
    const fs::path path = named.empty() ? ownFolder() / kName : base::pathFrom(named);
    return base::isFile(path) ? path : fs::path();
}

std::string drawPictures(Facts& facts, const fs::path& kilnbatch) {
    const Workplace place;
    std::string script;
    const auto draw = [&](const std::string& name, double distance, const std::string& how) {
        const std::string file = name + ".png";
        facts.pictures.push_back({name, distance, {}});
        script += "picture " + literal(base::textOf(place / file)) + " " + std::to_string(kWidth) +
                  " " + std::to_string(kHeight) + " mode:\"shaded\" " + how + "\n";
        return place / file;
    };
    std::vector<fs::path> files;
    for (const char* const view : {"perspective", "top", "front", "left"})
        files.push_back(draw(view, 0, "view:\"" + std::string(view) + '"'));
    for (const double distance : levelDistances(facts.steps))
        files.push_back(
            draw("level" + shortest(distance), distance, "levels:" + shortest(distance)));
    const std::vector<TextureFacts*> textures = texturesToShow(facts);
    for (std::size_t i = 0; i < textures.size(); ++i) {
        script += "size = thumbnail " +
                  literal(base::textOf(fs::absolute(base::pathFrom(textures[i]->path)))) + " " +
                  literal(base::textOf(place / (std::to_string(i) + ".png"))) + " " +
                  std::to_string(kThumbnailSide) +
                  "\nif size != undefined then print \"texture\" " + std::to_string(i) +
                  " size[1] size[2]\n";
    }
    const fs::path scriptFile = place / "draw.ks", output = place / "output.txt";
    {
        const base::File file = base::openFile(scriptFile, true);
        if (!file || std::fwrite(script.data(), 1, script.size(), file.get()) != script.size())
            return "the script that draws cannot be written";
    }
    const int code =
        runProgram(kilnbatch, {"--import", fs::absolute(base::pathFrom(facts.path)), scriptFile},
                   output, kMostTime);
    const std::string printed = bytesOf(output);
    takeSizes(printed, textures);
    for (std::size_t i = 0; i < files.size(); ++i) facts.pictures[i].png = bytesOf(files[i]);
    std::erase_if(facts.pictures, [](const Picture& picture) { return picture.png.empty(); });
    for (Picture& picture : facts.pictures)
        if (picture.view.starts_with("level")) picture.view = "level";
    for (std::size_t i = 0; i < textures.size(); ++i)
        textures[i]->thumbnail = bytesOf(place / (std::to_string(i) + ".png"));
    if (code == 0) return {};
    const std::size_t last = printed.find_last_not_of("\r\n");
    const std::size_t line = printed.find_last_of('\n', last);
    return last == std::string::npos ? "kilnbatch did not end well"
                                     : printed.substr(line + 1, last - line);
}

}  // namespace fltool
