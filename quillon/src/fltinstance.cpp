#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltinstance.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.reserved(2);
    codec.field("instanceNumber", record.instanceNumber);
}

}  // namespace

void FltInstance::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, opcode(), [this](auto& codec) { layout(codec, *this); });
}

void FltInstance::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == opcode(), "fltinstance", 44);
    token.rewind();
    quillon::readFields(token, [this](auto& codec) { layout(codec, *this); });
}

void FltInstance::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
