#include "gathered.h"

#include <cstdio>

namespace checks {

const char* nameOf(Palette palette) noexcept {
    switch (palette) {
        case Palette::kTexture:
            return "texture";
        case Palette::kMaterial:
            return "material";
        case Palette::kLightSource:
            return "light source";
        case Palette::kMapping:
            return "texture mapping";
        case Palette::kAppearance:
            return "appearance";
        case Palette::kAnimation:
            return "animation";
    }
    return "";
}

Transform Transform::then(const Transform& next) const noexcept {
    Transform product;
    const FltPoint3d zero = next({0, 0, 0});
    for (std::size_t i = 0; i < 3; ++i) product.rows[i] = next(rows[i]) - zero;
    product.rows[3] = next(rows[3]);
    return product;
}

double Transform::determinant() const noexcept {
    return dot(cross(rows[0], rows[1]), rows[2]);
}

bool Transform::isFinite() const noexcept {
    for (const FltPoint3d& row : rows)
        if (!checks::isFinite(row)) return false;
    return true;
}

std::string Gathered::textOf(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string Gathered::nameOfNode(std::uint32_t node) const {
    std::string name = source.nameAt(nodes[node].place);
    return name.empty() ? '#' + std::to_string(nodes[node].place) : name;
}

bool Gathered::canJudge(Rule rule, std::uint32_t node, std::initializer_list<double> numbers) {
    double sum = 0;
    for (const double number : numbers) sum += number * 0;
    if (std::isfinite(sum)) return true;
    if (isOn(rule) && saidNotJudged.insert(static_cast<std::uint8_t>(rule)).second)
        found(Rule::NOT_JUDGED, node, infoOf(rule).code);
    return false;
}

Finding* Gathered::add(Rule rule, std::uint32_t node) {
    const Severity severity = target.severityOf(rule);
    if (severity == Severity::kOff) return nullptr;
    if (report.counts[static_cast<std::size_t>(rule)]++ >= target.mostFindings) return nullptr;
    Finding& finding = report.findings.emplace_back();
    finding.rule = rule;
    finding.severity = severity;
    if (node != kNone) {
        finding.place = nodes[node].place;
        finding.node = source.nameAt(finding.place);
    }
    orders.push_back(node == kNone ? 0 : node);
    return &finding;
}

}  // namespace checks
