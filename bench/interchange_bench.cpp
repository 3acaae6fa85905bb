// Import and export of a large file, against reading and writing its records without a scene, and a
// check of it by all rules against its import.
//
// Every run is a process of its own, so that its peak memory is that of the run.
#include <checks/check.h>
#include <checks/scenesource.h>
#include <interchange/export.h>
#include <interchange/import.h>
#include <kiln/host/host.h>
#include <quillon/fltcomment.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltobject.h>
#include <quillon/fltstream.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
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

#include "raw/rawrecords.h"
#include "table.h"

namespace {

constexpr int kRuns = 9;
constexpr double kMegabyte = 1e6;
constexpr double kMostOfRecords = 4;  // import and export, in processor time
constexpr double kMostOfFile = 6;     // peak memory
constexpr double kMostOfImport = 3;   // a check, in processor time
constexpr double kMostOfScene = 0.5;  // and in peak memory
// More, and the core's own heap would not be worth its code.
constexpr double kMostOfSystemHeap = 1 / 1.2;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "interchange_bench: %s\n", what);
    std::_Exit(1);
}

// ------------------------------------------------------------ the file

constexpr int kGroups = 100;
constexpr int kObjectsPerGroup = 120;
constexpr int kColumns = 6;  // of quadrilaterals in an object
constexpr int kRows = 7;
constexpr int kFaces = kGroups * kObjectsPerGroup * kColumns * kRows;
constexpr std::uint32_t kVerticesPerObject = (kColumns + 1) * (kRows + 1);
constexpr auto kVertices = std::size_t{kGroups} * kObjectsPerGroup * kVerticesPerObject;

FltVertex newVertex() {
    return FltVertex(true, true);
}

/// Where a vertex stands, from the start of the palette.
std::uint32_t offsetOf(std::size_t vertex) {
    static const std::uint32_t length = fltWrittenLength(newVertex(), FltHeader().revision());
    return FltVertexPalette().length + static_cast<std::uint32_t>(vertex) * length;
}

/// Patches of terrain, textured and with normals; neighbouring faces share their vertices.
class FileMaker {
public:
    explicit FileMaker(const std::string& path) {
        if (!stream_.open(path)) fail("the file cannot be created");
    }

    void make() {
        palette();
        stream_.writeControl(kFltPushLevel);
        for (int group = 0; group < kGroups; ++group) {
            FltGroup record;
            record.write(stream_);
            FltComment("A part of the terrain").write(stream_);
            stream_.writeControl(kFltPushLevel);
            for (int i = 0; i < kObjectsPerGroup; ++i) object();
            stream_.writeControl(kFltPopLevel);
        }
        stream_.writeControl(kFltPopLevel);
        if (!stream_.close()) fail("the file cannot be written");
    }

private:
    void palette() {
        FltVertexPalette record;
        record.length = offsetOf(kVertices);
        record.write(stream_);
        for (int patch = 0; patch < kGroups * kObjectsPerGroup; ++patch) {
            for (int row = 0; row <= kRows; ++row) {
                for (int column = 0; column <= kColumns; ++column) vertex(patch, row, column);
            }
        }
    }

    void vertex(int patch, int row, int column) {
        const double x = 10.0 * (column + kColumns * (patch % 110));
        const double y = 10.0 * (row + kRows * (patch / 110));
        FltVertex record = newVertex();
        record.colorNameIndex = 0;
        record.position = {x, y, std::sin(x / 100) * std::cos(y / 70)};
        record.normal = {0, 0, 1};
        record.texture = {static_cast<float>(column) / kColumns, static_cast<float>(row) / kRows};
        record.write(stream_);
    }

    void object() {
        FltObject record;
        record.write(stream_);
        stream_.writeControl(kFltPushLevel);
        for (std::uint32_t row = 0; row < kRows; ++row) {
            for (std::uint32_t column = 0; column < kColumns; ++column) face(row, column);
        }
        stream_.writeControl(kFltPopLevel);
        firstVertex_ += kVerticesPerObject;
    }

    void face(std::uint32_t row, std::uint32_t column) {
        FltFace record;
        record.write(stream_);
        stream_.writeControl(kFltPushLevel);
        FltVertexList list;
        const std::uint32_t start = firstVertex_ + row * (kColumns + 1) + column;
        for (const std::uint32_t corner :
             {start, start + 1, start + kColumns + 2, start + kColumns + 1}) {
            list.offsets.push_back(offsetOf(corner));
        }
        list.write(stream_);
        stream_.writeControl(kFltPopLevel);
    }

    FltStream stream_;
    std::uint32_t firstVertex_ = 0;
};

// ------------------------------------------------------------ what is measured

class Silence final : public ImpExpReport {
public:
    void Error(const char* message) override { fail(message); }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }
};

struct Measure {
    double seconds = 0;
    double peak = 0;  // bytes
};

/// The records of a file one after the other, those that scenes store decoded by their classes.
template <typename Visit>
void readRecords(std::span<const std::uint8_t> bytes, Visit&& visit) {
    std::array<std::unique_ptr<FltRecord>, 256> records;
    for (std::uint16_t i = 0; i < records.size(); ++i) records[i] = fltCreateRecord(i);
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
        return vertices_ == kVertices && corners_ == 4 * std::size_t{kFaces} &&
               normals_ == static_cast<double>(kVertices) &&
               largestOffset_ == offsetOf(kVertices - 1) && east_ > 6000 && textures_ > 0 &&
               height_ != 0;
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

/// Processor time: waiting for others on a busy machine does not count.
class Clock {
public:
    Measure measured() const {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return {now() - start_, static_cast<double>(usage.ru_maxrss) * 1024};
    }

private:
    static double now() {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    }

    double start_ = now();
};

using Measures = std::array<Measure, 2>;  // the way in and the way out

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
    return {reading, out.measured()};
}

Measures importAndExport(const std::string& path, const std::string& copy, bool smallHeap) {
    kiln::useSmallHeap(smallHeap);
    Interface& host = kiln::Core::create().hostInterface();
    Silence report;
    const Clock in;
    if (interchange::importFile(path.c_str(), report, host) != IMPEXP_SUCCESS) std::_Exit(1);
    const Measure reading = in.measured();
    if (host.GetNodeCount() < kFaces) fail("nodes are missing");
    const Clock out;
    if (interchange::exportFile(copy.c_str(), {}, report, host) != IMPEXP_SUCCESS) std::_Exit(1);
    return {reading, out.measured()};
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
    if (check.report().statistics.polygons != kFaces) fail("polygons are missing");
    return {Measure{importing, scene - before}, Measure{checking, memoryFigure("VmHWM") - scene}};
}

/// Runs `work` in a process of its own.
template <typename Work>
Measures inOwnProcess(Work&& work) {
    int ends[2];
    if (pipe(ends) != 0) fail("no pipe");
    const pid_t child = fork();
    if (child < 0) fail("no process");
    if (child == 0) {
        const Measures measures = work();
        const bool sent = write(ends[1], &measures, sizeof measures) == sizeof measures;
        std::_Exit(sent ? 0 : 1);
    }
    close(ends[1]);
    Measures measures;
    const bool received = read(ends[0], &measures, sizeof measures) == sizeof measures;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!received || status != 0) fail("a run failed");
    return measures;
}

/// Has the system hold enough memory ready for a run, in large pages and in small ones. A virtual
/// machine may have given unused memory back to its host, and to get it again takes longer than all
/// that is measured here.
Measures warmMemory() {
    constexpr std::size_t kEnough = std::size_t{600} << 20, kPage = 4096;
    for (const int advice : {MADV_NOHUGEPAGE, MADV_HUGEPAGE}) {
        void* const memory =
            mmap(nullptr, kEnough, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) fail("no memory");
        madvise(memory, kEnough, advice);
        for (std::size_t i = 0; i < kEnough; i += kPage) static_cast<char*>(memory)[i] = 1;
    }
    return {};
}

/// The fastest run, by way: others were held up by something else on the machine.
Measures fastest(const std::vector<Measures>& runs) {
    Measures result;
    for (std::size_t way = 0; way < result.size(); ++way) {
        result[way] = std::ranges::min(
            runs, {}, [way](const Measures& run) { return run[way].seconds; })[way];
    }
    return result;
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("interchange_bench", count, arguments);
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const std::string name = "interchange_bench-" + std::to_string(getpid());
    const std::string path = (folder / (name + ".flt")).string();
    const std::string copy = (folder / (name + "-out.flt")).string();
    inOwnProcess([&] {
        FileMaker(path).make();
        return Measures();
    });
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    std::vector<Measures> bare, whole, withSystemHeap, checked;
    for (int i = 0; i < kRuns; ++i) {
        inOwnProcess(warmMemory);
        bare.push_back(inOwnProcess([&] { return readAndWrite(path, copy); }));
        inOwnProcess(warmMemory);
        whole.push_back(inOwnProcess([&] { return importAndExport(path, copy, true); }));
        inOwnProcess(warmMemory);
        withSystemHeap.push_back(inOwnProcess([&] { return importAndExport(path, copy, false); }));
        inOwnProcess(warmMemory);
        checked.push_back(inOwnProcess([&] { return importAndCheck(path); }));
    }
    std::filesystem::remove(path);
    std::filesystem::remove(copy);
    const Measures records = fastest(bare);
    const Measures scene = fastest(whole);
    const std::string what = std::to_string(kFaces) + " faces: ";
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
    return table.status();
}
