#include "fltcodec.h"

#include <quillon/fltlightpoint.h>
#include <quillon/fltstream.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.field("surfaceMaterialCode", record.surfaceMaterialCode);
    codec.field("featureId", record.featureId);

    codec.field("backColor", record.backColor);
    codec.field("displayMode", record.displayMode);
    codec.field("intensity", record.intensity);
    codec.field("backIntensity", record.backIntensity);
    codec.field("minDefocus", record.minDefocus);
    codec.field("maxDefocus", record.maxDefocus);
    codec.field("fadingMode", record.fadingMode);
    codec.field("fogPunchMode", record.fogPunchMode);
    codec.field("directionalMode", record.directionalMode);
    codec.field("rangeMode", record.rangeMode);
    codec.field("minPixelSize", record.minPixelSize);
    codec.field("maxPixelSize", record.maxPixelSize);
    codec.field("actualPixelSize", record.actualPixelSize);
    codec.field("transparentFalloffPixelSize", record.transparentFalloffPixelSize);
    codec.field("transparentFalloffExponent", record.transparentFalloffExponent);
    codec.field("transparentFalloffScalar", record.transparentFalloffScalar);
    codec.field("transparentFalloffClamp", record.transparentFalloffClamp);
    codec.field("fogScalar", record.fogScalar);
    codec.word("reserved", record.reserved);
    codec.field("sizeDifferenceThreshold", record.sizeDifferenceThreshold);
    codec.field("directionalType", record.directionalType);
    codec.field("horizontalLobeAngle", record.horizontalLobeAngle);
    codec.field("verticalLobeAngle", record.verticalLobeAngle);
    codec.field("lobeRollAngle", record.lobeRollAngle);
    codec.field("directionalFalloffExponent", record.directionalFalloffExponent);
    codec.field("directionalAmbientIntensity", record.directionalAmbientIntensity);
    codec.field("animationPeriod", record.animationPeriod);
    codec.field("animationPhaseDelay", record.animationPhaseDelay);
    codec.field("animationEnabledPeriod", record.animationEnabledPeriod);
    codec.field("significance", record.significance);
    codec.field("calligraphicDrawOrder", record.calligraphicDrawOrder);
    codec.field("flags", record.flags);

    codec.narrowed("axisX", record.axisX);
    codec.narrowed("axisY", record.axisY);
    codec.narrowed("axisZ", record.axisZ);
}

}  // namespace

void FltLightPoint::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "lp", stream.header().nextLightPointId);
    FltRecord::write(stream);
}

void FltLightPoint::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltLightPoint::readToken(FltToken& token, std::uint32_t) {
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltLightPoint::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
