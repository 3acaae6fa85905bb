// The rows of light points and light sources.
#include "attrrow.h"

#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/kilnlightpoint.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>

namespace fltkilnutil {

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

constexpr EnumRow kModes[] = {{0, 198}, {1, 199}};
constexpr EnumRow kDisplayModes[] = {{0, 188}, {1, 189}, {2, 190}};
// Bidirectional stands before unidirectional: the order of the drop-down list that users know.
constexpr EnumRow kDirections[] = {{0, 185}, {2, 186}, {1, 187}};
// Randomisation and quality are ranges of bits in the flags; their values lie in place.
constexpr EnumRow kRandomizations[] = {
    {0, 191}, {0x1000000, 192}, {0x2000000, 193}, {0x3000000, 194}};
constexpr EnumRow kQualities[] = {{0, 195}, {0x20000, 196}, {0x40000, 197}};

// The first row decides whether the second one can be edited. The back color has the width of a
// boolean but no mask and no yes and no: the whole packed color, as a number.
constexpr AttrRow kLightPointRows[] = {
    {200, "", options<&KilnLightPoint::mode>, Type::Enumeration, Width::Int32, "None", 0, kModes,
     true},
    {201, "", optionsLow16<&KilnLightPoint::modeParameter>, Type::Integer, Width::Int16, "0"},
    {161, "FltSmc", record<&FltLightPoint::surfaceMaterialCode>, Type::Integer, Width::Int16, "0"},
    {162, "FltFid", record<&FltLightPoint::featureId>, Type::Integer, Width::Int16, "0"},
    {202, "FltLtPtBackColor", record<&FltLightPoint::backColor>, Type::Integer, Width::Bool32, "0"},
    {203, "FltLtPtDisplayMode", record<&FltLightPoint::displayMode>, Type::Enumeration,
     Width::Int32, "Either", 0, kDisplayModes},
    {204, "FltLtPtIntensity", record<&FltLightPoint::intensity>, Type::Float, Width::Float32, "0"},
    {205, "FltLtPtBackIntensity", record<&FltLightPoint::backIntensity>, Type::Float,
     Width::Float32, "0"},
    {206, "FltLtPtMinDefocus", record<&FltLightPoint::minDefocus>, Type::Float, Width::Float32,
     "0"},
    {207, "FltLtPtMaxDefocus", record<&FltLightPoint::maxDefocus>, Type::Float, Width::Float32,
     "0"},
    {208, "FltLtPtDisableFade", record<&FltLightPoint::fadingMode>, Type::Boolean, Width::Bool32,
     "0"},
    {209, "FltLtPtDisableFog", record<&FltLightPoint::fogPunchMode>, Type::Boolean, Width::Bool32,
     "0"},
    {210, "FltLtPtDisableDir", record<&FltLightPoint::directionalMode>, Type::Boolean,
     Width::Bool32, "0"},
    {211, "FltLtPtDisableRange", record<&FltLightPoint::rangeMode>, Type::Boolean, Width::Bool32,
     "0"},
    {212, "FltLtPtMinPixelSize", record<&FltLightPoint::minPixelSize>, Type::Float, Width::Float32,
     "0"},
    {213, "FltLtPtMaxPixelSize", record<&FltLightPoint::maxPixelSize>, Type::Float, Width::Float32,
     "0"},
    {214, "FltLtPtActualPixelSize", record<&FltLightPoint::actualPixelSize>, Type::Float,
     Width::Float32, "0"},
    {215, "FltLtPtXprPixelSize", record<&FltLightPoint::transparentFalloffPixelSize>, Type::Float,
     Width::Float32, "0"},
    {216, "FltLtPtXprOffExpnt", record<&FltLightPoint::transparentFalloffExponent>, Type::Float,
     Width::Float32, "0"},
    {217, "FltLtPtXprScalar", record<&FltLightPoint::transparentFalloffScalar>, Type::Float,
     Width::Float32, "0"},
    {218, "FltLtPtXprClamp", record<&FltLightPoint::transparentFalloffClamp>, Type::Float,
     Width::Float32, "0"},
    {219, "FltLtPtFogScalar", record<&FltLightPoint::fogScalar>, Type::Float, Width::Float32, "0"},
    {220, "", record<&FltLightPoint::reserved>, Type::Float, Width::Float32, "0"},
    {221, "FltLtPtSizeThreshold", record<&FltLightPoint::sizeDifferenceThreshold>, Type::Float,
     Width::Float32, "0"},
    {222, "FltLtPtDirectonType", record<&FltLightPoint::directionalType>, Type::Enumeration,
     Width::Int32, "Omni-directional", 0, kDirections},
    {223, "FltLtPtHorizLobe", record<&FltLightPoint::horizontalLobeAngle>, Type::Float,
     Width::Float32, "0"},
    {224, "FltLtPtVertLobe", record<&FltLightPoint::verticalLobeAngle>, Type::Float, Width::Float32,
     "0"},
    {225, "FltLtPtLobeRoll", record<&FltLightPoint::lobeRollAngle>, Type::Float, Width::Float32,
     "0"},
    {226, "FltLtPtDirFalloff", record<&FltLightPoint::directionalFalloffExponent>, Type::Float,
     Width::Float32, "0"},
    {227, "FltLtPtDirAmbient", record<&FltLightPoint::directionalAmbientIntensity>, Type::Float,
     Width::Float32, "0"},
    {228, "FltLtPtAnimPeriod", record<&FltLightPoint::animationPeriod>, Type::Float, Width::Float32,
     "0"},
    {229, "FltLtPtAnimPhase", record<&FltLightPoint::animationPhaseDelay>, Type::Float,
     Width::Float32, "0"},
    {230, "FltLtPtAnimEnabled", record<&FltLightPoint::animationEnabledPeriod>, Type::Float,
     Width::Float32, "0"},
    {231, "FltLtPtSignificance", record<&FltLightPoint::significance>, Type::Float, Width::Float32,
     "0"},
    {232, "FltLtPtDrawOrder", record<&FltLightPoint::calligraphicDrawOrder>, Type::Integer,
     Width::Int32, "0"},
    {233, "FltLtPtNoBackColor", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x40000000},
    {234, "FltLtPtProxOccult", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x10000000},
    {235, "FltLtPtReflective", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x8000000},
    {236, "FltLtPtRandomize", record<&FltLightPoint::flags>, Type::Enumeration, Width::Int32,
     "Never", 0x7000000, kRandomizations},
    {237, "FltLtPtPerspective", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x800000},
    {238, "FltLtPtFlashing", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x400000},
    {239, "FltLtPtRotating", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x200000},
    {240, "FltLtPtRotateCCW", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x100000},
    {241, "FltLtPtQuality", record<&FltLightPoint::flags>, Type::Enumeration, Width::Int32, "Low",
     0x60000, kQualities},
    {242, "FltLtPtVisDay", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x10000},
    {243, "FltLtPtVisDusk", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x8000},
    {244, "FltLtPtVisNight", record<&FltLightPoint::flags>, Type::Boolean, Width::Int32, "0",
     0x4000},
    {245, "FltLtPtRotationX", record<&FltLightPoint::axisX>, Type::Double, Width::Float64, "0"},
    {246, "FltLtPtRotationY", record<&FltLightPoint::axisY>, Type::Double, Width::Float64, "0"},
    {247, "FltLtPtRotationZ", record<&FltLightPoint::axisZ>, Type::Double, Width::Float64, "0"},
};

// The constant attenuation is declared as a double over its 32-bit field, on purpose. The linear
// attenuation must follow it, since it owns the four bytes that a double would reach into.
constexpr AttrRow kLightSourceRows[] = {
    {252, "", record<&FltLightSource::flags>, Type::Boolean, Width::Bool32, "0", 0x80000000},
    {253, "", record<&FltLightSource::flags>, Type::Boolean, Width::Bool32, "0", 0x40000000},
    {254, "", record<&FltLightSource::flags>, Type::Boolean, Width::Bool32, "0", 0x10000000},
    {255, "", options<&KilnLight::palette, &FltLightSourcePalette::spotCutoffAngle>, Type::Float,
     Width::Float32, "0"},
    {256, "", options<&KilnLight::palette, &FltLightSourcePalette::spotExponentialDropoff>,
     Type::Float, Width::Float32, "0"},
    {257, "", options<&KilnLight::palette, &FltLightSourcePalette::constantAttenuation>,
     Type::Double, Width::Float32, "0"},
    {258, "", options<&KilnLight::palette, &FltLightSourcePalette::linearAttenuation>, Type::Float,
     Width::Float32, "0"},
    {259, "", options<&KilnLight::palette, &FltLightSourcePalette::quadraticAttenuation>,
     Type::Float, Width::Float32, "0"},
    {260, "", options<&KilnLight::palette, &FltLightSourcePalette::diffuseRed>, Type::Float,
     Width::Float32, "0"},
    {261, "", options<&KilnLight::palette, &FltLightSourcePalette::diffuseGreen>, Type::Float,
     Width::Float32, "0"},
    {262, "", options<&KilnLight::palette, &FltLightSourcePalette::diffuseBlue>, Type::Float,
     Width::Float32, "0"},
    {263, "", options<&KilnLight::palette, &FltLightSourcePalette::ambientRed>, Type::Float,
     Width::Float32, "0"},
    {264, "", options<&KilnLight::palette, &FltLightSourcePalette::ambientGreen>, Type::Float,
     Width::Float32, "0"},
    {265, "", options<&KilnLight::palette, &FltLightSourcePalette::ambientBlue>, Type::Float,
     Width::Float32, "0"},
    {266, "", options<&KilnLight::palette, &FltLightSourcePalette::specularRed>, Type::Float,
     Width::Float32, "0"},
    {267, "", options<&KilnLight::palette, &FltLightSourcePalette::specularGreen>, Type::Float,
     Width::Float32, "0"},
    {268, "", options<&KilnLight::palette, &FltLightSourcePalette::specularBlue>, Type::Float,
     Width::Float32, "0"},
};

}  // namespace

constinit const GroupRow kLightPointGroup =
    groupRow<FltLightPoint, KilnLightPoint>(248, kLightPointRows);
constinit const GroupRow kLightSourceGroup =
    groupRow<FltLightSource, KilnLight>(271, kLightSourceRows);

}  // namespace fltkilnutil
