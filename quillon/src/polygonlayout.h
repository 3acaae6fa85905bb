// What faces and meshes have in common, piece by piece in file order.
#pragma once

#include "fltlayout.h"

namespace quillon {

[[gnu::always_inline]] inline void layoutDrawing(auto& codec, auto& record) {
    codec.field("irColorCode", record.irColorCode);
    codec.field("relativePriority", record.relativePriority);
    codec.field("drawType", record.drawType);
    codec.field("textureWhite", record.textureWhite);
}

[[gnu::always_inline]] inline void layoutColorNames(auto& codec, auto& record) {
    codec.field("colorNameIndex", record.colorNameIndex);
    codec.field("alternateColorNameIndex", record.alternateColorNameIndex);
}

[[gnu::always_inline]] inline void layoutSurface(auto& codec, auto& record) {
    codec.reserved(1);
    codec.field("billboard", record.billboard);
    codec.field("detailTextureIndex", record.detailTextureIndex);
    codec.field("textureIndex", record.textureIndex);
    codec.field("materialIndex", record.materialIndex);
    codec.field("surfaceMaterialCode", record.surfaceMaterialCode);
    codec.field("featureId", record.featureId);
    codec.field("irMaterialCode", record.irMaterialCode);
    codec.field("transparency", record.transparency);
    codec.field("lodGenerationControl", record.lodGenerationControl);
    codec.field("lineStyleIndex", record.lineStyleIndex);
    codec.field("flags", record.flags);
    codec.field("lightMode", record.lightMode);
    codec.reserved(7);
}

[[gnu::always_inline]] inline void layoutColorIndices(auto& codec, auto& record) {
    codec.field("textureMappingIndex", record.textureMappingIndex);
    codec.reserved(2);
    codec.field("primaryColorIndex", record.primaryColorIndex);
    codec.field("alternateColorIndex", record.alternateColorIndex);
    codec.reserved(4);
}

}  // namespace quillon
