// Chunk bytes in tests: written down as they are, not made by the code under test.
#pragma once

#include <kiln/kiln.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace testing_chunks {

using Bytes = std::vector<std::uint8_t>;

inline constexpr Class_ID kChunkClass(0x6A3C1F07, 0x2E9D0001);
inline constexpr SClass_ID kChunkSuperClass = 0xA10;

enum : DWORD { kKindChunk = 0, kRecordChunk = 1, kCommentChunk = 2, kOptionsChunk = 3 };

/// An OpenFlight record of zeros with opcode and length, and big-endian values put into it.
class RecordBytes : public Bytes {
public:
    RecordBytes(std::uint16_t opcode, std::uint16_t length) : Bytes(length) {
        int16(0, opcode).int16(2, length);
    }
    RecordBytes& int8(std::size_t offset, std::uint8_t value) { return put<1>(offset, value); }
    RecordBytes& int16(std::size_t offset, std::uint16_t value) { return put<2>(offset, value); }
    RecordBytes& int32(std::size_t offset, std::uint32_t value) { return put<4>(offset, value); }
    RecordBytes& float32(std::size_t offset, float value) {
        return put<4>(offset, std::bit_cast<std::uint32_t>(value));
    }
    RecordBytes& float64(std::size_t offset, double value) {
        return put<8>(offset, std::bit_cast<std::uint64_t>(value));
    }
    RecordBytes& text(std::size_t offset, std::string_view value) {
        std::memcpy(&at(offset), value.data(), value.size());
        return *this;
    }

private:
    template <std::size_t size>
    RecordBytes& put(std::size_t offset, std::uint64_t value) {
        for (std::size_t i = 0; i < size; ++i)
            at(offset + i) = static_cast<std::uint8_t>(value >> 8 * (size - 1 - i));
        return *this;
    }
};

inline AppDataChunk* chunk(INode* node, DWORD subId) {
    return node->GetAppDataChunk(kChunkClass, kChunkSuperClass, subId);
}

inline Bytes chunkBytes(INode* node, DWORD subId) {
    const AppDataChunk* const found = chunk(node, subId);
    if (found == nullptr) return {};
    const auto* const data = static_cast<const std::uint8_t*>(found->data);
    return {data, data + found->length};
}

inline void setChunk(INode* node, DWORD subId, std::span<const std::uint8_t> bytes) {
    void* const block = KILN_malloc(bytes.size());
    if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
    node->AddAppDataChunk(kChunkClass, kChunkSuperClass, subId, static_cast<DWORD>(bytes.size()),
                          block);
}

}  // namespace testing_chunks
