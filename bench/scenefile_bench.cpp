// Opening and saving scene files, against the import of the same content.
//
// Every run is a process of its own, so that its peak memory is that of the run.
#include <interchange/import.h>
#include <kiln/host/host.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "ownprocess.h"
#include "table.h"
#include "terrainfile.h"

namespace {

using bench::Clock;
using bench::fail;
using bench::Measure;
using bench::Measures;

constexpr int kRuns = 7;
constexpr double kMegabyte = 1e6;
constexpr double kMilliseconds = 1000;
constexpr double kMostOfImport = 3;   // opening and saving, in processor time
constexpr double kMostOfScene = 2.5;  // peak memory

class Silence final : public ImpExpReport {
public:
    void Error(const char* message) override { fail(message); }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }
};

struct Files {
    std::string flt, scene;
};

/// Import, then save.
Measures importAndSave(const Files& files) {
    kiln::Core& core = kiln::Core::create();
    Silence report;
    const Clock in;
    if (interchange::importFile(files.flt.c_str(), report, core.hostInterface()) != IMPEXP_SUCCESS)
        fail("the file cannot be imported");
    const Measure import = in.measured();
    const Clock out;
    if (!core.saveScene(files.scene)) fail("the scene cannot be saved");
    return {import, out.measured()};
}

/// Opening, twice the same figure.
Measures open(const Files& files) {
    kiln::Core& core = kiln::Core::create();
    const Clock in;
    if (!core.loadScene(files.scene)) fail("the scene cannot be opened");
    const Measure opening = in.measured();
    return {opening, opening};
}

void compare(bench::Table& table, const bench::Terrain& terrain, const Files& files) {
    bench::inOwnProcess([&] {
        writeTerrain(terrain, files.flt);
        return Measures();
    });
    std::vector<Measures> saves, opens;
    for (int i = 0; i < kRuns; ++i) {
        bench::warmMemory();
        saves.push_back(bench::inOwnProcess([&] { return importAndSave(files); }));
        bench::warmMemory();
        opens.push_back(bench::inOwnProcess([&] { return open(files); }));
    }
    const Measures through = bench::fastest(saves);
    const Measure &import = through[0], &save = through[1];
    const Measure opening = bench::fastest(opens)[0];
    const std::string what = std::to_string(terrain.faces()) + " faces: ";
    const auto row = [&](const char* name, const Measure& measure) {
        table.ratio(what + name + " : import", measure.seconds * kMilliseconds,
                    import.seconds * kMilliseconds, "ms", kMostOfImport);
        table.ratio(what + name + ", peak memory : the scene", measure.peak / kMegabyte,
                    opening.present / kMegabyte, "MB", kMostOfScene);
    };
    row("open", opening);
    row("save", save);
    table.value(what + "the scene file",
                static_cast<double>(std::filesystem::file_size(files.scene)) / kMegabyte, "MB");
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("scenefile_bench", count, arguments);
    const std::string name =
        (std::filesystem::temp_directory_path() / ("scenefile_bench-" + std::to_string(getpid())))
            .string();
    const Files files{name + ".flt", name + ".kiln"};
    for (const int groups : {20, 100}) compare(table, {groups}, files);
    std::filesystem::remove(files.flt);
    std::filesystem::remove(files.scene);
    return table.status();
}
