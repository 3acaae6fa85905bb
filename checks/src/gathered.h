// What is kept of the nodes while they are walked, for the rules that compare them.
#pragma once

#include <checks/knownreferences.h>
#include <checks/report.h>
#include <checks/source.h>
#include <quillon/fltheader.h>
#include <quillon/fltopcode.h>

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace checks {

inline FltPoint3d operator+(const FltPoint3d& a, const FltPoint3d& b) noexcept {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline FltPoint3d operator-(const FltPoint3d& a, const FltPoint3d& b) noexcept {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline FltPoint3d operator*(const FltPoint3d& a, double s) noexcept {
    return {a.x * s, a.y * s, a.z * s};
}
inline double dot(const FltPoint3d& a, const FltPoint3d& b) noexcept {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline FltPoint3d cross(const FltPoint3d& a, const FltPoint3d& b) noexcept {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const FltPoint3d& a) noexcept {
    return std::sqrt(dot(a, a));
}
inline bool isFinite(const FltPoint3d& p) noexcept {
    // One test for all three: a sum of finite numbers this large is still finite.
    return std::isfinite(p.x * 0 + p.y * 0 + p.z * 0);
}

struct Box {
    FltPoint3d lowest{kFar, kFar, kFar};
    FltPoint3d highest{-kFar, -kFar, -kFar};

    bool isEmpty() const noexcept { return lowest.x > highest.x; }
    void add(const FltPoint3d& p) noexcept {
        lowest = {std::fmin(lowest.x, p.x), std::fmin(lowest.y, p.y), std::fmin(lowest.z, p.z)};
        highest = {std::fmax(highest.x, p.x), std::fmax(highest.y, p.y), std::fmax(highest.z, p.z)};
    }
    void add(const Box& box) noexcept {
        if (box.isEmpty()) return;
        add(box.lowest);
        add(box.highest);
    }
    FltPoint3d middle() const noexcept { return (lowest + highest) * 0.5; }
    double radius() const noexcept { return isEmpty() ? 0 : length(highest - lowest) / 2; }

    static constexpr double kFar = std::numeric_limits<double>::infinity();
};

struct KeptNode {
    std::uint64_t place = 0;
    std::uint32_t parent = kNone;
    std::uint32_t context = 0;  ///< what is shown together: nodes with the same one
    std::uint32_t bead = 0;     ///< index of the node's bead, or that of the one above a face
    std::uint32_t children = 0;
    std::uint16_t kind = 0;
    std::uint16_t depth = 0;
    std::uint16_t database = 0;
};

/// A node that is no face.
struct Bead {
    std::uint32_t node = kNone;
    std::uint32_t above = kNone;  ///< index of the bead above
    Transform world;
    Box box;                     ///< around all polygons below; complete after the walk
    std::uint64_t polygons = 0;  ///< below, but for those within a further level of detail
    bool isOpen = false;         ///< shows something that is not here: references
    bool isFar = false;
};

inline constexpr std::int16_t kTopLayer = 0x7FFF;

struct KeptPolygon {
    std::uint32_t first = 0;  ///< of its corners
    std::uint32_t node = 0;
    std::int16_t layer = 0;  ///< subfaces and priorities: drawn over what has a lower one
    std::uint8_t drawType = 0;
    bool isHidden = false;
    bool isRegular = false;  ///< flat, convex and with an area
    bool isDuplicate = false;
};

struct KeptLod {
    std::uint32_t node;
    double in, out, transition;
    FltPoint3d center;  ///< in the world
};

struct KeptSwitch {
    std::uint32_t node;
    std::int32_t wordsPerMask;
    std::vector<std::uint32_t> words;
};

enum class Palette : std::uint8_t {
    kTexture,
    kMaterial,
    kLightSource,
    kMapping,
    kAppearance,
    kAnimation
};
inline constexpr std::size_t kPalettes = 6;

/// As it stands in sentences.
const char* nameOf(Palette palette) noexcept;

struct PaletteEntry {
    std::uint32_t node = 0;
    std::string name;
    bool isUsed = false;
    bool isInvisible = false;  ///< of a material
};

/// An index into a palette that was not there when it was met.
struct OpenIndex {
    std::uint32_t node;  ///< `kNone` when it may be missing
    Palette palette;
    std::int32_t index;
};

struct KeptReference {
    std::uint32_t node;
    std::string file;
};

struct Database {
    std::uint32_t node = kNone;  ///< that of its header; none for what stands outside of any
    bool hasHeader = false;
    FltHeader header;
    std::map<std::int32_t, PaletteEntry> palettes[kPalettes];
    std::vector<OpenIndex> openIndices;
    bool usesUnknown = false;  ///< records that may use palettes in ways unknown here
    std::map<std::int16_t, std::uint32_t> definitions;  ///< of instances: the nodes
    std::vector<std::pair<std::int16_t, std::uint32_t>> references;
    std::map<const char*, std::int32_t> greatest;  ///< number in an ID, by the prefix of its kind

    std::map<std::int32_t, PaletteEntry>& entriesOf(Palette palette) {
        return palettes[static_cast<std::size_t>(palette)];
    }
    /// Marks an entry as used; false when it is not there, or not yet.
    bool use(Palette palette, std::int32_t index) {
        const auto found = entriesOf(palette).find(index);
        if (found == entriesOf(palette).end()) return false;
        found->second.isUsed = true;
        return true;
    }
};

inline bool isSurface(std::uint16_t kind) noexcept {
    return kind == kFltFace || kind == kFltMesh;
}

struct NameEntry {
    std::uint64_t hash;
    std::uint32_t node;
    std::uint16_t database;
};

/// Everything that was walked.
struct Gathered {
    Gathered(const Target& checked, Source& from, KnownReferences& knownBefore)
        : target(checked), source(from), known(knownBefore) {}

    const Target& target;
    Source& source;
    KnownReferences& known;
    Report report;

    std::vector<KeptNode> nodes;
    std::vector<Bead> beads;
    std::vector<KeptPolygon> polygons;
    std::vector<FltPoint3d> corners;  ///< of the polygons, in the world
    std::vector<KeptLod> lods;
    std::vector<KeptSwitch> switches;
    std::vector<Database> databases{1};  ///< the first is for what stands outside of any
    std::vector<KeptReference> references;
    std::vector<NameEntry> names;
    Box box;
    std::vector<std::uint32_t> orders;  ///< of the findings: the numbers of their nodes
    std::unordered_set<std::uint8_t> saidNotJudged;

    /// One millionth of the size of the whole.
    double tolerance() const noexcept { return box.radius() * 2e-6; }
    std::span<const FltPoint3d> cornersOf(std::size_t polygon) const noexcept {
        const std::size_t begin = polygons[polygon].first;
        const std::size_t end =
            polygon + 1 < polygons.size() ? polygons[polygon + 1].first : corners.size();
        return std::span(corners).subspan(begin, end - begin);
    }
    Database& databaseOf(std::uint32_t node) { return databases[nodes[node].database]; }

    /// Notes a finding at a node (`kNone`: the whole), whose sentence has `values`.
    template <typename... Values>
    void found(Rule rule, std::uint32_t node, const Values&... values) {
        if (Finding* const finding = add(rule, node))
            (finding->values.push_back(textOf(values)), ...);
    }
    /// The same, with a detail for the mend.
    template <typename... Values>
    void foundDetail(Rule rule, std::uint32_t node, std::int64_t detail, const Values&... values) {
        if (Finding* const finding = add(rule, node)) {
            finding->detail = detail;
            (finding->values.push_back(textOf(values)), ...);
        }
    }
    bool isOn(Rule rule) const noexcept { return target.severityOf(rule) != Severity::kOff; }
    /// False, and said once, when one of `numbers` is not finite.
    bool canJudge(Rule rule, std::uint32_t node, std::initializer_list<double> numbers);

    static std::string textOf(double value);
    static std::string textOf(std::int64_t value) { return std::to_string(value); }
    static std::string textOf(std::int32_t value) { return std::to_string(value); }
    static std::string textOf(std::uint32_t value) { return std::to_string(value); }
    static std::string textOf(std::uint64_t value) { return std::to_string(value); }
    static std::string textOf(std::string_view value) { return std::string(value); }
    static std::string textOf(const char* value) { return value; }
    std::string nameOfNode(std::uint32_t node) const;

private:
    /// Counts a finding; null when it is not kept.
    Finding* add(Rule rule, std::uint32_t node);
};

// The rules, by what they look at. `node` is the number of a node that has just been walked.

/// What a node's record and place say by themselves.
void checkNode(Gathered& all, std::uint32_t number, const Node& node);
/// What the records that belong to a node say: palettes, layers, newer records.
void checkAttached(Gathered& all, std::uint32_t number, const Node& node);
/// One polygon by itself. Says also whether it is regular.
void checkPolygon(Gathered& all, std::size_t polygon);
void checkSubface(Gathered& all, std::size_t polygon);

/// A search for polygons in the same place, a piece at a time.
class Coincidences {
public:
    virtual ~Coincidences() = default;
    /// A piece of the work; false when all is done.
    virtual bool step() = 0;
};
/// Of polygons that are the same, and then of others that overlap; null where nobody asks. `all`
/// must outlive the search.
std::unique_ptr<Coincidences> searchDuplicates(Gathered& all);
std::unique_ptr<Coincidences> searchOverlaps(Gathered& all);

/// Levels of detail and switches, when all that they show is known.
void checkLods(Gathered& all);
void checkSwitches(Gathered& all);
/// What databases have as a whole: names, counters, palettes, instances, budgets.
void checkDatabases(Gathered& all);
void checkNames(Gathered& all);
/// Files that databases name.
void checkFiles(Gathered& all);

}  // namespace checks
