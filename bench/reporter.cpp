#include "reporter.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

/// The most that the library may cost, as a multiple of its measure; 0 where none is set.
double boundOf(std::string_view name) {
    if (name.starts_with("encode/") || name.starts_with("decode/")) return 1.3;
    if (name.find("/mix of ") != name.npos) return 1.3;
    if (name.starts_with("write a million records/")) return 1.5;
    return 0;
}

constexpr std::string_view kLibrary = "/library";

}  // namespace

bool TableReporter::ReportContext(const Context&) {
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
        const double nanoseconds =
            run.cpu_accumulated_time * 1e9 / static_cast<double>(run.iterations);
        const auto rate = run.counters.find("bytes_per_second");
        const std::string name = run.run_name.function_name;
        const auto place = figures_.try_emplace(name, Figure{nanoseconds, 0}).first;
        place->second.nanoseconds = std::min(place->second.nanoseconds, nanoseconds);
        if (rate != run.counters.end())
            place->second.bytesPerSecond =
                std::max(place->second.bytesPerSecond, static_cast<double>(rate->second));
    }
}

const TableReporter::Figure* TableReporter::find(const std::string& name) const {
    const auto place = figures_.find(name);
    return place == figures_.end() ? nullptr : &place->second;
}

void TableReporter::printTable() const {
    std::printf("%-44s %14s %14s %7s %6s\n", "fastest repetition, processor time", "library ns",
                "measure ns", "ratio", "bound");
    for (const auto& [name, figure] : figures_) {
        if (!name.ends_with(kLibrary)) continue;
        const std::string base = name.substr(0, name.size() - kLibrary.size());
        for (const char* measure : {"raw", "fwrite", "walk", "memcpy"}) {
            const Figure* other = find(base + '/' + measure);
            if (other == nullptr) continue;
            const double ratio = figure.nanoseconds / other->nanoseconds;
            const double bound = boundOf(base);
            char verdict[32] = "";
            if (bound > 0)
                std::snprintf(verdict, sizeof verdict, "%.1f%s", bound,
                              ratio > bound ? "  missed" : "");
            std::printf("%-44s %14.1f %14.1f %7.2f %s\n", (base + " : " + measure).c_str(),
                        figure.nanoseconds, other->nanoseconds, ratio, verdict);
        }
    }
    for (const auto& [name, figure] : figures_) {
        if (figure.bytesPerSecond > 0)
            std::printf("%-44s %14.1f ns %10.2f GB/s\n", name.c_str(), figure.nanoseconds,
                        figure.bytesPerSecond / 1e9);
        else if (name.find("/raw") == std::string::npos && !name.ends_with(kLibrary))
            std::printf("%-44s %14.1f ns\n", name.c_str(), figure.nanoseconds);
    }
}
