// Counts what the record library takes from the heap.
#include "countingheap.h"
#include "support.h"

#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>
#include <quillon/fltstream.h>

#include <array>

namespace {

constexpr FltOpcode kWritten[] = {
    kFltHeader,    kFltGroup,  kFltObject,      kFltFace,        kFltDof,
    kFltComment,   kFltBsp,    kFltInstanceRef, kFltInstanceDef, kFltExternalRef,
    kFltLod,       kFltSwitch, kFltClipRegion,  kFltLightSource, kFltLightSourcePalette,
    kFltLightPoint};

TEST(AllocationTest, AWarmStreamWritesWithoutAllocating) {
    std::FILE* file = std::tmpfile();
    FltStream stream;
    stream.attach(file, 1580);
    std::vector<std::unique_ptr<FltRecord>> records;
    for (const FltOpcode opcode : kWritten) records.push_back(fltCreateRecord(opcode));
    const auto writeAll = [&] {
        for (const auto& record : records) record->write(stream);
    };
    writeAll();
    const std::size_t before = heapAllocations();
    for (int i = 0; i < 100; ++i) writeAll();
    EXPECT_EQ(heapAllocations(), before);
    EXPECT_GT(before, 0U) << "the counter counts";
    EXPECT_TRUE(stream.close());
    std::fclose(file);
}

TEST(AllocationTest, AWarmReaderReadsWithoutAllocating) {
    // Each class as it is written, longer, and shorter, which is completed in the token's own
    // block; a switch and a comment of some size, which have blocks of theirs.
    Bytes once = hex("001F 0018 'comment':20 0060 0034 00:12 00000001 00000003 00000002 00:24");
    for (const FltOpcode opcode : kWritten) {
        const Bytes whole = encode(*fltCreateRecord(opcode));
        for (const std::size_t length : {whole.size(), whole.size() + 12, whole.size() / 2 + 2}) {
            Bytes record = whole;
            record.resize(length);
            record[2] = static_cast<std::uint8_t>(length >> 8);
            record[3] = static_cast<std::uint8_t>(length);
            once.insert(once.end(), record.begin(), record.end());
        }
    }
    Bytes bytes;
    for (int i = 0; i < 50; ++i) bytes.insert(bytes.end(), once.begin(), once.end());

    std::array<std::unique_ptr<FltRecord>, 128> records;
    for (std::uint16_t opcode = 0; std::size_t{opcode} < records.size(); ++opcode)
        records[opcode] = fltCreateRecord(opcode);
    FltFileReader reader(bytes);
    std::size_t before = 0;
    std::size_t count = 0;
    while (reader.next()) {
        if (reader.offset() == once.size()) before = heapAllocations();
        records.at(reader.opcode())->readToken(reader.token(), 1580);
        ++count;
    }
    EXPECT_EQ(count, 50U * 50U);
    EXPECT_GT(before, 0U);
    EXPECT_EQ(heapAllocations(), before);
}

}  // namespace
