#include <quillon/fltfieldedit.h>

#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttexture.h>

namespace quillon {

// Each stands beside the layout of its class.
template <typename Record>
FltFieldSet assignField(Record& record, std::string_view field, std::string_view text);

}  // namespace quillon

namespace {

template <typename Record>
FltFieldSet assign(FltRecord& record, std::string_view field, std::string_view text) {
    return quillon::assignField(static_cast<Record&>(record), field, text);
}

}  // namespace

FltFieldSet fltSetField(FltRecord& record, std::string_view field, std::string_view text) {
    switch (record.opcode()) {
        case kFltMaterial:
            return assign<FltMaterial>(record, field, text);
        case kFltTexture:
            return assign<FltTexture>(record, field, text);
        case kFltTextureMappingPalette:
            return assign<FltTextureMapping>(record, field, text);
        case kFltLightSourcePalette:
            return assign<FltLightSourcePalette>(record, field, text);
        case kFltLightPointAppearance:
            return assign<FltLightPointAppearance>(record, field, text);
        case kFltLightPointAnimation:
            return assign<FltLightPointAnimation>(record, field, text);
        default:
            return FltFieldSet::kNoField;
    }
}
