#include "benches.h"

#include <benchmark/benchmark.h>
#include <quillon/fltbytestring.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>
#include <quillon/fltstream.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::size_t kRecords = 1'000'000;
constexpr std::size_t kFileSize = 100'000'000;
constexpr std::size_t kBufferSize = 1 << 16;  // as the stream's own files have

/// A file for one run, already as long as it will get, so that no run pays for new disk blocks.
class OutputFile {
public:
    OutputFile() : file_(std::tmpfile()) { std::setvbuf(file_, nullptr, _IOFBF, kBufferSize); }
    ~OutputFile() { std::fclose(file_); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::FILE* rewound() {
        std::rewind(file_);
        return file_;
    }

private:
    std::FILE* file_;
};

std::vector<std::vector<std::uint8_t>> readyBytes() {
    std::vector<std::vector<std::uint8_t>> all;
    FltToken token;
    for (const auto& record : makeMix()) {
        record->writeToken(token, 1580);
        token.finish();
        all.emplace_back(token.data(), token.data() + token.length());
    }
    return all;
}

void writeRecords(benchmark::State& state, bool named) {
    const auto mix = makeMix();
    OutputFile file;
    const auto writeAll = [&] {
        FltStream stream;
        stream.attach(file.rewound(), 1580);
        for (std::size_t i = 0, j = 0; i < kRecords; ++i, j = j + 1 == mix.size() ? 0 : j + 1) {
            if (!named) mix[j]->id()[0] = 0;
            mix[j]->write(stream);
        }
        if (!stream.close()) state.SkipWithError("the file takes no more");
    };
    writeAll();
    for (auto _ : state) writeAll();
}

void writeReadyBytes(benchmark::State& state) {
    const auto records = readyBytes();
    OutputFile file;
    const auto writeAll = [&] {
        std::FILE* out = file.rewound();
        for (std::size_t i = 0, j = 0; i < kRecords; ++i, j = j + 1 == records.size() ? 0 : j + 1)
            benchmark::DoNotOptimize(std::fwrite(records[j].data(), 1, records[j].size(), out));
        if (std::fflush(out) != 0) state.SkipWithError("the file takes no more");
    };
    writeAll();
    for (auto _ : state) writeAll();
}

const std::vector<std::uint8_t>& largeFile() {
    static const std::vector<std::uint8_t> bytes = [] {
        std::vector<std::uint8_t> made;
        made.reserve(kFileSize);
        FltFileHeader header;
        FltToken token;
        header.writeToken(token, 1580);
        token.finish();
        made.insert(made.end(), token.data(), token.data() + token.length());
        const auto records = readyBytes();
        for (std::size_t i = 0; made.size() + records[i].size() <= kFileSize;
             i = (i + 1) % records.size())
            made.insert(made.end(), records[i].begin(), records[i].end());
        return made;
    }();
    return bytes;
}

void readLibrary(benchmark::State& state) {
    const auto& bytes = largeFile();
    std::array<std::unique_ptr<FltRecord>, 128> classes;
    for (std::uint16_t opcode = 0; std::size_t{opcode} < classes.size(); ++opcode)
        classes[opcode] = fltCreateRecord(opcode);
    for (auto _ : state) {
        FltFileReader reader(bytes);
        while (reader.next())
            if (reader.opcode() < classes.size() && classes[reader.opcode()]) {
                classes[reader.opcode()]->readFromFile(&reader.token());
                benchmark::ClobberMemory();
            }
    }
}

void walkLengths(benchmark::State& state) {
    const auto& bytes = largeFile();
    for (auto _ : state) {
        std::size_t records = 0;
        for (std::size_t i = 0; i + 4 <= bytes.size(); ++records)
            i += static_cast<std::size_t>(bytes[i + 2] << 8 | bytes[i + 3]);
        benchmark::DoNotOptimize(records);
    }
}

void copyMemory(benchmark::State& state) {
    const auto& bytes = largeFile();
    std::vector<std::uint8_t> target(bytes.size());
    for (auto _ : state) {
        std::memcpy(target.data(), bytes.data(), bytes.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
}

void lookUpNames(benchmark::State& state) {
    std::uint16_t opcode = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(fltOpcodeName(opcode));
        opcode = static_cast<std::uint16_t>((opcode + 37) % 130);
    }
}

// A word at a time into the middle of a long text.
void type(benchmark::State& state) {
    constexpr std::int32_t kLength = 100'000;
    FltBytestring text;
    text.resize(kLength);
    std::memset(text.contiguous(), ' ', kLength);
    std::int32_t place = kLength / 2;
    for (auto _ : state) {
        text.insert(place++, 1, "x");
        if (text.size() == 2 * kLength) {
            text.erase(kLength / 2, kLength);
            place = kLength / 2;
        }
    }
}

}  // namespace

void registerFileBenches() {
    constexpr auto kMs = benchmark::kMillisecond;
    const auto add = [](const char* name, auto function) {
        return benchmark::RegisterBenchmark(name, function);
    };
    add("write a million records/named/library", [](auto& state) {
        writeRecords(state, true);
    })->Unit(kMs);
    add("write a million records/named/fwrite", writeReadyBytes)->Unit(kMs);
    add("write a million records/to be named/library", [](auto& state) {
        writeRecords(state, false);
    })->Unit(kMs);
    add("write a million records/to be named/fwrite", writeReadyBytes)->Unit(kMs);
    add("read 100 MB/library", readLibrary)->Unit(kMs);
    add("read 100 MB/walk", walkLengths)->Unit(kMs);
    add("read 100 MB/memcpy", copyMemory)->Unit(kMs);
    add("opcode name", lookUpNames);
    add("type one byte into 100,000", type);
}
