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
