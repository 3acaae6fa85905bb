// The light source record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// Light source; named "ls%d" on output. Angles are in degrees.
class FltLightSource : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltLightSource;

    std::uint16_t opcode() const override { return kOpcode; }
    char* id() override { return asciiId; }
    void write(FltStream& stream) override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
    std::int32_t paletteIndex = -1;
    std::int32_t flags = 0;
    double positionX = 0;
    double positionY = 0;
    double positionZ = 0;
    float yaw = 135.0F;
    float pitch = 45.0F;
};
