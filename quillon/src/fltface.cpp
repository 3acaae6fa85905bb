#include "fltcodec.h"

#include <diagnostics/assertion.h>
#include <quillon/fltface.h>
#include <quillon/fltstream.h>

namespace {

// From here on the record has colour names, and colour indices of 32 bits at its end.
constexpr std::uint32_t kWideIndexRevision = 1510;

// Of the body, at every revision.
constexpr std::uint16_t kPackedColorsOffset = 52;

constexpr std::uint32_t kNoColor = 0xFFFFFFFF;
constexpr std::uint16_t kNoColorNarrow = 0xFFFF;

template <typename Codec>
void layoutBeforeIndices(Codec& codec, auto& record) {
    codec.field("id", record.asciiId);
    codec.field("irColorCode", record.irColorCode);
    codec.field("relativePriority", record.relativePriority);
    codec.field("drawType", record.drawType);
    codec.field("textureWhite", record.textureWhite);
}

template <typename Codec>
void layoutColorNames(Codec& codec, auto& record) {
    codec.field("colorNameIndex", record.colorNameIndex);
    codec.field("alternateColorNameIndex", record.alternateColorNameIndex);
}

template <typename Codec>
void layoutAfterIndices(Codec& codec, auto& record) {
    codec.reserved(1);
    codec.field("billboard", record.billboard);
    codec.field("detailTextureIndex", record.detailTextureIndex);
    codec.field("textureIndex", record.textureIndex);
    codec.field("materialIndex", record.materialIndex);
    codec.field("surfaceMaterialCode", record.surfaceMaterialCode);
    codec.field("featureId", record.featureId);
    codec.field("irMaterialCode", record.irMaterialCode);
    codec.field("transparency", record.transparency);
    codec.field("lodGenerationControl", record.lodGenerationControl);
    codec.field("lineStyleIndex", record.lineStyleIndex);
    codec.field("flags", record.flags);
    codec.field("lightMode", record.lightMode);
    codec.reserved(7);
    // Stored faces give their colours by index: a packed colour that was read must not outlive an
    // edit of the index.
    codec.readOnly("packedPrimaryColor", record.packedPrimaryColor);
    codec.readOnly("packedAlternateColor", record.packedAlternateColor);
}

template <typename Codec>
void layoutTail(Codec& codec, auto& record) {
    codec.field("textureMappingIndex", record.textureMappingIndex);
    codec.reserved(2);
    codec.field("primaryColorIndex", record.primaryColorIndex);
    codec.field("alternateColorIndex", record.alternateColorIndex);
    codec.reserved(4);
}

template <typename Codec>
void layout(Codec& codec, auto& record) {
    layoutBeforeIndices(codec, record);
    layoutColorNames(codec, record);
    layoutAfterIndices(codec, record);
    layoutTail(codec, record);
}

template <typename Codec>
void narrowLayout(Codec& codec, auto& record, auto& primary, auto& alternate) {
    layoutBeforeIndices(codec, record);
    codec.field("primaryColorIndex", primary);
    codec.field("alternateColorIndex", alternate);
    layoutAfterIndices(codec, record);
}

void writeNarrow(FltToken& token, const FltFace& face) {
    const auto primary = static_cast<std::uint16_t>(face.primaryColorIndex);
    const auto alternate = static_cast<std::uint16_t>(face.alternateColorIndex);
    quillon::writeFields(token, FltFace::kOpcode,
                         [&](auto& codec) { narrowLayout(codec, face, primary, alternate); });
}

void readNarrow(FltToken& token, FltFace& face) {
    std::uint16_t primary = 0;
    std::uint16_t alternate = 0;
    quillon::readBody(token, [&](auto& codec) { narrowLayout(codec, face, primary, alternate); });
    face.primaryColorIndex = primary == kNoColorNarrow ? kNoColor : primary;
    // A face of these revisions is one colour: an alternate that is given at all is the primary.
    face.alternateColorIndex = alternate == kNoColorNarrow ? kNoColor : primary;
    face.colorNameIndex = -1;
    face.alternateColorNameIndex = -1;
}

}  // namespace

void FltFace::write(FltStream& stream) {
    quillon::nameRecord(asciiId, "f", stream.header().nextFaceId);
    FltRecord::write(stream);
}

void FltFace::writeToken(FltToken& token, std::uint32_t revision) const {
    if (revision < kWideIndexRevision)
        writeNarrow(token, *this);
    else
        quillon::writeFields(token, kOpcode, [this](auto& codec) { layout(codec, *this); });
}

void FltFace::writeFileToken(FltToken& token, std::uint32_t revision) const {
    writeToken(token, revision);
    token.rewind(kPackedColorsOffset);
    for (const FltPackedColor& color : {packedPrimaryColor, packedAlternateColor}) {
        for (const std::uint8_t part : {color.alpha, color.blue, color.green, color.red}) {
            token.writeInt8(part);
        }
    }
}

void FltFace::readToken(FltToken& token, std::uint32_t revision) {
    diagnostics::check(token.opcode() == kOpcode, "fltface", 97);
    if (revision < kWideIndexRevision)
        readNarrow(token, *this);
    else
        quillon::readBody(token, [this](auto& codec) { layout(codec, *this); });
}

void FltFace::visitFields(FltFieldVisitor& visitor) const {
    quillon::showFields(visitor, [this](auto& codec) { layout(codec, *this); });
}
