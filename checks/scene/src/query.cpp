#include <checks/query.h>

#include <diagnostics/assertion.h>
#include <fltkilnutil/fltfields.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmesh.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

namespace checks {

namespace {

enum class Subject { kName, kKind, kComment, kTexture, kMaterial, kAttribute };
enum class Comparison { kEqual, kUnequal, kLess, kAtMost, kMore, kAtLeast };

constexpr std::pair<const char*, Subject> kSubjects[] = {{"name", Subject::kName},
                                                         {"kind", Subject::kKind},
                                                         {"comment", Subject::kComment},
                                                         {"texture", Subject::kTexture},
                                                         {"material", Subject::kMaterial}};

// The longer ones first.
constexpr std::pair<std::string_view, Comparison> kComparisons[] = {
    {"!=", Comparison::kUnequal}, {"<=", Comparison::kAtMost}, {">=", Comparison::kAtLeast},
    {"=", Comparison::kEqual},    {"<", Comparison::kLess},    {">", Comparison::kMore}};

char lowered(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool isSame(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, [](char x, char y) { return lowered(x) == lowered(y); });
}

/// Whether the text fits the pattern, in which * stands for any characters and ? for one byte.
bool fits(std::string_view text, std::string_view pattern) noexcept {
    std::size_t at = 0, in = 0, afterStar = std::string_view::npos, retry = 0;
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            afterStar = ++in;
            retry = at;
        } else if (in < pattern.size() &&
                   (pattern[in] == '?' || lowered(pattern[in]) == lowered(text[at]))) {
            ++in;
            ++at;
        } else if (afterStar != std::string_view::npos) {
            in = afterStar;
            at = ++retry;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

std::optional<double> numberOf(std::string_view text) noexcept {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool holds(Comparison comparison, double a, double b) noexcept {
    switch (comparison) {
        case Comparison::kEqual:
            return a == b;
        case Comparison::kUnequal:
            return a != b;
        case Comparison::kLess:
            return a < b;
        case Comparison::kAtMost:
            return a <= b;
        case Comparison::kMore:
            return a > b;
        case Comparison::kAtLeast:
            return a >= b;
    }
    return false;
}

}  // namespace

struct Query::Condition {
    enum class Sort { kAll, kAny, kNot, kCompare };

    Sort sort = Sort::kCompare;
    std::vector<Condition> parts;

    Subject subject{};
    const char* key = nullptr;  ///< of the attribute
    Comparison comparison{};
    std::string value;
    std::optional<double> number;  ///< the value, if it is one
};

namespace {

using Condition = Query::Condition;

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) { next(); }

    Condition parse() {
        Condition whole = any(0);
        if (sort_ != Token::kEnd) fail("there is more than a condition");
        return whole;
    }

private:
    enum class Token { kEnd, kOpen, kClose, kComparison, kText };
    static constexpr int kDeepest = 64;

    [[noreturn]] void fail(const std::string& what) const {
        throw QueryError(
            "the query cannot be read at character " + std::to_string(begin_ + 1) + ": " + what,
            begin_);
    }

    void next() {
        while (end_ < text_.size() && text_[end_] == ' ') ++end_;
        begin_ = end_;
        isQuoted_ = false;
        if (end_ == text_.size()) {
            sort_ = Token::kEnd;
            return;
        }
        const char first = text_[end_];
        if (first == '(' || first == ')') {
            sort_ = first == '(' ? Token::kOpen : Token::kClose;
            ++end_;
            return;
        }
        for (const auto& [sign, comparison] : kComparisons)
            if (text_.substr(end_).starts_with(sign)) {
                sort_ = Token::kComparison;
                comparison_ = comparison;
                end_ += sign.size();
                return;
            }
        sort_ = Token::kText;
        if (first == '"' || first == '\'') {
            const std::size_t close = text_.find(first, end_ + 1);
            if (close == std::string_view::npos) fail("the quotation has no end");
            token_ = text_.substr(end_ + 1, close - end_ - 1);
            end_ = close + 1;
            isQuoted_ = true;
            return;
        }
        end_ = std::min(text_.find_first_of(" ()=!<>\"'", end_ + 1), text_.size());
        token_ = text_.substr(begin_, end_ - begin_);
    }

    bool isWord(std::string_view word) const {
        return sort_ == Token::kText && !isQuoted_ && isSame(token_, word);
    }

    Condition list(Condition::Sort sort, const char* word, Condition (Parser::*part)(int),
                   int depth) {
        Condition first = (this->*part)(depth);
        if (!isWord(word)) return first;
        Condition whole;
        whole.sort = sort;
        whole.parts.push_back(std::move(first));
        while (isWord(word)) {
            next();
            whole.parts.push_back((this->*part)(depth));
        }
        return whole;
    }
    Condition any(int depth) { return list(Condition::Sort::kAny, "or", &Parser::all, depth); }
    Condition all(int depth) { return list(Condition::Sort::kAll, "and", &Parser::single, depth); }

    Condition single(int depth) {
        if (depth > kDeepest) fail("conditions are nested too deeply");
        if (isWord("not")) {
            next();
            Condition whole;
            whole.sort = Condition::Sort::kNot;
            whole.parts.push_back(single(depth + 1));
            return whole;
        }
        if (sort_ != Token::kOpen) return compare();
        next();
        Condition inner = any(depth + 1);
        if (sort_ != Token::kClose) fail("a parenthesis is not closed");
        next();
        return inner;
    }

    Condition compare() {
        if (sort_ != Token::kText || isWord("and") || isWord("or")) fail("a condition is missing");
        Condition made;
        const std::size_t subjectAt = begin_;
        const std::string subject(token_);
        next();
        if (sort_ != Token::kComparison) {
            made.subject = Subject::kName;
            made.value = '*' + subject + '*';
            return made;
        }
        made.comparison = comparison_;
        next();
        if (sort_ != Token::kText) fail("a value is missing");
        made.value = token_;
        made.number = numberOf(token_);
        const std::size_t valueAt = std::exchange(begin_, subjectAt);
        const auto* const known = std::ranges::find_if(
            kSubjects, [&](const auto& one) { return isSame(one.first, subject); });
        if (known != std::end(kSubjects)) {
            made.subject = known->second;
        } else {
            made.subject = Subject::kAttribute;
            made.key = fltFieldKey(subject);
            if (made.key == nullptr) fail("there is no attribute \"" + subject + '"');
        }
        begin_ = valueAt;
        if (made.comparison != Comparison::kEqual && made.comparison != Comparison::kUnequal &&
            (made.subject != Subject::kAttribute || !made.number))
            fail("only numbers are less or more than others");
        next();
        return made;
    }

    std::string_view text_;
    std::size_t begin_ = 0;  ///< of the token
    std::size_t end_ = 0;
    Token sort_{};
    Comparison comparison_{};
    std::string_view token_;
    bool isQuoted_ = false;
};

/// The palettes of a database, by index.
struct Names {
    std::map<std::int64_t, std::string> textures;
    std::map<std::int64_t, std::string> materials;
};

/// Asks nodes, one after the other.
class Examiner {
public:
    bool examine(INode& node, const Condition& condition) {
        switch (condition.sort) {
            case Condition::Sort::kAll:
                return std::ranges::all_of(condition.parts,
                                           [&](const auto& part) { return examine(node, part); });
            case Condition::Sort::kAny:
                return std::ranges::any_of(condition.parts,
                                           [&](const auto& part) { return examine(node, part); });
            case Condition::Sort::kNot:
                return !examine(node, condition.parts.front());
            case Condition::Sort::kCompare:
                return compare(node, condition);
        }
        return false;
    }

private:
    static bool isText(std::string_view text, const Condition& condition) {
        return fits(text, condition.value) == (condition.comparison == Comparison::kEqual);
    }

    bool compare(INode& node, const Condition& condition) {
        switch (condition.subject) {
            case Subject::kName:
                return isText(node.GetName(), condition);
            case Subject::kKind:
                return isText(kindNameOf(node), condition);
            case Subject::kComment: {
                std::string comment;
                fltGetComment(&node, comment);
                return isText(comment, condition);
            }
            case Subject::kTexture:
            case Subject::kMaterial:
                return isUsed(node, condition);
            case Subject::kAttribute:
                return compareAttribute(node, condition);
        }
        return false;
    }

    /// Of nodes that can have a texture or a material.
    bool isUsed(INode& node, const Condition& condition) {
        FltNodeKind kind{};
        if (!fltGetKind(&node, true, kind) ||
            (kind != FltNodeKind::Face && kind != FltNodeKind{kFltMesh}))
            return false;
        const bool isEqual = condition.comparison == Comparison::kEqual;
        const bool isTexture = condition.subject == Subject::kTexture;
        std::int64_t index = -1;
        FltFace face;
        FltMesh mesh;
        if (fltGetRecord(&node, face))
            index = isTexture ? face.textureIndex : face.materialIndex;
        else if (fltGetRecord(&node, mesh))
            index = isTexture ? mesh.textureIndex : mesh.materialIndex;
        if (index >= 0 && condition.number && *condition.number == static_cast<double>(index))
            return isEqual;
        std::string name;
        if (index >= 0) {
            const Names& names = namesFor(node);
            const auto& palette = isTexture ? names.textures : names.materials;
            if (const auto entry = palette.find(index); entry != palette.end())
                name = entry->second;
        }
        if (isTexture && name.empty()) {
            Texmap* const map = node.GetTexmap();
            if (map != nullptr && map->ClassID() == BMTEX_CLASS_ID)
                name = static_cast<BitmapTex*>(map)->GetMapName();
        }
        const std::string_view file = std::string_view(name).substr(name.find_last_of("/\\") + 1);
        return (!name.empty() && (fits(name, condition.value) || fits(file, condition.value))) ==
               isEqual;
    }

    /// The palettes of the database that the node is in.
    const Names& namesFor(INode& node) {
        for (INode* above = node.GetParentNode(); above != nullptr;
             above = above->GetParentNode()) {
            FltNodeKind kind{};
            if (!fltGetKind(above, false, kind) || kind != FltNodeKind::Header) continue;
            const auto [found, isNew] = databases_.try_emplace(above);
            if (isNew) readNames(*above, found->second);
            return found->second;
        }
        static const Names none;
        return none;
    }

    static void readNames(INode& database, Names& names) {
        const fltkilnutil::SourceRecords kept = fltkilnutil::sourceRecordsOf(database);
        for (const fltkilnutil::SourceRecord& entry : kept.attached) {
            if (entry.isOpaque) continue;
            try {
                if (entry.record.opcode() == kFltTexture) {
                    FltTexture record;
                    record.readBytes(entry.record.bytes(), kept.revision);
                    names.textures.try_emplace(record.index, fltText(record.fileName));
                } else if (entry.record.opcode() == kFltMaterial) {
                    FltMaterial record;
                    record.readBytes(entry.record.bytes(), kept.revision);
                    names.materials.try_emplace(record.index, fltText(record.name));
                } else if (entry.record.opcode() == kFltMaterialTable) {
                    FltMaterialTable record;
                    record.readBytes(entry.record.bytes(), kept.revision);
                    for (std::size_t i = 0; i < record.materials.size(); ++i)
                        names.materials.try_emplace(static_cast<std::int64_t>(i),
                                                    fltText(record.materials[i].name));
                }
            } catch (const diagnostics::AviaryAssertion&) {
                // Counts that no record can hold: there is no entry then.
            }
        }
    }

    static bool compareAttribute(INode& node, const Condition& condition) {
        const FltField field = fltFieldFind(&node, condition.key);
        if (!field || !fltFieldLoad(&node, field, kFltRevision)) return false;
        const FltAttrGroup* const group = field.group;
        const FltAttrDesc* const row = field.row;
        if (condition.number && row->width != FltAttrWidth::Text)
            return holds(condition.comparison, numberIn(*group, *row), *condition.number);
        if (condition.comparison != Comparison::kEqual &&
            condition.comparison != Comparison::kUnequal)
            return false;
        const char* const text = row->value.text();
        return isText(text != nullptr ? text : "", condition);
    }

    /// As the node stores it, not as it is printed.
    static double numberIn(const FltAttrGroup& group, const FltAttrDesc& row) {
        const FltAttrBlock block = row.target == FltAttrTarget::Options
                                       ? FltAttrBlock(*group.options)
                                       : FltAttrBlock(*group.record);
        const void* const field = row.field.address(block.base());
        switch (row.width) {
            case FltAttrWidth::Float32:
                return double{*static_cast<const float*>(field)};
            case FltAttrWidth::Float64:
                return *static_cast<const double*>(field);
            default:
                return static_cast<std::int32_t>(fltAttrGetField(block, row));
        }
    }

    std::unordered_map<INode*, Names> databases_;
};

}  // namespace

std::string kindNameOf(INode& node) {
    FltNodeKind kind{};
    fltGetKind(&node, true, kind);
    std::string_view name = fltOpcodeName(static_cast<std::uint16_t>(kind));
    constexpr std::string_view kPrefix = "FLT_";
    if (name.starts_with(kPrefix)) name.remove_prefix(kPrefix.size());
    return std::string(name);
}

Query::Query(std::string_view text)
    : condition_(std::make_unique<Condition>(Parser(text).parse())) {}

Query::~Query() = default;

std::vector<INode*> Query::find(Interface& host) const {
    std::vector<INode*> found;
    Examiner examiner;
    INode* const root = host.GetRootNode();
    ForEachInSubtree(root, [&](INode& node) {
        FltNodeKind kind{};
        if (&node != root && fltGetKind(&node, true, kind) && examiner.examine(node, *condition_))
            found.push_back(&node);
    });
    return found;
}

}  // namespace checks
