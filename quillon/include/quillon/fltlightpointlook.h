// How a light point looks.
#pragma once

#include <cstdint>

/// The fields with which a light point and an entry of the appearance palette begin.
template <typename Family>
class FltLightPointLook : public Family {
public:
    static constexpr std::uint32_t kNoBackColor = 0x40000000;  ///< of the flags

    std::int16_t surfaceMaterialCode = 0;
    std::int16_t featureId = 0;
    std::uint32_t backColor = 0;  ///< packed
    std::int32_t displayMode = 0;
    float intensity = 0;
    float backIntensity = 0;
    float minDefocus = 0;
    float maxDefocus = 0;
    std::int32_t fadingMode = 0;
    std::int32_t fogPunchMode = 0;
    std::int32_t directionalMode = 0;
    std::int32_t rangeMode = 0;
    float minPixelSize = 0;
    float maxPixelSize = 0;
    float actualPixelSize = 0;
    float transparentFalloffPixelSize = 0;
    float transparentFalloffExponent = 0;
    float transparentFalloffScalar = 0;
    float transparentFalloffClamp = 0;
    float fogScalar = 0;
};
