// Palettes of ten thousand textures, and edits of what a hundred thousand faces use.
//
// What is compared takes turns, and the fastest of each counts, in processor time.
#include <fltkilnutil/actions.h>
#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/host/host.h>
#include <palettes/edits.h>
#include <palettes/look.h>
#include <palettes/references.h>
#include <quillon/fltface.h>
#include <quillon/fltheader.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "ownprocess.h"
#include "table.h"

namespace {

using bench::Fastest;

constexpr int kFaces = 100'000, kTextures = 10'000;
constexpr int kRuns = 9;
constexpr double kMostToRead = 1000;  // milliseconds
constexpr double kMostOfBareLoop = 1.3;

void require(bool holds) {
    if (!holds) std::abort();
}

void keepTextures(INode& database) {
    fltkilnutil::SourceRecordsWriter kept;
    kept.begin(kFltRevision);
    for (int i = 0; i < kTextures; ++i) {
        FltTexture texture;
        texture.index = i;
        fltSetText(texture.fileName, "textures/wall" + std::to_string(i) + ".rgb");
        FltToken token;
        texture.writeToken(token, kFltRevision);
        token.finish();
        kept.record({token.data(), token.length()});
    }
    fltkilnutil::storeSourceChunk(database, fltkilnutil::SourceChunk::records, kept.bytes());
}

palettes::LookRow rowNamed(const palettes::Look& look, std::string_view key) {
    const auto found = std::ranges::find_if(
        look.rows(), [&](const palettes::LookRow& row) { return row.keys.front() == key; });
    require(found != look.rows().end());
    return *found;
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("palettes_bench", count, arguments);
    kiln::Core& core = kiln::Core::create();
    Interface& host = core.hostInterface();
    INode* const database = host.CreateObjectNode(new DummyObject);
    require(fltPutData(database, FltNodeKind::Header, kFltRevision, FltHeader(), nullptr));
    keepTextures(*database);
    std::vector<INode*> faces;
    for (int i = 0; i < kFaces; ++i) {
        faces.push_back(host.CreateObjectNode(new DummyObject));
        database->AttachChild(faces.back());
        FltFace face;
        face.textureIndex = static_cast<std::int16_t>(i % kTextures);
        require(fltPutData(faces.back(), FltNodeKind::Face, kFltRevision, face, nullptr));
    }
    core.history().clear();

    Fastest reading, bare, assigning, setting, looking;
    int index = 0;
    for (int run = 0; run < kRuns; ++run) {
        reading.run([&] {
            const palettes::Database read(*database);
            require(read.entries(palettes::Palette::kTexture).size() == kTextures);
            require(palettes::usageOf(*database).of(palettes::Palette::kTexture, index) != 0);
        });
        bare.run([&] {
            for (INode* const node : faces) {
                FltAttrGroup* const group = fltAttrLoad(node, kFltRevision);
                require(group != nullptr && fltAttrStore(node, *group));
            }
        });
        core.history().clear();
        ++index;
        assigning.run([&] {
            require(palettes::assign(*database, faces, palettes::Palette::kTexture, index) ==
                    kFaces);
        });
        core.history().clear();
        looking.run([&] { require(palettes::Look(faces).surfaces() == kFaces); });
        const palettes::Look look(faces);
        const palettes::LookRow row = rowNamed(look, "FltTransparency");
        setting.run(
            [&] { require(palettes::setLook(faces, row, std::to_string(index)) == kFaces); });
        core.history().clear();
    }
    table.value("10000 textures, 100000 faces: reading them and who uses them",
                reading.milliseconds, "ms", kMostToRead);
    table.ratio("100000 faces: a texture assigned : load and store", assigning.milliseconds,
                bare.milliseconds, "ms", kMostOfBareLoop);
    table.ratio("100000 faces: one row of the look : load and store", setting.milliseconds,
                bare.milliseconds, "ms", kMostOfBareLoop);
    table.ratio("100000 faces: reading all rows of the look : load and store", looking.milliseconds,
                bare.milliseconds, "ms");
    return table.status();
}
