#include "headerlayout.h"

#include <diagnostics/assertion.h>
#include <quillon/fltheader.h>

namespace {

template <typename Codec>
void layoutTail1580(Codec& codec, auto& record) {
    codec.field("nextCurveId", record.nextCurveId);
    codec.field("utmZone", record.utmZone);
    codec.reserved(6);
    codec.field("deltaZ", record.deltaZ);
    codec.field("radius", record.radius);
    codec.field("nextMeshId", record.nextMeshId);
    codec.field("nextLightPointSystemId", record.nextLightPointSystemId);
    codec.reserved(4);
    codec.field("earthMajorAxis", record.earthMajorAxis);
    codec.field("earthMinorAxis", record.earthMinorAxis);
}

template <typename Codec>
void layoutTail(Codec& codec, auto& record) {
    if (record.formatRevision >= 1580) {
        layoutTail1580(codec, record);
    } else if (record.formatRevision == 1540) {
        codec.reserved(2);
    } else {
        codec.field("nextCurveId", record.nextCurveId);
        codec.reserved(2);
        if (record.formatRevision <= 1560) return;
        codec.field("deltaZ", record.deltaZ);
        codec.field("radius", record.radius);
        codec.field("nextMeshId", record.nextMeshId);
        codec.reserved(2);
    }
}

template <typename Codec>
void layoutRest(Codec& codec, auto& record) {
    const bool beyond1420 = record.formatRevision > 1420;
    quillon::layoutHeaderFront(codec, record, beyond1420);
    if (!beyond1420) return;
    // The counter stands twice, and every field behind it two bytes later than it would otherwise:
    // stored headers are laid out so.
    codec.repeated(record.nextLightSourceId);
    codec.field("nextLightPointId", record.nextLightPointId);
    codec.field("nextRoadId", record.nextRoadId);
    codec.field("nextCatId", record.nextCatId);
    codec.reserved(8);
    codec.field("earthEllipsoidModel", record.earthEllipsoidModel);
    codec.field("nextAdaptiveId", record.nextAdaptiveId);
    layoutTail(codec, record);
}

}  // namespace

void FltHeader::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) {
        quillon::layoutHeaderStart(codec, *this);
        layoutRest(codec, *this);
    });
}

void FltHeader::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltheader", 235);
    quillon::readBody(token, [this](auto& codec) { quillon::layoutHeaderStart(codec, *this); });
    quillon::readBody(
        token, [this](auto& codec) { layoutRest(codec, *this); }, quillon::kHeaderStartSize);
}

void FltHeader::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) {
        quillon::layoutHeaderStart(codec, *this);
        layoutRest(codec, *this);
    });
}
