#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltobject.h>
#include <quillon/fltstream.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.field("flags", record.flags);
    codec.field("relativePriority", record.relativePriority);
    codec.field("transparency", record.transparency);
    codec.field("specialEffect1", record.specialEffect1);
    codec.field("specialEffect2", record.specialEffect2);
    codec.field("significance", record.significance);
    codec.reserved(2);
}

}  // namespace

void FltObject::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "o", stream.header().nextObjectId);
    FltRecord::write(stream);
}

void FltObject::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltObject::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltobject", 63);
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltObject::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
