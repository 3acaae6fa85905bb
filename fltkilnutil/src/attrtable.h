// The attribute table in memory: all groups with their rows, built from the constant rows.
#pragma once

#include "attrrow.h"
#include "captionstore.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace fltkilnutil {

/// A group together with what it was built from.
struct TableGroup : FltAttrGroup {
    explicit TableGroup(const GroupRow& groupRow) : row(groupRow) {}

    /// Puts record and options back to their defaults.
    void resetRecord() { row.resetRecord(*record); }
    void resetOptions() { row.resetOptions(*options); }

    const GroupRow& row;
    bool isOfFile = false;          ///< the record is the one that is kept of the node's file
    std::vector<FltAttrDesc> rows;  ///< the terminator included
};

class AttrTable {
public:
    static constexpr std::size_t kGroups = 14;

    /// The table with its texts in the host's language, built at the first call; null when the
    /// caption library is missing, which the first call logs, and while there is no memory for it.
    static AttrTable* instance() noexcept;

    explicit AttrTable(const CaptionReader& captions);
    AttrTable(const AttrTable&) = delete;
    AttrTable& operator=(const AttrTable&) = delete;

    TableGroup* find(FltNodeKind kind) const noexcept;

    /// All groups, ended by null.
    FltAttrGroup* const* list() const noexcept { return list_.data(); }

    /// The groups of the rows beside the table, of which a kind may have several.
    std::span<const std::unique_ptr<TableGroup>> further() const noexcept { return further_; }

private:
    std::unique_ptr<TableGroup> buildGroup(const GroupRow& row, const GroupRow* also = nullptr);
    void addRows(TableGroup& group, std::span<const AttrRow> rows);
    FltAttrEnum entry(const EnumRow& choice) const noexcept;
    const FltAttrEnum* buildEnumeration(std::span<const EnumRow> choices);

    CaptionStore captions_;
    std::vector<std::unique_ptr<FltAttrEnum[]>> enumerations_;
    std::array<std::unique_ptr<TableGroup>, kGroups> groups_;
    std::array<FltAttrGroup*, kGroups + 1> list_{};
    std::vector<std::unique_ptr<TableGroup>> further_;
};

/// Reads the node's record and options into the blocks of the group, which is of its kind.
/// `parameter` is as for `fltAttrLoad`. False for damaged ones.
bool readBlocks(INode* node, TableGroup& group, std::uint32_t parameter);

/// Fills the group's value texts from its blocks.
void printValues(FltAttrGroup& group);
/// Fills that of one of its rows.
void printValue(FltAttrGroup& group, FltAttrDesc& row);

/// No and yes, the enumeration of every boolean row.
extern FltAttrEnum yesNoTable[3];

}  // namespace fltkilnutil
