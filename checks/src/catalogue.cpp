#include <checks/catalogue.h>

#include <base/texttable.h>

#include <algorithm>
#include <array>

namespace checks {

namespace {

using enum Rule;
using enum Severity;

constexpr Mend kNoMend = Mend::kNone;
constexpr Mend kSafe = Mend::kSafe;
constexpr Mend kAsk = Mend::kOnRequest;

/// Where a sentence has words of ours.
constexpr unsigned kFirst = 1, kSecond = 2;

constexpr RuleInfo kRules[] = {
    {HDR_REVISION, kError, kAsk},
    {RECORD_TOO_NEW, kWarning, kNoMend, kFirst},
    {HDR_UNITS, kError, kAsk},
    {HDR_STORAGE, kWarning, kSafe},
    {HDR_ORIGIN, kHint, kNoMend},
    {HDR_PROJECTION, kWarning, kNoMend, kFirst},
    {HDR_ELLIPSOID, kWarning, kNoMend, kFirst},
    {COUNTER_BEHIND, kWarning, kSafe},
    {NAME_LONG, kHint, kSafe},
    {NAME_DUPLICATE, kHint, kAsk},
    {NAME_CHARS, kHint, kAsk},
    {GROUP_EMPTY, kHint, kAsk},
    {DEPTH_EXCESS, kError, kNoMend},
    {CHILD_KIND, kError, kNoMend, kFirst | kSecond},
    {LOD_REVERSED, kError, kAsk},
    {LOD_GAP, kWarning, kAsk},
    {LOD_OVERLAP, kWarning, kAsk},
    {LOD_CENTER, kWarning, kSafe},
    {LOD_UNREACHABLE, kWarning, kNoMend, kFirst},
    {LOD_SIZE, kWarning, kAsk},
    {SWITCH_MASK_SHORT, kError, kSafe},
    {SWITCH_CURRENT, kError, kAsk},
    {SWITCH_STRAY_BITS, kHint, kSafe},
    {SWITCH_NEVER, kHint, kNoMend},
    {SWITCH_EMPTY, kWarning, kAsk, kFirst},
    {DOF_LIMITS, kWarning, kAsk, kFirst},
    {DOF_CURRENT, kWarning, kAsk, kFirst},
    {DOF_FRAME, kError, kNoMend},
    {DOF_SCALE_ZERO, kWarning, kSafe, kFirst},
    {MATRIX_SINGULAR, kError, kNoMend},
    {XREF_MISSING, kError, kNoMend},
    {XREF_CYCLE, kError, kNoMend},
    {PATH_ABSOLUTE, kWarning, kSafe},
    {INSTANCE_UNDEFINED, kError, kNoMend},
    {INSTANCE_CYCLE, kError, kNoMend},
    {FACE_CORNERS, kError, kAsk},
    {FACE_DEGENERATE, kWarning, kAsk},
    {FACE_NONPLANAR, kWarning, kAsk},
    {FACE_CONCAVE, kHint, kAsk},
    {FACE_CROSSING, kError, kNoMend},
    {FACE_DUPLICATE, kWarning, kAsk},
    {FACE_OVERLAP, kWarning, kNoMend},
    {SUBFACE_OUTSIDE, kWarning, kNoMend},
    {INDEX_RANGE, kError, kAsk, kFirst},
    {DRAW_LINE_AREA, kHint, kNoMend},
    {BILLBOARD, kWarning, kNoMend, kSecond},
    {UV_MISSING, kWarning, kNoMend},
    {NORMAL_MISSING, kWarning, kSafe},
    {VERTEX_NONFINITE, kError, kNoMend},
    {VERTEX_UNUSED, kHint, kSafe},
    {VERTEX_DUPLICATE, kHint, kSafe},
    {VERTEX_FAR, kWarning, kAsk},
    {LP_DARK, kWarning, kNoMend, kFirst},
    {LP_DIRECTION, kWarning, kNoMend, kFirst},
    {LP_SIZE, kWarning, kAsk},
    {LP_INDEX, kError, kNoMend, kFirst},
    {TEX_MISSING, kError, kNoMend},
    {TEX_SIZE, kWarning, kAsk},
    {PALETTE_UNUSED, kHint, kSafe, kFirst},
    {MAT_ALPHA_ZERO, kWarning, kNoMend},
    {BUDGET, kWarning, kNoMend, kFirst},
    {NOT_JUDGED, kHint, kNoMend},
};

struct Named {
    const char* code;
    unsigned id;
};
constexpr Named kNames[] = {
#define TEXT_ROW(name, id, chinese, english) {#name, id},
#include <checks/rules.inc>
#undef TEXT_ROW
};

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include <checks/rules.inc>
#undef TEXT_ROW
};

constexpr auto makeCatalogue() {
    static_assert(std::size(kRules) == std::size(kNames), "a rule without a sentence, or none");
    std::array<RuleInfo, std::size(kRules)> all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (kRules[i].rule != static_cast<Rule>(i)) throw "the rows are in another order";
        all[i] = kRules[i];
        all[i].code = kNames[i].code;
        all[i].textId = kNames[i].id;
    }
    return all;
}
constexpr auto kCatalogue = makeCatalogue();

constexpr const char* kSeverities[] = {"off", "hint", "warning", "error"};

}  // namespace

std::span<const RuleInfo> catalogue() noexcept {
    return kCatalogue;
}

const RuleInfo& infoOf(Rule rule) noexcept {
    static constexpr RuleInfo kFound{kQueryFound, kHint, kNoMend, 0, "", 0};
    if (rule == kQueryFound) return kFound;
    return kCatalogue[static_cast<std::size_t>(rule)];
}

std::optional<Rule> ruleOf(std::string_view code) noexcept {
    const auto* const found = std::ranges::find(kCatalogue, code, &RuleInfo::code);
    if (found == kCatalogue.end()) return std::nullopt;
    return found->rule;
}

const char* nameOf(Severity severity) noexcept {
    return kSeverities[static_cast<std::size_t>(severity)];
}

std::optional<Severity> severityOf(std::string_view name) noexcept {
    const auto* const found = std::ranges::find(kSeverities, name);
    if (found == std::end(kSeverities)) return std::nullopt;
    return static_cast<Severity>(found - std::begin(kSeverities));
}

std::string sentenceOf(Rule rule, base::Language language) {
    if (rule == kQueryFound) return "{0}";
    return base::tableText(kTexts, infoOf(rule).textId, language);
}

}  // namespace checks
