// The rows of a clip region.
#include "attrrow.h"

#include <quillon/fltclipregion.h>

namespace fltkilnutil {

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

constexpr AttrRow kClipRegionRows[] = {
    {372, "FltClipX0", record<&FltClipRegion::corner0X>, Type::Double, Width::Float64, "0"},
    {373, "FltClipY0", record<&FltClipRegion::corner0Y>, Type::Double, Width::Float64, "0"},
    {374, "FltClipZ0", record<&FltClipRegion::corner0Z>, Type::Double, Width::Float64, "0"},
    {375, "FltClipX1", record<&FltClipRegion::corner1X>, Type::Double, Width::Float64, "0"},
    {376, "FltClipY1", record<&FltClipRegion::corner1Y>, Type::Double, Width::Float64, "0"},
    {377, "FltClipZ1", record<&FltClipRegion::corner1Z>, Type::Double, Width::Float64, "0"},
    {378, "FltClipX2", record<&FltClipRegion::corner2X>, Type::Double, Width::Float64, "0"},
    {379, "FltClipY2", record<&FltClipRegion::corner2Y>, Type::Double, Width::Float64, "0"},
    {380, "FltClipZ2", record<&FltClipRegion::corner2Z>, Type::Double, Width::Float64, "0"},
    {381, "FltClipX3", record<&FltClipRegion::corner3X>, Type::Double, Width::Float64, "0"},
    {382, "FltClipY3", record<&FltClipRegion::corner3Y>, Type::Double, Width::Float64, "0"},
    {383, "FltClipZ3", record<&FltClipRegion::corner3Z>, Type::Double, Width::Float64, "0"},
    {384, "FltClipBottom", record<&FltClipRegion::edgeClip0>, Type::Boolean, Width::Int8, "0"},
    {385, "FltClipRight", record<&FltClipRegion::edgeClip1>, Type::Boolean, Width::Int8, "0"},
    {386, "FltClipTop", record<&FltClipRegion::edgeClip2>, Type::Boolean, Width::Int8, "0"},
    {387, "FltClipLeft", record<&FltClipRegion::edgeClip3>, Type::Boolean, Width::Int8, "0"},
    {388, "FltClipBack", record<&FltClipRegion::edgeClip4>, Type::Boolean, Width::Int8, "0"},
    {389, "", record<&FltClipRegion::plane0A>, Type::Double, Width::Float64, "0"},
    {390, "", record<&FltClipRegion::plane0B>, Type::Double, Width::Float64, "0"},
    {391, "", record<&FltClipRegion::plane0C>, Type::Double, Width::Float64, "0"},
    {392, "", record<&FltClipRegion::plane0D>, Type::Double, Width::Float64, "0"},
    {393, "", record<&FltClipRegion::plane1A>, Type::Double, Width::Float64, "0"},
    {394, "", record<&FltClipRegion::plane1B>, Type::Double, Width::Float64, "0"},
    {395, "", record<&FltClipRegion::plane1C>, Type::Double, Width::Float64, "0"},
    {396, "", record<&FltClipRegion::plane1D>, Type::Double, Width::Float64, "0"},
    {397, "", record<&FltClipRegion::plane2A>, Type::Double, Width::Float64, "0"},
    {398, "", record<&FltClipRegion::plane2B>, Type::Double, Width::Float64, "0"},
    {399, "", record<&FltClipRegion::plane2C>, Type::Double, Width::Float64, "0"},
    {400, "", record<&FltClipRegion::plane2D>, Type::Double, Width::Float64, "0"},
    {401, "", record<&FltClipRegion::plane3A>, Type::Double, Width::Float64, "0"},
    {402, "", record<&FltClipRegion::plane3B>, Type::Double, Width::Float64, "0"},
    {403, "", record<&FltClipRegion::plane3C>, Type::Double, Width::Float64, "0"},
    {404, "", record<&FltClipRegion::plane3D>, Type::Double, Width::Float64, "0"},
    {405, "", record<&FltClipRegion::plane4A>, Type::Double, Width::Float64, "0"},
    {406, "", record<&FltClipRegion::plane4B>, Type::Double, Width::Float64, "0"},
    {407, "", record<&FltClipRegion::plane4C>, Type::Double, Width::Float64, "0"},
    {408, "", record<&FltClipRegion::plane4D>, Type::Double, Width::Float64, "0"},
};

}  // namespace

constinit const GroupRow kClipRegionGroup = groupRow<FltClipRegion>(409, kClipRegionRows);

}  // namespace fltkilnutil
