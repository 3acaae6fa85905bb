#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltinstance.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.reserved(2);
    codec.field("instanceNumber", record.instanceNumber);
}

void writeInstance(FltToken& token, std::uint16_t opcode, const FltInstance& record) {
    quillon::writeFields(token, opcode, [&](auto& codec) { layout(codec, record); });
}

void readInstance(FltToken& token, std::uint16_t opcode, FltInstance& record) {
    diagnostics::check(token.opcode() == opcode, "fltinstance", 44);
    quillon::readBody(token, [&](auto& codec) { layout(codec, record); });
}

}  // namespace

void FltInstanceRef::writeToken(FltToken& token, std::uint32_t) const {
    writeInstance(token, kOpcode, *this);
}

void FltInstanceRef::readToken(FltToken& token, std::uint32_t) {
    readInstance(token, kOpcode, *this);
}

void FltInstanceDef::writeToken(FltToken& token, std::uint32_t) const {
    writeInstance(token, kOpcode, *this);
}

void FltInstanceDef::readToken(FltToken& token, std::uint32_t) {
    readInstance(token, kOpcode, *this);
}

void FltInstance::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
