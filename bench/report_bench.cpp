// `fltool report` over a city of many files: against checking them, what it has in memory, and how
// long its page takes to open.
#include "ownprocess.h"
#include "table.h"

#include <city.h>
#include <commands.h>
#include <report/report.h>

#include <base/paths.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>

namespace {

namespace fs = std::filesystem;
using bench::inOwnProcess;
using bench::Measures;

constexpr std::size_t kFiles = 10000;
constexpr std::size_t kFewFiles = 500;
constexpr double kMostBeyondChecks = 2;
constexpr double kMostOfAModel = 2048;  // bytes in memory, of each model more
constexpr double kMostToOpen = 2;       // seconds

/// What is written into it is gone.
class Nowhere final : public std::ostream {
public:
    Nowhere() : std::ostream(nullptr) {}
};

Measures checking(const fs::path& city) {
    return inOwnProcess([&] {
        Nowhere nowhere;
        fltool::CheckOptions options;
        options.target = "general";
        const bench::Clock clock;
        for (const auto& entry : fs::recursive_directory_iterator(city)) {
            if (entry.path().extension() != ".flt") continue;
            options.file = base::textOf(entry.path());
            fltool::check(options, nowhere);
        }
        return Measures{clock.measured()};
    });
}

Measures report(const fs::path& city, const fs::path& page) {
    return inOwnProcess([&] {
        Nowhere nowhere;
        fltool::ReportOptions options;
        options.paths = {base::textOf(city)};
        options.output = base::textOf(page);
        const bench::Clock clock;
        fltool::report(options, nowhere, nowhere);
        return Measures{clock.measured()};
    });
}

/// Seconds until a browser that runs has loaded and drawn the page.
double openingTime(const fs::path& page) {
    const std::string command = std::string(REPORT_OPENER) + " \"" + page.string() + '"';
    std::FILE* const opener = ::popen(command.c_str(), "r");
    double seconds = 0;
    if (opener == nullptr || std::fscanf(opener, "%lf", &seconds) != 1 || ::pclose(opener) != 0)
        bench::fail("the page could not be opened");
    return seconds;
}

}  // namespace

/// "report_bench [--json] [FILES]"
int main(int count, char** arguments) {
    bench::Table table("report_bench", count, arguments);
    const std::size_t files = count > 1 ? std::strtoul(arguments[1], nullptr, 10) : kFiles;
    const fs::path folder =
        fs::temp_directory_path() / ("report_bench-" + std::to_string(::getpid()));
    inOwnProcess([&] {
        samples::writeCity(folder / "city", files);
        samples::writeCity(folder / "few", kFewFiles);
        return Measures();
    });
    const bench::Measure checked = checking(folder / "city")[0];
    const bench::Measure all = report(folder / "city", folder / "city.html")[0];
    const bench::Measure few = report(folder / "few", folder / "few.html")[0];
    const double seconds = openingTime(folder / "city.html");
    fs::remove_all(folder);
    const std::string what = std::to_string(files) + " models: ";
    table.ratio(what + "report : checking them", all.seconds, checked.seconds, "s",
                kMostBeyondChecks);
    if (files > kFewFiles)
        table.value(what + "memory of each beyond 500",
                    (all.peak - few.peak) / static_cast<double>(files - kFewFiles), "bytes",
                    kMostOfAModel);
    table.value(what + "opening the page", seconds, "s", kMostToOpen);
    return table.status();
}
