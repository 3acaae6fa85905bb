#include "factsjson.h"

#include <checks/reportjson.h>
#include <quillon/fltrecordtype.h>
#include <quillon/flttext.h>

#include <algorithm>

namespace fltool {

namespace {

using checks::Severity;

/// How many of the files that the model names are not there.
std::uint64_t missingIn(const Facts& facts) {
    const auto isMissing = [](const auto& named) { return named.path.empty(); };
    return static_cast<std::uint64_t>(std::ranges::count_if(facts.references, isMissing) +
                                      std::ranges::count_if(facts.textures, isMissing));
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr unsigned kDigitBits = 6, kByteBits = 8;
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t three = 0;
        for (std::size_t j = i; j < i + 3; ++j)
            three =
                three << kByteBits | (j < bytes.size() ? static_cast<std::uint8_t>(bytes[j]) : 0U);
        for (unsigned digit = 0; digit < 4; ++digit)
            text += i + digit > bytes.size()
                        ? '='
                        : kDigits[three >> (3 - digit) * kDigitBits & (kDigits.size() - 1)];
    }
    return text;
}

/// Where a page finds a picture that is within it.
std::string dataUri(const std::string& png) {
    return "data:image/png;base64," + base64(png);
}

Json headerOf(const Facts& facts) {
    if (!facts.hasHeader) return nullptr;
    const FltHeader& header = facts.header;
    return {{"id", fltText(header.asciiId)},
            {"revision", header.formatRevision},
            {"editRevision", header.editRevision},
            {"date", fltText(header.dateTime)},
            {"units", header.vertexCoordinateUnits},
            {"vertexStorage", header.vertexStorageType},
            {"origin", header.databaseOrigin},
            {"projection", header.projectionType},
            {"ellipsoid", header.earthEllipsoidModel},
            {"southWest", {header.southWestLatitude, header.southWestLongitude}},
            {"northEast", {header.northEastLatitude, header.northEastLongitude}},
            {"originPlace", {header.originLatitude, header.originLongitude}}};
}

Json hierarchyOf(const Facts& facts) {
    Json nodes = Json::array();
    for (const BranchFacts& branch : facts.branches)
        nodes.push_back({branch.parent, fltRecordName(branch.kind), branch.name, branch.offset,
                         branch.faces, branch.bytes, branch.allFaces, branch.allBytes});
    return {
        {"leftOut", facts.branchesLeftOut},
        {"columns", {"parent", "kind", "name", "offset", "faces", "bytes", "allFaces", "allBytes"}},
        {"rows", std::move(nodes)}};
}

Json texturesOf(const Facts& facts) {
    Json textures = Json::array();
    for (const TextureFacts& texture : facts.textures) {
        Json row = {{"index", texture.index},
                    {"name", texture.name},
                    {"found", !texture.path.empty()},
                    {"users", texture.users}};
        if (!texture.path.empty()) row["fileBytes"] = texture.fileBytes;
        if (texture.width != 0) {
            constexpr std::uint64_t kTexel = 4;
            row["width"] = texture.width;
            row["height"] = texture.height;
            row["memory"] = kTexel * texture.width * texture.height;
        }
        if (!texture.thumbnail.empty()) row["thumbnail"] = dataUri(texture.thumbnail);
        textures.push_back(std::move(row));
    }
    return textures;
}

Json palettesOf(const Facts& facts) {
    constexpr std::array<const char*, kEntryKinds> kNames{
        "materials", "lightSources", "mappings", "lightPointAppearances", "lightPointAnimations"};
    Json palettes = {{"colors", facts.colors}};
    for (std::size_t kind = 0; kind < kEntryKinds; ++kind) {
        Json entries = Json::array();
        for (const EntryFacts& entry : facts.entries[kind]) {
            Json row = {{"index", entry.index}, {"name", entry.name}, {"users", entry.users}};
            if (entry.hasColor) row["color"] = entry.color;
            entries.push_back(std::move(row));
        }
        palettes[kNames[kind]] = std::move(entries);
    }
    return palettes;
}

Json lightPointsOf(const Facts& facts) {
    Json rows = Json::array();
    for (const LightPointFacts& light : facts.lightPoints)
        rows.push_back({{"node", light.name},
                        {"kind", fltRecordName(light.kind)},
                        {"offset", light.offset},
                        {"points", light.points},
                        {"appearance", light.appearance},
                        {"intensity", light.intensity},
                        {"directional", light.directional}});
    return {{"leftOut", facts.lightPointsLeftOut}, {"rows", std::move(rows)}};
}

Json findingsOf(const Facts& facts, bool sentences) {
    Json rows = Json::array();
    for (const checks::Finding& finding : facts.report.findings) {
        Json row = {{"code", infoOf(finding.rule).code},
                    {"severity", nameOf(finding.severity)},
                    {"offset", finding.place},
                    {"node", finding.node},
                    {"values", finding.values}};
        // A word of ours within the sentence is another one in the other language.
        if (infoOf(finding.rule).words != 0)
            row["texts"] = {finding.text(base::Language::kChinese),
                            finding.text(base::Language::kEnglish)};
        if (sentences) row["text"] = finding.text(base::Language::kEnglish);
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace

void Totals::add(const Facts& facts, const checks::Target& target) {
    ++models;
    if (!facts.failure.empty()) ++unreadable;
    const checks::Report& report = facts.report;
    bytes += facts.bytes;
    nodes += report.statistics.nodes;
    faces += report.statistics.polygons;
    textureBytes += report.statistics.textureBytes;
    lightPoints += report.statistics.lightPoints;
    errors += report.countOf(Severity::kError, target);
    warnings += report.countOf(Severity::kWarning, target);
    hints += report.countOf(Severity::kHint, target);
    damage += report.damages.size();
    missing += missingIn(facts);
    for (std::size_t rule = 0; rule < rules.size(); ++rule) rules[rule] += report.counts[rule];
}

Json jsonOf(const Totals& totals, const checks::Target& target) {
    checks::Report all;
    all.counts = totals.rules;
    return {{"models", totals.models},
            {"unreadable", totals.unreadable},
            {"bytes", totals.bytes},
            {"nodes", totals.nodes},
            {"faces", totals.faces},
            {"textureBytes", totals.textureBytes},
            {"lightPoints", totals.lightPoints},
            {"errors", totals.errors},
            {"warnings", totals.warnings},
            {"hints", totals.hints},
            {"damage", totals.damage},
            {"missing", totals.missing},
            {"rules", checks::rulesJson(all, target)}};
}

Json rowOf(const Facts& facts, const checks::Target& target) {
    Json row = {{"path", facts.path}, {"bytes", facts.bytes}};
    if (!facts.failure.empty()) {
        row["failure"] = facts.failure;
        return row;
    }
    const checks::Report& report = facts.report;
    const checks::Statistics& figures = report.statistics;
    row["revision"] = facts.hasHeader ? facts.header.formatRevision : 0;
    row["nodes"] = figures.nodes;
    row["faces"] = figures.polygons;
    row["depth"] = figures.depth;
    row["levels"] = figures.lods;
    row["textures"] = figures.textures;
    row["textureBytes"] = figures.textureBytes;
    row["lightPoints"] = figures.lightPoints;
    row["errors"] = report.countOf(Severity::kError, target);
    row["warnings"] = report.countOf(Severity::kWarning, target);
    row["hints"] = report.countOf(Severity::kHint, target);
    row["damage"] = report.damages.size();
    row["missing"] = missingIn(facts);
    return row;
}

Json detailsOf(const Facts& facts, const checks::Target& target, bool sentences) {
    if (!facts.failure.empty()) return Json::object();
    Json kinds = Json::array();
    for (const auto& [opcode, count] : facts.kinds)
        kinds.push_back({{"kind", fltRecordName(opcode)}, {"count", count}});
    Json levels = Json::array();
    for (const LevelFacts& level : facts.levels)
        levels.push_back({{"node", level.name},
                          {"offset", level.offset},
                          {"in", level.in},
                          {"out", level.out},
                          {"faces", level.faces}});
    Json steps = Json::array();
    for (const Step& step : facts.steps)
        steps.push_back({{"distance", step.distance}, {"faces", step.faces}});
    Json comments = Json::array();
    for (const CommentFacts& comment : facts.comments)
        comments.push_back(
            {{"node", comment.node}, {"offset", comment.offset}, {"text", comment.text}});
    Json references = Json::array();
    for (const ReferenceFacts& reference : facts.references)
        references.push_back({{"name", reference.name},
                              {"found", !reference.path.empty()},
                              {"count", reference.count},
                              {"offset", reference.offset}});
    Json pictures = Json::array();
    for (const Picture& picture : facts.pictures)
        pictures.push_back({{"view", picture.view},
                            {"distance", picture.distance},
                            {"picture", dataUri(picture.png)}});
    Json details = Json::object();
    constexpr std::size_t kParts = 15;
    // An object that grows copies all that is in it, to its last text.
    details.get_ref<Json::object_t&>().reserve(kParts);
    details["header"] = headerOf(facts);
    details["statistics"] = checks::jsonOf(facts.report.statistics);
    details["kinds"] = std::move(kinds);
    details["hierarchy"] = hierarchyOf(facts);
    details["levelsOfDetail"] = std::move(levels);
    details["steps"] = std::move(steps);
    details["textureTable"] = texturesOf(facts);
    details["palettes"] = palettesOf(facts);
    details["lightPointTable"] = lightPointsOf(facts);
    details["comments"] = {{"leftOut", facts.commentsLeftOut}, {"rows", std::move(comments)}};
    details["references"] = std::move(references);
    details["damageList"] = checks::jsonOf(facts.report.damages);
    details["rules"] = checks::rulesJson(facts.report, target);
    details["findings"] = findingsOf(facts, sentences);
    details["pictures"] = std::move(pictures);
    return details;
}

std::string forPage(const Json& json) {
    const std::string plain = json.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string text;
    text.reserve(plain.size());
    // These stand in strings alone.
    for (const char character : plain) {
        switch (character) {
            case '<':
                text += "\\u003c";
                break;
            case '>':
                text += "\\u003e";
                break;
            case '&':
                text += "\\u0026";
                break;
            case '\x7F':
                text += "\\u007f";
                break;
            default:
                text += character;
        }
    }
    return text;
}

std::string forPrograms(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace fltool
