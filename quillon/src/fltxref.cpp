#include "fltcodec.h"

#include <quillon/fltxref.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("fileName", record.fileName);
    codec.reserved(4);
    codec.field("flags", record.flags);
    codec.reserved(2);
}

}  // namespace

void FltXRef::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltXRef::readToken(FltToken& token, std::uint32_t) {
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltXRef::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
