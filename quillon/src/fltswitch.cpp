#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltstream.h>
#include <quillon/fltswitch.h>

namespace {

constexpr std::int32_t kBitsPerWord = 32;

template <typename Codec>
void layout(Codec& codec, auto& record, auto& maskCount) {
    codec.field("id", record.asciiId);
    codec.reserved(4);
    codec.field("currentMask", record.currentMask);
    codec.field("maskCount", maskCount);
    codec.field("wordsPerMask", record.wordsPerMask);
}

constexpr std::uint16_t kFixedSize = 24;  // of the body, up to the mask words

void readWords(FltToken& token, FltListOf<std::uint32_t>& words) {
    const std::int32_t count = words.count();
    std::uint32_t* word = words.data();
    const std::uint8_t* place =
        token.body(static_cast<std::uint32_t>(count) * sizeof(std::uint32_t), kFixedSize);
    if (place == nullptr) [[unlikely]] {
        token.rewind(kFixedSize);
        for (std::int32_t i = 0; i < count; ++i) token.readInt32(word[i]);
        return;
    }
    for (std::int32_t i = 0; i < count; ++i, place += sizeof *word)
        fltLoadBigEndian(place, word[i]);
}

}  // namespace

FltSwitch::StatedMasks FltSwitch::statedMasks(std::span<const std::uint8_t> bytes) {
    FltToken token;
    token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    if (token.body(kFixedSize) == nullptr) return {};
    FltSwitch record;
    StatedMasks stated;
    quillon::readBody(token, [&](auto& codec) { layout(codec, record, stated.masks); });
    stated.wordsPerMask = record.wordsPerMask;
    token.rewind(kFixedSize);
    stated.wordsPresent = token.remaining() / sizeof(std::uint32_t);
    return stated;
}

std::int32_t FltSwitch::maskCount() const noexcept {
    return wordsPerMask > 0 ? maskWords.count() / wordsPerMask : 0;
}

void FltSwitch::setMaskBits(std::int32_t bits) {
    const std::int32_t words =
        bits > 0 ? bits / kBitsPerWord + (bits % kBitsPerWord != 0 ? 1 : 0) : 0;
    diagnostics::check(words <= kMaxMaskWords, "fltswitch", 88);
    if (maskWords.count() == 0)
        for (std::int32_t i = 0; i < words; ++i) maskWords.append(0xFFFFFFFF);
    wordsPerMask = words;
    if (currentMask >= maskCount()) currentMask = 0;
}

void FltSwitch::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "f", stream.header().nextSwitchId);
    FltRecord::write(stream);
}

void FltSwitch::writeToken(FltToken& token, std::uint32_t) const {
    diagnostics::check(wordsPerMask >= 0, "fltswitch", 114);  // reading would refuse it
    const std::int32_t count = maskWords.count();
    diagnostics::check(count <= kMaxMaskWords, "fltswitch", 121);
    const std::int32_t masks = maskCount();
    std::uint8_t* place = quillon::writeFields(
        token, kOpcode, [&](auto& codec) { layout(codec, *this, masks); },
        static_cast<std::uint32_t>(count) * sizeof(std::uint32_t));
    const std::uint32_t* word = maskWords.data();
    for (std::int32_t i = 0; i < count; ++i, place += sizeof *word)
        fltStoreBigEndian(place, word[i]);
}

void FltSwitch::readToken(FltToken& token, std::uint32_t) {
    std::int32_t masks = 0;
    quillon::readBody(token, [&](auto& codec) { layout(codec, *this, masks); });

    // The counts are the file's word only; they are held against what a record can hold.
    diagnostics::check(masks >= 0 && wordsPerMask >= 0, "fltswitch", 137);
    const std::int64_t words = std::int64_t{masks} * wordsPerMask;
    diagnostics::check(words <= kMaxMaskWords, "fltswitch", 139);
    maskWords.resize(static_cast<std::int32_t>(words));
    readWords(token, maskWords);
}

void FltSwitch::visitFields(FltFieldVisitor& visitor) const {
    const std::int32_t masks = maskCount();
    quillon::showFields(visitor, [&](auto& codec) { layout(codec, *this, masks); });
    for (std::int32_t i = 0; i < maskWords.count(); ++i)
        visitor.integer("maskWords", i, *maskWords.at(i));
}
