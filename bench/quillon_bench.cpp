// The record library against the bare limits of the same machine, in the same run.
#include "benches.h"
#include "fastestruns.h"

namespace {

/// The most that the library may cost, as a multiple of its measure.
double boundOf(const std::string& name) {
    if (name.starts_with("encode/") || name.starts_with("decode/")) return 1.3;
    if (name.find("/mix of ") != name.npos) return 1.3;
    if (name.starts_with("write a million records/")) return 1.5;
    return bench::kNoBound;
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("quillon_bench", count, arguments);
    registerRecordBenches();
    registerFileBenches();
    bench::FastestRuns runs;
    runs.run(count, arguments);
    runs.print(table, boundOf);
    return table.status();
}
