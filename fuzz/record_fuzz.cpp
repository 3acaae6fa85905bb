// Every record class reads any bytes at several revisions, or refuses them. What it has read it
// writes, and what it has written reads and writes as the same bytes again.
//
// Input: one byte that chooses the class, in its lower 7 bits, then the record. Its opcode is put
// in place; so is its length when the first byte's high bit says so.
#include "expect.h"

#include <diagnostics/assertion.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfield.h>
#include <quillon/fltrecordtype.h>
#include <quillon/flttoken.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

using Create = std::unique_ptr<FltRecord> (*)(std::uint16_t opcode);

/// A class: its opcode, and who makes its records.
struct Class {
    std::uint16_t opcode;
    Create create;
};

std::unique_ptr<FltRecord> createForFile(std::uint16_t opcode) {
    return fltRecordType(opcode)->create();
}

/// Those that scenes store, which the seeds count on, then all that files have beside them.
std::vector<Class> allClasses() {
    std::vector<Class> classes;
    for (const FltRecordType& type : fltRecordTypes())
        if (type.isStored()) classes.push_back({type.opcode, fltCreateRecord});
    for (const FltRecordType& type : fltRecordTypes())
        if (type.create != nullptr && (!type.isStored() || type.opcode == kFltHeader))
            classes.push_back({type.opcode, createForFile});
    return classes;
}

constexpr std::uint32_t kRevisions[] = {0, 1420, 1500, 1510, 1540, 1560, 1570, 1580, 0xFFFFFFFF};

/// Looks at every byte that it is shown.
class Reader final : public FltFieldVisitor {
public:
    std::size_t fields = 0;

    void integer(const char* name, int, std::int64_t) override { count(name); }
    void real(const char* name, int, double) override { count(name); }
    void text(const char* name, std::string_view value) override {
        count(name);
        expect(value.find('\0') == std::string_view::npos, "text ends before its terminator");
    }

private:
    void count(const char* name) {
        expect(name[0] != 0, "a field has a name");
        ++fields;
    }
};

/// The record's bytes as they would go to a file; none when they would be too many for a record.
std::optional<Bytes> write(const FltRecord& record, std::uint32_t revision) {
    FltToken token;
    try {
        record.writeToken(token, revision);
        token.finish();
    } catch (const diagnostics::AviaryAssertion&) {
        // Only what may have any length can fill a record.
        expect(record.opcode() == kFltSwitch || record.opcode() == kFltComment ||
                   !fltRecordType(record.opcode())->isStored(),
               "the record can be written");
        return std::nullopt;
    }
    return Bytes(token.data(), token.data() + token.length());
}

bool read(FltRecord& record, const Bytes& bytes, std::uint32_t revision) {
    FltToken token;
    token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    try {
        record.readToken(token, revision);
    } catch (const diagnostics::AviaryAssertion&) {
        return false;
    }
    return true;
}

void trip(const Class& which, const Bytes& bytes, std::uint32_t revision) {
    const std::unique_ptr<FltRecord> first = which.create(which.opcode);
    if (!read(*first, bytes, revision)) return;
    Reader reader;
    first->visitFields(reader);
    expect(reader.fields > 0 || !fltRecordType(which.opcode)->isStored(), "the record has fields");

    const std::optional<Bytes> written = write(*first, revision);
    if (!written) return;
    expect(written->size() >= 4 && (written->size() % 8 == 0 || which.opcode == kFltVertexList),
           "a record is padded");
    expect(((*written)[2] << 8 | (*written)[3]) == static_cast<int>(written->size()),
           "the length is stated");
    const std::unique_ptr<FltRecord> second = which.create(which.opcode);
    expect(read(*second, *written, revision), "what was written can be read");
    expect(write(*second, revision) == written, "what was read is written again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 0x10000) return 0;
    static const std::vector<Class> classes = allClasses();
    const Class& which = classes[(data[0] & 0x7F) % classes.size()];
    Bytes bytes(data + 1, data + size);
    bytes.shrink_to_fit();  // one byte too far is outside the block
    if (bytes.size() >= 2) {
        bytes[0] = 0;
        bytes[1] = static_cast<std::uint8_t>(which.opcode);
    }
    if (bytes.size() >= 4 && (data[0] & 0x80) != 0) {
        bytes[2] = static_cast<std::uint8_t>(bytes.size() >> 8);
        bytes[3] = static_cast<std::uint8_t>(bytes.size());
    }
    for (const std::uint32_t revision : kRevisions) trip(which, bytes, revision);
    return 0;
}
