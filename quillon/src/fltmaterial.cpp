#include "fieldassign.h"

#include <quillon/fltmaterial.h>

namespace {

void layoutColors(auto& codec, auto& material) {
    codec.field("ambient", material.ambient);
    codec.field("diffuse", material.diffuse);
    codec.field("specular", material.specular);
    codec.field("emissive", material.emissive);
    codec.field("shininess", material.shininess);
    codec.field("alpha", material.alpha);
}

}  // namespace

template <>
struct quillon::Layout<FltMaterial> {
    static void fields(auto& codec, auto& record) {
        codec.field("index", record.index);
        codec.field("name", record.name);
        codec.field("flags", record.flags);
        layoutColors(codec, record);
        codec.reserved(4);
    }
};
template class FltRecordOf<FltMaterial, FltPaletteRec, kFltMaterial>;
template FltFieldSet quillon::assignField(FltMaterial&, std::string_view, std::string_view);

template <>
struct quillon::Layout<FltMaterialTable> {
    static void fields(auto& codec, auto& record) {
        codec.items(record.materials, [](auto& each, auto& material) {
            layoutColors(each, material);
            each.field("flags", material.flags);
            each.field("name", material.name);
            each.reserved(112);
        });
    }
};
template class FltRecordOf<FltMaterialTable, FltPaletteRec, kFltMaterialTable>;
