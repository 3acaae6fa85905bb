// The instance records.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>

/// What definition and reference share: the instance number.
class FltInstance : public FltControlRec {
public:
    void visitFields(FltFieldVisitor& visitor) const override;

    std::int16_t instanceNumber = 0;
};

/// Use of an instance defined elsewhere.
class FltInstanceRef : public FltInstance {
public:
    static constexpr std::uint16_t kOpcode = kFltInstanceRef;

    std::uint16_t opcode() const override { return kOpcode; }
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
};

/// Start of an instance's definition.
class FltInstanceDef : public FltInstance {
public:
    static constexpr std::uint16_t kOpcode = kFltInstanceDef;

    std::uint16_t opcode() const override { return kOpcode; }
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
};
