// The rules: what is looked for in a scene or a file.
#pragma once

#include <base/language.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace checks {

/// A rule. The names are the codes that users see, and stay as they are.
enum class Rule : std::uint8_t {
#define TEXT_ROW(name, id, chinese, english) name,
#include <checks/rules.inc>
#undef TEXT_ROW
};

enum class Severity : std::uint8_t { kOff, kHint, kWarning, kError };

/// Whether what a rule finds can be mended.
enum class Mend : std::uint8_t {
    kNone,
    kSafe,       ///< nothing that shows is lost
    kOnRequest,  ///< a choice of the user's: something is deleted or may look otherwise
};

struct RuleInfo {
    Rule rule;
    Severity severity;  ///< unless a target says otherwise
    Mend mend;
    unsigned words = 0;          ///< which values of the sentence are words of ours: bit i for {i}
    const char* code = nullptr;  ///< "FACE_CONCAVE"
    unsigned textId = 0;         ///< of its sentence
};

/// What a query finds stands in the list of findings under this one, which is none of the
/// catalogue: its sentence is its first value.
inline constexpr Rule kQueryFound{0xFF};

/// The catalogue, in the order of `Rule`.
std::span<const RuleInfo> catalogue() noexcept;
const RuleInfo& infoOf(Rule rule) noexcept;
std::optional<Rule> ruleOf(std::string_view code) noexcept;

/// "error", "warning", "hint" or "off", as files say it.
const char* nameOf(Severity severity) noexcept;
std::optional<Severity> severityOf(std::string_view name) noexcept;

/// The sentence of a rule, with `{0}` and the like where values belong.
std::string sentenceOf(Rule rule, base::Language language);

}  // namespace checks
