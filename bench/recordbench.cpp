#include "benches.h"
#include "raw/rawrecords.h"

#include <benchmark/benchmark.h>
#include <quillon/fltfield.h>
#include <quillon/fltrecordrange.h>
#include <quillon/flttext.h>
#include <quillon/flttoken.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string>

namespace {

constexpr std::uint32_t kRevision = 1580;

/// The longest record that is measured, and the longest object of one, fit into as much.
constexpr std::uint32_t kRoom = 512;
using Buffer = std::array<std::uint8_t, kRoom>;

/// Memory of a page. Both sides of a comparison use the same bytes and the same record, which
/// `Placed` puts into the second half of the page, as the token is; bytes are in the first half of
/// this page or another. A store over the end of a page takes longer than a short record, and a
/// load at the same place of its page as a recent store waits for that one. Where the heap and the
/// stack happen to begin would otherwise make a ratio of 1 one of 3, or of a third.
struct alignas(4096) Page {
    std::array<std::uint8_t, 2048> bytes{};
    std::array<std::byte, 1024> object{};
    FltToken token;
};
Page page;

/// The token, with a block for `kRoom` bytes in the first half of a page.
FltToken& token() {
    static std::vector<std::unique_ptr<std::uint8_t[]>> passedOver;
    const auto isPlaced = [] {
        const auto place = reinterpret_cast<std::uintptr_t>(page.token.data()) % sizeof(Page);
        return page.token.data() != nullptr && place + kRoom <= page.bytes.size();
    };
    page.token.begin(kFltComment);  // in its own block, if bytes were attached
    while (!isPlaced()) {
        page.token.reset();
        passedOver.push_back(std::make_unique<std::uint8_t[]>(kRoom));
        page.token.grow(kRoom);
    }
    return page.token;
}

/// Its block, for what is encoded by hand.
std::uint8_t* room() {
    return token().begin(kFltComment, 0) - FltRecordView::kHeaderSize;
}

/// A vertex of the longest kind.
struct LongVertex : FltVertex {
    static constexpr std::uint16_t kOpcode = kFltVertexWithTextureAndNormal;
    LongVertex() : FltVertex(true, true) {}
};

/// A record with something in it.
template <typename Record>
Record sample() {
    Record record;
    if (char* id = record.id()) fltSetText({id, 8}, "sample");
    if constexpr (std::is_same_v<Record, FltComment>)
        record.setText("Threshold lights, replaced after the storm.");
    if constexpr (std::is_same_v<Record, FltVertexList>) record.offsets = {8, 72, 136, 200};
    if constexpr (std::is_same_v<Record, FltSwitch>) {
        record.setMaskBits(40);
        for (int i = 0; i < 4; ++i) record.maskWords.append(0x0F0F0F0F);
    }
    return record;
}

/// An object in the page.
template <typename Object>
class Placed {
public:
    explicit Placed(Object&& object)
        : object_(*new (page.object.data()) Object(std::move(object))) {
        static_assert(sizeof(Object) <= sizeof page.object);
    }
    ~Placed() { object_.~Object(); }
    Placed(const Placed&) = delete;
    Placed& operator=(const Placed&) = delete;

    Object& operator*() { return object_; }

private:
    Object& object_;
};

// Not through the table of virtual functions, which the other side does not have.
template <typename Record>
void encode(const Record& record, FltToken& to) {
    record.Record::writeToken(to, kRevision);
}
template <typename Record>
void decode(Record& record, FltToken& from) {
    record.Record::readToken(from, kRevision);
}

/// Every field of a record, in order, as bytes that can be compared.
class FieldBytes final : public FltFieldVisitor {
public:
    explicit FieldBytes(const FltRecord& record) { record.visitFields(*this); }
    void integer(const char*, int, std::int64_t value) override { add(&value, sizeof value); }
    void real(const char*, int, double value) override { add(&value, sizeof value); }
    void text(const char*, std::string_view value) override { add(value.data(), value.size()); }
    const std::string& bytes() const { return bytes_; }

private:
    void add(const void* value, std::size_t size) {
        bytes_.append(static_cast<const char*>(value), size).push_back('|');
    }
    std::string bytes_;
};

/// A record's bytes with something different in every field, reserved bytes included.
template <typename Record>
std::vector<std::uint8_t> filledBytes() {
    FltToken token;
    sample<Record>().writeToken(token, kRevision);
    token.finish();
    std::vector<std::uint8_t> bytes(token.data(), token.data() + token.length());
    // The counts of a switch and what follows them stay, and so does the header's revision.
    const std::size_t end = std::is_same_v<Record, FltSwitch> ? 20 : bytes.size();
    for (std::size_t i = 4; i < end; ++i)
        if (!std::is_same_v<Record, FltHeader> || i < 12 || i >= 16)
            bytes[i] = static_cast<std::uint8_t>(0x11 + i * 7 % 0x5A);
    return bytes;
}

/// The two sides must do the same, or their comparison says nothing.
template <typename Record>
bool sidesAgree() {
    const std::vector<std::uint8_t> filled = filledBytes<Record>();
    Record byLibrary;
    Record byHand;
    FltToken token;
    token.attach(filled.data(), static_cast<std::int32_t>(filled.size()));
    byLibrary.readToken(token, kRevision);
    const std::size_t length = raw::read(filled.data(), filled.size(), byHand);
    if (length != filled.size() || FieldBytes(byLibrary).bytes() != FieldBytes(byHand).bytes())
        return false;
    // One byte less is refused by hand, and read as zero by the library.
    if (raw::read(filled.data(), filled.size() - 1, byHand) != 0) return false;

    if constexpr (std::is_same_v<Record, FltLightPoint>) byLibrary.axisX = -1e300;
    byLibrary.writeToken(token, kRevision);
    token.finish();
    Buffer bytes{};
    return raw::write(bytes.data(), bytes.size(), byLibrary) == token.length() &&
           std::memcmp(bytes.data(), token.data(), token.length()) == 0 &&
           raw::write(bytes.data(), token.length() - 1U, byLibrary) == 0;
}

template <typename Record>
void verify() {
    if (sidesAgree<Record>()) return;
    std::fprintf(stderr, "the straight-line code for opcode %d differs from the library\n",
                 Record::kOpcode);
    std::exit(1);
}

// Every byte of a record stands when it is encoded; framing it as well makes the token's length
// the padded one.
template <typename Record, bool framed>
void encodeLibrary(benchmark::State& state) {
    Placed<Record> record(sample<Record>());
    FltToken& to = token();
    for (auto _ : state) {
        benchmark::DoNotOptimize(*record);
        encode(*record, to);
        if (framed) to.finish();
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}

template <typename Record>
void encodeRaw(benchmark::State& state) {
    Placed<Record> record(sample<Record>());
    std::uint8_t* const to = room();
    for (auto _ : state) {
        benchmark::DoNotOptimize(*record);
        benchmark::DoNotOptimize(raw::write(to, kRoom, *record));
        benchmark::ClobberMemory();
    }
}

// Framing finds where a record begins and ends, which a file's reader does once per record.
template <typename Record, bool framed>
void decodeLibrary(benchmark::State& state) {
    raw::write(page.bytes.data(), kRoom, sample<Record>());
    Placed<Record> record{Record()};
    FltToken& from = token();
    const auto frame = [&] { from.attach(page.bytes.data(), kRoom); };
    frame();
    for (auto _ : state) {
        benchmark::DoNotOptimize(page.bytes.data());
        if (framed) frame();
        decode(*record, from);
        benchmark::DoNotOptimize(*record);
        benchmark::ClobberMemory();
    }
}

template <typename Record>
void decodeRaw(benchmark::State& state) {
    raw::write(page.bytes.data(), kRoom, sample<Record>());
    Placed<Record> record{Record()};
    for (auto _ : state) {
        benchmark::DoNotOptimize(page.bytes.data());
        if (raw::read(page.bytes.data(), kRoom, *record) == 0)
            state.SkipWithError("not the record");
        benchmark::DoNotOptimize(*record);
        benchmark::ClobberMemory();
    }
}

template <typename Record>
void registerClass(const char* name) {
    verify<Record>();
    const auto add = [&](const char* action, const char* side, auto function) {
        const std::string full = std::string(action) + '/' + name + '/' + side;
        benchmark::RegisterBenchmark(full.c_str(), function);
    };
    add("encode", "library", encodeLibrary<Record, false>);
    add("encode", "raw", encodeRaw<Record>);
    add("decode", "library", decodeLibrary<Record, false>);
    add("decode", "raw", decodeRaw<Record>);
    add("framed encode", "library", encodeLibrary<Record, true>);
    add("framed encode", "raw", encodeRaw<Record>);
    add("framed decode", "library", decodeLibrary<Record, true>);
    add("framed decode", "raw", decodeRaw<Record>);
}

// The mix, one record of each class being all that is kept, as a reader would.
struct Mix {
    FltGroup group = sample<FltGroup>();
    FltObject object = sample<FltObject>();
    FltFace face = sample<FltFace>();
    FltLod lod = sample<FltLod>();
};

template <typename Action>
void forMix(Mix& mix, Action&& action) {
    action(mix.group);
    action(mix.object);
    for (int i = 0; i < 10; ++i) action(mix.face);
    action(mix.lod);
}

void encodeMixLibrary(benchmark::State& state) {
    Placed<Mix> mix{Mix()};
    FltToken& to = token();
    for (auto _ : state)
        forMix(*mix, [&](auto& record) {
            benchmark::DoNotOptimize(record);
            encode(record, to);
            to.finish();
            benchmark::ClobberMemory();
        });
}

void encodeMixRaw(benchmark::State& state) {
    Placed<Mix> mix{Mix()};
    std::uint8_t* const to = room();
    for (auto _ : state)
        forMix(*mix, [&](auto& record) {
            benchmark::DoNotOptimize(record);
            benchmark::DoNotOptimize(raw::write(to, kRoom, record));
            benchmark::ClobberMemory();
        });
}

/// The records of the mix, one behind the other, in the page.
std::span<const std::uint8_t> mixBytes() {
    Mix mix;
    std::size_t size = 0;
    forMix(mix, [&](const auto& record) {
        size += raw::write(page.bytes.data() + size, page.bytes.size() - size, record);
    });
    return {page.bytes.data(), size};
}

void decodeMixLibrary(benchmark::State& state) {
    const std::span<const std::uint8_t> bytes = mixBytes();
    Placed<Mix> mix{Mix()};
    FltToken& from = token();
    for (auto _ : state) {
        const std::uint8_t* place = bytes.data();
        forMix(*mix, [&](auto& record) {
            from.attach(place, static_cast<std::int32_t>(bytes.data() + bytes.size() - place));
            decode(record, from);
            place += from.length();
            benchmark::DoNotOptimize(record);
            benchmark::ClobberMemory();
        });
    }
}

void decodeMixRaw(benchmark::State& state) {
    const std::span<const std::uint8_t> bytes = mixBytes();
    Placed<Mix> mix{Mix()};
    for (auto _ : state) {
        const std::uint8_t* place = bytes.data();
        const std::uint8_t* end = place + bytes.size();
        forMix(*mix, [&](auto& record) {
            const std::size_t length =
                raw::read(place, static_cast<std::size_t>(end - place), record);
            if (length == 0) state.SkipWithError("not the record");
            place += length;
            benchmark::DoNotOptimize(record);
            benchmark::ClobberMemory();
        });
    }
}

}  // namespace

std::vector<std::unique_ptr<FltRecord>> makeMix() {
    std::vector<std::unique_ptr<FltRecord>> records;
    Mix mix;
    forMix(mix, [&](const auto& record) {
        records.push_back(std::make_unique<std::remove_cvref_t<decltype(record)>>(record));
    });
    return records;
}

void registerRecordBenches() {
    registerClass<FltHeader>("FltHeader");
    registerClass<FltGroup>("FltGroup");
    registerClass<FltObject>("FltObject");
    registerClass<FltFace>("FltFace");
    registerClass<FltDof>("FltDof");
    registerClass<FltComment>("FltComment");
    registerClass<FltBsp>("FltBsp");
    registerClass<FltInstanceRef>("FltInstanceRef");
    registerClass<FltInstanceDef>("FltInstanceDef");
    registerClass<FltXRef>("FltXRef");
    registerClass<FltLod>("FltLod");
    registerClass<FltSwitch>("FltSwitch");
    registerClass<FltClipRegion>("FltClipRegion");
    registerClass<FltLightSource>("FltLightSource");
    registerClass<FltLightSourcePalette>("FltLightSourcePalette");
    registerClass<FltLightPoint>("FltLightPoint");
    registerClass<LongVertex>("FltVertex");
    registerClass<FltVertexList>("FltVertexList");
    registerClass<FltMatrix>("FltMatrix");
    registerClass<FltMaterial>("FltMaterial");
    registerClass<FltTexture>("FltTexture");
    benchmark::RegisterBenchmark("framed encode/mix of 13/library", encodeMixLibrary);
    benchmark::RegisterBenchmark("framed encode/mix of 13/raw", encodeMixRaw);
    benchmark::RegisterBenchmark("framed decode/mix of 13/library", decodeMixLibrary);
    benchmark::RegisterBenchmark("framed decode/mix of 13/raw", decodeMixRaw);
}
