// Bytes that nobody meant as a record. Run under the sanitizers, this finds any read or write
// outside the buffers.
#include "support.h"

#include <quillon/fltfilereader.h>
#include <quillon/fltrecordtype.h>

#include <algorithm>
#include <random>

namespace {

/// The opcodes that have a class.
std::vector<std::uint16_t> classes() {
    std::vector<std::uint16_t> opcodes;
    for (const FltRecordType& type : fltRecordTypes())
        if (type.create != nullptr) opcodes.push_back(type.opcode);
    return opcodes;
}
constexpr std::uint32_t kRevisions[] = {0, 1420, 1510, 1540, 1580, 0xFFFFFFFF};

/// Reads the bytes as a record and, when they are one, writes it again, which must succeed.
void tryRecord(std::uint16_t opcode, const Bytes& bytes) {
    // A block of exactly this size, so that the sanitizer sees one byte too far.
    const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), block.get());
    for (const std::uint32_t revision : kRevisions) {
        const auto record = fltRecordType(opcode)->create();
        FltToken token;
        token.attach(block.get(), static_cast<std::int32_t>(bytes.size()));
        try {
            record->readToken(token, revision);
        } catch (const diagnostics::AviaryAssertion&) {
            continue;
        }
        record->writeToken(token, revision);
        EXPECT_NO_THROW(token.finish());
        static_cast<void>(fieldsOf(*record));
        ASSERT_EQ(Bytes(block.get(), block.get() + bytes.size()), bytes);
    }
}

TEST(RobustnessTest, ReadsEveryClassFromAnyLength) {
    for (const std::uint16_t opcode : classes()) {
        const Bytes whole = encode(*fltRecordType(opcode)->create());
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            tryRecord(opcode, cut);  // says that it is longer than it is
            if (length < 4) continue;
            cut[2] = static_cast<std::uint8_t>(length >> 8);
            cut[3] = static_cast<std::uint8_t>(length);
            tryRecord(opcode, cut);
        }
    }
}

TEST(RobustnessTest, ReadsOrRefusesRandomBytes) {
    std::mt19937 random(1580);
    for (int round = 0; round < 300; ++round)
        for (const std::uint16_t opcode : classes()) {
            Bytes bytes(random() % 420);
            for (std::uint8_t& byte : bytes)
                byte = random() % 3 == 0 ? 0 : static_cast<std::uint8_t>(random());
            if (bytes.size() >= 2) {
                bytes[0] = 0;
                bytes[1] = static_cast<std::uint8_t>(opcode);
            }
            tryRecord(opcode, bytes);
        }
}

TEST(RobustnessTest, WalksOrRefusesRandomFiles) {
    const std::vector<std::uint16_t> opcodes = classes();
    std::mt19937 random(96);
    std::size_t walked = 0;
    std::size_t refused = 0;
    for (int round = 0; round < 3000; ++round) {
        Bytes bytes;
        for (auto i = random() % 12; i > 0; --i) {
            Bytes record = encode(*fltRecordType(opcodes[random() % opcodes.size()])->create());
            bytes.insert(bytes.end(), record.begin(), record.end());
        }
        for (auto i = random() % 16; i > 0 && !bytes.empty(); --i)
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
        FltFileReader reader(bytes);
        try {
            std::size_t sum = 0;
            while (reader.next()) {
                sum += reader.length();
                const FltRecordType* const type = fltRecordType(reader.opcode());
                if (type == nullptr || type->create == nullptr) continue;
                const auto record = type->create();
                try {
                    record->readFromFile(&reader.token());
                } catch (const diagnostics::AviaryAssertion&) {
                    // A switch with impossible counts; the walk goes on.
                }
            }
            EXPECT_LT(reader.strayBytes(), 4U);
            EXPECT_EQ(sum + reader.strayBytes(), bytes.size());
            ++walked;
        } catch (const FltFileError& error) {
            EXPECT_LT(error.offset(), bytes.size());
            ++refused;
        }
    }
    EXPECT_GT(walked, 100U);
    EXPECT_GT(refused, 100U);
}

}  // namespace
