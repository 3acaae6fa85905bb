#include <checks/target.h>

#include "texts.h"

#include <base/file.h>
#include <quillon/fltrevision.h>
#include <quillon/fltunits.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace checks {

namespace {

using Json = nlohmann::json;

/// The error that `wording` says in a language.
template <typename Wording>
TargetError errorOf(Wording&& wording) {
    return {wording(base::Language::kEnglish), wording(base::Language::kChinese)};
}

struct Limit {
    const char* name;
    std::uint32_t Limits::*value;
};
constexpr Limit kLimits[] = {
    {"depth", &Limits::depth},
    {"textureSide", &Limits::textureSide},
    {"lodFaces", &Limits::lodFaces},
    {"textureMegabytes", &Limits::textureMegabytes},
    {"lightPoints", &Limits::lightPoints},
    {"lightSources", &Limits::lightSources},
};

/// The revisions that a header may state.
constexpr std::uint32_t kRevisions[] = {1420, 1500, 1510, 1520, 1540, 1550, 1551, 1560, 1570,
                                        1580, 1600, 1610, 1620, 1630, 1640, 1650, 1660};

constexpr std::string_view kTiled = "tiled simulation database";

/// One after the published standard for tiled simulation databases: revision 16.0, metres, paths
/// that hold wherever the tiles lie, textures of sides that are powers of two.
Target tiledTarget() {
    Target target;
    target.name = kTiled;
    target.revision = kFltOldest16Revision;
    target.units = 0;
    target.limits.textureSide = 1024;
    const auto set = [&](Rule rule, Severity severity) {
        target.severities[static_cast<std::size_t>(rule)] = severity;
    };
    set(Rule::PATH_ABSOLUTE, Severity::kError);
    set(Rule::TEX_SIZE, Severity::kError);
    set(Rule::NAME_CHARS, Severity::kWarning);
    set(Rule::RECORD_TOO_NEW, Severity::kError);
    return target;
}

std::optional<Target> builtIn(std::string_view name) {
    if (name == "general") return Target();
    if (name == kTiled) return tiledTarget();
    for (const std::uint32_t revision : kRevisions) {
        if (name != revisionText(revision)) continue;
        Target target;
        target.name = name;
        target.revision = revision;
        return target;
    }
    return std::nullopt;
}

/// Notes where a text stops being JSON, or holds a number that is too large for one.
class JsonMaker : public nlohmann::detail::json_sax_dom_parser<Json> {
public:
    explicit JsonMaker(Json& made) : json_sax_dom_parser(made, false) {}

    bool parse_error(std::size_t byte, const std::string&, const Json::exception&) {
        errorByte = byte;
        return false;
    }

    std::size_t errorByte = 0;  ///< counted from 1 on
};

/// Reads the members of a target, and complains about one with the line on which it stands.
class Reader {
public:
    Reader(std::string_view text, const std::string& file) : text_(text), file_(file) {}

    Target read() {
        const Json json = parse();
        if (!json.is_object()) complain(1, TextNumber::kNoObject);
        Target target;
        if (const auto base = json.find("base"); base != json.end()) {
            const auto found = builtIn(stringOf("base", *base));
            if (!found) complain("base", TextNumber::kNoBuiltIn);
            target = *found;
        }
        for (const auto& [key, value] : json.items()) take(target, key, value);
        return target;
    }

private:
    Json parse() {
        Json made;
        JsonMaker maker(made);
        if (!Json::sax_parse(text_, &maker)) {
            const std::size_t byte = std::min(maker.errorByte, text_.size());
            complain(lineAt(byte == 0 ? 0 : byte - 1), TextNumber::kNoJson);
        }
        return made;
    }

    void take(Target& target, const std::string& key, const Json& value) {
        if (key == "base") return;
        if (key == "name") {
            target.name = stringOf(key, value);
        } else if (key == "revision") {
            target.revision = numberOf(key, value);
            if (!fltIsWritable(*target.revision)) complain(key, TextNumber::kBadRevision);
        } else if (key == "units") {
            target.units = unitsOf(value);
        } else if (key == "findings") {
            target.mostFindings = numberOf(key, value);
        } else if (key == "limits") {
            for (const auto& [name, limit] : membersOf(key, value)) takeLimit(target, name, limit);
        } else if (key == "rules") {
            for (const auto& [code, severity] : membersOf(key, value))
                takeRule(target, code, severity);
        } else {
            complain(key, TextNumber::kNoMember);
        }
    }

    void takeLimit(Target& target, const std::string& name, const Json& value) {
        const auto* const found = std::ranges::find(
            kLimits, name, [](const Limit& limit) { return std::string_view(limit.name); });
        if (found == std::end(kLimits)) complain(name, TextNumber::kNoLimit);
        target.limits.*(found->value) = numberOf(name, value);
    }

    void takeRule(Target& target, const std::string& code, const Json& value) {
        const std::optional<Rule> rule = ruleOf(code);
        if (!rule) complain(code, TextNumber::kNoRule);
        const std::optional<Severity> severity = severityOf(stringOf(code, value));
        if (!severity) complain(code, TextNumber::kNoSeverity);
        target.severities[static_cast<std::size_t>(*rule)] = *severity;
    }

    std::uint8_t unitsOf(const Json& value) {
        const std::string name = stringOf("units", value);
        for (const FltUnits& units : kFltUnits)
            if (name == units.name) return units.value;
        complain("units", TextNumber::kNoUnits);
    }

    std::uint32_t numberOf(const std::string& key, const Json& value) {
        constexpr std::uint32_t kMost = 1'000'000'000;
        if (!value.is_number_unsigned() || value.get<std::uint64_t>() > kMost)
            complain(key, TextNumber::kNoNumber);
        return value.get<std::uint32_t>();
    }
    std::string stringOf(const std::string& key, const Json& value) {
        if (!value.is_string()) complain(key, TextNumber::kNoText);
        return value.get<std::string>();
    }
    nlohmann::detail::iteration_proxy<Json::const_iterator> membersOf(const std::string& key,
                                                                      const Json& value) {
        if (!value.is_object()) complain(key, TextNumber::kNotMembers);
        return value.items();
    }

    std::size_t lineAt(std::size_t byte) const {
        return 1 + static_cast<std::size_t>(std::ranges::count(text_.substr(0, byte), '\n'));
    }
    /// Of the first member of that name.
    std::size_t lineOf(const std::string& key) const {
        const std::string quoted = Json(key).dump();
        for (std::size_t at = text_.find(quoted); at != std::string_view::npos;
             at = text_.find(quoted, at + 1)) {
            const std::size_t behind = text_.find_first_not_of(" \t\r\n", at + quoted.size());
            if (behind != std::string_view::npos && text_[behind] == ':') return lineAt(at);
        }
        return 1;
    }
    [[noreturn]] void complain(std::size_t line, TextNumber what, std::string_view key = {}) const {
        const std::string quoted = '"' + std::string(key) + '"', number = std::to_string(line);
        throw errorOf([&](base::Language language) {
            const std::string sentence =
                textOf(what, language, {quoted, "\"error\"", "\"warning\"", "\"hint\"", "\"off\""});
            return textOf(TextNumber::kTargetLine, language, {file_, number, sentence});
        });
    }
    [[noreturn]] void complain(const std::string& key, TextNumber what) const {
        complain(lineOf(key), what, key);
    }

    std::string_view text_;
    const std::string& file_;
};

}  // namespace

std::string revisionText(std::uint32_t revision) {
    std::string text = std::to_string(revision / 100) + '.' + std::to_string(revision / 10 % 10);
    if (revision % 10 != 0) text += std::to_string(revision % 10);
    return text;
}

Target::Target() {
    severities.fill(Severity::kOff);
    for (const RuleInfo& rule : catalogue())
        severities[static_cast<std::size_t>(rule.rule)] = rule.severity;
}

std::vector<std::string> targetNames() {
    std::vector<std::string> names{"general", std::string(kTiled)};
    for (const std::uint32_t revision : kRevisions) names.push_back(revisionText(revision));
    return names;
}

Target findTarget(const std::string& nameOrFile) {
    if (const std::optional<Target> target = builtIn(nameOrFile)) return *target;
    std::string text;
    if (const std::error_code error = base::readFile(nameOrFile, text))
        throw errorOf([&](base::Language language) {
            return textOf(TextNumber::kNoFile, language, {nameOrFile, error.message()});
        });
    return readTarget(text, nameOrFile);
}

Target readTarget(std::string_view text, const std::string& file) {
    return Reader(text, file).read();
}

}  // namespace checks
