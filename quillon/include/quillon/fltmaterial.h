// Materials.
#pragma once

#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecordof.h>

#include <vector>

/// Material palette entry. Colors have components from 0 to 1.
class FltMaterial : public FltRecordOf<FltMaterial, FltPaletteRec, kFltMaterial> {
public:
    std::int32_t index = 0;  ///< by which faces name it
    char name[12] = {};      ///< NUL-padded
    std::uint32_t flags = 0;
    FltColor3f ambient;
    FltColor3f diffuse;
    FltColor3f specular;
    FltColor3f emissive;
    float shininess = 0;  ///< 0 to 128
    float alpha = 1;      ///< 0 clear to 1 opaque
};

/// One of the materials of a material table.
struct FltTableMaterial {
    FltColor3f ambient;
    FltColor3f diffuse;
    FltColor3f specular;
    FltColor3f emissive;
    float shininess = 0;
    float alpha = 1;
    std::uint32_t flags = 0;
    char name[12] = {};
};

/// The materials of a file older than revision 1500, named by their place in the table.
class FltMaterialTable : public FltRecordOf<FltMaterialTable, FltPaletteRec, kFltMaterialTable> {
public:
    std::vector<FltTableMaterial> materials;
};
