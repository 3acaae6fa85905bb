// The face record.
#pragma once

#include <quillon/fltopcode.h>
#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecord.h>
#include <quillon/fltsurface.h>

/// Face: 80 bytes from revision 1510 on, 64 with 16-bit colour indices before. Named "f%d" on
/// output.
class FltFace : public FltPrimaryRec {
public:
    static constexpr std::uint16_t kOpcode = kFltFace;

    std::uint16_t opcode() const override { return kOpcode; }
    char* id() override { return asciiId; }
    void write(FltStream& stream) override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    /// In `flags`: the packed colours count, and not the indices.
    static constexpr std::uint32_t kPackedColors = kFltSurfacePackedColors;

    /// As `writeToken`, with the packed colours, for files: a flag that makes them count must not
    /// stand there without them.
    void writeFileToken(FltToken& token, std::uint32_t revision) const;

    char asciiId[8] = {};  ///< NUL-padded; a first byte of 0 means no name yet
    std::int32_t irColorCode = 0;
    std::int16_t relativePriority = 0;
    std::uint8_t drawType = 0;
    std::uint8_t textureWhite = 0;
    std::int16_t colorNameIndex = -1;
    std::int16_t alternateColorNameIndex = -1;
    std::uint8_t billboard = 0;
    std::int16_t detailTextureIndex = -1;
    std::int16_t textureIndex = -1;
    std::int16_t materialIndex = -1;
    std::int16_t surfaceMaterialCode = 0;
    std::int16_t featureId = 0;
    std::int32_t irMaterialCode = 0;
    std::uint16_t transparency = 0;
    std::uint8_t lodGenerationControl = 0;
    std::uint8_t lineStyleIndex = 0;
    std::uint32_t flags = 0x60000000;  ///< no colour, no alternate colour
    std::uint8_t lightMode = 0;
    // Kept as read; `writeToken` leaves zeros in their place.
    FltPackedColor packedPrimaryColor{0xFF, 0xFF, 0xFF, 0xFF};
    FltPackedColor packedAlternateColor{0xFF, 0xFF, 0xFF, 0xFF};
    std::int16_t textureMappingIndex = -1;
    std::uint32_t primaryColorIndex = 0;
    std::uint32_t alternateColorIndex = 0;
};
