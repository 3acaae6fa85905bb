// Opening and saving scene files, against the import of the same content, and the pauses of a scene
// that is saved aside.
//
// Every run is a process of its own, so that its peak memory is that of the run.
#include <interchange/import.h>
#include <kiln/host/host.h>
#include <workbench/autosave.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
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
constexpr double kFrame = 1000.0 / 60;

class Silence final : public ImpExpReport {
public:
    void Error(const char* message) override { fail(message); }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }
};

struct Files {
    std::string flt, scene, aside;  // and a folder
};

void import(const Files& files, kiln::Core& core) {
    Silence report;
    if (interchange::importFile(files.flt.c_str(), report, core.hostInterface()) != IMPEXP_SUCCESS)
        fail("the file cannot be imported");
}

/// Import, then save.
Measures importAndSave(const Files& files) {
    kiln::Core& core = kiln::Core::create();
    const Clock in;
    import(files, core);
    const Measure importing = in.measured();
    const Clock out;
    if (!core.saveScene(files.scene)) fail("the scene cannot be saved");
    return {importing, out.measured()};
}

/// Opening, twice the same figure.
Measures open(const Files& files) {
    kiln::Core& core = kiln::Core::create();
    const Clock in;
    if (!core.loadScene(files.scene)) fail("the scene cannot be opened");
    const Measure opening = in.measured();
    return {opening, opening};
}

bool hasScene(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".kiln") return true;
    return false;
}

/// Import, then the longest pause while the scene is saved aside: wall time, as
/// the user waits for it.
Measures saveAside(const Files& files) {
    using workbench::AutoSave;
    using Time = std::chrono::steady_clock;
    kiln::Core& core = kiln::Core::create();
    import(files, core);
    core.setModified(true);
    AutoSave save(core, files.aside);
    Measure longest;
    bool more = true;
    for (int step = 0; more || !hasScene(files.aside); ++step) {
        const auto start = Time::now();
        more = save.step({AutoSave::Time(step), AutoSave::kPause, false}, "terrain");
        const std::chrono::duration<double> time = Time::now() - start;
        longest.seconds = std::max(longest.seconds, time.count());
    }
    return {longest};
}

void compare(bench::Table& table, const bench::Terrain& terrain, const Files& files) {
    bench::inOwnProcess([&] {
        writeTerrain(terrain, files.flt);
        return Measures();
    });
    std::vector<Measures> saves, opens, asides;
    for (int i = 0; i < kRuns; ++i) {
        bench::warmMemory();
        saves.push_back(bench::inOwnProcess([&] { return importAndSave(files); }));
        bench::warmMemory();
        opens.push_back(bench::inOwnProcess([&] { return open(files); }));
        asides.push_back(bench::inOwnProcess([&] { return saveAside(files); }));
        std::filesystem::remove_all(files.aside);
    }
    const Measures through = bench::fastest(saves);
    const Measure &import = through[0], &save = through[1];
    const Measure opening = bench::fastest(opens)[0];
    const Measures aside = bench::fastest(asides);
    const std::string what = std::to_string(terrain.faces()) + " faces: ";
    const auto row = [&](const char* name, const Measure& measure) {
        table.ratio(what + name + " : import", measure.seconds * kMilliseconds,
                    import.seconds * kMilliseconds, "ms", kMostOfImport);
        table.ratio(what + name + ", peak memory : the scene", measure.peak / kMegabyte,
                    opening.present / kMegabyte, "MB", kMostOfScene);
    };
    row("open", opening);
    row("save", save);
    table.ratio(what + "the longest pause of saving aside : a frame",
                aside[0].seconds * kMilliseconds, kFrame, "ms", 1);
    table.value(what + "the scene file",
                static_cast<double>(std::filesystem::file_size(files.scene)) / kMegabyte, "MB");
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("scenefile_bench", count, arguments);
    const std::string name =
        (std::filesystem::temp_directory_path() / ("scenefile_bench-" + std::to_string(getpid())))
            .string();
    const Files files{name + ".flt", name + ".kiln", name + "-aside"};
    for (const int groups : {20, 100}) compare(table, {groups}, files);
    std::filesystem::remove(files.flt);
    std::filesystem::remove(files.scene);
    return table.status();
}
