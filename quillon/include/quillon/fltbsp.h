// The binary separating plane record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// Binary separating plane; named "b%d" on output.
class FltBsp : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltBsp;

    /// The plane of (0, 0, 0), (0, 1, 0) and (1, 0, 0), which is 0, 0, -1, 0.
    FltBsp();

    std::uint16_t opcode() const override { return kOpcode; }
    char* id() override { return asciiId; }
    void write(FltStream& stream) override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
    // Plane equation.
    double planeA;
    double planeB;
    double planeC;
    double planeD;
};
