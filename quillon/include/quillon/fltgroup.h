// The group record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// Group; named "g%d" on output.
class FltGroup : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltGroup;

    std::uint16_t opcode() const override { return kOpcode; }
    char* id() override { return asciiId; }
    void write(FltStream& stream) override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
    std::int16_t relativePriority = 0;
    std::int32_t flags = 0;
    std::int16_t specialEffect1 = 0;
    std::int16_t specialEffect2 = 0;
    std::int16_t significance = 0;
    std::int8_t layerCode = 0;
};
