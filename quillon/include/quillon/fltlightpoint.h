// The light point record.
#pragma once

#include <quillon/fltlightpointlook.h>
#include <quillon/fltrecordof.h>

/// Light point; named "lp%d" on output. Angles are in degrees, times in seconds.
class FltLightPoint
    : public FltRecordOf<FltLightPoint, FltLightPointLook<FltNamedRec>, kFltLightPoint> {
public:
    static constexpr std::uint32_t kFlashes = 0x400000;  ///< of the flags
    static constexpr std::uint32_t kRotates = 0x200000;
    static constexpr std::uint32_t kRotatesCounterClockwise = 0x100000;

    // The rest of 32 words of 32 bits, which begin with `backColor`.
    float reserved = 0;  ///< kept and written back as read
    float sizeDifferenceThreshold = 0;
    std::int32_t directionalType = 0;
    float horizontalLobeAngle = 0;
    float verticalLobeAngle = 0;
    float lobeRollAngle = 0;
    float directionalFalloffExponent = 0;
    float directionalAmbientIntensity = 0;
    float animationPeriod = 0;
    float animationPhaseDelay = 0;
    float animationEnabledPeriod = 0;
    float significance = 0;
    std::int32_t calligraphicDrawOrder = 0;
    std::uint32_t flags = 0;

    // Axis of rotation; the file holds 32-bit floats.
    double axisX = 0;
    double axisY = 0;
    double axisZ = 0;
};
