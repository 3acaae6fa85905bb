#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltgroup.h>
#include <quillon/fltstream.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.field("relativePriority", record.relativePriority);
    codec.reserved(2);
    codec.field("flags", record.flags);
    codec.field("specialEffect1", record.specialEffect1);
    codec.field("specialEffect2", record.specialEffect2);
    codec.field("significance", record.significance);
    codec.field("layerCode", record.layerCode);
    codec.reserved(5);
}

}  // namespace

void FltGroup::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "g", stream.header().nextGroupId);
    FltRecord::write(stream);
}

void FltGroup::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltGroup::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltgroup", 61);
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltGroup::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
