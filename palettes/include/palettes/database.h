// What the palettes of a database hold.
#pragma once

#include <palettes/palette.h>

#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltcolornames.h>
#include <quillon/fltcolorpalette.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

class FltRecord;
class INode;

namespace palettes {

/// One entry of a palette other than that of the colors.
struct Entry {
    std::size_t place = 0;  ///< among the records that are kept for the database
    FltRecordView record;
    /// Which one it is of a table of materials, as files before revision 1500 have it: `record` is
    /// then made of it, and what is kept is the table. -1 for a record of its own.
    std::int32_t row = -1;
    bool hasIndex = false;  ///< it does not end before its index
    std::int32_t index = 0;
    std::string name;        ///< UTF-8, as far as that can be told
    bool isText = true;      ///< the name is UTF-8
    bool isCut = false;      ///< it ends before its last field
    bool isDoubled = false;  ///< an entry before it has the index, and counts
    bool isBeyond = false;   ///< no node can name its index
    bool isReadable = true;  ///< its class takes the bytes

    bool counts() const noexcept { return hasIndex && !isDoubled && !isBeyond; }
};

/// The node of the database that `node` (may be null) belongs to; null for none.
INode* databaseOf(INode* node);
/// Those of the scene, in its order.
std::vector<INode*> databasesIn(INode& root);

/// The palettes of a database as they are kept on its node. Refers to the node's bytes: valid until
/// an edit of the palettes. The bytes are a user's, and may be anything.
class Database {
public:
    /// Throws `Refusal` when what is kept on the node cannot be read, and `std::bad_alloc`.
    explicit Database(INode& node);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    INode& node() const noexcept { return node_; }
    std::uint32_t revision() const noexcept { return kept_.revision; }
    const fltkilnutil::SourceRecords& kept() const noexcept { return kept_; }

    /// In the order of the file. None for the colors.
    const std::vector<Entry>& entries(Palette palette) const noexcept { return entries_[palette]; }
    /// The entry that counts of those with that index; null for none.
    const Entry* find(Palette palette, std::int32_t index) const noexcept;
    /// The smallest index that no entry has.
    std::int32_t freeIndex(Palette palette) const;

    /// Whether there are colors that can be shown and edited: all 1,024, or all of the older form.
    bool hasColors() const noexcept { return colors_.isWhole(); }
    /// Those of files before revision 1500, which have no names.
    bool hasOldColors() const noexcept { return colors_.isOld(); }
    /// How many entries they are.
    std::size_t colorCount() const noexcept { return hasColors() ? colors_.entryCount() : 0; }
    /// The record that counts; empty without one.
    const FltRecordView& colorRecord() const noexcept { return colorRecord_; }
    const FltColorPalette& colors() const noexcept { return colors_; }
    /// By whose layout their record is read and written.
    std::uint32_t colorRevision() const noexcept {
        return colorRecord_.empty()
                   ? revision()
                   : FltColorPalette::layoutRevision(colorRecord_.bytes(), revision());
    }
    /// The name of a color, UTF-8; empty for none.
    std::string colorName(std::int32_t entry) const;
    /// The materials are those of a table, which has its places: none is added or taken away.
    bool hasMaterialTable() const noexcept { return !tableRecords_.empty(); }
    bool hasReadableColorNames() const noexcept { return hasReadableNames_; }

private:
    void add(Palette palette, std::size_t place, const FltRecordView& record,
             std::int32_t row = -1);
    void addTable(std::size_t place, const FltRecordView& record);

    INode& node_;
    fltkilnutil::SourceRecords kept_;
    ForEachPalette<std::vector<Entry>> entries_;
    ForEachPalette<std::vector<std::pair<std::int32_t, std::uint32_t>>> byIndex_;  ///< sorted
    FltRecordView colorRecord_;
    FltColorPalette colors_;
    FltColorNames colorNames_;
    bool hasReadableNames_ = true;
    /// A record for each material of tables.
    std::vector<std::vector<std::uint8_t>> tableRecords_;
};

/// The record of an entry as its class has it; null for bytes that the class refuses.
std::unique_ptr<FltRecord> readEntry(const Entry& entry, std::uint32_t revision);

// ---------------------------------------------------------------- fields

/// A field and its values, separated by blanks.
struct Field {
    std::string name;
    std::string value;
};

/// The fields of an entry by the names of its class, in the order of the file. Texts are UTF-8.
std::vector<Field> fieldsOf(const FltRecord& record);

}  // namespace palettes
