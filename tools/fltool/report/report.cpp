#include "report.h"

#include "commands.h"
#include "factsjson.h"
#include "page.h"
#include "pictures.h"

#include <base/paths.h>
#include <base/replacefile.h>
#include <base/text.h>
#include <tessera_version.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <optional>
#include <ostream>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace fltool {

namespace {

namespace fs = std::filesystem;

/// With the details of many models in files of their own, each has fewer of them.
constexpr FactLimits kLimitsOfMany{2000, 500, 50};

bool isDatabase(const fs::path& path) {
    return base::smallLetters(base::textOf(path.extension())) == ".flt";
}

/// The files that the paths name, each folder's in the order of their names. Texts, which take a
/// fraction of what paths do.
std::vector<std::string> filesOf(const std::vector<std::string>& paths) {
    std::vector<std::string> files;
    for (const std::string& named : paths) {
        const fs::path path = base::pathFrom(named);
        std::error_code failure;
        const fs::file_status status = fs::status(path, failure);
        if (!fs::exists(status)) throw CommandError("no such file or folder: " + named);
        if (!fs::is_directory(status)) {
            files.push_back(base::genericTextOf(path));
            continue;
        }
        const auto begin = static_cast<std::ptrdiff_t>(files.size());
        constexpr auto kSkip = fs::directory_options::skip_permission_denied;
        for (const auto& entry : fs::recursive_directory_iterator(path, kSkip))
            if (isDatabase(entry.path()) && entry.is_regular_file(failure))
                files.push_back(base::genericTextOf(entry.path()));
        std::sort(files.begin() + begin, files.end());
    }
    return files;
}

/// A path by which two names of one file are known to be the same.
std::string keyOf(const fs::path& path) {
    std::error_code unknown;
    const fs::path whole = fs::absolute(path, unknown);
    return base::genericTextOf((unknown ? path : whole).lexically_normal());
}

using Sink = std::function<void(std::string_view)>;

/// The details of many models in files beside the page, some models in each: to make a file takes
/// longer than what is in it. They are scripts, since a page from a disk may load nothing else, and
/// name their models, so that a page can tell when they are those of another report.
class DetailFiles {
public:
    explicit DetailFiles(fs::path folder) : folder_(std::move(folder)) {
        std::error_code ignored;  // the first file tells
        fs::create_directories(folder_, ignored);
    }

    void add(std::size_t model, const std::string& path, const std::string& details) {
        constexpr std::size_t kLargest = std::size_t{128} << 10;
        if (!text_.empty() && text_.size() + details.size() > kLargest) write();
        if (text_.empty()) firsts_.push_back(model);
        text_ += "fltoolDetails(" + std::to_string(model) + ", " + forPage(path) + ", ";
        text_ += details;
        text_ += ");\n";
    }

    /// Which model is the first of each file.
    const Json& finish() {
        if (!text_.empty()) write();
        return firsts_;
    }

private:
    void write() {
        const fs::path path = folder_ / (std::to_string(firsts_.size() - 1) + ".js");
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file << text_;
        if (!file.flush()) throw CommandError("cannot write " + base::textOf(path));
        text_.clear();
    }

    const fs::path folder_;
    std::string text_;  ///< of the file that is not written yet
    Json firsts_ = Json::array();
};

/// Goes through the models and hands on what is known of each.
class Reporter {
public:
    explicit Reporter(const ReportOptions& options, std::ostream& notes)
        : options_(options),
          notes_(notes),
          target_(checks::findTarget(options.target)),
          files_(filesOf(options.paths)) {
        for (std::size_t i = 0; i < files_.size(); ++i)
            numbers_.try_emplace(keyOf(base::pathFrom(files_[i])), static_cast<std::uint32_t>(i));
        if (options.pictures && !areMany()) kilnbatch_ = findKilnbatch(options.kilnbatch);
    }

    void writeJson(const Sink& write) {
        write("{\"program\": \"fltool " TESSERA_VERSION "\", \"target\": " +
              forPrograms(target_.name) + ", \"models\": [");
        const char* before = "\n";
        for (const std::string& file : files_) {
            const Facts facts = gather(file);
            Json model = rowOf(facts, target_);
            model.update(detailsOf(facts, target_, true));
            write(before + forPrograms(model));
            before = ",\n";
        }
        write("\n], \"totals\": " + forPrograms(jsonOf(totals_, target_)) + "}\n");
    }

    void writePage(const Sink& write) {
        const PageParts parts = pageParts();
        std::string details;
        write(parts.beforeData);
        write("{\"version\": " + forPage(TESSERA_VERSION) +
              ", \"target\": " + forPage(target_.name) + ", \"language\": \"" +
              (options_.language == base::Language::kEnglish ? "en" : "zh") +
              "\", \"texts\": " + forPage(pageTexts()) +
              ", \"sentences\": " + forPage(ruleSentences()) + ", \"folder\": " +
              (areMany() ? forPage(base::genericTextOf(detailFolder().filename())) : "null") +
              ", \"rows\": [");
        std::optional<DetailFiles> beside;
        if (areMany()) beside.emplace(detailFolder());
        for (std::size_t i = 0; i < files_.size(); ++i) {
            Facts facts = gather(files_[i]);
            Json row = rowOf(facts, target_);
            row["references"] = referencesOf(facts);
            write((i == 0 ? "\n" : ",\n") + forPage(row));
            const std::string text = forPage(detailsOf(facts, target_, false));
            if (beside)
                beside->add(i, facts.path, text);
            else
                details += (i == 0 ? "\n" : ",\n") + text;
        }
        write("\n], \"details\": [" + details +
              "\n], \"parts\": " + (beside ? forPage(beside->finish()) : "[]") +
              ", \"totals\": " + forPage(jsonOf(totals_, target_)) + "}\n");
        write(parts.behindData);
    }

    bool areMany() const noexcept { return files_.size() > kMostInPage; }

private:
    Facts gather(const std::string& file) {
        Facts facts = gatherFacts(file, target_, areMany() ? kLimitsOfMany : FactLimits(), &known_);
        totals_.add(facts, target_);
        if (!options_.pictures || areMany() || !facts.failure.empty()) return facts;
        const std::string failure =
            kilnbatch_.empty() ? "there is no kilnbatch" : drawPictures(facts, kilnbatch_);
        if (!failure.empty())
            notes_ << "fltool: no pictures of " << facts.path << ": " << failure << '\n';
        return facts;
    }

    /// The numbers of the models that it refers to, of those that are in the report.
    Json referencesOf(const Facts& facts) const {
        Json numbers = Json::array();
        for (const ReferenceFacts& reference : facts.references) {
            if (reference.path.empty()) continue;
            const auto found = numbers_.find(keyOf(base::pathFrom(reference.path)));
            if (found != numbers_.end()) numbers.push_back(found->second);
        }
        return numbers;
    }

    fs::path detailFolder() const {
        fs::path folder = base::pathFrom(options_.output);
        folder.replace_extension(".files");
        return folder;
    }

    const ReportOptions& options_;
    std::ostream& notes_;
    checks::Target target_;
    std::vector<std::string> files_;
    std::unordered_map<std::string, std::uint32_t> numbers_;  ///< by key
    fs::path kilnbatch_;
    checks::KnownReferences known_;
    Totals totals_;
};

}  // namespace

void report(const ReportOptions& options, std::ostream& out, std::ostream& notes) {
    if (options.output.empty() && !options.json)
        throw CommandError("a page needs a file: -o FILE, or --json for the facts alone");
    Reporter reporter(options, notes);
    const auto writeTo = [&](const Sink& sink) {
        options.json ? reporter.writeJson(sink) : reporter.writePage(sink);
    };
    if (options.output.empty()) return writeTo([&](std::string_view text) { out << text; });
    try {
        base::ReplacementWriter writer(options.output);
        writeTo([&](std::string_view text) { writer.write(text); });
        writer.takePlace();
    } catch (const std::system_error& error) {
        throw CommandError(error.what());
    }
}

}  // namespace fltool
