#include "headerlayout.h"

#include <diagnostics/assertion.h>
#include <quillon/fltfileheader.h>

namespace {

// One layout, of which every revision has more than the one before. The offsets are from the
// record's start.
template <typename Codec>
void layout(Codec& codec, auto& record) {
    const std::int32_t revision = record.formatRevision;
    quillon::layoutHeaderFront(codec, record, true);
    if (revision <= 1420) return;
    codec.field("nextLightPointId", record.nextLightPointId);  // 254
    codec.field("nextRoadId", record.nextRoadId);
    codec.field("nextCatId", record.nextCatId);
    codec.reserved(8);
    codec.field("earthEllipsoidModel", record.earthEllipsoidModel);  // 268
    codec.field("nextAdaptiveId", record.nextAdaptiveId);
    if (revision == 1540) return codec.reserved(2);
    codec.field("nextCurveId", record.nextCurveId);
    if (revision <= 1560) return codec.reserved(2);
    const bool is1580 = revision >= 1580;
    if (is1580) codec.field("utmZone", record.utmZone);  // 276
    codec.reserved(is1580 ? 6 : 8);
    codec.field("deltaZ", record.deltaZ);  // 284
    codec.field("radius", record.radius);
    codec.field("nextMeshId", record.nextMeshId);
    if (!is1580) return codec.reserved(2);
    codec.field("nextLightPointSystemId", record.nextLightPointSystemId);
    codec.reserved(4);
    codec.field("earthMajorAxis", record.earthMajorAxis);  // 308
    codec.field("earthMinorAxis", record.earthMinorAxis);
}

}  // namespace

void FltFileHeader::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) {
        quillon::layoutHeaderStart(codec, *this);
        layout(codec, *this);
    });
}

void FltFileHeader::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltheader", 235);
    quillon::readBody(token, [this](auto& codec) { quillon::layoutHeaderStart(codec, *this); });
    quillon::readBody(
        token, [this](auto& codec) { layout(codec, *this); }, quillon::kHeaderStartSize);
}

void FltFileHeader::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) {
        quillon::layoutHeaderStart(codec, *this);
        layout(codec, *this);
    });
}
