// What the importer keeps on a node beside its OpenFlight data, so that export can give it back and
// others can read it: palettes, and the records of kinds without a class.
//
// The record, the comment and the host node itself say most of what a file says about a node. The
// rest stands in chunks of the importer's own, as records in file form:
//
//   chunk 0   version (16 bits), flags (16), format revision (32), all big-endian like the records
//             [the node's record as it was read]
//             [the name that the importer made up: 16-bit length, UTF-8]
//             the node's attached records in file order
//   chunk 1   what the vertices of its polygon hold beside coordinates (fltkilnutil/vertextails.h)
//   chunk 2   on the node of a database: the name of its file, UTF-8
//
// Outside extension and attribute levels some attached records stand for something that lives
// elsewhere:
//
//   a pop                  holds how many children stand in the level that it ends (32 bits)
//   an empty vertex list   the corners of the node's mesh
//   a vertex palette       the place of the vertex palette
//   vertices, then a list  a vertex list over these vertices, by number instead of by offset; when
//                          it is the node's first, it counts while its mesh has no corners
//
// The bytes come from users' scene files and are never trusted.
#pragma once

#include <quillon/fltlevelwalk.h>
#include <quillon/fltrecordrange.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

class Animatable;
struct AppDataChunk;

namespace fltkilnutil {

/// Bytes of a file or of a chunk, owned by someone else.
using FileBytes = std::span<const std::uint8_t>;

/// Of a record that opens no level.
inline constexpr std::uint32_t kNoPush = 0xFFFFFFFF;

/// One of the attached records that are kept for a node.
struct SourceRecord {
    FltRecordView record;
    bool isOpaque = false;         ///< of a level that holds no nodes, its push and pop included
    std::uint32_t push = kNoPush;  ///< of a pop: the attached record that opens its level
    std::uint32_t children = 0;    ///< of a pop: nodes directly in its level
};

/// What is kept on one node. Refers to the chunk's bytes; empty, with revision 0, without a chunk.
struct SourceRecords {
    std::uint32_t revision = 0;  ///< x 100, of the file that the node came from
    FltRecordView record;        ///< the node's record as it was read; empty when nothing is lost
    std::string_view givenName;  ///< the name that the file did not say; empty when it did
    std::vector<SourceRecord> attached;  ///< rightly nested
};

enum class SourceChunk : std::uint32_t { records = 0, corners = 1, source = 2 };

/// Whether the chunk is one of the importer's.
bool isSourceChunk(const AppDataChunk& chunk) noexcept;

/// The bytes of a chunk of the importer's; empty when there is none.
FileBytes sourceChunk(const Animatable& thing, SourceChunk id) noexcept;

/// Puts a copy of `bytes` on a node or a texture map. Throws `std::bad_alloc`.
void storeSourceChunk(Animatable& thing, SourceChunk id, FileBytes bytes);

/// Reads what is kept on nodes. One object serves many nodes.
class SourceRecordsReader {
public:
    /// What is kept on the node; nothing when the chunk is damaged. Valid until the next call.
    /// Throws `std::bad_alloc`.
    const SourceRecords& read(const Animatable& node);

private:
    bool readChunk(FileBytes bytes);
    bool readAttached(FileBytes bytes);

    SourceRecords kept_;
    FltLevelWalk<std::uint32_t>
        levels_;  ///< with the index of the attached record that opened each
};

/// What is kept on the node; nothing when the chunk is damaged. Throws `std::bad_alloc`.
SourceRecords sourceRecordsOf(const Animatable& node);

/// Puts together what is kept. One object serves many nodes.
class SourceRecordsWriter {
public:
    /// Starts anew.
    void begin(std::uint32_t revision);
    void nodeRecord(FileBytes record);
    void givenName(std::string_view name);
    void record(FileBytes record);
    /// The record, cut to `longest` bytes.
    void record(FileBytes record, std::size_t longest);
    /// A record of `opcode` with an empty body, or with the number `value` as its body.
    void marker(std::uint16_t opcode);
    void marker(std::uint16_t opcode, std::uint32_t value);
    /// A record of `opcode` with the numbers from 0 to below `count`.
    void numbers(std::uint16_t opcode, std::uint32_t count);
    FileBytes bytes() const noexcept { return bytes_; }

private:
    void append(FileBytes bytes);
    template <typename Number>
    void append(Number value);

    std::vector<std::uint8_t> bytes_;
};

/// Changes of what is kept on a node, put together and then made at once.
class SourceRecordsEdit {
public:
    /// Throws `std::bad_alloc`.
    explicit SourceRecordsEdit(Animatable& node);

    /// What is kept now; valid until the changes are made.
    const SourceRecords& kept() const noexcept { return kept_; }

    /// The node's record, in place of the one that is kept, if any.
    void setNodeRecord(FileBytes record) { nodeRecord_.assign(record.begin(), record.end()); }

    // `record` is one of `kept`, and is changed at most once.
    void replace(const FltRecordView& record, FileBytes by) { change(record, record.length(), by); }
    void remove(const FltRecordView& record) { change(record, record.length(), {}); }
    void insertBefore(const FltRecordView& record, FileBytes added) { change(record, 0, added); }
    /// Adds records behind all others.
    void append(FileBytes added);

    /// Makes the changes and tells the host; without any it does nothing. A node on which nothing
    /// is kept, or what cannot be read, then keeps what was set and appended, as of a file of
    /// `revision`. Throws `std::bad_alloc`, and nothing is changed then.
    void store(std::uint32_t revision);

private:
    struct Change {
        std::size_t place;   ///< in the chunk
        std::size_t length;  ///< of what goes
        std::vector<std::uint8_t> by;
    };
    void change(const FltRecordView& record, std::size_t length, FileBytes by);
    std::size_t attachedPlace() const noexcept;

    Animatable& node_;
    FileBytes chunk_;
    SourceRecords kept_;
    std::vector<std::uint8_t> nodeRecord_;
    std::vector<Change> changes_;
};

/// Whether `opcode` is that of a vertex list of either kind.
bool isVertexList(std::uint16_t opcode) noexcept;

}  // namespace fltkilnutil
