#include "polygonlayout.h"

#include <quillon/fltface.h>

namespace {

constexpr std::uint32_t kNoColor = 0xFFFFFFFF;
constexpr std::uint16_t kNoColorNarrow = 0xFFFF;

}  // namespace

template <>
struct quillon::Layout<FltFace> {
    static constexpr OpcodeCheck kOpcodeCheck{"fltface", 97};
    static constexpr DefaultName kName{"f", &FltHeader::nextFaceId};
    // From here on the record has color names, and color indices of 32 bits at its end.
    static constexpr std::uint32_t kChangedIn = 1510;

    template <typename IsNewer>
    static void fields(auto& codec, auto& record, IsNewer) {
        codec.field("id", record.asciiId);
        layoutDrawing(codec, record);
        if constexpr (IsNewer::value) {
            layoutColorNames(codec, record);
        } else {
            codec.template stored<std::uint16_t>("primaryColorIndex", record.primaryColorIndex);
            codec.template stored<std::uint16_t>("alternateColorIndex", record.alternateColorIndex);
        }
        layoutSurface(codec, record);
        // Stored faces give their colors by index: a packed color that was read must not outlive
        // an edit of the index.
        codec.readOnly("packedPrimaryColor", record.packedPrimaryColor);
        codec.readOnly("packedAlternateColor", record.packedAlternateColor);
        if constexpr (IsNewer::value) layoutColorIndices(codec, record);
    }
    static void afterReading(FltFace& face, std::uint32_t revision) {
        if (revision >= kChangedIn) return;
        // A face of these revisions is one color: an alternate that is given at all is the
        // primary.
        const std::uint32_t primary = face.primaryColorIndex;
        const bool hasAlternate = face.alternateColorIndex != kNoColorNarrow;
        face.primaryColorIndex = primary == kNoColorNarrow ? kNoColor : primary;
        face.alternateColorIndex = hasAlternate ? primary : kNoColor;
        face.colorNameIndex = -1;
        face.alternateColorNameIndex = -1;
    }
};
template class FltRecordOf<FltFace, FltPolygonRec, kFltFace>;

void FltFace::writeFileToken(FltToken& token, std::uint32_t revision) const {
    quillon::writeRecord<quillon::FileStoreCodec>(*this, token, revision);
}
