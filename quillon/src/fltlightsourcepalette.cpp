#include "fieldassign.h"

#include <quillon/fltlightsourcepalette.h>

template <>
struct quillon::Layout<FltLightSourcePalette> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltlightsourcepalette", 60};
    static void fields(auto& codec, auto& record) {
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
};
template class FltRecordOf<FltLightSourcePalette, FltPaletteRec, kFltLightSourcePalette>;
template FltFieldSet quillon::assignField(FltLightSourcePalette&, std::string_view,
                                          std::string_view);
