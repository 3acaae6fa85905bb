// The level-of-detail record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// Level of detail, shown from the switch-out to the switch-in distance (database units); named
/// "l%d" on output.
class FltLod : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltLod;

    std::uint16_t opcode() const override { return kOpcode; }
    char* id() override { return asciiId; }
    void write(FltStream& stream) override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
    double switchInDistance = 100000.0;
    double switchOutDistance = 0;
    std::int16_t specialEffect1 = 0;
    std::int16_t specialEffect2 = 0;
    std::int32_t flags = 0;
    double centerX = 0;
    double centerY = 0;
    double centerZ = 0;
    double transitionRange = 0;
};
