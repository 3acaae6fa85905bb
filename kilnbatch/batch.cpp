#include "batch.h"

#include "batchfile.h"
#include "batchprogress.h"
#include "filetree.h"
#include "plugins.h"
#include "stamp.h"

#include <base/file.h>
#include <base/filelock.h>
#include <base/paths.h>
#include <base/text.h>
#include <tessera_version.h>

#include <csignal>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <system_error>

namespace kilnbatch {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr int kInterruptedStatus = 130;  // as shells say of a program that SIGINT ended

extern "C" void onSignal(int) {
    interrupt();
}

/// Listens to the signals that ask for an end.
class Signals {
public:
    Signals() {
        struct sigaction action {};
        action.sa_handler = onSignal;  // and no restart of what it interrupts
        for (int i = 0; i < kCount; ++i) ::sigaction(kSignals[i], &action, &former_[i]);
    }
    ~Signals() {
        for (int i = 0; i < kCount; ++i) ::sigaction(kSignals[i], &former_[i], nullptr);
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

private:
    static constexpr int kCount = 2;
    static constexpr int kSignals[kCount] = {SIGINT, SIGTERM};
    struct sigaction former_[kCount];
};

/// A folder of this run's own for files that are being written. It goes with the object; those of
/// runs that were killed are removed when it comes.
class Scratch {
public:
    explicit Scratch(const fs::path& above) {
        fs::create_directories(above);
        removeLeft(above);
        std::random_device random;
        char name[24];
        std::snprintf(name, sizeof name, "run-%08x%08x", random(), random());
        path_ = above / name;
        fs::create_directory(path_);
        lock_ = base::FileLock::take(lockOf(path_));
    }
    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const fs::path& path() const { return path_; }

private:
    static std::string lockOf(const fs::path& folder) { return base::textOf(folder / "lock"); }

    static void removeLeft(const fs::path& above) {
        std::error_code ignored;
        for (fs::directory_iterator entry(above, ignored), end; !ignored && entry != end;
             entry.increment(ignored)) {
            std::error_code kept;
            const std::string lock = lockOf(entry->path());
            // One without its lock is only just being made.
            if (!entry->path().filename().string().starts_with("run-") ||
                !fs::exists(base::pathFrom(lock), kept) || !base::FileLock::take(lock))
                continue;
            fs::remove_all(entry->path(), kept);
        }
    }

    fs::path path_;
    std::optional<base::FileLock> lock_;
};

/// A hash of what decides about results beside the files that are read.
std::string hashOfOptions(const BatchOptions& options) {
    const Job& job = options.job;
    const Json all{TESSERA_VERSION, hashOfText(job.script), job.script.empty(), job.maxSteps,
                   job.checkTarget, job.checksSource,       job.revision,       job.database,
                   options.exports, job.searchFolders};
    return hashOfText(all.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string secondsText(double seconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3g s", seconds);
    return text;
}

class Batch {
public:
    explicit Batch(const BatchOptions& options)
        : options_(options), tree_(options.in, options.list) {
        folders_.in = tree_.root();
        folders_.out = base::pathFrom(options.out);
        std::error_code ignored;
        if (fs::equivalent(folders_.in, folders_.out, ignored))
            throw std::runtime_error(
                "the results would replace what is read: IN and OUT are "
                "the same folder");
        fs::create_directories(folders_.out);
        tree_.leaveOut(folders_.out);
        kept_ = folders_.out / kBatchFolder;
        folders_.stamps = kept_ / "stamps";
        if (!options.exports) folders_.out.clear();
        if (options.reportPath.empty()) return;
        report_ = base::openFile(base::pathFrom(options.reportPath), true);
        if (!report_)
            throw std::system_error(errno, std::generic_category(),
                                    "cannot write " + options.reportPath);
    }

    int run() {
        const Scratch scratch(kept_);
        folders_.scratch = scratch.path();
        while (tree_.next()) ++files_;
        tree_.rewind();
        const Signals signals;
        {
            BatchProgress progress(files_);
            progress_ = &progress;
            doFiles();
        }
        for (const std::string& sentence : tree_.unreadable())
            std::fprintf(stderr, "kilnbatch: %s\n", sentence.c_str());
        return finish();
    }

private:
    void doFiles() {
        Host host;
        for (const std::string& refusal : loadPlugins(""))
            std::fprintf(stderr, "kilnbatch: %s\n", refusal.c_str());
        const std::string hash = hashOfOptions(options_);
        const auto next = [&](Workers::Task& task) {
            const std::optional<fs::path> path = tree_.next();
            if (path) task.name = base::genericTextOf(*path);
            return path.has_value();
        };
        const auto work = [&](const Workers::Task& task) {
            return doFile(host.core, folders_, options_.job, hash, task.name, task.place)
                .dump(-1, ' ', false, Json::error_handler_t::replace);
        };
        const auto report = [&](const Workers::Task& task, const Ended& ended) {
            note(task.name, ended);
        };
        const auto pause = [&] {
            progress_->refresh();
            return wasInterrupted();
        };
        Workers(options_.jobs, options_.limits).run(next, work, report, pause);
    }

    void note(const std::string& name, const Ended& ended) {
        Json result = resultOf(ended);
        const bool isFailure = result["result"] == "failed";
        // What an interruption ended is neither done nor a failure: it is left for the next run.
        if (isFailure && wasInterrupted()) return;
        ++counts_[result["result"].get<std::string>()];
        const int errors = result.value("errors", 0);
        if (errors > 0) ++withErrors_;
        result["file"] = base::validUtf8(name);
        result["seconds"] = ended.seconds;
        result["peakBytes"] = ended.peakBytes;
        if (report_) {
            const std::string line = result.dump(-1, ' ', false, Json::error_handler_t::replace);
            if (std::fprintf(report_.get(), "%s\n", line.c_str()) < 0 ||
                std::fflush(report_.get()) != 0)
                reportIsWhole_ = false;
        }
        progress_->done(lineOf(name, result, ended), isFailure);
    }

    Json resultOf(const Ended& ended) const {
        const auto failed = [](const char* cause, const std::string& reason) {
            return Json{{"result", "failed"}, {"cause", cause}, {"reason", reason}};
        };
        switch (ended.how) {
            case Ended::How::kTookTime:
                return failed("time",
                              "it took longer than " + secondsText(options_.limits.seconds));
            case Ended::How::kTookMemory:
                return failed("memory", "it took more memory than " +
                                            std::to_string(options_.limits.bytes >> 20) + " MB");
            case Ended::How::kCrashed:
                return failed("crash", "its process ended: " + ended.reason);
            case Ended::How::kAnswered:
                break;
        }
        Json result = Json::parse(ended.answer, nullptr, false);
        if (result.is_object() && result.contains("result")) return result;
        return failed("crash", "its process ended without a result");
    }

    static std::string lineOf(const std::string& name, const Json& result, const Ended& ended) {
        std::string line = result["result"].get<std::string>() + ' ' + name;
        if (result.contains("reason")) line += ": " + result["reason"].get<std::string>();
        if (result.contains("errors"))
            line += ": " + std::to_string(result["errors"].get<int>()) + " errors, " +
                    std::to_string(result["warnings"].get<int>()) + " warnings, " +
                    std::to_string(result["hints"].get<int>()) + " hints";
        return line + " (" + secondsText(ended.seconds) + ')';
    }

    int finish() {
        const std::size_t failures = counts_["failed"];
        const std::size_t all = counts_["done"] + counts_["unchanged"] + failures;
        std::printf("%zu files: %zu done, %zu unchanged, %zu failed", all, counts_["done"],
                    counts_["unchanged"], failures);
        if (!options_.job.checkTarget.empty()) std::printf(", %zu with errors", withErrors_);
        std::printf(", %s\n", clockText(seconds()).c_str());
        if (wasInterrupted()) {
            std::printf("interrupted: %zu files are left for the next run\n", files_ - all);
            return kInterruptedStatus;
        }
        if (report_ && (std::fclose(report_.release()) != 0 || !reportIsWhole_)) {
            std::fprintf(stderr, "kilnbatch: cannot write %s\n", options_.reportPath.c_str());
            return 1;
        }
        return failures > 0 || withErrors_ > 0 || !tree_.unreadable().empty() ? 1 : 0;
    }

    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun_).count();
    }

    const BatchOptions& options_;
    FileTree tree_;
    BatchFolders folders_;
    fs::path kept_;  ///< what the batch keeps for itself
    base::File report_;
    bool reportIsWhole_ = true;
    BatchProgress* progress_ = nullptr;
    std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
    std::size_t files_ = 0;
    std::map<std::string, std::size_t> counts_;  ///< by result
    std::size_t withErrors_ = 0;
};

}  // namespace

int runBatch(const BatchOptions& options) {
    return Batch(options).run();
}

}  // namespace kilnbatch
