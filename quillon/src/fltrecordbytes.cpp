#include <diagnostics/assertion.h>
#include <quillon/fltbyteorder.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecordbytes.h>

#include <algorithm>

namespace {

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kLengthOffset = 2;
constexpr std::size_t kLongestRecord = 0xFFFF;

}  // namespace

std::span<std::uint8_t> fltAppendRecord(std::vector<std::uint8_t>& bytes, std::uint16_t opcode,
                                        std::size_t size) {
    const std::size_t start = bytes.size();
    diagnostics::check(size <= kLongestRecord - kHeaderSize, "fltrecordbytes", 20);
    bytes.resize(start + kHeaderSize + size);
    const auto record = std::span(bytes).subspan(start);
    fltStoreBigEndian(record.data(), opcode);
    fltStateLength(record);
    return record.subspan(kHeaderSize);
}

FltRecordHead fltRecordHead(std::span<const std::uint8_t> bytes) noexcept {
    FltRecordHead head;
    fltLoadBigEndian(bytes.data(), head.opcode);
    fltLoadBigEndian(bytes.data() + kLengthOffset, head.length);
    return head;
}

void fltStateLength(std::span<std::uint8_t> record) {
    diagnostics::check(record.size() >= kHeaderSize && record.size() <= kLongestRecord,
                       "fltrecordbytes", 29);
    fltStoreBigEndian(record.data() + kLengthOffset, static_cast<std::uint16_t>(record.size()));
}

std::vector<std::uint8_t> fltPatchedRecord(std::span<const std::uint8_t> read,
                                           std::span<const std::uint8_t> before,
                                           std::span<const std::uint8_t> after) {
    std::vector<std::uint8_t> patched(after.begin(), after.end());
    const std::size_t common = std::min({after.size(), before.size(), read.size()});
    for (std::size_t i = kHeaderSize; i < common; ++i)
        if (after[i] == before[i]) patched[i] = read[i];
    if (read.size() > before.size()) {
        const auto tail = read.subspan(before.size());
        patched.insert(patched.end(), tail.begin(), tail.end());
    }
    // What was not there and does not differ stays away.
    if (read.size() < before.size() && after.size() == before.size() &&
        std::ranges::equal(after.subspan(read.size()), before.subspan(read.size())))
        patched.resize(read.size());
    fltStateLength(patched);
    return patched;
}

void fltAppendVertexList(std::vector<std::uint8_t>& bytes, std::uint16_t opcode,
                         std::span<const std::uint32_t> offsets) {
    constexpr std::size_t kMost =
        (kLongestRecord - kHeaderSize) / (2 * sizeof(std::uint32_t)) * 2;  // even, for the pairs
    do {
        const auto part = offsets.first(std::min(offsets.size(), kMost));
        offsets = offsets.subspan(part.size());
        std::uint8_t* place = fltAppendRecord(bytes, opcode, part.size_bytes()).data();
        for (const std::uint32_t offset : part) {
            fltStoreBigEndian(place, offset);
            place += sizeof offset;
        }
        opcode = kFltContinuation;
    } while (!offsets.empty());
}
