// Import and export of a large file, against reading and writing its records without a scene, and a
// check of it by all rules against its import.
//
// Every run is a process of its own, so that its peak memory is that of the run.
#include <checks/check.h>
#include <checks/scenesource.h>
#include <interchange/export.h>
#include <interchange/import.h>
#include <kiln/host/host.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltstream.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "ownprocess.h"
#include "raw/rawrecords.h"
#include "table.h"
#include "terrainfile.h"

namespace {

using bench::Clock;
using bench::fail;
using bench::fastest;
using bench::inOwnProcess;
using bench::Measure;
using bench::Measures;

constexpr int kRuns = 9;
constexpr double kMegabyte = 1e6;
constexpr double kMostOfRecords = 4;  // import and export, in processor time
constexpr double kMostOfFile = 6;     // peak memory
constexpr double kMostOfImport = 3;   // a check, in processor time
constexpr double kMostOfScene = 0.5;  // and in peak memory
// More, and the core's own heap would not be worth its code.
constexpr double kMostOfSystemHeap = 1 / 1.2;
constexpr double kMostOfNoHistory = 1.15;
constexpr double kMostOfDoing = 1.5;  // undoing and redoing

const bench::Terrain kTerrain;

class Silence final : public ImpExpReport {
public:
    void Error(const char* message) override { fail(message); }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }
};

/// The records of a file one after the other, those that scenes store decoded by their classes.
template <typename Visit>
void readRecords(std::span<const std::uint8_t> bytes, Visit&& visit) {
    std::array<std::unique_ptr<FltRecord>, 256> records;
    for (std::uint16_t i = 0; std::size_t{i} < records.size(); ++i) records[i] = fltCreateRecord(i);
    FltFileReader reader(bytes);
    while (reader.next()) {
        FltRecord* const record =
            reader.opcode() < records.size() ? records[reader.opcode()].get() : nullptr;
        if (record != nullptr) record->readFromFile(&reader.token());
        visit(record, bytes.subspan(reader.offset(), reader.length()));
    }
}

/// Reads vertices and their lists by straight-line code, and adds their numbers up. On purpose not
/// by the classes: this is the limit that import is measured against.
class Numbers {
public:
    void read(std::span<const std::uint8_t> bytes) {
        if (raw::read(bytes.data(), bytes.size(), vertex_) != 0)
            addVertex();
        else if (raw::read(bytes.data(), bytes.size(), list_) != 0)
            addCorners();
    }

    /// Whether this is all that the file maker wrote.
    bool areComplete() const {
        const std::size_t vertices = kTerrain.vertices();
        return vertices_ == vertices &&
               corners_ == 4 * static_cast<std::size_t>(kTerrain.faces()) &&
               normals_ == static_cast<double>(vertices) &&
               largestOffset_ == bench::Terrain::offsetOf(vertices - 1) && east_ > 6000 &&
               textures_ > 0 && height_ != 0;
    }

private:
    void addVertex() {
        ++vertices_;
        east_ = std::max(east_, vertex_.position.x);
        north_ = std::max(north_, vertex_.position.y);
        height_ += vertex_.position.z;
        normals_ += vertex_.normal.x + vertex_.normal.y + vertex_.normal.z;
        textures_ += vertex_.texture.u + vertex_.texture.v;
        const FltPackedColor& packed = vertex_.packedColor;
        bits_ |= static_cast<std::uint16_t>(vertex_.colorNameIndex) | vertex_.flags |
                 vertex_.colorIndex | packed.alpha | packed.blue | packed.green | packed.red;
    }

    void addCorners() {
        for (const std::uint32_t offset : list_.offsets)
            largestOffset_ = std::max(largestOffset_, offset);
        corners_ += list_.offsets.size();
    }

    FltVertex vertex_;
    FltVertexList list_;

    std::size_t vertices_ = 0, corners_ = 0;
    double east_ = 0, north_ = 0, height_ = 0, normals_ = 0, textures_ = 0;
    std::uint32_t largestOffset_ = 0, bits_ = 0;
};

Measures readAndWrite(const std::string& path, const std::string& copy) {
    const Clock in;
    Numbers numbers;
    const FltFileBytes file = FltFileBytes::load(path);
    readRecords(file.bytes(), [&](const FltRecord* record, std::span<const std::uint8_t> bytes) {
        if (record == nullptr) numbers.read(bytes);
    });
    const Measure reading = in.measured();
    if (!numbers.areComplete()) fail("records are missing");
    const Clock out;
    FltStream stream;
    FltFileReader first(file.bytes());
    if (!first.next() || !stream.open(copy, first.header())) fail("the copy cannot be created");
    readRecords(file.bytes().subspan(first.length()),
                [&](const FltRecord* record, std::span<const std::uint8_t> bytes) {
                    if (record == nullptr) {
                        stream.writeVerbatim(bytes);
                        return;
                    }
                    record->writeToken(stream.token(), stream.revision());
                    stream.writeToken(stream.token());
                });
    if (!stream.close()) fail("the copy cannot be written");
    return {reading, out.measured(), {}};
}

Measures importAndExport(const std::string& path, const std::string& copy, bool smallHeap) {
    kiln::useSmallHeap(smallHeap);
    Interface& host = kiln::Core::create().hostInterface();
    Silence report;
    const Clock in;
    if (interchange::importFile(path.c_str(), report, host) != IMPEXP_SUCCESS) std::_Exit(1);
    const Measure reading = in.measured();
    if (host.GetNodeCount() < kTerrain.faces()) fail("nodes are missing");
    const Clock out;
    if (interchange::exportFile(copy.c_str(), {}, report, host) != IMPEXP_SUCCESS) std::_Exit(1);
    return {reading, out.measured(), {}};
}

/// The import, and with history what it takes to undo and redo it.
Measures importUndoRedo(const std::string& path, bool withHistory) {
    kiln::Core& core = kiln::Core::create();
    Silence report;
    const auto import = [&] {
        const Clock in;
        if (interchange::importFile(path.c_str(), report, core.hostInterface()) != IMPEXP_SUCCESS)
            std::_Exit(1);
        return in.measured();
    };
    if (!withHistory) {
        const kiln::WithoutHistory without;
        return {import(), {}, {}};
    }
    const Measure imported = import();
    const Clock undo;
    if (!core.history().undo() || core.hostInterface().GetNodeCount() > 0) fail("not undone");
    const Measure undone = undo.measured();
    const Clock redo;
    if (!core.history().redo() || core.hostInterface().GetNodeCount() < kTerrain.faces())
        fail("not redone");
    return {imported, undone, redo.measured()};
}

/// A figure of this process, in bytes: "VmRSS", the memory that it has, or "VmHWM", the most it
/// had.
double memoryFigure(const char* name) {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word)
        if (word == std::string(name) + ':') status >> kilobytes;
    return kilobytes * 1024;
}

/// The import of the file with what the scene takes, and the check of it with what that takes more.
Measures importAndCheck(const std::string& path) {
    Interface& host = kiln::Core::create().hostInterface();
    Silence report;
    const double before = memoryFigure("VmRSS");
    const Clock in;
    if (interchange::importFile(path.c_str(), report, host) != IMPEXP_SUCCESS) std::_Exit(1);
    const double importing = in.measured().seconds;
    const double scene = memoryFigure("VmRSS");
    std::ofstream("/proc/self/clear_refs") << 5;  // the peak counts from here on
    const Clock clock;
    const checks::Target target;
    checks::SceneSource source(host);
    checks::Check check(source, target);
    check.finish();
    const double checking = clock.measured().seconds;
    if (check.report().statistics.polygons != static_cast<std::size_t>(kTerrain.faces()))
        fail("polygons are missing");
    return {Measure{importing, scene - before}, Measure{checking, memoryFigure("VmHWM") - scene},
            Measure{}};
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("interchange_bench", count, arguments);
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const std::string name = "interchange_bench-" + std::to_string(getpid());
    const std::string path = (folder / (name + ".flt")).string();
    const std::string copy = (folder / (name + "-out.flt")).string();
    inOwnProcess([&] {
        writeTerrain(kTerrain, path);
        return Measures();
    });
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    std::vector<Measures> bare, whole, withSystemHeap, withHistory, withoutHistory, checked;
    for (int i = 0; i < kRuns; ++i) {
        bench::warmMemory();
        bare.push_back(inOwnProcess([&] { return readAndWrite(path, copy); }));
        bench::warmMemory();
        whole.push_back(inOwnProcess([&] { return importAndExport(path, copy, true); }));
        bench::warmMemory();
        withSystemHeap.push_back(inOwnProcess([&] { return importAndExport(path, copy, false); }));
        bench::warmMemory();
        withHistory.push_back(inOwnProcess([&] { return importUndoRedo(path, true); }));
        bench::warmMemory();
        withoutHistory.push_back(inOwnProcess([&] { return importUndoRedo(path, false); }));
        bench::warmMemory();
        checked.push_back(inOwnProcess([&] { return importAndCheck(path); }));
    }
    std::filesystem::remove(path);
    std::filesystem::remove(copy);
    const Measures records = fastest(bare);
    const Measures scene = fastest(whole);
    const std::string what = std::to_string(kTerrain.faces()) + " faces: ";
    constexpr double kMilliseconds = 1000;
    const auto print = [&](const char* action, std::size_t way, const char* measure) {
        table.ratio(what + action + " : " + measure, scene[way].seconds * kMilliseconds,
                    records[way].seconds * kMilliseconds, "ms", kMostOfRecords);
        table.ratio(what + action + ", peak memory : the file", scene[way].peak / kMegabyte,
                    size / kMegabyte, "MB", kMostOfFile);
    };
    print("import", 0, "read record by record");
    print("export", 1, "write record by record");
    const Measures check = fastest(checked);
    table.ratio(what + "check by all rules : import", check[1].seconds * kMilliseconds,
                check[0].seconds * kMilliseconds, "ms", kMostOfImport);
    table.ratio(what + "check, peak memory : the scene", check[1].peak / kMegabyte,
                check[0].peak / kMegabyte, "MB", kMostOfScene);
    const Measures plain = fastest(withSystemHeap);
    table.ratio(what + "import : with the system's heap", scene[0].seconds * kMilliseconds,
                plain[0].seconds * kMilliseconds, "ms", kMostOfSystemHeap);
    table.ratio(what + "import, peak memory : with the system's heap", scene[0].peak / kMegabyte,
                plain[0].peak / kMegabyte, "MB");
    table.ratio(what + "export : with the system's heap", scene[1].seconds * kMilliseconds,
                plain[1].seconds * kMilliseconds, "ms");
    const Measures undoable = fastest(withHistory);
    const auto printHistory = [&](const char* row, std::size_t run, double measure, double bound) {
        table.ratio(what + row, undoable[run].seconds * kMilliseconds, measure * kMilliseconds,
                    "ms", bound);
    };
    printHistory("import : without history", 0, fastest(withoutHistory)[0].seconds,
                 kMostOfNoHistory);
    printHistory("undoing the import : importing", 1, undoable[0].seconds, kMostOfDoing);
    printHistory("redoing the import : importing", 2, undoable[0].seconds, kMostOfDoing);
    return table.status();
}
