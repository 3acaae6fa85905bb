// The rows of a face.
#include "attrrow.h"

#include <fltkilnutil/kilnface.h>
#include <quillon/fltface.h>

namespace fltkilnutil {

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

constexpr EnumRow kLightModes[] = {{0, 147}, {1, 148}, {2, 149}, {3, 150}};
constexpr EnumRow kDrawTypes[] = {{0, 151}, {1, 152}, {2, 153}, {3, 154},
                                  {4, 155}, {8, 156}, {9, 157}, {10, 158}};
constexpr EnumRow kBillboards[] = {{0, 143}, {1, 144}, {2, 145}, {4, 146}};

constexpr AttrRow kFaceRows[] = {
    {159, "FltIRColor", record<&FltFace::irColorCode>, Type::Integer, Width::Int32, "0"},
    {160, "FltIRMaterial", record<&FltFace::irMaterialCode>, Type::Integer, Width::Int32, "0"},
    {161, "FltSmc", record<&FltFace::surfaceMaterialCode>, Type::Integer, Width::Int16, "0"},
    {162, "FltFid", record<&FltFace::featureId>, Type::Integer, Width::Int16, "0"},
    {163, "FltLightMode", record<&FltFace::lightMode>, Type::Enumeration, Width::Int8, "", 0,
     kLightModes},
    {164, "FltDrawType", record<&FltFace::drawType>, Type::Enumeration, Width::Int8, "", 0,
     kDrawTypes},
    {165, "FltTerrain", record<&FltFace::flags>, Type::Boolean, Width::Bool32, "0", 0x80000000},
    {166, "FltHidden", record<&FltFace::flags>, Type::Boolean, Width::Bool32, "0", 0x4000000},
    {167, "FltFootprint", record<&FltFace::flags>, Type::Boolean, Width::Bool32, "0", 0x8000000},
    {168, "FltBillboard", record<&FltFace::billboard>, Type::Enumeration, Width::Int8, "", 0,
     kBillboards},
    {169, "FltSuperFace", options<&KilnFace::superFace>, Type::Boolean, Width::Bool32, "0"},
    {170, "FltUseKilnNormals", options<&KilnFace::useHostNormals>, Type::Boolean, Width::Bool32,
     "1"},
    {171, "FltUseMaterial", options<&KilnFace::useMaterial>, Type::Boolean, Width::Bool32, ""},
    {172, "FltKeepTris", options<&KilnFace::keepTriangles>, Type::Boolean, Width::Bool32, "1"},
};

}  // namespace

constinit const GroupRow kFaceGroup = groupRow<FltFace, KilnFace>(173, kFaceRows);

}  // namespace fltkilnutil
