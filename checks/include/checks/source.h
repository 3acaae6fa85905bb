// What the rules look at, whether it is a scene or a file.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltrecordrange.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class FltRecord;

namespace checks {

inline constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// A transform for row vectors: three axes, then the translation.
struct Transform {
    std::array<FltPoint3d, 4> rows{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}};

    FltPoint3d operator()(const FltPoint3d& p) const noexcept {
        const auto& [x, y, z, t] = rows;
        return {p.x * x.x + p.y * y.x + p.z * z.x + t.x, p.x * x.y + p.y * y.y + p.z * z.y + t.y,
                p.x * x.z + p.y * y.z + p.z * z.z + t.z};
    }
    /// This one first, then `next`.
    Transform then(const Transform& next) const noexcept;
    double determinant() const noexcept;
    bool isFinite() const noexcept;
    bool operator==(const Transform&) const = default;
};

/// The polygons of one node, or the points of a light point.
struct Polygons {
    std::vector<FltPoint3d> corners;  ///< of all, one behind the other, in the node's own space
    std::vector<std::uint32_t> ends;  ///< of each in `corners`
    bool hasNormals = false;          ///< all corners have one
    bool hasTexture = false;          ///< all corners have texture coordinates
    bool makesNormals = false;        ///< the file that is made of it will have normals anyway
    std::uint32_t unused = 0;         ///< vertices that no polygon has
    std::int64_t badIndex = -1;       ///< a vertex that is named and not there; -1 for none

    void clear() {
        corners.clear();
        ends.clear();
        hasNormals = hasTexture = makesNormals = false;
        unused = 0;
        badIndex = -1;
    }
};

/// One node of the hierarchy. What it refers to is valid until the next one is asked for.
struct Node {
    std::uint64_t place = 0;            ///< as in `Finding`
    std::uint32_t parent = kNone;       ///< by the number of the call that gave it, from 0 on
    std::uint16_t kind = 0;             ///< its opcode
    std::uint32_t revision = 0;         ///< x 100, of its records
    std::string_view name;              ///< UTF-8; empty for none
    const FltRecord* record = nullptr;  ///< of the kind's class; null without one that can be read
    bool hasTransform = false;
    Transform transform;                      ///< relative to the parent; where `hasTransform`
    std::span<const FltRecordView> attached;  ///< the records that belong to it, in order
    /// Null for kinds that show none by themselves.
    const Polygons* polygons = nullptr;
};

/// A scene or a file.
class Source {
public:
    virtual ~Source() = default;
    /// The next node, parents before their children, siblings in order; false after the last one.
    virtual bool next(Node& node) = 0;
    /// How many there are about, for progress.
    virtual std::size_t estimate() const = 0;
    /// The name of the node at that place, UTF-8; may be empty.
    virtual std::string nameAt(std::uint64_t place) const = 0;
    /// Where files are looked for that a database names, UTF-8; none where nobody knows.
    virtual std::vector<std::string> folders() const = 0;
    /// The file that the database at that place is, UTF-8, or comes from; empty where unknown.
    virtual std::string fileOf(std::uint64_t place) const = 0;
    virtual bool isFile() const { return false; }
    /// Vertices of the file's palette that nothing names; 0 for scenes, which have none.
    virtual std::uint64_t unusedVertices() const { return 0; }
};

}  // namespace checks
