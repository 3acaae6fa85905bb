#include "fltlayout.h"

#include <quillon/fltdof.h>

namespace {

// A point counts as never set only when all three coordinates say so.
void setIfUnset(FltPoint3d& point, const FltPoint3d& value) {
    constexpr double kUnset = FltDof::kUnsetCoordinate;
    if (point == FltPoint3d{kUnset, kUnset, kUnset}) point = value;
}

}  // namespace

template <>
struct quillon::Layout<FltDof> {
    static constexpr OpcodeCheck kOpcodeCheck = kAnyOpcode;
    static constexpr DefaultName kName{"d", &FltHeader::nextDofId};
    static void fields(auto& codec, auto& record) {
        codec.field("id", record.asciiId);
        codec.reserved(4);
        codec.field("origin", record.origin);
        codec.field("pointOnXAxis", record.pointOnXAxis);
        codec.field("pointInXyPlane", record.pointInXyPlane);
        codec.field("zTranslationMin", record.zTranslationMin);
        codec.field("zTranslationMax", record.zTranslationMax);
        codec.field("zTranslationCurrent", record.zTranslationCurrent);
        codec.field("zTranslationIncrement", record.zTranslationIncrement);
        codec.field("yTranslationMin", record.yTranslationMin);
        codec.field("yTranslationMax", record.yTranslationMax);
        codec.field("yTranslationCurrent", record.yTranslationCurrent);
        codec.field("yTranslationIncrement", record.yTranslationIncrement);
        codec.field("xTranslationMin", record.xTranslationMin);
        codec.field("xTranslationMax", record.xTranslationMax);
        codec.field("xTranslationCurrent", record.xTranslationCurrent);
        codec.field("xTranslationIncrement", record.xTranslationIncrement);
        codec.field("pitchMin", record.pitchMin);
        codec.field("pitchMax", record.pitchMax);
        codec.field("pitchCurrent", record.pitchCurrent);
        codec.field("pitchIncrement", record.pitchIncrement);
        codec.field("rollMin", record.rollMin);
        codec.field("rollMax", record.rollMax);
        codec.field("rollCurrent", record.rollCurrent);
        codec.field("rollIncrement", record.rollIncrement);
        codec.field("yawMin", record.yawMin);
        codec.field("yawMax", record.yawMax);
        codec.field("yawCurrent", record.yawCurrent);
        codec.field("yawIncrement", record.yawIncrement);
        codec.field("zScaleMin", record.zScaleMin);
        codec.field("zScaleMax", record.zScaleMax);
        codec.field("zScaleCurrent", record.zScaleCurrent);
        codec.field("zScaleIncrement", record.zScaleIncrement);
        codec.field("yScaleMin", record.yScaleMin);
        codec.field("yScaleMax", record.yScaleMax);
        codec.field("yScaleCurrent", record.yScaleCurrent);
        codec.field("yScaleIncrement", record.yScaleIncrement);
        codec.field("xScaleMin", record.xScaleMin);
        codec.field("xScaleMax", record.xScaleMax);
        codec.field("xScaleCurrent", record.xScaleCurrent);
        codec.field("xScaleIncrement", record.xScaleIncrement);
        codec.field("flags", record.flags);
    }
    static void afterReading(FltDof& dof, std::uint32_t) {
        setIfUnset(dof.origin, FltDof::kDefaultOrigin);
        setIfUnset(dof.pointOnXAxis, FltDof::kDefaultPointOnXAxis);
        setIfUnset(dof.pointInXyPlane, FltDof::kDefaultPointInXyPlane);
    }
};
template class FltRecordOf<FltDof, FltNamedRec, kFltDof>;
