#include "fltcodec.h"

#include <quillon/fltbsp.h>
#include <quillon/fltstream.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.reserved(4);
    codec.field("planeA", record.planeA);
    codec.field("planeB", record.planeB);
    codec.field("planeC", record.planeC);
    codec.field("planeD", record.planeD);
}

}  // namespace

FltBsp::FltBsp() {
    const FltPlane plane = fltPlaneFromPoints({0, 0, 0}, {0, 1, 0}, {1, 0, 0});
    planeA = plane.a;
    planeB = plane.b;
    planeC = plane.c;
    planeD = plane.d;
}

void FltBsp::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "b", stream.header().nextBspId);
    FltRecord::write(stream);
}

void FltBsp::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltBsp::readToken(FltToken& token, std::uint32_t) {
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltBsp::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
