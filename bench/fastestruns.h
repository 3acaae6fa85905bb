// The registered benchmarks of Google's library, run for a table.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "table.h"

namespace bench {

/// Keeps the fastest repetition of each benchmark, in processor time, or in wall time where it asks
/// for that.
class FastestRuns final : public benchmark::BenchmarkReporter {
public:
    /// Runs everything that is registered and named by the command line. The repetitions come in
    /// random order, so that a busy moment of the machine hits no one side alone. Ends the process
    /// where the command line is not understood or a benchmark gives up.
    void run(int count, char** arguments);

    /// For every pair "X/library" and "X/MEASURE" that was run, a row "X : MEASURE" with their
    /// ratio and the bound that `boundOf` returns for the row; then a row for each figure that
    /// stands alone.
    void print(Table& table, double (*boundOf)(const std::string& row)) const;

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override;

private:
    struct Figure {
        double nanoseconds;
        benchmark::TimeUnit unit;
    };

    std::map<std::string, Figure> figures_;
};

}  // namespace bench
