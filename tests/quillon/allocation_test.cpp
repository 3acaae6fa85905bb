// Counts what the record library takes from the heap.
#include "countingheap.h"
#include "support.h"

#include <quillon/fltfilereader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlod.h>
#include <quillon/fltstream.h>

namespace {

TEST(AllocationTest, AWarmStreamWritesWithoutAllocating) {
    std::FILE* file = std::tmpfile();
    FltStream stream;
    stream.attach(file, 1580);
    std::vector<std::unique_ptr<FltRecord>> records;
    for (const int opcode : {2, 4, 5, 14, 31, 55, 61, 63, 73, 96, 98, 101, 102, 111})
        records.push_back(fltCreateRecord(static_cast<std::uint16_t>(opcode)));
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
    // Records longer than ours, as long, and shorter, which are completed in the token's own block.
    Bytes bytes;
    for (int i = 0; i < 100; ++i)
        for (const char* record :
             {"0002 002C 00:40", "0002 0020 00:28", "0002 001C 00:24", "0049 0010 00:12"}) {
            const Bytes part = hex(record);
            bytes.insert(bytes.end(), part.begin(), part.end());
        }
    FltFileReader reader(bytes);
    FltGroup group;
    FltLod lod;
    std::size_t before = 0;
    int count = 0;
    while (reader.next()) {
        if (reader.opcode() == FltGroup::kOpcode) group.readFromFile(&reader.token());
        if (reader.opcode() == FltLod::kOpcode) lod.readFromFile(&reader.token());
        if (++count == 4) before = heapAllocations();
    }
    EXPECT_EQ(count, 400);
    EXPECT_EQ(heapAllocations(), before);
}

}  // namespace
