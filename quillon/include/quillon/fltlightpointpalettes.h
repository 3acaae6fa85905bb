// What indexed light points share: how they look, and how they change with time.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltlightpointlook.h>
#include <quillon/fltrecordof.h>

#include <vector>

/// Light point appearance palette entry. Angles are in degrees, times in seconds; the fields are
/// those of `FltLightPoint` where they have its names.
class FltLightPointAppearance
    : public FltRecordOf<FltLightPointAppearance, FltLightPointLook<FltPaletteRec>,
                         kFltLightPointAppearance> {
public:
    char name[256] = {};  ///< NUL-padded
    std::int32_t index = 0;
    float fogIntensity = 0;
    float sizeDifferenceThreshold = 0;
    std::int32_t directionalType = 0;
    float horizontalLobeAngle = 0;
    float verticalLobeAngle = 0;
    float lobeRollAngle = 0;
    float directionalFalloffExponent = 0;
    float directionalAmbientIntensity = 0;
    float significance = 0;
    std::uint32_t flags = 0;
    float visibilityRange = 0;
    float fadeRangeRatio = 0;
    float fadeInDuration = 0;
    float fadeOutDuration = 0;
    float lodRangeRatio = 0;
    float lodScale = 0;
    std::int16_t textureIndex = -1;
};

/// A step of an animation that is a sequence of them.
struct FltLightPointStep {
    std::uint32_t state = 0;  ///< 0 on, 1 off, 2 changing color
    float duration = 0;       ///< seconds
    std::uint32_t color = 0;  ///< packed; the one to change to
};

/// Light point animation palette entry. Times are in seconds.
class FltLightPointAnimation
    : public FltRecordOf<FltLightPointAnimation, FltPaletteRec, kFltLightPointAnimation> {
public:
    enum Type : std::int32_t { kFlashingSequence, kRotating, kStrobe, kMorseCode };
    static constexpr std::uint32_t kRotatesCounterClockwise = 0x80000000;
    /// With Farnsworth timing characters are sent faster than words.
    enum MorseTiming : std::int32_t { kStandard, kFarnsworth };

    char name[256] = {};  ///< NUL-padded
    std::int32_t index = 0;
    float period = 0;
    float phaseDelay = 0;
    float enabledPeriod = 0;
    FltPoint3f axis;          ///< of rotation
    std::uint32_t flags = 0;  ///< the highest bit: `kRotatesCounterClockwise`
    std::int32_t type = kFlashingSequence;
    std::int32_t morseTiming = kStandard;
    std::int32_t wordRate = 0;       ///< words a minute, with the pauses between them
    std::int32_t characterRate = 0;  ///< the same of characters, in words a minute too
    char morseText[1024] = {};       ///< NUL-padded
    std::uint32_t stepCount = 0;     ///< as the record states it
    std::vector<FltLightPointStep> steps;
};
