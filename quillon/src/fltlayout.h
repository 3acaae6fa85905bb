// The code of `FltRecordOf`, for the source files of its classes.
//
// A class says its layout, and what is special about it, by specialising `Layout`, and has its code
// made behind that:
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
#include <quillon/fltrecordrange.h>
#include <quillon/fltrevision.h>

#include <span>
#include <vector>

namespace quillon {

/// `fields(codec, record)` names the fields of the record in file order. Only lists at the end may
/// depend on what fields before them say. A class may have more:
///
/// - `kName`, the default name that a record without one gets when it is written;
/// - `kOpcodeCheck`, the assertion for another opcode, or `kAnyOpcode`;
/// - `kChangedIn`, the revision that laid the record out anew: `fields` then gets a third argument,
///   `std::true_type` from that revision on and `std::false_type` before it;
/// - `start(codec, record)`, the fields in front of `fields`, of one size, for a record whose
///   `fields` depend on what they say;
/// - `checkForWriting(record)`, which throws for what `readToken` would refuse;
/// - `afterReading(record, revision)`.
template <typename Record>
struct Layout;

/// The assertion that reading a record of another opcode is.
struct OpcodeCheck {
    const char* source;  ///< null for none
    int line;
};
inline constexpr OpcodeCheck kAnyOpcode{nullptr, 0};

template <typename Record>
constexpr OpcodeCheck opcodeCheck() {
    if constexpr (requires { Layout<Record>::kOpcodeCheck; })
        return Layout<Record>::kOpcodeCheck;
    else
        return {"fltrecordof", 38};
}

template <typename Record>
concept HasStart = requires(MeasureCodec& codec, const Record& record) {
    Layout<Record>::start(codec, record);
};

/// Calls `action` with whether the record is laid out as it is from `kChangedIn` on, so that each
/// layout gets code of its own.
template <typename Record, typename Action>
[[gnu::always_inline]] inline void byRevision(std::uint32_t revision, Action&& action) {
    if constexpr (requires { Layout<Record>::kChangedIn; }) {
        if (revision < Layout<Record>::kChangedIn) return action(std::false_type());
    }
    action(std::true_type());
}

template <typename Record, typename IsNewer>
[[gnu::always_inline]] inline void layOutFields(auto& codec, auto& record, IsNewer isNewer) {
    if constexpr (requires { Layout<Record>::kChangedIn; })
        Layout<Record>::fields(codec, record, isNewer);
    else
        Layout<Record>::fields(codec, record);
}

template <typename Record, typename IsNewer>
[[gnu::always_inline]] inline void layOut(auto& codec, auto& record, IsNewer isNewer) {
    if constexpr (HasStart<Record>) Layout<Record>::start(codec, record);
    layOutFields<Record>(codec, record, isNewer);
}

/// Puts the record into `token`, its fields by `Store`.
template <typename Store, typename Record>
void writeRecord(const Record& record, FltToken& token, std::uint32_t revision) {
    if constexpr (requires { Layout<Record>::checkForWriting(record); })
        Layout<Record>::checkForWriting(record);
    byRevision<Record>(revision, [&token, &record](auto isNewer) {
        writeFields<Store>(token, Record::kOpcode, [&record, isNewer](auto& codec) {
            layOut<Record>(codec, record, isNewer);
        });
    });
}

}  // namespace quillon

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::write(FltStream& stream) {
    nameFor(stream);
    Family::write(stream);
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::nameFor([[maybe_unused]] FltStream& stream) {
    if constexpr (requires { quillon::Layout<Record>::kName; }) {
        if (this->asciiId[0] == 0)
            quillon::giveName(this->asciiId, quillon::Layout<Record>::kName, stream);
    }
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::writeToken(FltToken& token, std::uint32_t revision) const {
    quillon::writeRecord<quillon::StoreCodec>(static_cast<const Record&>(*this), token, revision);
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::readToken(FltToken& token, std::uint32_t revision) {
    using Layout = quillon::Layout<Record>;
    constexpr quillon::OpcodeCheck kCheck = quillon::opcodeCheck<Record>();
    if constexpr (kCheck.source != nullptr)
        diagnostics::check(token.opcode() == code, kCheck.source, kCheck.line);
    auto& record = static_cast<Record&>(*this);
    std::uint16_t offset = 0;
    if constexpr (quillon::HasStart<Record>) {
        const auto start = [&record](auto& codec) { Layout::start(codec, record); };
        quillon::readBody(token, start);
        quillon::FixedSizeCodec measure;
        start(measure);
        offset = static_cast<std::uint16_t>(measure.size);
    }
    quillon::byRevision<Record>(revision, [&token, &record, offset](auto isNewer) {
        quillon::readBody(
            token,
            [&record, isNewer](auto& codec) {
                quillon::layOutFields<Record>(codec, record, isNewer);
            },
            offset);
    });
    if constexpr (requires { Layout::afterReading(record, revision); })
        Layout::afterReading(record, revision);
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) {
        quillon::layOut<Record>(codec, static_cast<const Record&>(*this), std::true_type());
    });
}

template <typename Record, typename Family, std::uint16_t code>
void FltRecordOf<Record, Family, code>::readBody(std::span<const std::uint8_t> body) {
    using Layout = quillon::Layout<Record>;
    auto& record = static_cast<Record&>(*this);
    std::vector<std::uint8_t> padded;
    std::size_t offset = 0;
    const auto load = [&](auto&& layout) {
        quillon::FixedSizeCodec measure;
        layout(measure);
        const std::size_t end = offset + measure.size;
        if (body.size() < end) {
            std::vector<std::uint8_t> longer(body.begin(), body.end());
            longer.resize(end);
            padded.swap(longer);
            body = padded;
        }
        quillon::LoadCodec codec(body.data() + offset, body.data() + body.size());
        layout(codec);
        offset = end;
    };
    if constexpr (quillon::HasStart<Record>)
        load([&record](auto& codec) { Layout::start(codec, record); });
    load(
        [&record](auto& codec) { quillon::layOutFields<Record>(codec, record, std::true_type()); });
    if constexpr (requires { Layout::afterReading(record, kFltNewestRevision); })
        Layout::afterReading(record, kFltNewestRevision);
}

template <typename Record, typename Family, std::uint16_t code>
std::uint16_t FltRecordOf<Record, Family, code>::lengthThrough(const void* field) const noexcept {
    quillon::PlaceCodec place(field);
    quillon::layOut<Record>(place, static_cast<const Record&>(*this), std::true_type());
    return static_cast<std::uint16_t>(FltRecordView::kHeaderSize + place.end);
}
