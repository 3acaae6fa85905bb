// The degree-of-freedom record.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltrecordof.h>

/// Degree of freedom: a local frame and the limits, current value and increment of nine motions.
/// Translations are in database units, angles in degrees. Named "d%d" on output.
class FltDof : public FltRecordOf<FltDof, FltNamedRec, kFltDof> {
public:
    /// All coordinates of a frame point that was never set. Reading replaces such a point by its
    /// default.
    static constexpr double kUnsetCoordinate = -1e8;
    static constexpr FltPoint3d kDefaultOrigin{0, 0, 0};
    static constexpr FltPoint3d kDefaultPointOnXAxis{1, 0, 0};
    static constexpr FltPoint3d kDefaultPointInXyPlane{0, 1, 0};

    // The local frame.
    FltPoint3d origin = kDefaultOrigin;
    FltPoint3d pointOnXAxis = kDefaultPointOnXAxis;
    FltPoint3d pointInXyPlane = kDefaultPointInXyPlane;

    double zTranslationMin = 0;
    double zTranslationMax = 0;
    double zTranslationCurrent = 0;
    double zTranslationIncrement = 0;

    double yTranslationMin = 0;
    double yTranslationMax = 0;
    double yTranslationCurrent = 0;
    double yTranslationIncrement = 0;

    double xTranslationMin = 0;
    double xTranslationMax = 0;
    double xTranslationCurrent = 0;
    double xTranslationIncrement = 0;

    double pitchMin = 0;
    double pitchMax = 0;
    double pitchCurrent = 0;
    double pitchIncrement = 0;

    double rollMin = 0;
    double rollMax = 0;
    double rollCurrent = 0;
    double rollIncrement = 0;

    double yawMin = 0;
    double yawMax = 0;
    double yawCurrent = 0;
    double yawIncrement = 0;

    double zScaleMin = 0;
    double zScaleMax = 0;
    double zScaleCurrent = 0;
    double zScaleIncrement = 0;

    double yScaleMin = 0;
    double yScaleMax = 0;
    double yScaleCurrent = 0;
    double yScaleIncrement = 0;

    double xScaleMin = 0;
    double xScaleMax = 0;
    double xScaleCurrent = 0;
    double xScaleIncrement = 0;

    std::int32_t flags = 0;
};

/// One of the nine motions of a degree of freedom.
struct FltDofMotion {
    const char* name;
    std::uint32_t limited;  ///< the bit of `flags` that says that the limits count
    double FltDof::*least;
    double FltDof::*greatest;
    double FltDof::*current;
    double FltDof::*increment;
    bool isScale = false;

    bool isLimited(const FltDof& dof) const noexcept {
        return (static_cast<std::uint32_t>(dof.flags) & limited) != 0;
    }
};

inline constexpr FltDofMotion kFltDofMotions[] = {
    {"x", 0x80000000, &FltDof::xTranslationMin, &FltDof::xTranslationMax,
     &FltDof::xTranslationCurrent, &FltDof::xTranslationIncrement},
    {"y", 0x40000000, &FltDof::yTranslationMin, &FltDof::yTranslationMax,
     &FltDof::yTranslationCurrent, &FltDof::yTranslationIncrement},
    {"z", 0x20000000, &FltDof::zTranslationMin, &FltDof::zTranslationMax,
     &FltDof::zTranslationCurrent, &FltDof::zTranslationIncrement},
    {"pitch", 0x10000000, &FltDof::pitchMin, &FltDof::pitchMax, &FltDof::pitchCurrent,
     &FltDof::pitchIncrement},
    {"roll", 0x08000000, &FltDof::rollMin, &FltDof::rollMax, &FltDof::rollCurrent,
     &FltDof::rollIncrement},
    {"yaw", 0x04000000, &FltDof::yawMin, &FltDof::yawMax, &FltDof::yawCurrent,
     &FltDof::yawIncrement},
    {"x scale", 0x02000000, &FltDof::xScaleMin, &FltDof::xScaleMax, &FltDof::xScaleCurrent,
     &FltDof::xScaleIncrement, true},
    {"y scale", 0x01000000, &FltDof::yScaleMin, &FltDof::yScaleMax, &FltDof::yScaleCurrent,
     &FltDof::yScaleIncrement, true},
    {"z scale", 0x00800000, &FltDof::zScaleMin, &FltDof::zScaleMax, &FltDof::zScaleCurrent,
     &FltDof::zScaleIncrement, true},
};
