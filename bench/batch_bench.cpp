// kilnbatch over a city of many files: what a file costs beyond the bare work, what a second
// processor gains, and what the batch itself has in memory.
#include "cities.h"
#include "ownprocess.h"
#include "table.h"

#include <batch.h>
#include <plugins.h>

#include <base/paths.h>
#include <kiln/host/host.h>
#include <script/engine.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using bench::inOwnProcess;
using bench::Measures;

constexpr double kMostBeyond = 5;          // milliseconds a file
constexpr double kLeastGain = 1.8;         // of two jobs
constexpr double kMostMemoryGrowth = 1.1;  // of the batch itself, however many files there are
constexpr double kMilliseconds = 1000;
constexpr double kMegabyte = 1 << 20;

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Processor time of this process and of those that it has waited for.
double processorSeconds() {
    double all = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used{};
        ::getrusage(who, &used);
        for (const timeval& time : {used.ru_utime, used.ru_stime})
            all += static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    }
    return all;
}

/// The time on the wall with this process's peak memory, and the processors' time.
Measures measured(double begun) {
    bench::Measure wall = bench::Clock().measured();
    wall.seconds = seconds() - begun;
    bench::Measure work;
    work.seconds = processorSeconds();
    return {wall, work, {}};
}

Measures batch(const fs::path& city, const fs::path& out, unsigned jobs) {
    return inOwnProcess([&] {
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        kilnbatch::BatchOptions options;
        options.in = base::textOf(city);
        options.out = base::textOf(out);
        options.jobs = jobs;
        const double begun = seconds();
        if (kilnbatch::runBatch(options) != 0) bench::fail("the batch failed");
        return measured(begun);
    });
}

/// Importing each file, running an empty script and exporting, in one process.
Measures bare(const bench::Cities& cities, const fs::path& out) {
    return inOwnProcess([&] {
        const std::vector<fs::path> files = cities.databases();
        const auto resultOf = [&](const fs::path& file) {
            return out / file.lexically_relative(cities.many());
        };
        for (const fs::path& file : files) fs::create_directories(resultOf(file).parent_path());
        const double begun = seconds();
        kilnbatch::Host host;
        if (!kilnbatch::loadPlugins("").empty()) bench::fail("plug-ins are missing");
        for (const fs::path& file : files) {
            host.core.newScene();
            if (!host.core.importFile(base::textOf(file))) bench::fail("an import failed");
            script::Engine engine;
            script::addHostVerbs(engine);
            engine.run("", "empty");
            if (!host.core.exportFile(base::textOf(resultOf(file))))
                bench::fail("an export failed");
        }
        return measured(begun);
    });
}

}  // namespace

/// "batch_bench [--json] [FILES]"
int main(int count, char** arguments) {
    bench::Table table("batch_bench", count, arguments);
    const bench::Cities cities("batch_bench", count, arguments);
    const double plain = bare(cities, cities / "bare")[1].seconds;
    const Measures alone = batch(cities.many(), cities / "one", 1);
    const bench::Measure one = alone[0];
    const bench::Measure two = batch(cities.many(), cities / "two", 2)[0];
    const bench::Measure again = batch(cities.many(), cities / "two", 2)[1];
    const bench::Measure few = batch(cities.few(), cities / "out", 2)[0];
    const std::string what = cities.named("files");
    const double all = static_cast<double>(cities.files());
    table.value(what + "bare work a file", plain / all * kMilliseconds, "ms");
    table.value(what + "beyond the bare work a file",
                (alone[1].seconds - plain) / all * kMilliseconds, "ms", kMostBeyond);
    table.ratio(what + "two jobs : one", two.seconds, one.seconds, "s", 1 / kLeastGain);
    table.value(what + "a second run, a file", again.seconds / all * kMilliseconds, "ms");
    table.ratio(what + "memory of the batch : 500 files", two.peak / kMegabyte,
                few.peak / kMegabyte, "MB", kMostMemoryGrowth);
    return table.status();
}
