#include "fastestruns.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string_view>

namespace bench {
namespace {

constexpr std::string_view kLibrary = "/library";

double inUnit(double nanoseconds, benchmark::TimeUnit unit) {
    return nanoseconds * 1e-9 * benchmark::GetTimeUnitMultiplier(unit);
}

}  // namespace

void FastestRuns::run(int count, char** arguments) {
    // What the command line says comes later and wins.
    char repetitions[] = "--benchmark_repetitions=7";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char minimum[] = "--benchmark_min_time=0.03";
    std::vector<char*> all{arguments[0], repetitions, interleaving, minimum};
    all.insert(all.end(), arguments + 1, arguments + count);
    int total = static_cast<int>(all.size());
    benchmark::Initialize(&total, all.data());
    if (benchmark::ReportUnrecognizedArguments(total, all.data())) std::exit(2);
    benchmark::RunSpecifiedBenchmarks(this);
}

void FastestRuns::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(),
                         run.error_message.c_str());
            std::exit(2);
        }
        if (run.run_type != Run::RT_Iteration) continue;
        const bool isWall = run.run_name.time_type == "real_time";
        const double seconds = isWall ? run.real_accumulated_time : run.cpu_accumulated_time;
        const double nanoseconds = seconds * 1e9 / static_cast<double>(run.iterations);
        std::string name = run.run_name.function_name;
        if (!run.run_name.args.empty()) name += '/' + run.run_name.args;
        Figure& figure =
            figures_.try_emplace(name, Figure{nanoseconds, run.time_unit}).first->second;
        figure.nanoseconds = std::min(figure.nanoseconds, nanoseconds);
    }
}

void FastestRuns::print(Table& table, double (*boundOf)(const std::string& name)) const {
    std::set<std::string> paired;
    for (const auto& [name, ours] : figures_) {
        if (!name.ends_with(kLibrary)) continue;
        const std::string base = name.substr(0, name.size() - kLibrary.size());
        const auto first = figures_.lower_bound(base + '/');
        for (auto other = first; other != figures_.end() && other->first.starts_with(base + '/');
             ++other) {
            const std::string measure = other->first.substr(base.size() + 1);
            if (other->first == name || measure.find('/') != measure.npos) continue;
            const std::string row = base + " : " + measure;
            table.ratio(row, inUnit(ours.nanoseconds, ours.unit),
                        inUnit(other->second.nanoseconds, ours.unit),
                        benchmark::GetTimeUnitString(ours.unit), boundOf(row));
            paired.insert({name, other->first});
        }
    }
    for (const auto& [name, figure] : figures_)
        if (!paired.contains(name))
            table.value(name, inUnit(figure.nanoseconds, figure.unit),
                        benchmark::GetTimeUnitString(figure.unit));
}

}  // namespace bench
