// What a database is checked for: limits, rules and severities, from a small JSON file.
#pragma once

#include <checks/catalogue.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace checks {

/// A target that cannot be used. The message names the file and, for its content, the line.
class TargetError : public std::runtime_error {
public:
    TargetError(const std::string& english, std::string chinese)
        : std::runtime_error(english), chinese_(std::move(chinese)) {}

    /// What is wrong, with the file's line; `what` says it in English.
    std::string text(base::Language language) const {
        return language == base::Language::kEnglish ? what() : chinese_;
    }

private:
    std::string chinese_;
};

struct Limits {
    std::uint32_t depth = 64;             ///< nodes within one another
    std::uint32_t textureSide = 2048;     ///< texels
    std::uint32_t lodFaces = 5000;        ///< polygons of one level of detail
    std::uint32_t textureMegabytes = 64;  ///< of all textures together, 4 bytes a texel
    std::uint32_t lightPoints = 500;
    std::uint32_t lightSources = 8;
};

struct Target {
    std::string name = "general";
    std::optional<std::uint32_t> revision;  ///< x 100; none takes any that is known
    std::optional<std::uint8_t> units;      ///< of vertex coordinates; none takes any that is known
    Limits limits;
    std::size_t mostFindings = 1000;       ///< kept of one rule; the others are counted
    std::array<Severity, 256> severities;  ///< by rule

    /// The built-in target "general".
    Target();
    Severity severityOf(Rule rule) const noexcept {
        return severities[static_cast<std::size_t>(rule)];
    }
};

/// "15.8" for 1580.
std::string revisionText(std::uint32_t revision);

/// The names of the built-in targets.
std::vector<std::string> targetNames();

/// A built-in target by its name, or the one of a JSON file (UTF-8 path). Throws `TargetError`.
Target findTarget(const std::string& nameOrFile);

/// The target that the text of a file says; `file` stands in messages. Throws `TargetError`.
///
///     {"name": "our simulator", "base": "tiled simulation database", "revision": 1580,
///      "units": "metres", "limits": {"textureSide": 1024}, "findings": 100,
///      "rules": {"NAME_CHARS": "off", "LOD_GAP": "error"}}
///
/// All of it may be left out.
Target readTarget(std::string_view text, const std::string& file);

}  // namespace checks
