// The sample city.
#include "files.h"

#include <base/paths.h>
#include <city.h>
#include <quillon/fltfilereader.h>

#include <set>

namespace {

namespace fs = std::filesystem;

TEST(CityTest, HasAsManySoundFilesOfEveryKindAsAskedForAndAllThatTheyName) {
    const Folder folder;
    constexpr std::size_t kFiles = 120;
    samples::writeCity(folder.path(), kFiles);
    std::size_t files = 0;
    std::set<std::uint16_t> opcodes;
    for (const auto& entry : fs::recursive_directory_iterator(folder.path())) {
        if (entry.path().extension() != ".flt") continue;
        ++files;
        const std::string path = base::textOf(entry.path());
        EXPECT_EQ(runTool({"check", path}).out, "");
        const Outcome outcome = runTool({"check", "--target", "general", path});
        for (const char* rule : {"XREF_", "TEX_", "NOT_JUDGED"})
            EXPECT_THAT(outcome.out, testing::Not(testing::HasSubstr(rule)));
        const FltFileBytes bytes = FltFileBytes::load(path);
        FltFileReader reader(bytes.bytes());
        while (reader.next()) opcodes.insert(reader.opcode());
    }
    EXPECT_EQ(files, kFiles);
    EXPECT_THAT(opcodes,
                testing::IsSupersetOf<std::uint16_t>(
                    {kFltHeader, kFltGroup, kFltObject, kFltFace, kFltDof, kFltBsp, kFltInstanceRef,
                     kFltInstanceDef, kFltExternalRef, kFltTexture, kFltLod, kFltSwitch,
                     kFltClipRegion, kFltLightSource, kFltLightPoint}));
}

}  // namespace
