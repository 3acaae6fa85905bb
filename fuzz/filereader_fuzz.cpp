// The file reader walks any bytes or refuses them, and says where. What it has walked adds up, and
// a stream can write it again as the same records.
#include "expect.h"

#include <diagnostics/assertion.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>
#include <quillon/fltstream.h>

#include <memory>
#include <vector>

namespace {

void lookAt(FltFileReader& reader, std::span<const std::uint8_t> bytes) {
    expect(reader.length() >= 4, "a record has its header");
    expect(reader.offset() + reader.length() <= bytes.size(), "a record lies within the file");
    expect(reader.token().data() == bytes.data() + reader.offset(), "a token copies nothing");
    expect(fltOpcodeName(reader.opcode())[0] != 0, "an opcode has a name");
    const std::unique_ptr<FltRecord> record = fltCreateFileRecord(reader.opcode());
    if (!record) return;
    try {
        record->readFromFile(&reader.token());
    } catch (const diagnostics::AviaryAssertion&) {
        expect(reader.opcode() == kFltSwitch, "only a switch refuses its counts");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A block of its own, so that one byte too far is outside.
    const std::vector<std::uint8_t> block(data, data + size);
    const std::span<const std::uint8_t> bytes(block);
    static std::FILE* const file = std::tmpfile();
    std::rewind(file);
    FltStream stream;
    stream.attach(file, 1580);

    FltFileReader reader(bytes);
    std::size_t sum = 0;
    try {
        while (reader.next()) {
            expect(reader.offset() == sum, "records follow each other");
            sum += reader.length();
            lookAt(reader, bytes);
            stream.writeVerbatim(bytes.subspan(reader.offset(), reader.length()));
        }
        expect(sum + reader.strayBytes() == size, "the walk ends at the end");
        expect(reader.strayBytes() < 4, "what is left out is no record");
        expect(!reader.next(), "the end stays the end");
        expect(stream.nesting() == reader.nesting(), "both count the same nesting");
    } catch (const FltFileError& error) {
        expect(error.offset() == sum && sum < size, "the damage is where the walk stopped");
    }
    expect(stream.close(), "the file takes what is written");
    expect(static_cast<std::size_t>(std::ftell(file)) == sum, "every byte is written");
    return 0;
}
