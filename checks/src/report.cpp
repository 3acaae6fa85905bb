#include <checks/report.h>
#include <checks/reportjson.h>

#include "texts.h"

#include <base/texts.h>

namespace checks {

using Json = nlohmann::ordered_json;

std::string Finding::text(base::Language language) const {
    return filled(sentenceOf(rule, language), language);
}

std::string Finding::filled(std::string_view sentence, base::Language language) const {
    // A sentence has at most four places.
    std::array<std::string_view, 4> filling;
    for (std::size_t i = 0; i < filling.size() && i < values.size(); ++i) filling[i] = values[i];
    std::array<std::string, 4> words;
    for (std::size_t i = 0; i < filling.size() && i < values.size(); ++i)
        if (infoOf(rule).words >> i & 1) filling[i] = words[i] = wordOf(values[i], language);
    return base::fillText(sentence, {filling[0], filling[1], filling[2], filling[3]});
}

std::uint64_t Report::countOf(Severity severity, const Target& checked) const noexcept {
    std::uint64_t sum = 0;
    for (const RuleInfo& rule : catalogue())
        if (checked.severityOf(rule.rule) == severity) sum += countOf(rule.rule);
    return sum;
}

namespace {

// Names may be any bytes.
std::string textOf(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace

Json jsonOf(const std::vector<Damage>& damages) {
    Json array = Json::array();
    for (const Damage& damage : damages)
        array.push_back({{"offset", damage.offset}, {"text", damage.text}});
    return array;
}

std::string damagesToJson(const std::vector<Damage>& damages, const std::string& subject) {
    return textOf({{"subject", subject}, {"damage", jsonOf(damages)}});
}

Json jsonOf(const Statistics& figures) {
    return {{"nodes", figures.nodes},
            {"depth", figures.depth},
            {"polygons", figures.polygons},
            {"corners", figures.corners},
            {"levelsOfDetail", figures.lods},
            {"switches", figures.switches},
            {"degreesOfFreedom", figures.dofs},
            {"lightPoints", figures.lightPoints},
            {"lightSources", figures.lightSources},
            {"externalReferences", figures.references},
            {"textures", figures.textures},
            {"textureBytes", figures.textureBytes},
            {"materials", figures.materials},
            {"lowest", figures.lowest},
            {"highest", figures.highest}};
}

Json countsJson(const Report& report, const Target& target) {
    return {{"errors", report.countOf(Severity::kError, target)},
            {"warnings", report.countOf(Severity::kWarning, target)},
            {"hints", report.countOf(Severity::kHint, target)}};
}

Json rulesJson(const Report& report, const Target& target) {
    Json rules = Json::array();
    for (const RuleInfo& rule : catalogue()) {
        if (const std::uint64_t count = report.countOf(rule.rule))
            rules.push_back({{"code", rule.code},
                             {"severity", nameOf(target.severityOf(rule.rule))},
                             {"count", count}});
    }
    return rules;
}

std::string toJson(const Report& report, const Target& target, const std::string& subject,
                   const char* placeName) {
    Json findings = Json::array();
    for (const Finding& finding : report.findings) {
        findings.push_back({{"code", infoOf(finding.rule).code},
                            {"severity", nameOf(finding.severity)},
                            {placeName, finding.place},
                            {"node", finding.node},
                            {"text", finding.text(base::Language::kEnglish)}});
    }
    const Json json = {{"subject", subject},
                       {"target", report.target},
                       {"counts", countsJson(report, target)},
                       {"statistics", jsonOf(report.statistics)},
                       {"damage", jsonOf(report.damages)},
                       {"rules", rulesJson(report, target)},
                       {"findings", findings}};
    return textOf(json);
}

}  // namespace checks
