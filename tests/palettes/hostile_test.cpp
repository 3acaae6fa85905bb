// Whatever stands where palettes are kept is shown and edited, or refused.
#include "palettescene.h"

#include <fltkilnutil/sourcerecords.h>

#include <random>

namespace {

using Hostile = PaletteScene;
using fltkilnutil::SourceChunk;

}  // namespace

TEST_F(Hostile, AnyBytesAreRefusedOrEditedAsOneStep) {
    FltBytes file;
    file.record(kFltColorPalette,
                grays(Bytes().u32(1).u16(12).u16(0).u16(3).u16(0).text("sky").u8(0)));
    file.record(kFltMaterialTable, Bytes().zeros(2 * 188 + 3));
    file.record(kFltTexture, textureEntry("a.rgb", 0)).record(kFltMaterial, materialEntry("m", 3));
    file.record(kFltLightPointAnimation,
                Bytes().zeros(4).field("blink", 256).u32(0).zeros(48 + 1024).u32(1).zeros(12));
    file.record(kFltTextureMappingPalette, Bytes().u32(0).field("map", 20).zeros(160));
    file.push().record(kFltFace, FaceOf{.texture = 0, .material = 3}.body("f"));
    read(file.pop());
    const auto chunk = fltkilnutil::sourceChunk(*database, SourceChunk::records);
    const std::vector<std::uint8_t> good(chunk.begin(), chunk.end());
    std::mt19937 random(7);
    int edits = 0, refusals = 0;
    for (int round = 0; round < 40; ++round) {
        std::vector<std::uint8_t> bytes = good;
        // Headers of records are where lengths and kinds are: they are hit as often as all else.
        std::vector<std::size_t> heads;
        for (std::size_t at = 340; at + 4 < bytes.size();) {
            const auto record = FltRecordView::at(bytes, at);
            if (record.empty()) break;
            heads.push_back(at);
            at = record.end();
        }
        for (int hit = 0; hit < 3; ++hit) {
            const std::size_t place = random() % 2 == 0 && !heads.empty()
                                          ? heads[random() % heads.size()] + random() % 4
                                          : random() % bytes.size();
            bytes[place] = static_cast<std::uint8_t>(random());
        }
        if (round % 5 == 0) bytes.resize(random() % bytes.size() + 1);
        fltkilnutil::storeSourceChunk(*database, SourceChunk::records, bytes);
        core.history().endCommand();
        const std::string before = core.sceneText();
        for (std::size_t p = 0; p < palettes::kPaletteCount; ++p) {
            const auto palette = static_cast<Palette>(p);
            const auto attempt = [&](auto&& edit) {
                const std::size_t steps = core.history().doneCount();
                try {
                    edit();
                    ++edits;
                } catch (const palettes::Refusal&) {
                    ++refusals;
                    EXPECT_EQ(core.history().doneCount(), steps);
                }
                if (core.history().doneCount() > steps) {
                    EXPECT_EQ(core.history().doneCount(), steps + 1);
                    core.history().undo();
                }
                ASSERT_TRUE(core.sceneText() == before);
            };
            attempt([&] { palettes::addEntry(*database, palette, "x"); });
            attempt([&] { palettes::compact(*database, palette); });
            attempt([&] { palettes::setColor(*database, 5, {1, 2, 3}); });
            attempt([&] { palettes::setColorName(*database, 5, "five"); });
            attempt([&] {
                const palettes::Database all(*database);
                if (all.entries(palette).empty()) return;
                palettes::deleteEntry(*database, palette, all.entries(palette).front());
            });
            attempt([&] {
                const palettes::Database all(*database);
                if (all.entries(palette).empty()) return;
                palettes::setField(*database, palette, all.entries(palette).front(), "name", "y");
            });
        }
    }
    // Both happen.
    EXPECT_GT(edits, 300);
    EXPECT_GT(refusals, 50);
}
