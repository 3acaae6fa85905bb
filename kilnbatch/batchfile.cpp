#include "batchfile.h"

#include "stamp.h"

#include <base/filereads.h>
#include <base/paths.h>
#include <kiln/kiln.h>

#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace kilnbatch {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// Of what the script says and what is found in one file, so much is reported.
constexpr std::size_t kMostOutput = std::size_t{1} << 16;
constexpr std::size_t kMostFindings = std::size_t{1} << 20;

/// The folder of a place, without what a file left that its process did not live to finish.
fs::path scratchOf(const BatchFolders& folders, unsigned place) {
    fs::path scratch = folders.scratch / std::to_string(place);
    if (fs::create_directories(scratch)) return scratch;
    for (const auto& left : fs::directory_iterator(scratch)) fs::remove_all(left.path());
    return scratch;
}

/// What is said, up to a limit.
class Said {
public:
    void operator()(std::string_view line) {
        size_ += line.size() + 1;
        if (size_ <= kMostOutput)
            lines_.push_back(std::string(line));
        else
            ++left_;
    }
    void addTo(Json& result) const {
        if (!lines_.empty()) result["output"] = lines_;
        if (left_ > 0) result["outputLinesLeftOut"] = left_;
    }

private:
    std::vector<std::string> lines_;
    std::size_t size_ = 0;
    std::size_t left_ = 0;
};

void addFindings(Json& result, const Findings& findings) {
    result["errors"] = findings.errors;
    result["warnings"] = findings.warnings;
    result["hints"] = findings.hints;
    Json& list = result["findings"] = Json::array();
    std::size_t size = 0;
    for (const Finding& finding : findings.list) {
        size += finding.node.size() + finding.text.size();
        if (size > kMostFindings) break;
        list.push_back({{"severity", finding.severity},
                        {"code", finding.code},
                        {"node", finding.node},
                        {"text", finding.text}});
    }
}

Json failed(Json result, const std::string& reason) {
    result["result"] = "failed";
    result["cause"] = "error";
    result["reason"] = reason;
    return result;
}

}  // namespace

Json doFile(kiln::Core& core, const BatchFolders& folders, const Job& job,
            const std::string& options, const std::string& name, unsigned place) {
    const fs::path relative = base::pathFrom(name);
    const fs::path made = folders.out.empty() ? fs::path() : folders.out / relative;
    fs::path stampPath = folders.stamps / relative;
    stampPath += ".json";
    if (std::optional<Stamp> stamp = Stamp::read(stampPath);
        stamp && stamp->isUpToDate(options, folders.in, made)) {
        stamp->result["result"] = "unchanged";
        Json& names = stamp->result["reads"] = Json::array();
        for (const auto& [read, hash] : stamp->files) names.push_back(read);
        return stamp->result;
    }
    Json result{{"result", "done"}};
    try {
        std::error_code ignored;
        fs::remove(stampPath, ignored);
        const fs::path scratch = scratchOf(folders, place);
        Said said;
        Job own = job;
        own.importPath = base::textOf(folders.in / relative);
        const fs::path exported = made.empty() ? made : scratch / relative.filename();
        own.exportPath = base::textOf(exported);
        own.arguments = {name};
        own.output = [&](std::string_view line) { said(line); };
        own.found = [&](const Findings& findings) { addFindings(result, findings); };
        own.foundInSource = [&](const Findings& findings) {
            result["source"]["nodes"] = core.hostInterface().GetNodeCount();
            addFindings(result["source"], findings);
        };
        const base::FileReads reads;
        const std::string failure = runJob(core, own);
        said.addTo(result);
        result["nodes"] = core.hostInterface().GetNodeCount();
        const std::vector<std::string> names = namesOf(reads, folders.in);
        std::optional<Stamp> stamp;
        if (failure.empty()) stamp = Stamp::of(reads, folders.in);
        if (stamp) stamp->result = result;
        result["reads"] = names;
        if (!failure.empty()) return failed(result, failure);
        const std::optional<std::string> content = hashOf(exported);
        if (!made.empty()) {
            // The file was written down to the disk; here it takes its place.
            fs::create_directories(made.parent_path());
            fs::rename(exported, made);
        }
        if (stamp && (content || made.empty())) {
            stamp->options = options;
            stamp->output = content;
            fs::create_directories(stampPath.parent_path());
            stamp->write(stampPath);
        }
        return result;
    } catch (const std::bad_alloc&) {
        return failed(result, "there is no memory");
    } catch (const std::exception& error) {
        return failed(result, error.what());
    }
}

}  // namespace kilnbatch
