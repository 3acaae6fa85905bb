// The palettes of the sample scenes go back into files as they came, but for what is edited.
#include "palettescene.h"

#include <airport.h>
#include <base/file.h>
#include <base/paths.h>
#include <harbour.h>

#include <map>

namespace {

using RoundTrip = PaletteScene;
using Record = std::vector<std::uint8_t>;

constexpr std::uint16_t kOpcodes[] = {
    kFltColorPalette,          kFltMaterial,           kFltTexture,
    kFltTextureMappingPalette, kFltLightSourcePalette, kFltLightPointAppearance,
    kFltLightPointAnimation};

std::vector<Record> palettesIn(std::span<const std::uint8_t> file) {
    std::vector<Record> found;
    for (const FltRecordView record : FltRecordRange(file))
        if (std::ranges::find(kOpcodes, record.opcode()) != std::end(kOpcodes))
            found.emplace_back(record.bytes().begin(), record.bytes().end());
    return found;
}

/// The places of the bytes that differ, by the place of their record.
std::map<std::size_t, std::vector<std::size_t>> differences(const std::vector<Record>& before,
                                                            const std::vector<Record>& after) {
    std::map<std::size_t, std::vector<std::size_t>> found;
    for (std::size_t i = 0; i < before.size(); ++i)
        for (std::size_t at = 0; at < std::max(before[i].size(), after[i].size()); ++at)
            if (at >= before[i].size() || at >= after[i].size() || before[i][at] != after[i][at])
                found[i].push_back(at);
    return found;
}

}  // namespace

TEST_F(RoundTrip, OfTheSamplesChangesWhatIsEditedAlone) {
    std::size_t edited = 0;
    ASSERT_TRUE(samples::writeScene(samples::makeAirport(), folder.file("airport.flt")));
    samples::writeHarbour(base::pathFrom(folder.file("")));
    for (const char* const name : {"airport.flt", "harbour.flt"}) {
        std::string file;
        ASSERT_FALSE(base::readFile(folder.file(name), file));
        const std::span bytes(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
        const std::vector<Record> original = palettesIn(bytes);
        core.newScene();
        database = import(bytes);
        EXPECT_EQ(palettesIn(exported()), original);
        for (std::size_t p = 1; p < palettes::kPaletteCount; ++p) {
            const auto palette = static_cast<Palette>(p);
            const std::size_t count = palettes::Database(*database).entries(palette).size();
            if (count == 0) continue;
            set(palette, count - 1, palette == Palette::kTexture ? "fileName" : "name", "~");
            const std::vector<Record> after = palettesIn(exported());
            ASSERT_EQ(after.size(), original.size());
            const auto changed = differences(original, after);
            ASSERT_EQ(changed.size(), 1U) << palettes::nameOf(palette);
            // It is the text of the one entry, in bytes that follow one another.
            const std::vector<std::size_t>& places = changed.begin()->second;
            EXPECT_EQ(after[changed.begin()->first][places.front()], '~');
            EXPECT_LT(places.back() - places.front(), 200U);
            ASSERT_TRUE(core.history().undo());
            EXPECT_EQ(palettesIn(exported()), original);
            ++edited;
        }
        palettes::setColor(*database, 1023, {1, 2, 3});
        const auto changed = differences(original, palettesIn(exported()));
        ASSERT_EQ(changed.size(), 1U);
        EXPECT_EQ(
            changed.begin()->second,
            (std::vector<std::size_t>{132 + 4 * 1023 + 1, 132 + 4 * 1023 + 2, 132 + 4 * 1023 + 3}));
    }
    EXPECT_EQ(edited, 2U) << "lights and textures";
}
