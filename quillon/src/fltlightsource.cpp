#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltstream.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.reserved(4);
    codec.field("paletteIndex", record.paletteIndex);
    codec.reserved(4);
    codec.field("flags", record.flags);
    codec.reserved(4);
    codec.field("positionX", record.positionX);
    codec.field("positionY", record.positionY);
    codec.field("positionZ", record.positionZ);
    codec.field("yaw", record.yaw);
    codec.field("pitch", record.pitch);
}

}  // namespace

void FltLightSource::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "ls", stream.header().nextLightSourceId);
    FltRecord::write(stream);
}

void FltLightSource::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltLightSource::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltlightsource", 61);
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltLightSource::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
