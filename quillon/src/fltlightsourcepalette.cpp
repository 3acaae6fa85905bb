#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltlightsourcepalette.h>

namespace {

template <typename Codec>
void layout(Codec& codec, auto& record) {
    codec.field("paletteIndex", record.paletteIndex);
    codec.reserved(8);
    codec.field("name", record.name);
    codec.reserved(4);
    codec.field("ambientRed", record.ambientRed);
    codec.field("ambientGreen", record.ambientGreen);
    codec.field("ambientBlue", record.ambientBlue);
    codec.field("ambientAlpha", record.ambientAlpha);
    codec.field("diffuseRed", record.diffuseRed);
    codec.field("diffuseGreen", record.diffuseGreen);
    codec.field("diffuseBlue", record.diffuseBlue);
    codec.field("diffuseAlpha", record.diffuseAlpha);
    codec.field("specularRed", record.specularRed);
    codec.field("specularGreen", record.specularGreen);
    codec.field("specularBlue", record.specularBlue);
    codec.field("specularAlpha", record.specularAlpha);
    codec.field("lightType", record.lightType);
    codec.reserved(40);
    codec.field("spotExponentialDropoff", record.spotExponentialDropoff);
    codec.field("spotCutoffAngle", record.spotCutoffAngle);
    codec.field("yaw", record.yaw);
    codec.field("pitch", record.pitch);
    codec.field("constantAttenuation", record.constantAttenuation);
    codec.field("linearAttenuation", record.linearAttenuation);
    codec.field("quadraticAttenuation", record.quadraticAttenuation);
    codec.field("activeDuringModeling", record.activeDuringModeling);
    codec.reserved(76);
}

}  // namespace

void FltLightSourcePalette::writeToken(FltToken& token, std::uint32_t) const {
    quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltLightSourcePalette::readToken(FltToken& token, std::uint32_t) {
    diagnostics::check(token.opcode() == kOpcode, "fltlightsourcepalette", 60);
    quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltLightSourcePalette::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
