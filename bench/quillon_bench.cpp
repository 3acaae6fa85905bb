// The record library against the bare limits of the same machine, in the same run.
#include "benches.h"
#include "reporter.h"

#include <benchmark/benchmark.h>

#include <vector>

int main(int count, char** arguments) {
    // Repetitions in random order, so that a busy moment of the machine hits no one side alone.
    // Arguments of the command line come later and win.
    std::vector<char*> all{arguments, arguments + (count > 0 ? 1 : 0)};
    char repetitions[] = "--benchmark_repetitions=7";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char minimum[] = "--benchmark_min_time=0.03";
    all.insert(all.end(), {repetitions, interleaving, minimum});
    all.insert(all.end(), arguments + 1, arguments + count);
    int total = static_cast<int>(all.size());
    benchmark::Initialize(&total, all.data());
    if (benchmark::ReportUnrecognizedArguments(total, all.data())) return 2;

    registerRecordBenches();
    registerFileBenches();
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printTable();
}
