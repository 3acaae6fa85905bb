// The table at the end.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Prints the runs as usual and keeps the fastest repetition of each, for the comparisons.
class TableReporter : public benchmark::ConsoleReporter {
public:
    TableReporter() : ConsoleReporter(OO_None) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    /// Prints "X/library" against "X/raw" (or another suffix) for every pair that was run, with
    /// their ratio, and the figures that stand alone.
    void printTable() const;

private:
    struct Figure {
        double nanoseconds = 0;
        double bytesPerSecond = 0;  ///< 0 when the run does not count bytes
    };
    const Figure* find(const std::string& name) const;

    std::map<std::string, Figure> figures_;
};
