#include "fltlayout.h"

#include <quillon/fltswitch.h>

namespace {

// The counts are the file's word only; they are held against what a record can hold.
void makeMaskWords(FltSwitch& record, std::int32_t masks) {
    diagnostics::check(masks >= 0 && record.wordsPerMask >= 0, "fltswitch", 137);
    const std::int64_t words = std::int64_t{masks} * record.wordsPerMask;
    diagnostics::check(words <= FltSwitch::kMaxMaskWords, "fltswitch", 139);
    record.maskWords.resize(static_cast<std::int32_t>(words));
}

// All in front of the mask words.
void layoutCounts(auto& codec, auto& record, auto& masks) {
    codec.field("id", record.asciiId);
    codec.reserved(4);
    codec.field("currentMask", record.currentMask);
    codec.field("maskCount", masks);
    codec.field("wordsPerMask", record.wordsPerMask);
}

}  // namespace

template <>
struct quillon::Layout<FltSwitch> {
    static constexpr OpcodeCheck kOpcodeCheck = kAnyOpcode;
    static constexpr DefaultName kName{"f", &FltHeader::nextSwitchId};

    template <typename Codec>
    static void start(Codec& codec, auto& record) {
        std::int32_t masks = Codec::kReads ? 0 : record.maskCount();
        layoutCounts(codec, record, masks);
        if constexpr (Codec::kReads) makeMaskWords(record, masks);
    }
    static void fields(auto& codec, auto& record) { codec.field("maskWords", record.maskWords); }

    static void checkForWriting(const FltSwitch& record) {
        diagnostics::check(record.wordsPerMask >= 0, "fltswitch", 114);  // reading would refuse it
        diagnostics::check(record.maskWords.count() <= FltSwitch::kMaxMaskWords, "fltswitch", 121);
    }
};
template class FltRecordOf<FltSwitch, FltNamedRec, kFltSwitch>;

FltSwitch::StatedMasks FltSwitch::statedMasks(std::span<const std::uint8_t> bytes) {
    FltSwitch record;
    StatedMasks stated;
    const auto counts = [&](auto& codec) { layoutCounts(codec, record, stated.masks); };
    quillon::FixedSizeCodec measure;
    counts(measure);
    FltToken token;
    token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    if (token.body(measure.size) == nullptr) return {};
    quillon::readBody(token, counts);
    stated.wordsPerMask = record.wordsPerMask;
    token.rewind(static_cast<std::uint16_t>(measure.size));
    stated.wordsPresent = token.remaining() / sizeof(std::uint32_t);
    return stated;
}

void FltSwitch::setMaskBits(std::int32_t bits) {
    const std::int32_t words =
        bits > 0 ? bits / kMaskBitsPerWord + (bits % kMaskBitsPerWord != 0 ? 1 : 0) : 0;
    diagnostics::check(words <= kMaxMaskWords, "fltswitch", 88);
    if (maskWords.count() == 0)
        for (std::int32_t i = 0; i < words; ++i) maskWords.append(0xFFFFFFFF);
    wordsPerMask = words;
    if (currentMask >= maskCount()) currentMask = 0;
}
