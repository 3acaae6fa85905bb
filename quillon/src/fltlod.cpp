#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltlod.h>
#include <quillon/fltstream.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.reserved(4);
    codec.field("switchInDistance", record.switchInDistance);
    codec.field("switchOutDistance", record.switchOutDistance);
    codec.field("specialEffect1", record.specialEffect1);
    codec.field("specialEffect2", record.specialEffect2);
    codec.field("flags", record.flags);
    codec.field("centerX", record.centerX);
    codec.field("centerY", record.centerY);
    codec.field("centerZ", record.centerZ);
    codec.field("transitionRange", record.transitionRange);
}

}  // namespace

void FltLod::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "l", stream.header().nextLodId);
    FltRecord::write(stream);
}

void FltLod::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltLod::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltlod", 61);
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltLod::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
