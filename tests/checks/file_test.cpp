// The rules over files, and over files that were imported and exported again.
#include "../interchange/fltbytes.h"
#include "../interchange/importscene.h"
#include "../support/temporaryfolder.h"
#include "checkscene.h"

#include <airport.h>
#include <base/paths.h>
#include <checks/filesource.h>
#include <checks/knownreferences.h>
#include <faults.h>
#include <gtest/gtest.h>
#include <interchange/export.h>
#include <interchange/import.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltstream.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>
#include <quillon/fltxref.h>

namespace {

using checks::Rule;
using checks::Target;

checks::Report checkFile(std::span<const std::uint8_t> bytes, const std::string& path = "",
                         const Target& target = {}) {
    checks::FileSource source(bytes, path);
    checks::Check check(source, target);
    check.finish();
    return check.report();
}

template <typename Record>
std::vector<std::uint8_t> bytesOf(const Record& record) {
    FltToken token;
    record.writeToken(token, 1580);
    token.finish();
    return {token.data(), token.data() + token.length()};
}

/// A file with a header and faces that say what the library's say.
class File : public FltBytes {
public:
    File() {
        vector().clear();
        FltFileHeader header;
        fltSetText(header.asciiId, "field");
        add(header);
    }
    template <typename Record>
    File& add(const Record& record) {
        const std::vector<std::uint8_t> bytes = bytesOf(record);
        vector().insert(vector().end(), bytes.begin(), bytes.end());
        return *this;
    }
    File& addFace(std::string_view id) {
        FltFace face;
        fltSetText(face.asciiId, id);
        return add(face);
    }
    File& addPolygon(std::string_view id, std::initializer_list<std::uint32_t> vertices) {
        addFace(id).push().list(vertices).pop();
        return *this;
    }
};

constexpr std::array<double, 3> kA{0, 0, 0}, kB{10, 0, 0}, kC{10, 10, 0}, kD{0, 10, 0};

TEST(FileCheck, FindsNothingInACleanFile) {
    File file;
    file.palette({kA, kB, kC, kD}).push().group("g").push().object("o").push();
    file.addPolygon("f", {0, 1, 2, 3}).pop().pop().pop();
    const checks::Report report = checkFile(file);
    EXPECT_EQ(listOf(report), "");
    EXPECT_EQ(report.statistics.nodes, 4U);
    EXPECT_EQ(report.statistics.polygons, 1U);
    EXPECT_EQ(report.statistics.corners, 4U);
    EXPECT_EQ(report.statistics.depth, 4U);
    EXPECT_EQ(report.statistics.highest[1], 10);
}

TEST(FileCheck, NamesTheOffsetOfTheRecord) {
    File file;
    file.palette({kA, kB, kC, kD, {99, 0, 0}}).push().group("g").push();
    const std::size_t offset = file.size();
    file.addPolygon("thin", {0, 1, 1}).pop().pop();
    const checks::Report report = checkFile(file);
    // Three of the five vertices have no user, which the header is told.
    EXPECT_EQ(listOf(report),
              "VERTEX_UNUSED field: 3 vertices are not used\n"
              "VERTEX_DUPLICATE thin: 1 corners are where the corner before them is\n"
              "FACE_DEGENERATE thin: a polygon has no area\n");
    EXPECT_EQ(report.findings.at(2).place, offset);
}

TEST(FileCheck, PlacesWhatStandsBelowAMatrix) {
    // The same square twice, moved apart by the matrix of one of the groups.
    File file;
    file.palette({kA, kB, kC, kD}).push();
    file.group("one").push();
    file.addPolygon("f", {0, 1, 2, 3}).pop();
    File same = file;
    file.group("two").matrix(20, 0, 0).push();
    same.group("two").push();
    for (File* const each : {&file, &same}) each->addPolygon("h", {0, 1, 2, 3}).pop().pop();
    EXPECT_EQ(listOf(checkFile(file)), "");
    EXPECT_EQ(listOf(checkFile(same)), "FACE_DUPLICATE h: it is the same polygon as f\n");
}

TEST(FileCheck, LooksForThePaletteEntriesOfIndexedLightPoints) {
    FltIndexedLightPoint light;
    light.appearanceIndex = 3;
    FltLightPointAppearance entry;
    entry.index = 3;
    entry.intensity = 1;
    File clean, faulty;
    for (File* const file : {&clean, &faulty}) {
        if (file == &clean) file->add(entry);
        file->palette({kA}).push().group("g").push();
        file->add(light).push().list({0}).pop().pop().pop();
    }
    EXPECT_EQ(listOf(checkFile(clean)), "");
    EXPECT_EQ(checkFile(faulty).countOf(Rule::LP_INDEX), 1U);
}

TEST(FileCheck, TakesATextureForUsedThatAnEntryBeforeItNames) {
    FltLightPointAppearance entry;
    entry.textureIndex = 7;
    FltTexture texture;
    texture.index = 7;
    File file;
    file.add(entry).add(texture);
    EXPECT_EQ(listOf(checkFile(file)),
              "PALETTE_UNUSED field: nothing uses appearance 0 of the palette\n");
}

TEST(FileCheck, TakesWhatMaterialsOf16MayUseForUsed) {
    FltMaterial material;
    File file;
    file.add(material);
    EXPECT_EQ(checkFile(file).countOf(Rule::PALETTE_UNUSED), 1U);
    file.record(kFltExtendedMaterialHeader, Bytes().zeros(40));
    EXPECT_EQ(checkFile(file).countOf(Rule::PALETTE_UNUSED), 0U);
}

TEST(FileCheck, EndsWhereTheFileIsDamaged) {
    File file;
    file.palette({kA, kB, kC, kD}).push().group("g").push().object("o").push();
    file.addPolygon("f", {0, 1, 2, 3}).addPolygon("h", {0, 1, 2}).pop().pop().pop();
    const std::span<const std::uint8_t> bytes = file;
    for (std::size_t length = 0; length <= bytes.size(); ++length)
        checkFile(std::vector<std::uint8_t>(bytes.begin(),
                                            bytes.begin() + static_cast<std::ptrdiff_t>(length)));
    std::vector<std::uint8_t> changed(bytes.begin(), bytes.end());
    for (std::uint8_t& byte : changed) {
        const std::uint8_t before = byte;
        for (const unsigned value : {0U, 0x7FU, 0xFFU, before + 1U}) {
            byte = static_cast<std::uint8_t>(value);
            checkFile(changed);
        }
        byte = before;
    }
}

TEST(FileCheck, NestsOnlySoDeep) {
    File file;
    for (int i = 0; i < 70; ++i) file.push().group("g" + std::to_string(i));
    for (int i = 0; i < 70; ++i) file.pop();
    EXPECT_EQ(checkFile(file).countOf(Rule::DEPTH_EXCESS), 1U);
    for (int i = 0; i < 100'000; ++i) file.push().group("g");
    checkFile(file);
}

// What one of our files says of itself does not depend on the way through the scene.
TEST(FileCheck, ImportAndExportAddNothing) {
    const TemporaryFolder folder;
    File file;
    const FltMaterial material;
    file.add(material).palette({kA, kB, kC, kD, {2, 2, 0}});
    file.push().group("g").matrix(3, 4, 5).push().object("o").push();
    file.addPolygon("flat", {0, 1, 2, 3}).addPolygon("thin", {0, 1, 0});
    file.addPolygon("notch", {0, 1, 4, 3}).addFace("super");
    file.push().list({0, 1, 2}).pop().record(kFltPushSubface);
    file.addPolygon("sub", {0, 1, 3}).record(kFltPopSubface).pop().pop().pop();
    kiln::Core& core = kiln::Core::create();
    core.newScene();
    const std::string in = folder.write("in.flt", file);
    const std::string out = folder.file("out.flt");
    RecordingReport told;
    Interface& host = core.hostInterface();
    ASSERT_EQ(interchange::importFile(in.c_str(), told, host), IMPEXP_SUCCESS) << told.error;
    const checks::Report before = checkFile(file);
    EXPECT_EQ(before.findings.size(), 6U) << listOf(before);
    checks::SceneSource source(host);
    const Target target;
    checks::Check scene(source, target);
    scene.finish();
    told.progress = 0;
    ASSERT_EQ(interchange::exportFile(out.c_str(), {}, told, host), IMPEXP_SUCCESS) << told.error;
    const FltFileBytes bytes = FltFileBytes::load(out);
    const checks::Report after = checkFile(bytes.bytes());
    EXPECT_EQ(listOf(after), listOf(before));
    EXPECT_EQ(listOf(scene.report()), listOf(before));
    core.newScene();
}

// In files the corners of a face stand behind its subfaces.
TEST(FileCheckTest, GivesAFaceTheCornersBehindItsSubfaces) {
    const TemporaryFolder folder{u8"tessera-subfaces-"};
    const std::string file = folder.file("airport.flt");
    ASSERT_TRUE(samples::writeScene(samples::makeAirport(), file));
    const FltFileBytes bytes = FltFileBytes::load(file);
    const checks::Report report = checkFile(bytes.bytes(), file);
    for (const Rule rule : {Rule::FACE_CORNERS, Rule::FACE_CROSSING, Rule::SUBFACE_OUTSIDE})
        EXPECT_EQ(report.countOf(rule), 0U) << listOf(report);
}

// The sample that shows what can be wrong.
TEST(FileCheckTest, FindsEveryCodeInTheSampleOfFaults) {
    const TemporaryFolder folder{u8"tessera-faults-"};
    ASSERT_TRUE(samples::writeFaults(folder.file("")));
    const std::string file = folder.file("faults.flt");
    const FltFileBytes bytes = FltFileBytes::load(file);
    const checks::Report report = checkFile(bytes.bytes(), file, checks::findTarget("15.5"));
    std::string missing;
    for (const checks::RuleInfo& rule : checks::catalogue())
        if (report.countOf(rule.rule) == 0) missing += std::string(rule.code) + '\n';
    EXPECT_EQ(missing, "");
}

TEST(KnownReferences, ReadAFileAgainOnlyWhenItWasWritten) {
    const TemporaryFolder folder;
    const std::string path = folder.file("tree.flt");
    const auto refer = [&](const char* name, std::filesystem::file_time_type time) {
        FltXRef record;
        fltSetText(record.fileName, name);
        FltStream stream;
        ASSERT_TRUE(stream.open(path));
        record.write(stream);
        ASSERT_TRUE(stream.close());
        std::filesystem::last_write_time(base::pathFrom(path), time);
    };
    using Names = std::vector<std::string>;
    checks::KnownReferences known;
    EXPECT_EQ(known.namesIn(path), Names());
    const auto time = std::filesystem::file_time_type::clock::now();
    refer("oak.flt<1>", time);
    EXPECT_EQ(known.namesIn(path), Names{"oak.flt"});
    refer("elm.flt<1>", time);  // which nothing tells
    EXPECT_EQ(known.namesIn(path), Names{"oak.flt"});
    refer("elm.flt<1>", time + std::chrono::seconds(1));
    EXPECT_EQ(known.namesIn(path), Names{"elm.flt"});
}

}  // namespace
