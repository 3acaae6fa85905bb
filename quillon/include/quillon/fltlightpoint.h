// The light point record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// Light point; named "lp%d" on output. Angles are in degrees, times in seconds.
class FltLightPoint : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltLightPoint;

    std::uint16_t opcode() const override { return kOpcode; }
    char* id() override { return asciiId; }
    void write(FltStream& stream) override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
    std::int16_t surfaceMaterialCode = 0;
    std::int16_t featureId = 0;

    // 32 words of 32 bits.
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
