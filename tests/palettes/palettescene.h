// A scene read from a file that is put together byte by byte, whose palettes are edited.
#pragma once

#include "../interchange/fltbytes.h"
#include "../interchange/importscene.h"
#include "../support/temporaryfolder.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/export.h>
#include <kiln/kiln.h>
#include <palettes/edits.h>
#include <palettes/references.h>
#include <quillon/fltface.h>
#include <quillon/fltrecordrange.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

using palettes::Palette;

/// Palette records as they stand in a file.
inline Bytes textureEntry(std::string_view name, std::uint32_t index, std::uint32_t x = 0) {
    return Bytes().field(name, 200).u32(index).u32(x).u32(0);
}
inline Bytes materialEntry(std::string_view name, std::uint32_t index) {
    Bytes body;
    body.u32(index).field(name, 12).u32(0x80000000);
    for (int i = 0; i < 12; ++i) body.f32(0.25F);
    return body.f32(12).f32(1).u32(7);  // reserved, and not 0
}
/// 1,024 grays, each its number's low byte, and names.
inline Bytes grays(const Bytes& names = {}) {
    Bytes body;
    body.zeros(124).u32(9);  // reserved, and not 0
    for (unsigned i = 0; i < 1024; ++i) body.u8(0xFF).u8(i).u8(i).u8(i);
    return body.append(names);
}

/// The body of a face that uses entries.
struct FaceOf {
    std::uint32_t color = 0;
    unsigned texture = 0xFFFF;
    unsigned material = 0xFFFF;
    unsigned detail = 0xFFFF;
    unsigned mapping = 0xFFFF;
    std::uint32_t flags = 0x20000000;  // no alternate color

    Bytes body(std::string_view id) const {
        Bytes body;
        body.field(id, 8).u32(0).u16(0).u8(0).u8(0).u16(0xFFFF).u16(0xFFFF).u8(0).u8(0);
        body.u16(detail).u16(texture).u16(material).zeros(12).u32(flags).zeros(16);
        return body.u16(mapping).zeros(2).u32(color).zeros(8);
    }
};

class PaletteScene : public ImportScene {
protected:
    // On Windows the captions, and with them the fields, come from the library beside the test.
    PaletteScene() { core.setDirectory(KILN_PLUGIN_DIR, std::filesystem::current_path().string()); }

    /// Imports the file with `palettes` and `hierarchy`, and remembers the database's node.
    INode& read(const FltBytes& file) {
        core.newScene();
        database = import(file);
        return *database;
    }

    INode& node(const char* name) { return *host.GetINodeByName(name); }
    FltFace faceOf(const char* name) {
        FltFace face;
        EXPECT_TRUE(fltGetRecord(&node(name), face));
        return face;
    }
    palettes::Entry entry(Palette palette, std::size_t place) {
        return palettes::Database(*database).entries(palette).at(place);
    }
    void set(Palette palette, std::size_t place, std::string_view field, std::string_view value) {
        const palettes::Database all(*database);
        palettes::setField(*database, palette, all.entries(palette).at(place), field, value);
    }

    std::vector<std::uint8_t> exported() {
        const std::string path = folder.file("out.flt");
        report.progress = 0;
        EXPECT_EQ(interchange::exportFile(path.c_str(), {}, report, host), IMPEXP_SUCCESS)
            << report.error;
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// The records of that opcode in the exported file, one behind the other.
    std::vector<std::uint8_t> exportedRecords(std::uint16_t opcode) {
        const std::vector<std::uint8_t> file = exported();
        std::vector<std::uint8_t> found;
        for (const FltRecordView record : FltRecordRange(file))
            if (record.opcode() == opcode)
                found.insert(found.end(), record.bytes().begin(), record.bytes().end());
        return found;
    }
    static std::vector<std::uint8_t> records(std::uint16_t opcode,
                                             std::initializer_list<Bytes> bodies) {
        Bytes all;
        for (const Bytes& body : bodies)
            all.u16(opcode).u16(static_cast<unsigned>(body.size() + 4)).append(body);
        return all.vector();
    }

    /// Undoes the last step, which must lead back to `before`, and does it again.
    void expectUndoTo(const std::string& before) {
        const std::string after = core.sceneText();
        EXPECT_TRUE(after != before);
        ASSERT_TRUE(core.history().undo());
        EXPECT_TRUE(core.sceneText() == before);
        ASSERT_TRUE(core.history().redo());
        EXPECT_TRUE(core.sceneText() == after);
    }

    /// Refused, with nothing changed and no step made; returns the reason.
    std::string refusal(const std::function<void()>& edit) {
        const std::string before = core.sceneText();
        const std::size_t steps = core.history().doneCount();
        std::string reason = "done";
        try {
            edit();
        } catch (const palettes::Refusal& refused) {
            reason = refused.what();
        }
        EXPECT_TRUE(core.sceneText() == before);
        EXPECT_EQ(core.history().doneCount(), steps);
        return reason;
    }

    const TemporaryFolder folder{u8"tessera-palettes-"};
    INode* database = nullptr;
};
