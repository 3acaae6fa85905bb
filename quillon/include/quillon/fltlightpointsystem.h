// Light points that name what they look like, and systems of them.
#pragma once

#include <quillon/fltrecordof.h>

/// Light point whose look and animation are entries of the palettes.
class FltIndexedLightPoint
    : public FltRecordOf<FltIndexedLightPoint, FltNamedRec, kFltIndexedLightPoint> {
public:
    std::int32_t appearanceIndex = -1;
    std::int32_t animationIndex = -1;  ///< -1 for none
    std::int32_t drawOrder = 0;        ///< of calligraphic lights
};

/// The light points below it, switched together.
class FltLightPointSystem
    : public FltRecordOf<FltLightPointSystem, FltNamedRec, kFltLightPointSystem> {
public:
    enum AnimationState : std::int32_t { kOn, kOff, kRandom };
    static constexpr std::uint32_t kEnabled = 0x80000000;  ///< of the flags

    float intensity = 0;
    std::int32_t animationState = kOn;
    std::uint32_t flags = 0;
};
