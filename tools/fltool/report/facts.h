// What a report says of one model.
#pragma once

#include <checks/knownreferences.h>
#include <checks/report.h>
#include <quillon/fltheader.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace fltool {

/// A node of the hierarchy that is no face; what its own faces have is its own.
struct BranchFacts {
    std::uint32_t parent = 0;  ///< index in the list; of the first one its own
    std::uint16_t kind = 0;    ///< opcode
    std::string name;
    std::uint64_t offset = 0;    ///< of its record
    std::uint64_t faces = 0;     ///< polygons
    std::uint64_t bytes = 0;     ///< of its records and those of its faces
    std::uint64_t allFaces = 0;  ///< with everything below
    std::uint64_t allBytes = 0;
};

struct LevelFacts {
    std::string name;
    std::uint64_t offset = 0;
    double in = 0;            ///< shown from here ...
    double out = 0;           ///< ... to here, in database units
    std::uint64_t faces = 0;  ///< below, but for those of further levels
};

/// From that distance on so many faces are shown.
struct Step {
    double distance = 0;
    std::uint64_t faces = 0;
};

struct TextureFacts {
    std::int32_t index = 0;
    std::string name;
    std::string path;  ///< where it is, UTF-8; empty when it is not there
    std::uint64_t fileBytes = 0;
    std::uint32_t width = 0;  ///< 0 when unknown
    std::uint32_t height = 0;
    std::uint64_t users = 0;     ///< faces, meshes and light point appearances
    std::string thumbnail = {};  ///< the bytes of a PNG file
};

struct EntryFacts {
    std::int32_t index = 0;
    std::string name;
    std::uint64_t users = 0;
    bool hasColor = false;
    std::array<float, 4> color{};  ///< of a material: red, green, blue, alpha
};

enum class EntryKind : std::uint8_t { kMaterial, kLightSource, kMapping, kAppearance, kAnimation };
inline constexpr std::size_t kEntryKinds = 5;

struct LightPointFacts {
    std::string name;
    std::uint64_t offset = 0;
    std::uint64_t points = 0;
    std::uint16_t kind = 0;        ///< opcode
    std::int32_t appearance = -1;  ///< of an indexed one
    double intensity = 0;          ///< of another
    std::int32_t directional = 0;  ///< the same: 0 in all directions, 1 in one, 2 in two
};

struct CommentFacts {
    std::string node;
    std::uint64_t offset = 0;
    std::string text;
};

struct ReferenceFacts {
    std::string name;  ///< of the file, as the database has it
    std::string path;  ///< where it is, UTF-8; empty when it is not there
    std::uint64_t count = 0;
    std::uint64_t offset = 0;  ///< of the first one
};

struct Picture {
    std::string view;  ///< "perspective", "top", "front" or "left", or "level" of a distance
    double distance = 0;
    std::string png;
};

/// How much is kept of a model; what is beyond is counted.
struct FactLimits {
    std::size_t branches = 20000;  ///< the heaviest
    std::size_t rows = 5000;       ///< of light points and of comments each
    std::size_t findings = 1000;   ///< of a rule, and no more than the target says
};

struct Facts {
    std::string path;     ///< as it was named, UTF-8
    std::string failure;  ///< why the file could not be read; nothing else is known then
    std::uint64_t bytes = 0;
    bool hasHeader = false;
    FltHeader header;
    checks::Report report;
    std::map<std::uint16_t, std::uint64_t> kinds;  ///< nodes by opcode
    std::vector<BranchFacts> branches;             ///< in the order of the file
    std::uint64_t branchesLeftOut = 0;
    std::vector<LevelFacts> levels;
    std::vector<Step> steps;  ///< the first at 0; none where no level is
    std::vector<TextureFacts> textures;
    std::array<std::vector<EntryFacts>, kEntryKinds> entries;
    std::size_t colors = 0;  ///< of the color palette
    std::vector<LightPointFacts> lightPoints;
    std::uint64_t lightPointsLeftOut = 0;
    std::vector<CommentFacts> comments;
    std::uint64_t commentsLeftOut = 0;
    std::vector<ReferenceFacts> references;
    std::vector<Picture> pictures;
};

/// What the bytes of the file at `path` say, in one walk that checks them too. What is read of the
/// files that it refers to stays in `known`, where there is such, for the next one.
Facts factsOf(std::span<const std::uint8_t> bytes, const std::string& path,
              const checks::Target& target, const FactLimits& limits,
              checks::KnownReferences* known = nullptr);

/// Reads, walks and checks the file at `path` (UTF-8) once. What is damaged is in the report; a
/// file that cannot be read has a failure. Throws `std::bad_alloc`.
Facts gatherFacts(const std::string& path, const checks::Target& target, const FactLimits& limits,
                  checks::KnownReferences* known = nullptr);

}  // namespace fltool
