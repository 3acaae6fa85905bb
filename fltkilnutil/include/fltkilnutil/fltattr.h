// The attributes of OpenFlight nodes: every field that a user may edit, as text.
//
// Each editable field is described by one `FltAttrDesc`, a row; the rows of a record kind make its
// `FltAttrGroup`. The table of groups is built at the first look-up and lives until the process
// exits. A group is also the place where a node's values are worked on: `fltAttrLoad` fills it from
// a node, the caller edits the value texts, `fltAttrStore` writes them back. It is shared by all
// nodes of its kind, so a load replaces what an earlier one of the same kind left there.
//
// Captions and choices are in the host's language. They change in place when a group is looked up
// or loaded under another language than before; value texts do so when they are loaded again.
//
// One caller at a time: nothing here is locked. No function throws.
#pragma once

#include <fltkilnutil/nodekind.h>
#include <fltkilnutil/nodeoptions.h>
#include <quillon/fltrecord.h>
#include <quillon/fltstring.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class INode;

/// How a value is converted to text and back.
enum class FltAttrType : std::int32_t {
    Text = 0,
    Integer = 1,
    Float = 2,
    Boolean = 3,  ///< only in declarations; a descriptor holds an `Enumeration` of yes and no
    Enumeration = 4,
    Double = 10,
};

/// The storage of a field.
enum class FltAttrWidth : std::uint32_t {
    Text = 0,     ///< array of characters
    Int32 = 1,    ///< signed; with a mask, a bit set or a range of bits
    Float32 = 2,  ///< 32-bit float
    Word32 = 3,   ///< 32 bits, read whole whatever the mask
    Bool32 = 5,   ///< 0 or 1, or one bit with a mask
    Int16 = 6,
    Uint16 = 7,
    Int8 = 8,
    Uint8 = 9,
    Float64 = 10,
};

/// Which of a node's blocks holds a field.
enum class FltAttrTarget : std::uint32_t {
    Record = 0,
    Options = 1,
};

/// One choice of an enumeration. A table of them ends with a null text.
struct FltAttrEnum {
    std::int32_t value;
    const char* text;
    const char* otherText = nullptr;  ///< in the language that is not shown, where there is one
};

/// Where a field lives within its block.
struct FltAttrField {
    /// Gives the field's address from that of the block, which is passed as its base class: an
    /// `FltRecord*` or an `FltNodeOptions*`, by target.
    void* (*address)(void* block) = nullptr;
    std::uint32_t size = 0;  ///< bytes
};

/// A block that fields are read from and written to.
class FltAttrBlock {
public:
    FltAttrBlock(FltRecord& record) noexcept : base_(&record), target_(FltAttrTarget::Record) {}
    FltAttrBlock(FltNodeOptions& options) noexcept
        : base_(&options), target_(FltAttrTarget::Options) {}

    void* base() const noexcept { return base_; }
    FltAttrTarget target() const noexcept { return target_; }

private:
    void* base_;
    FltAttrTarget target_;
};

/// One editable field of a record kind.
struct FltAttrDesc {
    /// The descriptor that ends a group's list.
    FltAttrDesc() = default;

    /// A row. Texts and enumeration are kept by address and must outlive it. A boolean becomes an
    /// enumeration of yes and no. The declared default is accepted for the reader's sake and not
    /// kept: a fresh record and fresh options have their own.
    FltAttrDesc(const char* caption, FltAttrTarget target, const char* key, FltAttrType type,
                const char* declaredDefault, FltAttrField field, FltAttrWidth width,
                std::uint32_t mask, const FltAttrEnum* enumeration, bool controlling);

    bool isTerminator() const noexcept { return caption == nullptr && key == nullptr; }

    /// Whether the row was declared as a boolean, so that its choices are no and yes.
    bool isYesNo() const noexcept;

    const char* caption = nullptr;
    const char* key = nullptr;  ///< empty: not addressable by scripts
    FltAttrType type = FltAttrType::Text;
    FltAttrTarget target = FltAttrTarget::Record;
    FltAttrField field;
    FltAttrWidth width = FltAttrWidth::Text;
    std::uint32_t mask = 0;                    ///< 0: the whole field
    const FltAttrEnum* enumeration = nullptr;  ///< null for rows without choices
    std::vector<const char*> choices;          ///< the enumeration's texts, in table order
    FltString value;                           ///< the current value as text, UTF-8
    std::uint32_t bitFlag = 0;                 ///< 1: a boolean in a masked bit
    std::uint32_t visible = 1;                 ///< 0: listed, but not to be edited
    std::uint32_t controlling = 0;             ///< 1: its value decides whether others are visible
};

/// The rows of one record kind, with the blocks that their values live in.
struct FltAttrGroup {
    const char* caption = nullptr;
    FltNodeKind kind{};
    FltAttrDesc* descriptors = nullptr;       ///< the first row; the list ends with a terminator
    std::unique_ptr<FltRecord> record;        ///< of the group's kind
    std::unique_ptr<FltNodeOptions> options;  ///< null for kinds without options
    std::uint32_t parameter = 0;              ///< format revision, stored with a new kind block
};

/// The group of `kind`, or null when there is none: for other kinds, and for every kind when the
/// caption library is missing. The first call builds the table.
FltAttrGroup* fltAttrGroupFind(FltNodeKind kind) noexcept;

/// All groups, in the order of look-up, ended by null; null when there is no table.
FltAttrGroup* const* fltAttrGroups() noexcept;

/// The number of rows of a group.
std::size_t fltAttrCount(const FltAttrGroup& group) noexcept;

/// The row of `kind` with that key, or null. Rows without a key cannot be addressed: an empty key
/// finds nothing.
FltAttrDesc* fltAttrFindRow(FltNodeKind kind, std::string_view key) noexcept;

/// The field's value, for the integer widths (1, 3, 5, 6, 7, 8, 9); 0 for the others and for a
/// block of the wrong target. `block` must be of the class that the descriptor was declared for.
/// Signed fields are extended. A masked field reads as 1 or 0, but a masked enumeration its bits in
/// place, not shifted.
std::uint32_t fltAttrGetField(FltAttrBlock block, const FltAttrDesc& descriptor) noexcept;

/// Sets the field; with a mask, the bits outside it stay. For a bit flag any value but 0 sets the
/// bit; any other masked value must already lie in place within the mask.
void fltAttrSetField(FltAttrBlock block, const FltAttrDesc& descriptor,
                     std::uint32_t value) noexcept;

/// What a field of a width that is no text can hold.
struct FltAttrRange {
    double least;
    double most;
};
FltAttrRange fltAttrRange(FltAttrWidth width) noexcept;

/// Finds the first entry whose text is exactly `text`, else the first whose text in the other
/// language is; `value` is untouched when there is none.
bool fltAttrEnumValue(const FltAttrEnum* table, std::string_view text,
                      std::int32_t& value) noexcept;

/// Fills the group of the node's kind, derived from the host object where nothing is stored, with
/// the node's values and returns it. A node without a record gets a fresh one, and `parameter`
/// becomes the group's. Null without kind or group, and when a chunk of the node is damaged; the
/// node itself is never changed.
FltAttrGroup* fltAttrLoad(INode* node, std::uint32_t parameter) noexcept;

/// What a row of `group` prints for a node that has just been made. The group must be loaded again
/// before its texts are used. Empty when memory ends.
std::string fltAttrDefault(FltAttrGroup& group, const FltAttrDesc& row) noexcept;

/// Writes the value texts of the group, last loaded from this node, back to the node, which becomes
/// an OpenFlight node of the group's kind if it was none. A text that is still what its field
/// prints leaves the field alone, so no value is rounded by passing through here; so does a choice
/// that matches no entry. Text longer than its field is cut. The row that is declared as a double
/// over a 32-bit float (the constant attenuation of light sources) is stored as declared whatever
/// it shows: its float becomes the lower half of the double of its text. False, with nothing
/// changed, when the node is of another kind or the record and its options cannot both be stored.
bool fltAttrStore(INode* node, FltAttrGroup& group) noexcept;

/// Sets one row of a node to the value that `text` says and leaves the fields of all other rows
/// alone, including the one that `fltAttrStore` always writes. `row` is a row of `group`, which was
/// last loaded from this node. The group's texts are those of the node afterwards, as if it had
/// been loaded again. False, with nothing of the node changed, when the node has become one of
/// another kind and where storing fails; the group must then be loaded again.
bool fltAttrStoreRow(INode* node, FltAttrGroup& group, FltAttrDesc& row, const char* text) noexcept;

/// Loads a node and sets one of its rows, in less time than `fltAttrLoad` and `fltAttrStoreRow`
/// take, since no value is printed: for the same edit of many nodes. `parameter` is as for
/// `fltAttrLoad`. False, with nothing changed, when the node is not of the group's kind (derived
/// where nothing is stored) or cannot be loaded, and where storing fails. The group must be loaded
/// again before its texts are used.
bool fltAttrEdit(INode* node, std::uint32_t parameter, FltAttrGroup& group, FltAttrDesc& row,
                 const char* text) noexcept;
