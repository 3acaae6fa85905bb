// The color palette.
#pragma once

#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecordof.h>

#include <optional>
#include <span>
#include <vector>

/// Color palette. A color index names an entry in its upper bits and one of 128 intensities, dark
/// to full, in its lower 7.
///
/// Files before `kChangedIn` have 32 such entries, and 56 colors of one intensity, which the
/// indices behind those of the 32 name one by one; each component is a 16-bit number up to 255.
/// They count as entries 32 to 87 here.
class FltColorPalette : public FltRecordOf<FltColorPalette, FltPaletteRec, kFltColorPalette> {
public:
    static constexpr std::uint32_t kChangedIn = 1500;  ///< the revision
    static constexpr std::uint32_t kEntries = 1024;
    static constexpr std::uint32_t kIntensityBits = 7;
    static constexpr std::uint32_t kFullIntensity = 127;
    static constexpr std::uint32_t kOldEntries = 32;
    static constexpr std::uint32_t kFixedColors = 56;

    std::vector<FltPackedColor> colors;       ///< at most `kEntries`
    std::vector<FltPackedColor> fixedColors;  ///< those of one intensity, of older files
    std::vector<std::uint8_t> nameTable;      ///< the bytes behind the colors; empty without names

    /// The revision by whose layout a record of a file of `revision` is read: that of older files
    /// only where its length and all its numbers fit, whatever else it is the present one's.
    static std::uint32_t layoutRevision(std::span<const std::uint8_t> record,
                                        std::uint32_t revision) noexcept;

    /// Reads a record, header included, of a file of `revision` by that layout.
    void readOfFile(std::span<const std::uint8_t> record, std::uint32_t revision) {
        readBytes(record, layoutRevision(record, revision));
    }

    /// All colors of the present form are there, or all of the older one.
    bool isWhole() const noexcept { return colors.size() == kEntries || isOld(); }
    bool isOld() const noexcept {
        return colors.size() == kOldEntries && fixedColors.size() == kFixedColors;
    }
    std::size_t entryCount() const noexcept { return colors.size() + fixedColors.size(); }
    /// The entry must be there.
    FltPackedColor& entry(std::size_t entry) {
        return entry < colors.size() ? colors[entry] : fixedColors.at(entry - colors.size());
    }
    const FltPackedColor& entry(std::size_t entry) const {
        return entry < colors.size() ? colors[entry] : fixedColors.at(entry - colors.size());
    }
    bool hasIntensities(std::size_t entry) const noexcept { return entry < colors.size(); }
    /// The entry of a whole palette that a color index names; none for one beyond.
    std::optional<std::uint32_t> entryOf(std::uint32_t index) const noexcept;
    /// The color index of an entry, at an intensity if it has several.
    std::uint32_t indexOf(std::uint32_t entry, std::uint32_t intensity) const noexcept;
};
