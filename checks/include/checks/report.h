// What a check has found.
#pragma once

#include <checks/target.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace checks {

struct Finding {
    Rule rule{};
    Severity severity{};
    /// Where: the handle of a scene's node (0 for the scene as a whole), or the offset of a file's
    /// record.
    std::uint64_t place = 0;
    std::string node;                 ///< its name, UTF-8; may be empty
    std::vector<std::string> values;  ///< of the rule's sentence; words of ours in English
    /// What a mend needs beside place and values: an index, or the bits of a double.
    std::int64_t detail = 0;

    /// The rule's sentence with the values.
    std::string text(base::Language language) const;
    /// The same with the sentence at hand (`sentenceOf`, in that language), for who words many.
    std::string filled(std::string_view sentence, base::Language language) const;
};

/// Figures of what was checked.
struct Statistics {
    std::uint64_t nodes = 0;
    std::uint64_t polygons = 0;
    std::uint64_t corners = 0;
    std::uint64_t lods = 0;
    std::uint64_t switches = 0;
    std::uint64_t dofs = 0;
    std::uint64_t lightPoints = 0;  ///< points, not nodes
    std::uint64_t lightSources = 0;
    std::uint64_t references = 0;    ///< to other files
    std::uint64_t textures = 0;      ///< palette entries
    std::uint64_t textureBytes = 0;  ///< of those whose size is known, 4 bytes a texel
    std::uint64_t materials = 0;     ///< palette entries
    std::uint32_t depth = 0;
    std::array<double, 3> lowest{};  ///< the box around all corners
    std::array<double, 3> highest{};
};

/// What is not as the format says, at an offset of a file.
struct Damage {
    std::uint64_t offset = 0;
    std::string text;
};

struct Report {
    std::string target;
    std::vector<Damage> damages;  ///< of a file, in its order
    std::vector<Finding>
        findings;  ///< in the order of the nodes; of a rule so many as the target says
    std::array<std::uint64_t, 256> counts{};  ///< by rule, of all that was found
    Statistics statistics;

    std::uint64_t countOf(Rule rule) const noexcept {
        return counts[static_cast<std::size_t>(rule)];
    }
    /// All that was found with that severity, `target` being the one that was checked for.
    std::uint64_t countOf(Severity severity, const Target& target) const noexcept;
};

/// The report as JSON, with sentences in English: `subject` is what was checked, and `placeName`
/// what a finding's place is called ("offset" or "handle").
std::string toJson(const Report& report, const Target& target, const std::string& subject,
                   const char* placeName);
/// Damages alone, where nothing else was looked for.
std::string damagesToJson(const std::vector<Damage>& damages, const std::string& subject);

}  // namespace checks
