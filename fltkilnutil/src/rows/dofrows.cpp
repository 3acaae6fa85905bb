// The rows of a degree of freedom.
#include "attrrow.h"

#include <quillon/fltdof.h>

namespace fltkilnutil {

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

// Axes in the order that users know; in the record they run from z to x, and the bits of the
// limited flags follow neither.
constexpr AttrRow kDofRows[] = {
    {318, "FltDofTxMin", record<&FltDof::xTranslationMin>, Type::Double, Width::Float64,
     "-1000000"},
    {319, "FltDofTxCurr", record<&FltDof::xTranslationCurrent>, Type::Double, Width::Float64, "0"},
    {320, "FltDofTxMax", record<&FltDof::xTranslationMax>, Type::Double, Width::Float64, "1000000"},
    {321, "FltDofTxIncr", record<&FltDof::xTranslationIncrement>, Type::Double, Width::Float64,
     "1"},
    {322, "FltDofTxLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x80000000},
    {323, "FltDofTyMin", record<&FltDof::yTranslationMin>, Type::Double, Width::Float64,
     "-1000000"},
    {324, "FltDofTyCurr", record<&FltDof::yTranslationCurrent>, Type::Double, Width::Float64, "0"},
    {325, "FltDofTyMax", record<&FltDof::yTranslationMax>, Type::Double, Width::Float64, "1000000"},
    {326, "FltDofTyIncr", record<&FltDof::yTranslationIncrement>, Type::Double, Width::Float64,
     "1"},
    {327, "FltDofTyLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x40000000},
    {328, "FltDofTzMin", record<&FltDof::zTranslationMin>, Type::Double, Width::Float64,
     "-1000000"},
    {329, "FltDofTzCurr", record<&FltDof::zTranslationCurrent>, Type::Double, Width::Float64, "0"},
    {330, "FltDofTzMax", record<&FltDof::zTranslationMax>, Type::Double, Width::Float64, "1000000"},
    {331, "FltDofTzIncr", record<&FltDof::zTranslationIncrement>, Type::Double, Width::Float64,
     "1"},
    {332, "FltDofTzLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x20000000},
    {333, "FltDofSxMin", record<&FltDof::xScaleMin>, Type::Double, Width::Float64, "-1000000"},
    {334, "FltDofSxCurr", record<&FltDof::xScaleCurrent>, Type::Double, Width::Float64, "0"},
    {335, "FltDofSxMax", record<&FltDof::xScaleMax>, Type::Double, Width::Float64, "1000000"},
    {336, "FltDofSxIncr", record<&FltDof::xScaleIncrement>, Type::Double, Width::Float64, "1"},
    {337, "FltDofSxLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x2000000},
    {338, "FltDofSyMin", record<&FltDof::yScaleMin>, Type::Double, Width::Float64, "-1000000"},
    {339, "FltDofSyCurr", record<&FltDof::yScaleCurrent>, Type::Double, Width::Float64, "0"},
    {340, "FltDofSyMax", record<&FltDof::yScaleMax>, Type::Double, Width::Float64, "1000000"},
    {341, "FltDofSyIncr", record<&FltDof::yScaleIncrement>, Type::Double, Width::Float64, "1"},
    {342, "FltDofSyLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x1000000},
    {343, "FltDofSzMin", record<&FltDof::zScaleMin>, Type::Double, Width::Float64, "-1000000"},
    {344, "FltDofSzCurr", record<&FltDof::zScaleCurrent>, Type::Double, Width::Float64, "0"},
    {345, "FltDofSzMax", record<&FltDof::zScaleMax>, Type::Double, Width::Float64, "1000000"},
    {346, "FltDofSzIncr", record<&FltDof::zScaleIncrement>, Type::Double, Width::Float64, "1"},
    {347, "FltDofSzLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x800000},
    {348, "FltDofRollMin", record<&FltDof::rollMin>, Type::Double, Width::Float64, "-1000000"},
    {349, "FltDofRollCurr", record<&FltDof::rollCurrent>, Type::Double, Width::Float64, "0"},
    {350, "FltDofRollMax", record<&FltDof::rollMax>, Type::Double, Width::Float64, "1000000"},
    {351, "FltDofRollIncr", record<&FltDof::rollIncrement>, Type::Double, Width::Float64, "1"},
    {352, "FltDofRollLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x8000000},
    {353, "FltDofPitchMin", record<&FltDof::pitchMin>, Type::Double, Width::Float64, "-1000000"},
    {354, "FltDofPitchCurr", record<&FltDof::pitchCurrent>, Type::Double, Width::Float64, "0"},
    {355, "FltDofPitchMax", record<&FltDof::pitchMax>, Type::Double, Width::Float64, "1000000"},
    {356, "FltDofPitchIncr", record<&FltDof::pitchIncrement>, Type::Double, Width::Float64, "1"},
    {357, "FltDofPitchLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0",
     0x10000000},
    {358, "FltDofYawMin", record<&FltDof::yawMin>, Type::Double, Width::Float64, "-1000000"},
    {359, "FltDofYawCurr", record<&FltDof::yawCurrent>, Type::Double, Width::Float64, "0"},
    {360, "FltDofYawMax", record<&FltDof::yawMax>, Type::Double, Width::Float64, "1000000"},
    {361, "FltDofYawIncr", record<&FltDof::yawIncrement>, Type::Double, Width::Float64, "1"},
    {362, "FltDofYawLimited", record<&FltDof::flags>, Type::Boolean, Width::Int32, "0", 0x4000000},
};

}  // namespace

constinit const GroupRow kDofGroup = groupRow<FltDof>(363, kDofRows);

}  // namespace fltkilnutil
