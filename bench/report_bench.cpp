// `fltool report` over a city of many files: against checking them, what it has in memory, and how
// long its page takes to open.
#include "cities.h"
#include "ownprocess.h"
#include "table.h"

#include <commands.h>
#include <report/report.h>

#include <base/paths.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>

namespace {

namespace fs = std::filesystem;
using bench::inOwnProcess;
using bench::Measures;

constexpr double kMostBeyondChecks = 2;
constexpr double kMostOfAModel = 2048;  // bytes in memory, of each model more
constexpr double kMostToOpen = 2;       // seconds

/// What is written into it is gone.
class Nowhere final : public std::ostream {
public:
    Nowhere() : std::ostream(nullptr) {}
};

Measures checking(const bench::Cities& cities) {
    return inOwnProcess([&] {
        Nowhere nowhere;
        fltool::CheckOptions options;
        options.target = "general";
        const bench::Clock clock;
        for (const fs::path& file : cities.databases()) {
            options.file = base::textOf(file);
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
    const bench::Cities cities("report_bench", count, arguments);
    const bench::Measure checked = checking(cities)[0];
    const bench::Measure all = report(cities.many(), cities / "city.html")[0];
    const bench::Measure few = report(cities.few(), cities / "few.html")[0];
    const double seconds = openingTime(cities / "city.html");
    const std::string what = cities.named("models");
    table.ratio(what + "report : checking them", all.seconds, checked.seconds, "s",
                kMostBeyondChecks);
    if (cities.files() > bench::Cities::kFewFiles)
        table.value(
            what + "memory of each beyond 500",
            (all.peak - few.peak) / static_cast<double>(cities.files() - bench::Cities::kFewFiles),
            "bytes", kMostOfAModel);
    table.value(what + "opening the page", seconds, "s", kMostToOpen);
    return table.status();
}
