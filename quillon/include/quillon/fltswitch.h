// The switch record.
#pragma once

#include <quillon/fltlistof.h>
#include <quillon/fltrecordof.h>

#include <cstdint>
#include <span>

/// Switch: masks that say which children are shown. Named "f%d" on output, as faces are, but
/// counted by the header's own switch counter.
class FltSwitch : public FltRecordOf<FltSwitch, FltNamedRec, kFltSwitch> {
public:
    /// The most mask words that fit into one record.
    static constexpr std::int32_t kMaxMaskWords = (0xFFFF - 28) / 4;
    /// The most with which a record can still be written: what is written is padded to a multiple
    /// of 8 bytes.
    static constexpr std::int32_t kMaxWrittenMaskWords = (0xFFF8 - 28) / 4;

    /// What a record says of its masks, true or not.
    struct StatedMasks {
        std::int32_t masks = 0;
        std::int32_t wordsPerMask = 0;
        std::int64_t wordsPresent = 0;  ///< mask words that the record has room for

        /// Whether the record has all the mask words that it speaks of.
        bool arePresent() const noexcept {
            return masks >= 0 && wordsPerMask >= 0 &&
                   std::int64_t{masks} * wordsPerMask <= wordsPresent;
        }
    };

    /// What the switch record `bytes` says of its masks; none for one that ends before it says so.
    static StatedMasks statedMasks(std::span<const std::uint8_t> bytes);

    /// Children in a word of a mask.
    static constexpr std::int32_t kMaskBitsPerWord = 32;

    /// The bits that the first `children` children have in a word of each mask.
    static constexpr std::uint32_t bitsInUse(std::uint32_t children, std::uint32_t word) noexcept {
        const std::uint64_t first = std::uint64_t{word} * kMaskBitsPerWord;
        if (children <= first) return 0;
        const std::uint64_t bits = children - first;
        return bits < kMaskBitsPerWord ? (std::uint32_t{1} << bits) - 1 : 0xFFFFFFFF;
    }

    /// Whole masks in the word list; 0 when there are no words per mask.
    std::int32_t maskCount() const noexcept {
        return wordsPerMask > 0 ? maskWords.count() / wordsPerMask : 0;
    }

    /// Sizes the masks for `bits` children. An empty word list gains one mask with every bit set; a
    /// list with words keeps them and is divided anew. A current mask beyond the last becomes 0.
    /// Counts below 1 mean no words. Throws `AviaryAssertion` when one mask would not fit a record.
    void setMaskBits(std::int32_t bits);

    std::int32_t currentMask = 0;
    std::int32_t wordsPerMask = 1;
    /// All masks one after the other; within a mask 32 children per word, least significant bit
    /// first.
    FltListOf<std::uint32_t> maskWords;
};
