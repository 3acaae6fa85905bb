// Facts of models, and the page and the JSON that are made of them. What a browser makes of the
// page is tested by report_browser.py.
#include "report/report.h"
#include "files.h"
#include "report/facts.h"
#include "report/factsjson.h"

#include <base/paths.h>
#include <checks/target.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlod.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>

#include <numeric>

namespace {

namespace fs = std::filesystem;
using fltool::Facts;
using fltool::Json;

FltLod lodFrom(double in, double out) {
    FltLod lod;
    lod.switchInDistance = in;
    lod.switchOutDistance = out;
    return lod;
}

const samples::Polygon kSquare{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

void addFaces(samples::Node& node, int count, std::int16_t texture = -1) {
    for (int i = 0; i < count; ++i) {
        samples::Polygon square = kSquare;
        for (samples::Point& corner : square) corner.x += 3 * i;
        node.addFace(square, 0, texture);
    }
}

/// A level that shows 1 face from 500 to 1000, with one within it that shows 2 from 0 to 800 more,
/// and 3 faces beside them that are always shown.
std::string writeLevels(const Folder& folder, const char* name = "levels.flt") {
    samples::FltScene scene;
    scene.colors = {{255, 255, 255}};
    for (std::int32_t index : {0, 1}) {
        FltTexture texture;
        texture.index = index;
        fltSetText(texture.fileName, index == 0 ? "there.rgb" : "nowhere.rgb");
        scene.textures.push_back(texture);
    }
    FltMaterial material;
    material.index = 7;
    scene.addPalette(material);
    samples::Node& outer = scene.root.add(lodFrom(1000, 500), "outer");
    addFaces(outer, 1, 1);
    addFaces(outer.add(lodFrom(800, 0), "inner"), 2, 0);
    samples::Node& always = scene.root.add(FltGroup(), "always");
    addFaces(always, 3);
    always.comment("a comment");
    always.addFace(kSquare, 0).changeFace([](FltFace& face) { face.materialIndex = 7; });
    FltXRef reference;
    fltSetText(reference.fileName, "gone.flt<node>");
    always.add(reference);
    always.add(reference);
    EXPECT_TRUE(samples::writeScene(scene, folder.file(name)));
    return folder.file(name);
}

Facts factsOf(const std::string& path, const fltool::FactLimits& limits = {}) {
    return fltool::gatherFacts(path, checks::findTarget("general"), limits);
}

TEST(ReportFacts, LevelsWithinOthersShowOnlyWhereThoseDo) {
    const Folder folder;
    const Facts facts = factsOf(writeLevels(folder));
    std::vector<std::pair<double, std::uint64_t>> steps;
    for (const fltool::Step& step : facts.steps) steps.emplace_back(step.distance, step.faces);
    EXPECT_THAT(steps, testing::ElementsAre(testing::Pair(0, 4), testing::Pair(500, 7),
                                            testing::Pair(800, 5), testing::Pair(1000, 4)));
    ASSERT_EQ(facts.levels.size(), 2U);
    EXPECT_EQ(facts.levels[0].faces, 1U);
    EXPECT_EQ(facts.levels[1].faces, 2U);
}

TEST(ReportFacts, CountUsersOfPalettesAndFindNamedFiles) {
    const Folder folder;
    folder.write("there.rgb", "01DA 0001 0002 0040 0020 0003 00:500");
    const Facts facts = factsOf(writeLevels(folder));
    ASSERT_EQ(facts.textures.size(), 2U);
    EXPECT_EQ(facts.textures[0].users, 2U);
    EXPECT_EQ(facts.textures[0].fileBytes, 512U);
    EXPECT_EQ(facts.textures[1].users, 1U);
    EXPECT_EQ(facts.textures[1].path, "");
    const auto& materials = facts.entries[static_cast<std::size_t>(fltool::EntryKind::kMaterial)];
    ASSERT_EQ(materials.size(), 1U);
    EXPECT_EQ(materials[0].users, 1U);
    ASSERT_EQ(facts.references.size(), 1U);
    EXPECT_EQ(facts.references[0].count, 2U);
    EXPECT_EQ(facts.references[0].path, "");
    ASSERT_EQ(facts.comments.size(), 1U);
    EXPECT_EQ(facts.comments[0].node, "always");
}

TEST(ReportFacts, TheHierarchyHasEveryFaceAndByteOnceAndTheHeaviestWhereItIsCut) {
    const Folder folder;
    const std::string path = folder.writeAirport();
    const Facts all = factsOf(path);
    const auto sum = [](const Facts& facts, auto of) {
        return std::accumulate(
            facts.branches.begin(), facts.branches.end(), std::uint64_t{0},
            [&](std::uint64_t before, const auto& branch) { return before + branch.*of; });
    };
    EXPECT_EQ(sum(all, &fltool::BranchFacts::faces), all.report.statistics.polygons);
    EXPECT_EQ(sum(all, &fltool::BranchFacts::bytes), fs::file_size(base::pathFrom(path)));
    EXPECT_EQ(all.branches[0].allBytes, fs::file_size(base::pathFrom(path)));
    EXPECT_EQ(all.branches[0].allFaces, all.report.statistics.polygons);
    fltool::FactLimits few;
    few.branches = 6;
    few.rows = 1;
    const Facts cut = factsOf(path, few);
    ASSERT_EQ(cut.branches.size(), 6U);
    EXPECT_EQ(cut.branchesLeftOut, all.branches.size() - 6);
    EXPECT_EQ(cut.comments.size(), 1U);
    EXPECT_EQ(cut.commentsLeftOut, all.comments.size() - 1);
    for (std::size_t i = 1; i < cut.branches.size(); ++i) EXPECT_LT(cut.branches[i].parent, i);
    std::vector<std::uint64_t> below;
    for (const auto& branch : all.branches)
        if (branch.parent == 0) below.push_back(branch.allFaces);
    const std::uint64_t most = *std::ranges::max_element(below.begin() + 1, below.end());
    EXPECT_TRUE(std::ranges::any_of(
        cut.branches.begin() + 1, cut.branches.end(),
        [&](const auto& branch) { return branch.parent == 0 && branch.allFaces == most; }));
}

TEST(ReportFacts, AnyBytesGiveFactsAndJson) {
    const Folder folder;
    const FltFileBytes file = FltFileBytes::load(folder.writeAirport());
    const checks::Target target = checks::findTarget("general");
    constexpr std::size_t kTries = 24;
    for (std::size_t i = 0; i < kTries; ++i) {
        std::vector<std::uint8_t> bytes(file.bytes().begin(), file.bytes().end());
        for (std::size_t at = i; at < bytes.size(); at += 997) bytes[at] ^= 0xFF;
        bytes.resize(bytes.size() * (i + 1) / kTries);
        const Facts facts = fltool::factsOf(bytes, "", target, {});
        const Json json = Json::parse(fltool::forPage(fltool::detailsOf(facts, target, true)));
        EXPECT_EQ(json["hierarchy"]["rows"].size(), facts.branches.size());
    }
}

/// What a page has for its data.
Json dataOf(const std::string& page) {
    const std::string mark = "<script type=\"application/json\" id=\"data\">";
    const std::size_t begin = page.find(mark) + mark.size();
    const std::string data = page.substr(begin, page.find("</script>", begin) - begin);
    for (const char* const markup : {"<", ">", "&", "\x7F"})
        EXPECT_EQ(data.find(markup), std::string::npos);
    EXPECT_TRUE(std::ranges::all_of(data, [](char each) { return (each & 0x80) == 0; }));
    return Json::parse(data);
}

std::string textIn(const Folder& folder, const char* name) {
    const Bytes bytes = folder.read(name);
    return {bytes.begin(), bytes.end()};
}

TEST(ReportPage, NoTextOfAFileCanEndTheScriptThatHoldsIt) {
    const Folder folder;
    samples::FltScene scene;
    scene.colors = {{1, 2, 3}};
    const std::string name = "</script><!--<script>\u2028\u2029'\"&\x7F\x01\u202e\\";
    scene.root.add(FltGroup(), name).comment(name);
    ASSERT_TRUE(samples::writeScene(scene, folder.file("a.flt")));
    const Outcome outcome = runTool({"report", folder.file("a.flt"), "-o", folder.file("r.html"),
                                     "--lang", "zh", "--no-pictures"});
    EXPECT_EQ(outcome.error, "");
    ASSERT_EQ(outcome.code, 0);
    const Json data = dataOf(textIn(folder, "r.html"));
    EXPECT_EQ(data["language"], "zh");
    EXPECT_EQ(data["details"][0]["hierarchy"]["rows"][1][2], name);
    EXPECT_EQ(data["details"][0]["comments"]["rows"][0]["text"], name);
}

TEST(ReportPage, OfManyModelsHasTheDetailsBesideItAndWhoRefersToWhom) {
    const Folder folder;
    fs::create_directory(folder.path() / "in");
    constexpr int kModels = 25;
    for (int i = 0; i < kModels; ++i) {
        samples::FltScene scene;
        scene.colors = {{1, 2, 3}};
        FltXRef next;
        fltSetText(next.fileName, "m" + std::to_string(10 + i + 1) + ".flt");
        scene.root.add(next).comment(std::string(10000, 'c'));
        ASSERT_TRUE(samples::writeScene(
            scene, folder.file(("in/m" + std::to_string(10 + i) + ".flt").c_str())));
    }
    folder.write("in/m35.flt", "0001 0004");
    ASSERT_EQ(
        runTool({"report", folder.file("in"), "-o", folder.file("r.html"), "--no-pictures"}).code,
        0);
    const Json data = dataOf(textIn(folder, "r.html"));
    ASSERT_EQ(data["rows"].size(), kModels + 1U);
    EXPECT_EQ(data["rows"][3]["references"], Json::array({4}));
    EXPECT_EQ(data["folder"], "r.files");
    EXPECT_TRUE(data["details"].empty());
    // Some models in each file, each of which says where the next one begins.
    ASSERT_EQ(data["parts"].size(), 3U);
    std::size_t model = 0;
    for (std::size_t part = 0; part < data["parts"].size(); ++part) {
        EXPECT_EQ(data["parts"][part], model);
        std::istringstream lines(
            textIn(folder, ("r.files/" + std::to_string(part) + ".js").c_str()));
        for (std::string line; std::getline(lines, line); ++model) {
            const std::string call = "fltoolDetails(";
            ASSERT_TRUE(line.starts_with(call) && line.ends_with(");"));
            const Json values =
                Json::parse("[" + line.substr(call.size(), line.size() - call.size() - 2) + "]");
            EXPECT_EQ(values[0], model);
            EXPECT_EQ(values[1], data["rows"][model]["path"]);
            EXPECT_EQ(values[2]["comments"]["rows"].size(), model < kModels ? 1U : 0U);
        }
    }
    EXPECT_EQ(model, data["rows"].size());
}

TEST(ReportJson, HasTheFactsOfEachModelAndTheirSums) {
    const Folder folder;
    writeLevels(folder);
    folder.writeAirport();
    const Outcome outcome = runTool({"report", folder.file(""), "--json", "--no-pictures"});
    ASSERT_EQ(outcome.code, 0);
    const Json json = Json::parse(outcome.out);
    ASSERT_EQ(json["models"].size(), 2U);
    const Json& levels = json["models"][1];
    EXPECT_EQ(levels["faces"], 7);
    EXPECT_EQ(levels["missing"], 3);
    EXPECT_EQ(levels["findings"][0]["text"].is_string(), true);
    for (const char* const figure : {"faces", "bytes", "errors", "warnings", "lightPoints"})
        EXPECT_EQ(json["totals"][figure], json["models"][0][figure].get<std::uint64_t>() +
                                              levels[figure].get<std::uint64_t>());
}

TEST(ReportCommand, RefusesWhatItCannotDoAndKeepsTheOldPage) {
    const Folder folder;
    const std::string path = writeLevels(folder);
    folder.write("old.html", "4F");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"report", path},
             {"report", folder.file("missing"), "-o", folder.file("old.html")},
             {"report", path, "-o", folder.file("old.html"), "--target", "missing.json"},
             {"report", path, "-o", folder.file("no/folder.html"), "--no-pictures"},
             {"report", path, "-o", folder.file("old.html"), "--lang", "fr"}}) {
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_THAT(outcome.error, IsOneErrorLine());
    }
    EXPECT_EQ(textIn(folder, "old.html"), "O");
}

TEST(ReportCommand, TellsWhenNoPicturesCanBeDrawnAndWritesThePage) {
    const Folder folder;
    const std::string path = writeLevels(folder);
    for (const std::string& program : {std::string(FLTOOL_PROGRAM), folder.file("none")}) {
        const Outcome outcome =
            runTool({"report", path, "-o", folder.file("r.html"), "--kilnbatch", program});
        EXPECT_EQ(outcome.code, 0);
        EXPECT_THAT(outcome.error, testing::StartsWith("fltool: no pictures of "));
        EXPECT_EQ(dataOf(textIn(folder, "r.html"))["details"][0]["pictures"], Json::array());
    }
}

}  // namespace
