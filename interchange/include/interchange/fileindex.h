// The index of a .flt file: which nodes it holds, how they nest, and where their bytes are.
//
// Import works in two steps. The index is read and checked completely, without touching the
// scene, so that a damaged file is refused before anything exists that would have to be undone. It
// keeps offsets, not copies: a node costs a few words however long its records are.
#pragma once

#include <quillon/fltlevelwalk.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltvertexview.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <vector>

namespace interchange {

/// The bytes of a whole file, owned by someone else.
using FileBytes = std::span<const std::uint8_t>;

class AttachedRange;

/// "No node", "no comment" and the like in the index members below.
inline constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// One node of the file. Offsets are in bytes from the start of the file and name the record's
/// first byte; 0, where the header stands, means that there is no such record.
struct FileNode {
    std::uint16_t kind = 0;  ///< opcode of the node's record
    /// Whether its only attached records are a level with its vertex list, which then go without a
    /// chain: record, push, list and pop stand one behind the other.
    bool isPlain = false;
    std::uint32_t parent = kNone;         ///< index of the parent, which comes first; header: kNone
    std::uint32_t record = 0;             ///< the node's record
    std::uint32_t longId = 0;             ///< its long identifier
    std::uint32_t list = 0;               ///< the vertex list of its polygon or its points
    std::uint32_t firstCorner = 0;        ///< index into `FileIndex::corners`
    std::uint32_t cornerCount = 0;        ///< corners of its polygon, or its points
    std::uint32_t firstAttached = kNone;  ///< index into `FileIndex::attached`
    std::uint32_t lastAttached = kNone;
};

/// One of the records that stand with a node: those that add to it, the pushes and pops of the
/// levels below it, and what those hold beside its children. The attached records of a node form a
/// chain in file order. Not among them are the vertices of the vertex palette and what continues
/// the node's own vertex list.
struct AttachedRecord {
    std::uint32_t record = 0;    ///< offset of the record
    std::uint32_t next = kNone;  ///< index of the node's next attached record
    /// Of a pop: how many nodes stand directly in the level it ends. `kNone` for what stands in a
    /// level of extensions or attributes, and is about those.
    std::uint32_t children = 0;
};

/// What a file holds. Every offset in it names a record that lies completely within the file.
struct FileIndex {
    FileBytes bytes;                       ///< of the file
    std::uint32_t revision = 0;            ///< format revision x 100, from the header
    std::vector<FileNode> nodes;           ///< in file order, the header first
    std::vector<AttachedRecord> attached;  ///< in file order
    std::vector<std::uint32_t> corners;    ///< offsets of vertex records, for all nodes
    std::vector<std::uint32_t> lights;     ///< offsets of light source palette records
    std::vector<std::uint32_t> textures;   ///< offsets of texture palette records
    std::uint32_t colorPalette = 0;        ///< offset of the color palette, 0 without one
    std::uint32_t vertexPalette = 0;       ///< offset of the (last) vertex palette, 0 without one
    std::uint32_t vertexPaletteEnd = 0;    ///< offset behind its last vertex

    std::uint32_t longIds = 0;         ///< long identifiers read
    std::uint32_t unknownRecords = 0;  ///< records of opcodes that no published revision knows
    std::uint32_t strayBytes = 0;      ///< behind the last record, too few for another; left out

    FltRecordView recordAt(std::uint32_t offset) const noexcept {
        return FltRecordView::at(bytes, offset);
    }
    std::span<const std::uint32_t> cornersOf(const FileNode& node) const noexcept {
        return std::span(corners).subspan(node.firstCorner, node.cornerCount);
    }
    /// Whether a vertex list may name what stands at that offset: a whole vertex record of the
    /// vertex palette, or one that has at least its position.
    bool isVertexAt(std::uint64_t offset) const noexcept {
        const FltRecordView vertex = FltRecordView::at(bytes.first(vertexPaletteEnd), offset);
        return vertexPalette != 0 && FltVertexView::isViewable(vertex);
    }
    inline AttachedRange attachedTo(const FileNode& node) const noexcept;
};

/// The attached records of a node.
///
///     for (const AttachedRecord& entry : index.attachedTo(node)) ...
class AttachedRange {
public:
    class Iterator {
    public:
        Iterator(const FileIndex& file, std::uint32_t index) noexcept
            : file_(&file), index_(index) {}

        const AttachedRecord& operator*() const noexcept { return file_->attached[index_]; }
        const AttachedRecord* operator->() const noexcept { return &**this; }
        Iterator& operator++() noexcept {
            index_ = (*this)->next;
            return *this;
        }
        friend bool operator==(const Iterator& a, std::default_sentinel_t) noexcept {
            return a.index_ == kNone;
        }

    private:
        const FileIndex* file_;
        std::uint32_t index_;
    };

    AttachedRange(const FileIndex& file, std::uint32_t first) noexcept : begin_(file, first) {}

    Iterator begin() const noexcept { return begin_; }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    Iterator begin_;
};

inline AttachedRange FileIndex::attachedTo(const FileNode& node) const noexcept {
    return {*this, node.firstAttached};
}

/// Deeper files are refused.
inline constexpr std::size_t kDeepestLevel = kFltDeepestLevel;

/// Reads the index of the file in `bytes`, in linear time. The index refers to the bytes and
/// owns nothing of them.
///
/// The length of every record is taken from the file. Records between a push and pop of extension
/// or attribute levels are no nodes, but attached records of the node that they follow. Up to three
/// stray bytes behind the last record are passed over when all levels are closed. Throws
/// `FltFileError` for a file that is empty, cut short, older than the format, nested wrongly or too
/// deeply, or that contradicts itself.
FileIndex readFileIndex(FileBytes bytes);

}  // namespace interchange
