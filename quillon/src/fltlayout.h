// The code of `FltRecordOf`, for the source files of its classes.
//
// A class says its layout by specialising `Layout`, and has its code made behind that:
//
//     template <>
//     struct quillon::Layout<FltReplicate> {
//         static void fields(auto& codec, auto& record) { ... }
//     };
//     template class FltRecordOf<FltReplicate, FltAncillaryRec, kFltReplicate>;
#pragma once

#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltrecordof.h>

#include <span>
#include <vector>

namespace quillon {

/// `fields(codec, record)` names the fields of the record in file order. Only lists at the end may
/// depend on what fields before them say.
template <typename Record>
struct Layout;

}  // namespace quillon

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, code, [this](auto& codec) {
        quillon::Layout<Record>::fields(codec, static_cast<const Record&>(*this));
    });
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == code, "fltrecordof", 38);
    quillon::readBody(token, [this](auto& codec) {
        quillon::Layout<Record>::fields(codec, static_cast<Record&>(*this));
    });
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) {
        quillon::Layout<Record>::fields(codec, static_cast<const Record&>(*this));
    });
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::readBody(std::span<const std::uint8_t> body) {
    const auto layout = [this](auto& codec) {
        quillon::Layout<Record>::fields(codec, static_cast<Record&>(*this));
    };
    quillon::FixedSizeCodec measure;
    layout(measure);
    std::vector<std::uint8_t> padded;
    if (body.size() < measure.size) {
        padded.assign(body.begin(), body.end());
        padded.resize(measure.size);
        body = padded;
    }
    quillon::LoadCodec load(body.data(), body.data() + body.size());
    layout(load);
}

template <typename Record, typename Family, std::uint16_t code>
std::uint16_t FltRecordOf<Record, Family, code>::lengthThrough(const void* field) const noexcept {
    constexpr std::uint32_t kHeaderSize = 4;
    quillon::PlaceCodec place(field);
    quillon::Layout<Record>::fields(place, static_cast<const Record&>(*this));
    return static_cast<std::uint16_t>(kHeaderSize + place.end);
}
