#include "losses.h"
#include "../texts.h"

#include <quillon/fltface.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrevision.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <iterator>

namespace interchange {

namespace {

/// `record` after a trip through a file of `revision`.
template <typename Record>
Record returned(const Record& record, std::uint32_t revision) {
    FltToken token;
    record.writeToken(token, revision);
    Record back;
    back.readToken(token, revision);
    return back;
}

struct RecordName {
    std::uint16_t opcode;
    TextId name;
};

/// Of the records that `fltNewerRecord` knows.
constexpr RecordName kRecordNames[] = {
    {kFltMultiTexture, TextId::kMultiTexture},
    {kFltMesh, TextId::kMesh},
    {kFltLightPoint, TextId::kLightPoint},
    {kFltTextureMappingPalette, TextId::kTextureMapping},
    {kFltColorNamePalette, TextId::kColorNames},
    {kFltCat, TextId::kCat},
    {kFltAdaptiveAttribute, TextId::kAdaptive},
    {kFltCurveNode, TextId::kCurve},
    {kFltRoadConstruction, TextId::kRoad},
    {kFltLightPointAppearance, TextId::kAppearance},
    {kFltLightPointAnimation, TextId::kAnimation},
    {kFltIndexedLightPoint, TextId::kIndexedPoint},
    {kFltLightPointSystem, TextId::kPointSystem},
    {kFltIndexedString, TextId::kIndexedString},
    {kFltShaderPalette, TextId::kShader},
    {kFltExtendedMaterialHeader, TextId::kMaterial},
};

TextId nameOf(std::uint16_t opcode) {
    const auto found = std::ranges::find(kRecordNames, opcode, &RecordName::opcode);
    return found == std::end(kRecordNames) ? TextId::kUnknownRecord : found->name;
}

}  // namespace

void Losses::record(std::uint16_t opcode) {
    if (!isOlder_) return;
    const FltNewerRecord* const newer = fltNewerRecord(opcode);
    if (newer != nullptr && newer->revision > revision_) ++records_[newer];
}

void Losses::face(const FltFace& face) {
    if (!isOlder_) return;
    const FltFace after = returned(face, revision_);
    const bool losesColor =
        (face.flags & kFltSurfaceNoColor) == 0 && face.primaryColorIndex != after.primaryColorIndex;
    const bool losesAlternate = (face.flags & kFltSurfaceNoAlternateColor) == 0 &&
                                face.alternateColorIndex != after.alternateColorIndex;
    if (losesColor || losesAlternate) ++faces_;
}

void Losses::header(const FltHeader& header) {
    if (!isOlder_) return;
    FltFileHeader before(header);
    before.formatRevision = static_cast<std::int32_t>(revision_);
    const FltFileHeader after = returned(before, revision_);
    // The counters that an older revision lacks say nothing about its nodes.
    header_ = before.earthEllipsoidModel != after.earthEllipsoidModel ||
              before.utmZone != after.utmZone || before.deltaZ != after.deltaZ ||
              before.radius != after.radius || before.earthMajorAxis != after.earthMajorAxis ||
              before.earthMinorAxis != after.earthMinorAxis;
}

std::string Losses::toldBehind(const std::string& summary) const {
    std::string parts;
    for (const auto& [newer, count] : records_)
        enumerate(parts, counted(count, nameOf(newer->opcode)));
    if (faces_ != 0) enumerate(parts, counted(faces_, TextId::kFaceColors));
    if (header_) enumerate(parts, text(TextId::kHeaderFields));
    if (parts.empty()) return summary;
    const std::string revision =
        std::to_string(revision_ / 100) + '.' + std::to_string(revision_ / 10 % 10);
    return text(TextId::kLost, {summary, revision, parts});
}

}  // namespace interchange
