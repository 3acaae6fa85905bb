#include "fltlayout.h"

#include <quillon/fltcolorpalette.h>

namespace {

constexpr std::uint32_t kReserved = 128;

// Numbers of 16 bits, of which the upper half is 0.
void layoutOldColor(auto& codec, auto& color) {
    codec.reserved(1);
    codec.field("red", color.red);
    codec.reserved(1);
    codec.field("green", color.green);
    codec.reserved(1);
    codec.field("blue", color.blue);
}

}  // namespace

template <>
struct quillon::Layout<FltColorPalette> {
    static constexpr std::uint32_t kChangedIn = FltColorPalette::kChangedIn;

    template <typename IsNewer>
    static void fields(auto& codec, auto& record, IsNewer) {
        codec.reserved(kReserved);
        if constexpr (IsNewer::value) {
            const auto layout = [](auto& each, auto& color) { each.field("colors", color); };
            codec.items(record.colors, layout, FltColorPalette::kEntries);
            codec.items(
                record.fixedColors,
                [](auto& each, auto& color) { each.field("fixedColors", color); }, 0);
        } else {
            const auto layout = [](auto& each, auto& color) { layoutOldColor(each, color); };
            codec.items(record.colors, layout, FltColorPalette::kOldEntries);
            codec.items(record.fixedColors, layout, FltColorPalette::kFixedColors);
            // Behind fewer colors stand no names: with the padding they would be one color more.
            if (record.fixedColors.size() < FltColorPalette::kFixedColors) {
                if constexpr (requires { record.nameTable.clear(); }) record.nameTable.clear();
                return;
            }
        }
        codec.rest("nameTable", record.nameTable);
    }
};
template class FltRecordOf<FltColorPalette, FltPaletteRec, kFltColorPalette>;

std::uint32_t FltColorPalette::layoutRevision(std::span<const std::uint8_t> record,
                                              std::uint32_t revision) noexcept {
    constexpr std::size_t kNumbers = 3 * std::size_t{kOldEntries + kFixedColors};
    constexpr std::size_t kStart = FltRecordView::kHeaderSize + kReserved;
    constexpr std::size_t kLength = kStart + 2 * kNumbers, kPadding = 8;
    if (revision >= kChangedIn) return revision;
    bool isOld = record.size() >= kLength && record.size() < kLength + kPadding;
    for (std::size_t i = 0; isOld && i < kNumbers; ++i) isOld = record[kStart + 2 * i] == 0;
    return isOld ? revision : kChangedIn;
}

std::optional<std::uint32_t> FltColorPalette::entryOf(std::uint32_t index) const noexcept {
    const std::uint32_t entry = index >> kIntensityBits;
    if (entry < colors.size()) return entry;
    if (!isOld()) return std::nullopt;
    const std::uint32_t fixed = index - (kOldEntries << kIntensityBits);
    return fixed < kFixedColors ? std::optional(kOldEntries + fixed) : std::nullopt;
}

std::uint32_t FltColorPalette::indexOf(std::uint32_t entry,
                                       std::uint32_t intensity) const noexcept {
    if (hasIntensities(entry)) return entry << kIntensityBits | intensity;
    const auto entries = static_cast<std::uint32_t>(colors.size());
    return (entries << kIntensityBits) + entry - entries;
}
